// A tokenizer for ES5 that classifies brackets. It distinguishes regular expressions from
// divisions, the arguments of a call from a group, and object literals from blocks.
#pragma once

#include <string_view>
#include <vector>

#include "platform.h"

namespace mirolta::host {

enum class TokenKind : uint8_t { kName, kKeyword, kNumber, kText, kRegExp, kPunctuator };

enum class BracketKind : uint8_t {
  kNone,        // not a bracket, or an unmatched one
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
  // The index of the opening bracket of a closing one.
  size_t opening = 0;
  // A statement or a clause of one, like else or case, starts with the token. Unspecified for an
  // operator.
  bool starts_statement = false;
};

// SplitScript returns the tokens of a script, without white space and comments. For a script that
// does not compile the tokens are unspecified, but in order and within the script.
// Shapes: UTF-8, or the engine's form of text.
std::vector<Token> SplitScript(std::string_view script);

}  // namespace mirolta::host
