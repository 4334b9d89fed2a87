// Shared by the tests of big numbers: random numbers, many of them edge cases, and GMP as the peer.
#pragma once

#include <gmp.h>

#include <cstdlib>
#include <random>
#include <string>
#include <vector>

#include "big_bytes.h"
#include "big_int.h"
#include "big_text.h"

namespace mirolta {

// The peer of the Windows builds is slow: they have fewer random cases.
#ifdef _WIN32
inline constexpr int kFewerCases = 4;
#else
inline constexpr int kFewerCases = 1;
#endif

// Cases scales the number of random cases: MIROLTA_CASES multiplies it.
inline int Cases(int count) {
  const char* const factor = std::getenv("MIROLTA_CASES");
  count = (count + kFewerCases - 1) / kFewerCases;
  return factor != nullptr ? count * std::atoi(factor) : count;
}

// One sequence a program, the same in each run; MIROLTA_SEED starts another.
inline std::mt19937_64& Generator() {
  static std::mt19937_64 generator([] {
    const char* const seed = std::getenv("MIROLTA_SEED");
    return seed != nullptr ? std::strtoull(seed, nullptr, 10) : 20021u;
  }());
  return generator;
}

inline uint32_t Below(uint32_t limit) {
  return static_cast<uint32_t>(Generator()() % limit);
}

// Words of at most `bits` bits: runs of ones, runs of zeros, single bits and random ones.
inline std::vector<uint32_t> RandomWords(uint32_t bits) {
  std::vector<uint32_t> words((bits + 31) / 32);
  const uint32_t kind = Below(6);
  for (uint32_t& word : words) {
    switch (kind < 4 ? Below(6) : kind) {
      case 0:
        word = 0;
        break;
      case 1:
        word = 0xFFFFFFFF;
        break;
      case 2:
        word = uint32_t{1} << Below(32);
        break;
      case 3:
        word = ~(uint32_t{1} << Below(32));
        break;
      default:
        word = static_cast<uint32_t>(Generator()());
    }
  }
  if (kind == 5) {
    // One bit, or one bit less one.
    for (uint32_t& word : words) word = 0;
    if (bits != 0) words[(bits - 1) / 32] = uint32_t{1} << ((bits - 1) % 32);
    if (Below(2) == 0) {
      for (uint32_t& word : words) {
        if (word-- != 0) break;
      }
    }
  }
  if (bits % 32 != 0) words.back() &= (uint32_t{1} << (bits % 32)) - 1;
  return words;
}

inline BigInt FromWords(const std::vector<uint32_t>& words) {
  BigInt n;
  BigMagnitude* const m = n.Rewrite(static_cast<uint32_t>(words.size()));
  for (size_t i = 0; i < words.size(); ++i) m->Words()[i] = words[i];
  m->Normalise();
  return n;
}

// A number of any size up to bits, shorter ones as likely as long ones.
inline BigInt RandomBig(uint32_t most_bits) {
  return FromWords(RandomWords(Below(most_bits + 1)));
}
inline BigInt RandomBigOf(uint32_t bits) {
  return FromWords(RandomWords(bits));
}

// Words of every length up to three, the highest not zero, of zeros, ones and all ones: zero, powers
// of two and their neighbours, carries and borrows over whole words; and a few small numbers.
inline std::vector<std::vector<uint32_t>> ShapedWords() {
  std::vector<std::vector<uint32_t>> shapes = {{}, {2}, {3}, {5}, {7}};
  const uint32_t kWords[] = {0, 1, 0xFFFFFFFF};
  for (const uint32_t low : kWords) {
    if (low != 0) shapes.push_back({low});
    for (const uint32_t middle : kWords) {
      if (middle != 0) shapes.push_back({low, middle});
      for (const uint32_t high : {1u, 0xFFFFFFFFu}) shapes.push_back({low, middle, high});
    }
  }
  return shapes;
}
// The same as numbers, without the sign flag and with it; zero too.
inline std::vector<BigInt> ShapedNumbers() {
  std::vector<BigInt> numbers;
  for (const std::vector<uint32_t>& words : ShapedWords()) {
    for (const bool flag : {false, true}) {
      numbers.push_back(FromWords(words));
      numbers.back().SetSignFlag(flag);
    }
  }
  return numbers;
}

// Mpz owns a number of the peer.
class Mpz {
 public:
  Mpz() { mpz_init(z_); }
  explicit Mpz(unsigned long value) { mpz_init_set_ui(z_, value); }
  explicit Mpz(const BigInt& n) {
    mpz_init(z_);
    mpz_import(z_, n.Used(), -1, 4, 0, 0, n.Magnitude().Words());
    if (n.IsNegative()) mpz_neg(z_, z_);
  }
  ~Mpz() { mpz_clear(z_); }
  Mpz(const Mpz&) = delete;
  Mpz& operator=(const Mpz&) = delete;
  operator mpz_ptr() { return z_; }
  operator mpz_srcptr() const { return z_; }

 private:
  mpz_t z_;
};

inline BigInt FromPeer(mpz_srcptr z) {
  std::vector<uint32_t> words((mpz_sizeinbase(z, 2) + 31) / 32);
  size_t count = 0;
  mpz_export(words.data(), &count, -1, 4, 0, 0, z);
  words.resize(count);
  BigInt n = FromWords(words);
  n.SetSignFlag(mpz_sgn(z) < 0);
  return n;
}

inline std::string Narrow(const NumberText& text) {
  std::string narrow;
  for (uint32_t i = 0; i < text.Length(); ++i) {
    narrow.push_back(static_cast<char>(text.Characters()[i]));
  }
  return narrow;
}

inline std::basic_string<OLECHAR> Widen(const std::string& text) {
  return std::basic_string<OLECHAR>(text.begin(), text.end());
}

// Hex text with a sign; "0" for zero, "-0" for a zero with the flag.
inline std::string Hex(const BigInt& n) {
  NumberText text;
  if (FAILED(n.Status()) || FAILED(ToText(text, n, 16))) return "failed";
  std::string result(n.SignFlag() ? 1 : 0, '-');
  result += n.IsZero() ? std::string("0") : Narrow(text);
  return result;
}

inline std::string Hex(mpz_srcptr z) {
  char* const text = mpz_get_str(nullptr, 16, z);
  const std::string result = text;
  free(text);
  return result;
}

// From decimal text with an optional sign.
inline BigInt Big(const std::string& text) {
  BigInt n;
  const auto wide = Widen(text);
  FromDecimalText(n, wide.data(), static_cast<uint32_t>(wide.size()));
  n.SetSignFlag(!text.empty() && text[0] == '-');
  return n;
}

inline BigInt BigHex(const std::string& text) {
  BigInt n;
  const auto wide = Widen(text);
  FromHexText(n, wide.data(), static_cast<uint32_t>(wide.size()));
  n.SetSignFlag(!text.empty() && text[0] == '-');
  return n;
}

// digit * 16^zeros
inline BigInt HexPower(size_t zeros, char digit = '1') {
  std::string text(zeros + 1, '0');
  text[0] = digit;
  return BigHex(text);
}

inline BigInt Negated(const BigInt& n) {
  BigInt result(n);
  result.SetSignFlag(!n.SignFlag());
  return result;
}

}  // namespace mirolta
