#include "source/member_uses.h"

#include <utility>
#include <vector>

#include "source/script_tokens.h"

namespace mirolta::host {
namespace {

constexpr size_t kLongestName = 255;

class Finder {
 public:
  explicit Finder(std::string_view script) : script_(script), tokens_(SplitScript(script)) {}

  MemberUses Run() {
    for (size_t i = 0; i < tokens_.size(); ++i) Note(i);
    return std::move(uses_);
  }

 private:
  std::string_view TextOf(size_t index) const {
    return script_.substr(tokens_[index].begin, tokens_[index].end - tokens_[index].begin);
  }
  bool HasKind(size_t index, TokenKind kind) const {
    return index < tokens_.size() && tokens_[index].kind == kind;
  }
  bool Is(size_t index, std::string_view text) const {
    return HasKind(index, TokenKind::kPunctuator) && TextOf(index) == text;
  }
  bool IsWord(size_t index) const {
    return HasKind(index, TokenKind::kName) || HasKind(index, TokenKind::kKeyword);
  }

  void Note(size_t i) {
    if (IsWord(i)) {
      NoteWord(i);
    } else if (HasKind(i, TokenKind::kText)) {
      NoteText(i);
    } else if (Is(i, "[")) {
      NoteBracket(i);
    } else if (Is(i, "(") && CallsComputed(i)) {
      uses_.calls_computed = true;
    }
  }

  // Whether the callee before the bracket at `i` may be any member, as in (o.Name)() and o[key](). A
  // function in brackets ends with a brace; what a call returns, as in o.Name()(), is no member.
  bool CallsComputed(size_t i) const {
    if (i == 0) return false;
    if (Is(i - 1, ")")) {
      return i > 1 && !Is(i - 2, "}") && tokens_[i - 1].bracket != BracketKind::kArguments;
    }
    return Is(i - 1, "]") && !HasConstantKey(i - 1);
  }

  void NoteWord(size_t i) {
    const std::string_view word = TextOf(i);
    // Its functions take keys, as x[key] does.
    if (word == "Reflect") uses_.reads_computed = true;
    NoteName(word, Is(i + 1, "("));
    // new o.Name(): the engine reads the constructor.
    if (word != "new" || !HasKind(i, TokenKind::kKeyword)) return;
    for (size_t at = i + 1; IsWord(at) || Is(at, "."); ++at) {
      if (IsWord(at)) NoteName(TextOf(at), false);
    }
  }

  void NoteText(size_t i) {
    std::string_view text = TextOf(i);
    text.remove_prefix(1);
    if (!text.empty()) text.remove_suffix(1);
    const bool is_key = i > 0 && Is(i - 1, "[") && Is(i + 1, "]");
    NoteName(text, is_key && Is(i + 2, "("));
  }

  // x[key], unless the key is constant. The brackets of an array do not follow an operand.
  void NoteBracket(size_t i) {
    const bool follows_operand = i > 0 && !HasKind(i - 1, TokenKind::kKeyword) &&
                                 (!HasKind(i - 1, TokenKind::kPunctuator) || Is(i - 1, ")") ||
                                  Is(i - 1, "]") || Is(i - 1, "}"));
    if (follows_operand && !HasConstantKey(i + 2)) uses_.reads_computed = true;
  }

  // True if the bracket at `close` ends [text] or [number].
  bool HasConstantKey(size_t close) const {
    return Is(close, "]") && Is(close - 2, "[") &&
           (HasKind(close - 1, TokenKind::kText) || HasKind(close - 1, TokenKind::kNumber));
  }

  void NoteName(std::string_view name, bool is_call) {
    if (name.find('\\') != std::string_view::npos) {
      (is_call ? uses_.calls_computed : uses_.reads_computed) = true;
    } else if (name.size() <= kLongestName) {
      (is_call ? uses_.called : uses_.read).emplace(name);
    }
  }

  std::string_view script_;
  std::vector<Token> tokens_;
  MemberUses uses_;
};

}  // namespace

MemberUses FindMemberUses(std::string_view script) {
  return Finder(script).Run();
}

}  // namespace mirolta::host
