// Assignment to a property with arguments, `obj.Text(65001) = "x"`, which the platform's script
// host knows and the standard language refuses. Before a script is compiled such assignments become
// `obj["Text()="](65001).value = "x"`; dispatch objects answer the name with the property's place.
// Line numbers stay.
#pragma once

#include <string>
#include <string_view>

namespace mirolta::host {

// What a member's name ends in when the script is about to assign to it with arguments.
inline constexpr std::string_view kAssignmentSuffix = "()=";

// RewriteCallAssignments returns the script with every assignment to a call rewritten: = and the
// compound ones. A script without any comes back as it is.
std::string RewriteCallAssignments(std::string_view script);

}  // namespace mirolta::host
