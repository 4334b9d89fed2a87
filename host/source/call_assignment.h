// Assignment to a property with arguments, `obj.Text(65001) = "x"`, which the platform's script
// host accepts and ES5 does not. Before compilation such an assignment becomes
// `obj["Text()="](65001).value = "x"`; a dispatch object answers that name with a reference to the
// property. Line numbers do not change.
#pragma once

#include <string>
#include <string_view>

namespace mirolta::host {

// The suffix of a member's name in a rewritten assignment.
inline constexpr std::string_view kAssignmentSuffix = "()=";

// RewriteCallAssignments rewrites every assignment, simple or compound, whose target is a call, and
// leaves the rest of the script unchanged.
// Shapes: UTF-8, or the engine's form of text.
std::string RewriteCallAssignments(std::string_view script);

}  // namespace mirolta::host
