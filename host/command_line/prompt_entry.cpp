#include "command_line/prompt_entry.h"

#include "source/script_tokens.h"

namespace mirolta::host {
namespace {

// Returns whether a text of white space and comments ends within a comment of several lines.
bool EndsInComment(std::string_view text) {
  for (size_t at = text.find('/'); at != std::string_view::npos; at = text.find('/', at)) {
    const std::string_view start = text.substr(at, 2);
    const bool is_long = start == "/*";
    const size_t end = is_long ? text.find("*/", at + 2) : text.find('\n', at);
    if (end == std::string_view::npos) return is_long;
    at = end + (is_long ? 2 : 1);
  }
  return false;
}

}  // namespace

bool IsComplete(std::string_view entry) {
  int open = 0;
  size_t end = 0;
  for (const Token& token : SplitScript(entry)) {
    end = token.end;
    if (token.kind != TokenKind::kPunctuator) continue;
    const std::string_view text = entry.substr(token.begin, token.end - token.begin);
    if (text == "(" || text == "[" || text == "{") ++open;
    if (text == ")" || text == "]" || text == "}") --open;
  }
  // A backslash at the end of a comment means nothing.
  const bool goes_on = entry.ends_with('\\') && end == entry.size();
  return open <= 0 && !goes_on && !EndsInComment(entry.substr(end));
}

bool MayBeObject(std::string_view entry) {
  const auto tokens = SplitScript(entry);
  return !tokens.empty() && entry[tokens.front().begin] == '{' && entry[tokens.back().begin] == '}';
}

}  // namespace mirolta::host
