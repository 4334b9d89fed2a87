#include "source/script_tokens.h"

#include <algorithm>
#include <utility>

#include "source/source_lines.h"

namespace mirolta::host {
namespace {

using std::string_view;

// Keywords that are not operands. this, null, true and false count as names.
constexpr string_view kKeywords[] = {
    "break",  "case",       "catch", "const",   "continue", "debugger", "default",
    "delete", "do",         "else",  "finally", "for",      "function", "if",
    "in",     "instanceof", "new",   "return",  "switch",   "throw",    "try",
    "typeof", "var",        "void",  "while",   "with"};
// Keywords followed by a condition in parentheses.
constexpr string_view kConditionWords[] = {"if", "while", "for", "with", "switch", "catch"};
// Keywords that are followed by a statement or are one.
constexpr string_view kStatementWords[] = {"else",  "do",       "try",     "finally",
                                           "break", "continue", "debugger"};
// Keywords after which a line break ends the statement.
constexpr string_view kLineWords[] = {"return", "throw", "break", "continue"};
constexpr string_view kLongPunctuators[] = {
    ">>>=", "===", "!==", "<<=", ">>=", ">>>", "==", "!=", "<=", ">=", "+=", "-=", "*=",
    "/=",   "%=",  "&=",  "|=",  "^=",  "++",  "--", "&&", "||", "<<", ">>", "=>"};

template <size_t kCount>
bool IsOneOf(string_view text, const string_view (&list)[kCount]) {
  return std::find(std::begin(list), std::end(list), text) != std::end(list);
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

uint8_t ByteOf(char c) {
  return static_cast<uint8_t>(c);
}

// The length of the white space at the start of `text`, 0 if there is none.
size_t SpaceLength(string_view text) {
  static constexpr string_view kWideSpaces[] = {"\xC2\xA0",     "\xE1\x9A\x80", "\xE1\xA0\x8E",
                                                "\xE2\x80\xAF", "\xE2\x81\x9F", "\xE3\x80\x80",
                                                "\xEF\xBB\xBF"};
  if (text.empty()) return 0;
  if (text[0] == ' ' || text[0] == '\t' || text[0] == '\v' || text[0] == '\f') return 1;
  if (ByteOf(text[0]) < 0x80) return 0;
  for (string_view space : kWideSpaces) {
    if (text.starts_with(space)) return space.size();
  }
  // U+2000..U+200A
  return text.starts_with("\xE2\x80") && text.size() > 2 && ByteOf(text[2]) <= 0x8A ? 3 : 0;
}

// The position in the grammar.
enum class Position : uint8_t {
  kStatement,     // a statement may start
  kOperand,       // an operand is expected
  kAfterOperand,  // an operator may follow
};

// An open bracket.
struct Open {
  size_t token = 0;
  BracketKind kind = BracketKind::kBlock;
  int conditionals = 0;      // ? without their : so far
  bool expects_key = false;  // in an object literal, before the colon of a property
  bool is_operand = false;   // of parameters: whether the function is an operand
};

class Splitter {
 public:
  explicit Splitter(string_view script) : script_(script), open_(1) {}

  std::vector<Token> Run() {
    while (SkipSpace()) {
      Token token;
      token.begin = at_;
      if (had_line_break_ && AfterLineWord()) position_ = Position::kStatement;
      const bool after_operand = position_ == Position::kAfterOperand && had_line_break_;
      token.starts_statement = position_ == Position::kStatement && At(at_) != '}';
      TakeToken(&token);
      token.end = at_;
      if (after_operand && IsOperandOrKeyword(token)) token.starts_statement = true;
      tokens_.push_back(token);
    }
    return std::move(tokens_);
  }

 private:
  char At(size_t index) const { return index < script_.size() ? script_[index] : '\0'; }
  string_view Rest() const { return script_.substr(at_); }
  string_view TextOf(const Token& token) const {
    return script_.substr(token.begin, token.end - token.begin);
  }
  string_view LastText() const { return tokens_.empty() ? string_view() : TextOf(tokens_.back()); }
  bool LastIs(TokenKind kind) const { return !tokens_.empty() && tokens_.back().kind == kind; }
  // After an operand such a token needs a semicolon before it, which a line break may stand for.
  bool IsOperandOrKeyword(const Token& token) const {
    return token.kind != TokenKind::kPunctuator && token.kind != TokenKind::kRegExp &&
           TextOf(token) != "in" && TextOf(token) != "instanceof";
  }
  bool AfterLineWord() const {
    return LastIs(TokenKind::kKeyword) && IsOneOf(LastText(), kLineWords);
  }
  bool IsNameByte(size_t index) const {
    const char c = At(index);
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c) || c == '_' || c == '$' ||
        c == '\\') {
      return true;
    }
    const string_view rest = script_.substr(std::min(index, script_.size()));
    return ByteOf(c) >= 0x80 && LineBreakLength(rest) == 0 && SpaceLength(rest) == 0;
  }

  // Skips spaces and comments; false at the end.
  bool SkipSpace() {
    had_line_break_ = tokens_.empty();
    while (at_ < script_.size()) {
      const string_view rest = Rest();
      if (const size_t line_break = LineBreakLength(rest)) {
        had_line_break_ = true;
        at_ += line_break;
      } else if (const size_t space = SpaceLength(rest)) {
        at_ += space;
      } else if (rest.starts_with("/*")) {
        SkipComment();
      } else if (rest.starts_with("//") || rest.starts_with("<!--") ||
                 (had_line_break_ && rest.starts_with("-->"))) {
        while (at_ < script_.size() && LineBreakLength(Rest()) == 0) ++at_;
      } else {
        return true;
      }
    }
    return false;
  }

  void SkipComment() {
    const size_t found = script_.find("*/", at_ + 2);
    const size_t end = found == string_view::npos ? script_.size() : found + 2;
    for (; at_ < end; ++at_) {
      if (LineBreakLength(Rest()) != 0) had_line_break_ = true;
    }
  }

  void TakeToken(Token* token) {
    const char c = script_[at_];
    if (c == '"' || c == '\'') {
      TakeQuoted(c);
      EndOperand(token, TokenKind::kText);
    } else if (IsDigit(c) || (c == '.' && IsDigit(At(at_ + 1)))) {
      TakeNumber();
      EndOperand(token, TokenKind::kNumber);
    } else if (IsNameByte(at_)) {
      while (IsNameByte(at_)) ++at_;
      NoteWord(token, script_.substr(token->begin, at_ - token->begin));
    } else if (c == '/' && position_ != Position::kAfterOperand) {
      TakeRegExp();
      EndOperand(token, TokenKind::kRegExp);
    } else {
      NotePunctuator(token, TakePunctuator());
    }
  }

  void EndOperand(Token* token, TokenKind kind) {
    token->kind = kind;
    position_ = Position::kAfterOperand;
  }

  // The length of an escape: a backslash and the character that it escapes.
  size_t EscapeLength() const { return Rest().starts_with("\\\r\n") ? 3u : 2u; }

  void TakeQuoted(char quote) {
    ++at_;
    while (at_ < script_.size() && script_[at_] != quote && script_[at_] != '\n' &&
           script_[at_] != '\r') {
      at_ += script_[at_] == '\\' ? EscapeLength() : 1u;
    }
    at_ = std::min(at_ + 1, script_.size());
  }

  void TakeDigits() {
    while (IsDigit(At(at_))) ++at_;
  }

  void TakeNumber() {
    const size_t begin = at_;
    if (At(at_) == '0' && IsNameByte(at_ + 1) && !IsDigit(At(at_ + 1)) && At(at_ + 1) != 'e' &&
        At(at_ + 1) != 'E') {
      while (IsNameByte(at_)) ++at_;  // 0x...
      return;
    }
    TakeDigits();
    const string_view whole = script_.substr(begin, at_ - begin);
    const bool is_octal =
        whole.size() > 1 && whole[0] == '0' && whole.find_first_of("89") == string_view::npos;
    if (At(at_) == '.' && !is_octal) {
      ++at_;
      TakeDigits();
    }
    if (At(at_) != 'e' && At(at_) != 'E') return;
    const size_t sign = At(at_ + 1) == '+' || At(at_ + 1) == '-' ? 1u : 0u;
    if (!IsDigit(At(at_ + 1 + sign))) return;
    at_ += 1 + sign;
    TakeDigits();
  }

  void TakeRegExp() {
    bool in_class = false;
    ++at_;
    while (at_ < script_.size() && script_[at_] != '\n' && script_[at_] != '\r' &&
           (in_class || script_[at_] != '/')) {
      if (script_[at_] == '[') in_class = true;
      if (script_[at_] == ']') in_class = false;
      at_ += script_[at_] == '\\' ? 2u : 1u;
    }
    at_ = std::min(at_ + 1, script_.size());
    while (IsNameByte(at_)) ++at_;
  }

  string_view TakePunctuator() {
    // The second character of the long ones; most are single.
    if (At(at_ + 1) == '\0' || string_view("=+-&|<>").find(At(at_ + 1)) == string_view::npos) {
      return script_.substr(at_++, 1);
    }
    for (string_view one : kLongPunctuators) {
      if (Rest().starts_with(one)) {
        at_ += one.size();
        return one;
      }
    }
    return script_.substr(at_++, 1);
  }

  void NoteWord(Token* token, string_view text) {
    const bool after_break = LastIs(TokenKind::kKeyword) && !had_line_break_ &&
                             (LastText() == "break" || LastText() == "continue");
    const bool is_member = LastIs(TokenKind::kPunctuator) && LastText() == ".";
    if (is_member || open_.back().expects_key || !IsOneOf(text, kKeywords)) {
      EndOperand(token, TokenKind::kName);
      if (after_break) position_ = Position::kStatement;  // a label
      return;
    }
    token->kind = TokenKind::kKeyword;
    if (text == "function") {
      in_function_head_ = true;
      function_is_operand_ = position_ == Position::kOperand;
    }
    position_ = IsOneOf(text, kStatementWords) ? Position::kStatement : Position::kOperand;
  }

  void NotePunctuator(Token* token, string_view text) {
    switch (text[0]) {
      case '(':
        return PushBracket(token, ParenthesisKind());
      case '[':
        return PushBracket(token, position_ == Position::kAfterOperand && !open_.back().expects_key
                                      ? BracketKind::kMember
                                      : BracketKind::kArray);
      case '{':
        return PushBracket(token, BraceKind());
      case ')':
      case ']':
      case '}':
        return PopBracket(token);
      default:
        return NoteOperator(text);
    }
  }

  BracketKind ParenthesisKind() const {
    if (in_function_head_ || open_.back().expects_key) return BracketKind::kParameters;
    if (LastIs(TokenKind::kKeyword) && IsOneOf(LastText(), kConditionWords)) {
      return BracketKind::kCondition;
    }
    return position_ == Position::kAfterOperand ? BracketKind::kArguments : BracketKind::kGroup;
  }

  BracketKind BraceKind() const {
    if (LastText() == ")" && tokens_.back().bracket == BracketKind::kParameters) {
      return body_is_operand_ ? BracketKind::kBody : BracketKind::kBlock;
    }
    // After an operand: a semicolon was inserted before the block.
    return position_ == Position::kOperand ? BracketKind::kObject : BracketKind::kBlock;
  }

  void PushBracket(Token* token, BracketKind kind) {
    token->bracket = kind;
    Open open;
    open.token = tokens_.size();
    open.kind = kind;
    open.is_operand = in_function_head_ ? function_is_operand_ : open_.back().expects_key;
    open.expects_key = kind == BracketKind::kObject;
    open_.push_back(open);
    in_function_head_ = false;
    position_ = kind == BracketKind::kBlock || kind == BracketKind::kBody ? Position::kStatement
                                                                          : Position::kOperand;
  }

  void PopBracket(Token* token) {
    token->opening = tokens_.size();
    position_ = Position::kAfterOperand;
    if (open_.size() == 1) return;  // the script itself
    const Open open = open_.back();
    open_.pop_back();
    token->opening = open.token;
    token->bracket = open.kind;
    if (open.kind == BracketKind::kParameters) body_is_operand_ = open.is_operand;
    if (open.kind == BracketKind::kCondition || open.kind == BracketKind::kParameters ||
        open.kind == BracketKind::kBlock) {
      position_ = Position::kStatement;
    }
  }

  void NoteOperator(string_view text) {
    Open& open = open_.back();
    const bool in_statements = open.kind == BracketKind::kBlock || open.kind == BracketKind::kBody;
    if ((text == "++" || text == "--") && position_ == Position::kAfterOperand &&
        !had_line_break_) {
      return;
    }
    position_ = Position::kOperand;
    if (text == ";") {
      open.conditionals = 0;
      if (in_statements) position_ = Position::kStatement;
    } else if (text == "?") {
      ++open.conditionals;
    } else if (text == "," && open.kind == BracketKind::kObject) {
      open.expects_key = true;
    } else if (text == ":") {
      if (open.conditionals > 0) {
        --open.conditionals;
      } else if (in_statements) {
        position_ = Position::kStatement;  // after a label or a case
      }
      open.expects_key = false;
    }
  }

  string_view script_;
  size_t at_ = 0;
  std::vector<Token> tokens_;
  std::vector<Open> open_;  // the script itself first
  Position position_ = Position::kStatement;
  bool had_line_break_ = true;  // between the last token and this one
  // From the keyword function to the parenthesis of its parameters.
  bool in_function_head_ = false;
  bool function_is_operand_ = false;
  bool body_is_operand_ = false;  // of the parameters that ended last
};

}  // namespace

std::vector<Token> SplitScript(string_view script) {
  return Splitter(script).Run();
}

}  // namespace mirolta::host
