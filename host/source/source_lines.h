// Lines and columns of a script's text.
#pragma once

#include <string_view>

namespace mirolta::host {

// A place in a text, both from 1; 0 if unknown.
struct Place {
  int line = 0;
  int column = 0;  // in characters
};

// Lines end with the line terminators of ES5: LF, CR, CR LF, U+2028 and U+2029.
// Shapes: texts are UTF-8.

// LineBreakLength returns the length of the line terminator at the start of `text`, 0 if there is
// none.
size_t LineBreakLength(std::string_view text);
// CountLines returns the number of lines, 1 for an empty text.
int CountLines(std::string_view text);
// LineOf returns a line without its terminator, the empty end of the text if it has fewer lines.
std::string_view LineOf(std::string_view text, int line);
// PlaceOf returns the place of an offset, at most the size of the text.
Place PlaceOf(std::string_view text, size_t offset);

// CountCharacters returns the number of code points.
int CountCharacters(std::string_view text);

}  // namespace mirolta::host
