#include "source/source_lines.h"

namespace mirolta::host {
namespace {

// The start of the line after the one at `begin`; npos after the last.
size_t NextLine(std::string_view text, size_t begin) {
  for (size_t at = begin; at < text.size(); ++at) {
    const size_t length = LineBreakLength(text.substr(at));
    if (length != 0) return at + length;
  }
  return std::string_view::npos;
}

}  // namespace

size_t LineBreakLength(std::string_view text) {
  if (text.empty()) return 0;
  if (text[0] == '\n') return 1;
  if (text[0] == '\r') return text.starts_with("\r\n") ? 2 : 1;
  return text.starts_with("\xE2\x80\xA8") || text.starts_with("\xE2\x80\xA9") ? 3 : 0;
}

int CountLines(std::string_view text) {
  int lines = 1;
  for (size_t at = NextLine(text, 0); at != std::string_view::npos; at = NextLine(text, at))
    ++lines;
  return lines;
}

std::string_view LineOf(std::string_view text, int line) {
  size_t begin = 0;
  for (int i = 1; i < line; ++i) {
    begin = NextLine(text, begin);
    if (begin == std::string_view::npos) return text.substr(text.size());
  }
  size_t end = begin;
  while (end < text.size() && LineBreakLength(text.substr(end)) == 0) ++end;
  return text.substr(begin, end - begin);
}

Place PlaceOf(std::string_view text, size_t offset) {
  Place place;
  size_t begin = 0;
  place.line = 1;
  for (size_t next = NextLine(text, 0); next <= offset; next = NextLine(text, next)) {
    begin = next;
    ++place.line;
  }
  place.column = CountCharacters(text.substr(begin, offset - begin)) + 1;
  return place;
}

int CountCharacters(std::string_view text) {
  int count = 0;
  for (char c : text) count += (static_cast<unsigned char>(c) & 0xC0u) != 0x80 ? 1 : 0;
  return count;
}

}  // namespace mirolta::host
