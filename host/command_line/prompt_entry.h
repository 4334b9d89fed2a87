// Entries of the prompt, which may have several lines.
#pragma once

#include <string_view>

namespace mirolta::host {

// IsComplete returns false if an entry goes on in the next line: a bracket or a comment is open, or
// the line ends with a backslash outside comments.
bool IsComplete(std::string_view entry);

// MayBeObject returns whether an entry that starts with a brace may be an object literal, which the
// engine would take for a block.
bool MayBeObject(std::string_view entry);

}  // namespace mirolta::host
