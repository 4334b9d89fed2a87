// The bytes of a script as text.
#pragma once

#include <string>
#include <string_view>

namespace mirolta::host {

// DecodeScript decodes a script. A byte order mark tells the character set; without one it is
// `charset` (charset_decoder.h). If that is empty:
//   - UTF-16, if the first character has a zero byte,
//   - else UTF-8, if the bytes are valid UTF-8,
//   - else that of the environment's locale,
//   - else, where the locale has UTF-8 or ASCII, windows-1252; but bytes that are UTF-8 in part are
//     damaged UTF-8 and an error.
// Shapes: *text is UTF-8 without the mark.
// Errors: false with *problem, "name(line): ...", if bytes are not valid or encode U+0000.
bool DecodeScript(const std::string& name, std::string_view bytes, const std::string& charset,
                  std::string* text, std::string* problem);

}  // namespace mirolta::host
