// The tokens of a script (ES5), with what the grammar says of its brackets: which slash starts a
// regular expression, which parentheses hold arguments, which braces end an operand.
#pragma once

#include <string_view>
#include <vector>

#include "platform.h"

namespace mirolta::host {

enum class TokenKind : uint8_t { kName, kKeyword, kNumber, kText, kRegExp, kPunctuator };

enum class BracketKind : uint8_t {
  kNone,        // not a bracket, or one without its partner
  kArguments,   // f(...), new F(...)
  kGroup,       // (...) around an expression
  kCondition,   // (...) after if, while, for, with, switch and catch
  kParameters,  // (...) of a function, getter or setter
  kMember,      // x[...]
  kArray,       // [...] as an operand, or around a computed key
  kBlock,       // {...} around statements: block, body of a switch or of a function declaration
  kBody,        // {...} of a function that is an operand, a getter or a setter
  kObject,      // {...} as an operand
};

struct Token {
  TokenKind kind = TokenKind::kPunctuator;
  BracketKind bracket = BracketKind::kNone;
  size_t begin = 0;
  size_t end = 0;
  // Of a closing bracket, the place of its opening one in the list of tokens.
  size_t opening = 0;
};

// SplitScript splits a script into tokens; spaces and comments are between them. For a script that
// does not compile any tokens may come, in order and inside the script.
// Shapes: UTF-8, or the engine's form of text.
std::vector<Token> SplitScript(std::string_view script);

}  // namespace mirolta::host
