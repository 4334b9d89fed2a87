#include "source/statement_column.h"

#include <algorithm>
#include <iterator>
#include <vector>

#include "source/script_tokens.h"
#include "source/source_lines.h"

namespace mirolta::host {
namespace {

// Tokens at the start of a statement that cannot fail by themselves. Braces of blocks cannot either.
constexpr std::string_view kHarmless[] = {";",     "do",      "else",    "try",
                                          "catch", "finally", "default", "function"};

class Finder {
 public:
  Finder(std::string_view script, int line)
      : script_(script), text_(LineOf(script, line)), tokens_(SplitScript(script)) {}

  int Run() {
    const auto begin = static_cast<size_t>(text_.data() - script_.data());
    const auto first =
        std::find_if(tokens_.begin(), tokens_.end(), [&](const Token& t) { return t.end > begin; });
    const Token* found = nullptr;
    bool in_head = false;  // of a function, of catch or of default
    for (auto at = first; at != tokens_.end() && at->begin < begin + text_.size(); ++at) {
      const std::string_view text = TextOf(*at);
      const bool can_fail = !in_head && !IsHarmless(*at);
      if (text == "function" || text == "catch" || text == "default") {
        in_head = at->starts_statement;
      }
      if (text == ")" || text == ":") in_head = false;
      if (!can_fail) continue;
      if (found != nullptr && at->starts_statement) return 0;
      if (found == nullptr) found = &*at;
    }
    if (found == nullptr || found->begin < begin) return 0;
    return CountCharacters(script_.substr(begin, found->begin - begin)) + 1;
  }

 private:
  std::string_view TextOf(const Token& token) const {
    return script_.substr(token.begin, token.end - token.begin);
  }
  bool IsHarmless(const Token& token) const {
    const std::string_view text = TextOf(token);
    if (text == "{" || text == "}") return token.bracket == BracketKind::kBlock;
    return token.starts_statement &&
           std::find(std::begin(kHarmless), std::end(kHarmless), text) != std::end(kHarmless);
  }

  std::string_view script_;
  std::string_view text_;
  std::vector<Token> tokens_;
};

}  // namespace

int StatementColumn(std::string_view script, int line) {
  return Finder(script, line).Run();
}

}  // namespace mirolta::host
