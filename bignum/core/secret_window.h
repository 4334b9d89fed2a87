// Exponentiation with a secret exponent: fixed windows, table entries gathered by masks, and an
// exponent that is split at random. For one power, or for two at once.
#pragma once

#include "limb_basics.h"

namespace mirolta {

// IsSame returns all ones if a = b, else 0.
// Shapes: a and b below half of B.
inline Limb IsSame(Limb a, Limb b) {
  // Only 0 - 1 has the top bit set.
  Limb mask =
      static_cast<Limb>(0 - static_cast<Limb>(static_cast<Limb>((a ^ b) - 1) >> (kLimbBits - 1)));
  // The compiler must not find out that it is all ones or 0, and branch.
  __asm__("" : "+r"(mask));
  return mask;
}

template <size_t kLimbs>
inline void SelectLimbsOfEntry(Limb* z, const Limb* table, size_t entries, size_t stride,
                               Limb index) {
  Limb sum[kLimbs] = {};
  for (size_t i = 0; i < entries; ++i, table += stride) {
    const Limb mask = IsSame(static_cast<Limb>(i), index);
#pragma GCC unroll 4
    for (size_t j = 0; j < kLimbs; ++j) sum[j] |= table[j] & mask;
  }
  for (size_t j = 0; j < kLimbs; ++j) z[j] = sum[j];
}
// SelectEntryByMasks: z := entry `index` of a table of `entries`, each n limbs, `stride` limbs apart.
// Alias:  none.
// Time:   depends on the counts only: every entry is read.
inline void SelectEntryByMasks(Limb* z, const Limb* table, size_t entries, size_t stride, size_t n,
                               Limb index) {
  // As many at once as registers hold beside the table's addresses.
  constexpr size_t kTogether = 4;
  size_t done = 0;
  for (; done + kTogether <= n; done += kTogether) {
    SelectLimbsOfEntry<kTogether>(z + done, table + done, entries, stride, index);
  }
  for (; done < n; ++done) SelectLimbsOfEntry<1>(z + done, table + done, entries, stride, index);
}

// SplitExponent: e = quotient * factor + rest, so that x^e = (x^factor)^quotient * x^rest for every
// x and modulus. For a random factor neither the exponents nor, unless x is 0 or of small order, the
// powers of x^factor in the long exponentiation are known to who chooses x.
// Source: Ciet and Joye, (Virtually) free randomization techniques for elliptic curve cryptography,
//         2003, 4.2.
struct SplitExponent {
  const Limb* quotient;
  Limb factor;
  Limb rest;
};

// Split returns that of e.
// Shapes: quotient[n], e[n], factor with its top bit set.
// Time:   depends on n only.
// Source: Moeller and Granlund, Improved division by invariant integers, 2011, algorithm 4, with masks
//         in place of branches.
inline SplitExponent Split(Limb* quotient, const Limb* e, size_t n, Limb factor) {
  // floor((B^2 - 1) / factor) - B = floor((B * (B - 1 - factor) + B - 1) / factor), bit by bit.
  Limb reciprocal = 0;
  Limb rest = static_cast<Limb>(~factor);
  for (uint32_t bit = 0; bit < kLimbBits; ++bit) {
    const Limb out = static_cast<Limb>(rest >> (kLimbBits - 1));
    rest = static_cast<Limb>(rest << 1 | 1);
    const Limb digit = static_cast<Limb>(out | static_cast<Limb>(rest >= factor));
    rest = static_cast<Limb>(rest - (factor & static_cast<Limb>(0 - digit)));
    reciprocal = static_cast<Limb>(reciprocal << 1 | digit);
  }
  rest = 0;
  for (size_t i = n; i-- != 0;) {
    const LimbPair product = Product(reciprocal, rest);
    const LimbPair estimate = AddPair(product, {e[i], static_cast<Limb>(rest + 1)});
    Limb digit = estimate.high;
    rest = static_cast<Limb>(e[i] - digit * factor);
    const Limb above = static_cast<Limb>(0 - static_cast<Limb>(rest > estimate.low));
    digit = static_cast<Limb>(digit + above);
    rest = static_cast<Limb>(rest + (factor & above));
    const Limb more = static_cast<Limb>(rest >= factor);
    quotient[i] = static_cast<Limb>(digit + more);
    rest = static_cast<Limb>(rest - (factor & static_cast<Limb>(0 - more)));
  }
  return {quotient, factor, rest};
}

// ExponentLimbs returns the limbs that a quotient of e[en] below 2^bits has.
inline size_t ExponentLimbs(size_t en, size_t bits) {
  const size_t limbs = bits / kLimbBits + (bits % kLimbBits != 0 ? 1 : 0);
  return limbs > en ? limbs : en;
}

// QuotientBits returns the bits that a quotient of an exponent below 2^bits has.
inline size_t QuotientBits(size_t bits) {
  return (bits < kLimbBits ? kLimbBits : bits) - (kLimbBits - 1);
}

// SplitWindowBits returns the window for a quotient of that many bits.
inline uint32_t SplitWindowBits(size_t bits) {
  return bits > 640 ? 5 : 4;
}
// The window for factor and rest.
inline constexpr uint32_t kShortWindow = 4;

// WindowMemory returns the units of SecretWindow's memory, for elements of `stride` units.
inline CheckedSize WindowMemory(CheckedSize stride, uint32_t window) {
  const size_t entries = (size_t{1} << kShortWindow) + (size_t{1} << window) + 1;
  return CheckedSize(entries) * stride;
}

// SecretWindow raises kCount numbers to powers at once. An element is kCount numbers of `size`
// units, one after the other; units are limbs or digits of another radix:
//   arithmetic.Multiply(z, x, y) computes z := x * y of all, where z may be x or y, and x may be y;
//   arithmetic.Select(z, table, entries, stride, n, index) selects one number of an element, by the rules of
//   SelectEntryByMasks.
template <typename Unit, size_t kCount, typename Arithmetic>
class SecretWindow {
 public:
  // Shapes: memory[WindowMemory(kCount * size, window)].
  SecretWindow(Unit* memory, size_t size, uint32_t window, const Arithmetic& arithmetic)
      : size_(size),
        window_(window),
        arithmetic_(arithmetic),
        short_table_(memory),
        table_(short_table_ + (kCount * size << kShortWindow)),
        entry_(table_ + (kCount * size << window)) {}

  // The caller writes the elements 1 and x here.
  Unit* One() { return short_table_; }
  Unit* Base() { return short_table_ + kCount * size_; }

  // Raise: z[i] := x[i]^e[i] for every number of the element x.
  // Shapes: quotients below 2^bits, in whole limbs; z[kCount * size].
  // Time:   depends on bits only.
  void Raise(Unit* z, const SplitExponent (&e)[kCount], size_t bits) {
    FillTable(short_table_, kShortWindow);
    Limb digits[kCount];
    for (uint32_t at = kLimbBits; at != 0;) {
      at -= kShortWindow;
      for (size_t i = 0; i < kCount; ++i) digits[i] = ShortDigit(e[i].factor, at);
      if (at + kShortWindow == kLimbBits) {
        Select(z, short_table_, kShortWindow, digits);
        continue;
      }
      for (uint32_t i = 1; i < kShortWindow; ++i) arithmetic_.Multiply(z, z, z);
      // An entry is selected before the last square: the processor overlaps the two.
      Select(entry_, short_table_, kShortWindow, digits);
      arithmetic_.Multiply(z, z, z);
      arithmetic_.Multiply(z, z, entry_);
    }
    for (size_t i = 0; i < kCount * size_; ++i) {
      table_[i] = short_table_[i];
      table_[kCount * size_ + i] = z[i];
    }
    FillTable(table_, window_);

    // The digits of the rest join where their bits do.
    const size_t least = bits < kLimbBits ? kLimbBits : bits;
    const size_t top = (least + window_ - 1) / window_ * window_;
    for (size_t at = top; at != 0;) {
      --at;
      const bool is_first = at == top - window_;
      const bool has_digit = at % window_ == 0;
      if (has_digit) {
        for (size_t i = 0; i < kCount; ++i) digits[i] = LongDigit(e[i].quotient, bits, at);
        Select(is_first ? z : entry_, table_, window_, digits);
      }
      if (at < top - window_) {
        arithmetic_.Multiply(z, z, z);
        if (has_digit) arithmetic_.Multiply(z, z, entry_);
      }
      // The topmost digit of the rest is not above that of the quotient.
      if (at < kLimbBits && at % kShortWindow == 0) {
        for (size_t i = 0; i < kCount; ++i) {
          digits[i] = ShortDigit(e[i].rest, static_cast<uint32_t>(at));
        }
        Select(entry_, short_table_, kShortWindow, digits);
        arithmetic_.Multiply(z, z, entry_);
      }
    }
    WipeMemory(digits, sizeof digits);
  }

 private:
  static Limb ShortDigit(Limb e, uint32_t at) {
    return static_cast<Limb>(e >> at) & ((Limb{1} << kShortWindow) - 1);
  }
  // The window's bits from bit `at` on, of whole limbs with `bits` bits that may be set.
  Limb LongDigit(const Limb* e, size_t bits, size_t at) const {
    const size_t n = (bits + kLimbBits - 1) / kLimbBits;
    const size_t i = at / kLimbBits;
    const uint32_t shift = at % kLimbBits;
    Limb digit = i < n ? static_cast<Limb>(e[i] >> shift) : Limb{0};
    if (shift + window_ > kLimbBits && i + 1 < n) {
      digit |= static_cast<Limb>(e[i + 1] << (kLimbBits - shift));
    }
    return digit & static_cast<Limb>((Limb{1} << window_) - 1);
  }

  // table[i] := table[1]^i for i >= 2.
  void FillTable(Unit* table, uint32_t window) {
    const size_t stride = kCount * size_;
    for (size_t i = 2; i < size_t{1} << window; ++i) {
      if (i % 2 == 0) {
        arithmetic_.Multiply(table + i * stride, table + i / 2 * stride, table + i / 2 * stride);
      } else {
        arithmetic_.Multiply(table + i * stride, table + (i - 1) * stride, table + stride);
      }
    }
  }
  void Select(Unit* z, const Unit* table, uint32_t window, const Limb (&digits)[kCount]) {
    for (size_t i = 0; i < kCount; ++i) {
      arithmetic_.Select(z + i * size_, table + i * size_, size_t{1} << window, kCount * size_,
                         size_, digits[i]);
    }
  }

  size_t size_;
  uint32_t window_;
  const Arithmetic& arithmetic_;
  Unit* short_table_;
  Unit* table_;
  Unit* entry_;
};

}  // namespace mirolta
