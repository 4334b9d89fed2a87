#include "source/eval_calls.h"

#include <map>
#include <vector>

#include "source/script_tokens.h"

namespace mirolta::host {
namespace {

constexpr std::string_view kEval = "eval";

class Finder {
 public:
  explicit Finder(std::string_view script) : script_(script), tokens_(SplitScript(script)) {}

  // What to insert, by the place in the script.
  std::map<size_t, std::string> Run() {
    for (size_t i = 0; i < tokens_.size(); ++i) {
      const Token& close = tokens_[i];
      if (Is(i, ")") && close.bracket == BracketKind::kArguments && IsEval(close.opening - 1)) {
        const bool has_arguments = close.opening + 1 < i;
        edits_[tokens_[close.opening].end] +=
            std::string(kCodeNoteName) + "(eval" + (has_arguments ? "," : "");
        edits_[close.begin] += ")";
      }
    }
    return std::move(edits_);
  }

 private:
  std::string_view TextOf(size_t index) const {
    return script_.substr(tokens_[index].begin, tokens_[index].end - tokens_[index].begin);
  }
  bool Is(size_t index, std::string_view text) const {
    return tokens_[index].kind == TokenKind::kPunctuator && TextOf(index) == text;
  }
  // The variable, which is neither a member nor a constructor.
  bool IsEval(size_t index) const {
    if (tokens_[index].kind != TokenKind::kName || TextOf(index) != kEval) return false;
    return index == 0 || (!Is(index - 1, ".") && TextOf(index - 1) != "new");
  }

  std::string_view script_;
  std::vector<Token> tokens_;
  std::map<size_t, std::string> edits_;
};

}  // namespace

std::string RewriteEvalCalls(std::string_view script) {
  if (script.find(kEval) == std::string_view::npos) return std::string(script);
  std::string out;
  size_t from = 0;
  for (const auto& [at, text] : Finder(script).Run()) {
    out.append(script.substr(from, at - from)).append(text);
    from = at;
  }
  return out.append(script.substr(from));
}

}  // namespace mirolta::host
