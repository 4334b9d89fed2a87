// The rows of the model of statuses: what each member does with each of its arguments.
#pragma once

#include <string>

#include "member_calls.h"

namespace mirolta::test {

// What a member does with an argument.
enum class Rule {
  kWholeData,        // bytes of a digest in one call
  kPieceOfData,      // more bytes of a digest
  kHashKey,          // any length
  kEncrypted,        // bytes for a cipher's queue
  kDecrypted,        //
  kAesKey,           // 16, 24 or 32 bytes
  kDesKey,           // 8, 16 or 24 bytes
  kDecimal,          // a number, texts decimal
  kHexadecimal,      // a number, texts hexadecimal
  kDivisor,          // a decimal number that may not be zero
  kMessage,          // a hexadecimal number below the modulus
  kNewNumber,        // a decimal number, every failure reported as missing memory
  kHashName,         // a text: one of the digests
  kCipherName,       // a text: one of the ciphers
  kCipherNameValue,  // a value that is made a text: one of the ciphers
  kText,             // any text
  kInteger,          // any 32-bit number
  kSize,             // a 32-bit number, 1 at least
  kKeySize,          // a 32-bit number, 2 at least: a key of one byte has no primes
  kSwitch,           // any truth value
  kStream,           // an object that is a stream
};

// What an object needs before it reads the argument; a fresh one lacks it.
enum class Needs { kNothing, kAlgorithm, kRsaKey };

struct StatusRow {
  const char* member;
  const char* parameter;
  Rule rule;
  Needs needs = Needs::kNothing;
  bool has_default = false;  // a late-bound caller may leave the argument out
};

// The row of an argument; null if it has none.
const StatusRow* FindStatusRow(const Member& member, const std::string& parameter);

}  // namespace mirolta::test
