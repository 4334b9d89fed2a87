#include "call_assignment.h"

#include <algorithm>
#include <cstdint>
#include <utility>
#include <vector>

namespace mirolta {
namespace {

enum class TokenKind : uint8_t { kNone, kName, kKeyword, kNumber, kText, kRegExp, kPunctuator };

struct Token {
  TokenKind kind = TokenKind::kNone;
  size_t begin = 0;
  size_t end = 0;
  // Of a closing bracket, the place of its opening one in the list of tokens.
  size_t opening = 0;
  // Of an opening parenthesis: it holds a call's arguments, or the condition of a statement.
  bool is_call = false;
  bool is_condition = false;
};

constexpr std::string_view kKeywords[] = {"break",   "case",     "catch",  "continue", "debugger",
                                          "default", "delete",   "do",     "else",     "finally",
                                          "for",     "function", "if",     "in",       "instanceof",
                                          "new",     "return",   "switch", "throw",    "try",
                                          "typeof",  "var",      "void",   "while",    "with"};
constexpr std::string_view kConditionKeywords[] = {"if", "while", "for", "with", "switch", "catch"};
constexpr std::string_view kAssignments[] = {
    "=", "+=", "-=", "*=", "/=", "%=", "&=", "|=", "^=", "<<=", ">>=", ">>>="};

template <size_t kCount>
bool IsOneOf(std::string_view text, const std::string_view (&list)[kCount]) {
  for (std::string_view one : list) {
    if (text == one) return true;
  }
  return false;
}

bool IsNameByte(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte >= 'a' && byte <= 'z') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= '0' && byte <= '9') || byte == '_' || byte == '$' || byte == '\\' || byte >= 0x80;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

// Splits a script into tokens; it need not be right about scripts that do not compile.
class Tokenizer {
 public:
  explicit Tokenizer(std::string_view script) : script_(script) {}

  std::vector<Token> Run() {
    while (SkipSpace()) {
      Token token;
      token.begin = at_;
      TakeToken(&token);
      token.end = at_;
      NoteBrackets(&token);
      tokens_.push_back(token);
    }
    return std::move(tokens_);
  }

 private:
  char At(size_t index) const { return index < script_.size() ? script_[index] : '\0'; }
  std::string_view TextOf(const Token& token) const {
    return script_.substr(token.begin, token.end - token.begin);
  }

  bool SkipSpace() {
    while (at_ < script_.size()) {
      const char c = script_[at_];
      if (c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f') {
        ++at_;
      } else if (c == '/' && At(at_ + 1) == '/') {
        at_ = std::min(script_.find('\n', at_), script_.size());
      } else if (c == '/' && At(at_ + 1) == '*') {
        const size_t end = script_.find("*/", at_ + 2);
        at_ = end == std::string_view::npos ? script_.size() : end + 2;
      } else {
        return true;
      }
    }
    return false;
  }

  void TakeToken(Token* token) {
    const char c = script_[at_];
    if (c == '"' || c == '\'') {
      token->kind = TokenKind::kText;
      TakeQuoted(c);
    } else if (IsDigit(c) || (c == '.' && IsDigit(At(at_ + 1)))) {
      token->kind = TokenKind::kNumber;
      TakeNumber();
    } else if (IsNameByte(c)) {
      while (at_ < script_.size() && IsNameByte(script_[at_])) ++at_;
      const std::string_view text = script_.substr(token->begin, at_ - token->begin);
      const bool is_member = !tokens_.empty() && TextOf(tokens_.back()) == ".";
      token->kind = !is_member && IsOneOf(text, kKeywords) ? TokenKind::kKeyword : TokenKind::kName;
    } else if (c == '/' && MayBeRegExp()) {
      token->kind = TokenKind::kRegExp;
      TakeRegExp();
    } else {
      token->kind = TokenKind::kPunctuator;
      TakePunctuator();
    }
  }

  void TakeQuoted(char quote) {
    ++at_;
    while (at_ < script_.size() && script_[at_] != quote && script_[at_] != '\n') {
      at_ += script_[at_] == '\\' ? 2u : 1u;
    }
    at_ = std::min(at_ + 1, script_.size());
  }

  void TakeNumber() {
    while (IsNameByte(At(at_)) || At(at_) == '.') {
      const bool is_exponent = (At(at_) == 'e' || At(at_) == 'E') && At(at_ - 1) != 'x';
      ++at_;
      if (is_exponent && (At(at_) == '+' || At(at_) == '-') && IsDigit(At(at_ + 1))) ++at_;
    }
  }

  void TakeRegExp() {
    bool in_class = false;
    ++at_;
    while (at_ < script_.size() && script_[at_] != '\n' && (in_class || script_[at_] != '/')) {
      if (script_[at_] == '[') in_class = true;
      if (script_[at_] == ']') in_class = false;
      at_ += script_[at_] == '\\' ? 2u : 1u;
    }
    at_ = std::min(at_ + 1, script_.size());
    while (IsNameByte(At(at_))) ++at_;
  }

  // The longest of the operators that matter here; all others may be taken a byte at a time.
  void TakePunctuator() {
    static constexpr std::string_view kLong[] = {
        ">>>=", "===", "!==", "<<=", ">>=", "==", "!=", "<=", ">=", "+=",
        "-=",   "*=",  "/=",  "%=",  "&=",  "|=", "^=", "++", "--", "=>"};
    for (std::string_view one : kLong) {
      if (script_.substr(at_, one.size()) == one) {
        at_ += one.size();
        return;
      }
    }
    ++at_;
  }

  bool MayBeRegExp() const {
    if (tokens_.empty()) return true;
    const Token& last = tokens_.back();
    if (last.kind == TokenKind::kKeyword) return true;
    if (last.kind != TokenKind::kPunctuator) return false;
    const std::string_view text = TextOf(last);
    if (text == ")") return tokens_[last.opening].is_condition;
    return text != "]" && text != "++" && text != "--";
  }

  void NoteBrackets(Token* token) {
    if (token->kind != TokenKind::kPunctuator) return;
    const char c = script_[token->begin];
    if (c == '(' || c == '[' || c == '{') {
      if (c == '(' && !tokens_.empty()) NoteParenthesis(token, tokens_.back());
      open_.push_back(tokens_.size());
    } else if (c == ')' || c == ']' || c == '}') {
      token->opening = tokens_.size();
      if (!open_.empty()) {
        token->opening = open_.back();
        open_.pop_back();
      }
    }
  }

  void NoteParenthesis(Token* token, const Token& before) const {
    const std::string_view text = TextOf(before);
    token->is_condition = before.kind == TokenKind::kKeyword && IsOneOf(text, kConditionKeywords);
    const bool after_function =
        tokens_.size() >= 2 && TextOf(tokens_[tokens_.size() - 2]) == "function";
    token->is_call = (before.kind == TokenKind::kName && !after_function) ||
                     (before.kind == TokenKind::kPunctuator && (text == ")" || text == "]"));
  }

  std::string_view script_;
  size_t at_ = 0;
  std::vector<Token> tokens_;
  std::vector<size_t> open_;
};

// A change of the script: `size` bytes at `at` give way to `text`.
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
  explicit Rewriter(std::string_view script) : script_(script), tokens_(Tokenizer(script).Run()) {}

  std::string Run() {
    for (size_t i = 0; i + 1 < tokens_.size(); ++i) {
      const Token& close = tokens_[i];
      if (Is(i, ")") && close.opening < i && tokens_[close.opening].is_call &&
          tokens_[i + 1].kind == TokenKind::kPunctuator && IsOneOf(TextOf(i + 1), kAssignments)) {
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

  void RewriteCall(size_t open, size_t close) {
    const size_t callee = open - 1;  // there is one: is_call says so
    if (tokens_[callee].kind == TokenKind::kName && callee > 0 && Is(callee - 1, ".")) {
      edits_.push_back({tokens_[callee - 1].begin, 1, ""});
      edits_.push_back({tokens_[callee].begin, TextOf(callee).size(), Quoted(TextOf(callee))});
    } else if (Is(callee, "]") && tokens_[callee].opening < callee) {
      edits_.push_back({tokens_[tokens_[callee].opening].end, 0, "("});
      edits_.push_back({tokens_[callee].begin, 0, ")+\"" + std::string(kAssignmentSuffix) + "\""});
    } else {
      edits_.push_back({tokens_[callee].end, 0, Quoted("")});
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

}  // namespace mirolta
