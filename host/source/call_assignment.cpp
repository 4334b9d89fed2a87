#include "source/call_assignment.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <vector>

#include "source/script_tokens.h"

namespace mirolta::host {
namespace {

constexpr std::string_view kAssignments[] = {
    "=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>=", ">>>="};

// Replaces `size` bytes at `at` by `text`.
struct Edit {
  size_t at;
  size_t size;
  std::string text;
};

std::string Quoted(std::string_view name) {
  return "[\"" + std::string(name) + std::string(kAssignmentSuffix) + "\"]";
}

class Rewriter {
 public:
  explicit Rewriter(std::string_view script) : script_(script), tokens_(SplitScript(script)) {}

  std::string Run() {
    for (size_t i = 0; i + 1 < tokens_.size(); ++i) {
      const Token& close = tokens_[i];
      if (Is(i, ")") && close.bracket == BracketKind::kArguments && IsAssignment(i + 1)) {
        RewriteCall(close.opening, i);
      }
    }
    return Apply();
  }

 private:
  std::string_view TextOf(size_t index) const {
    return script_.substr(tokens_[index].begin, tokens_[index].end - tokens_[index].begin);
  }
  bool Is(size_t index, std::string_view text) const {
    return tokens_[index].kind == TokenKind::kPunctuator && TextOf(index) == text;
  }

  bool IsAssignment(size_t index) const {
    const std::string_view text = TextOf(index);
    return tokens_[index].kind == TokenKind::kPunctuator &&
           std::find(std::begin(kAssignments), std::end(kAssignments), text) !=
               std::end(kAssignments);
  }

  void RewriteCall(size_t open, size_t close) {
    const size_t callee = open - 1;  // arguments follow their callee
    const Token& end = tokens_[callee];
    if (end.kind == TokenKind::kName && callee > 0 && Is(callee - 1, ".")) {
      edits_.push_back({tokens_[callee - 1].begin, 1, ""});
      edits_.push_back({end.begin, TextOf(callee).size(), Quoted(TextOf(callee))});
    } else if (end.bracket == BracketKind::kMember) {
      edits_.push_back({tokens_[end.opening].end, 0, "("});
      edits_.push_back({end.begin, 0, ")+\"" + std::string(kAssignmentSuffix) + "\""});
    } else if (end.kind == TokenKind::kName || end.bracket != BracketKind::kNone) {
      edits_.push_back({end.end, 0, Quoted("")});
    } else {
      return;  // a literal is not callable
    }
    edits_.push_back({tokens_[close].end, 0, ".value"});
  }

  std::string Apply() {
    std::stable_sort(edits_.begin(), edits_.end(),
                     [](const Edit& a, const Edit& b) { return a.at < b.at; });
    std::string out;
    size_t from = 0;
    for (const Edit& edit : edits_) {
      out.append(script_.substr(from, edit.at - from)).append(edit.text);
      from = edit.at + edit.size;
    }
    return out.append(script_.substr(from));
  }

  std::string_view script_;
  std::vector<Token> tokens_;
  std::vector<Edit> edits_;
};

}  // namespace

std::string RewriteCallAssignments(std::string_view script) {
  return Rewriter(script).Run();
}

}  // namespace mirolta::host
