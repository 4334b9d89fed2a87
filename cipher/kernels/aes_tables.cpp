#include "aes_tables.h"

namespace mirolta {

namespace {

// power[i] is 3^i in the field, and logarithm its inverse.
struct Logarithms {
  uint8_t power[256];
  uint8_t logarithm[256];
};

uint8_t Double(uint8_t x) {
  return static_cast<uint8_t>((x << 1) ^ (x > 127 ? 0x1B : 0));
}

Logarithms MakeLogarithms() {
  Logarithms field = {};
  uint8_t x = 1;
  for (uint32_t i = 0; i < 256; ++i) {
    field.power[i] = x;
    // 3^255 = 1: the logarithm of 1 stays 255, of which the inverse takes 255 - 255 = 0.
    field.logarithm[x] = static_cast<uint8_t>(i);
    x = static_cast<uint8_t>(x ^ Double(x));
  }
  return field;
}

uint8_t RotateByte(uint8_t x, int count) {
  return static_cast<uint8_t>(x << count | x >> (8 - count));
}

uint32_t Column(uint8_t row0, uint8_t row1, uint8_t row2, uint8_t row3) {
  return uint32_t{row3} << 24 | uint32_t{row2} << 16 | uint32_t{row1} << 8 | row0;
}

void SetRotated(uint32_t (&tables)[4][256], uint32_t index, uint32_t column) {
  for (uint32_t(&table)[256] : tables) {
    table[index] = column;
    column = column << 8 | column >> 24;
  }
}

}  // namespace

AesBoxes::AesBoxes() noexcept {
  const Logarithms field = MakeLogarithms();

  uint8_t constant = 1;
  for (uint32_t& word : round_constants) {
    word = constant;
    constant = Double(constant);
  }

  substitution[0] = 0x63;
  for (uint32_t v = 1; v < 256; ++v) {
    const uint8_t b = field.power[255u - field.logarithm[v]];
    substitution[v] = static_cast<uint8_t>(b ^ RotateByte(b, 1) ^ RotateByte(b, 2) ^
                                           RotateByte(b, 3) ^ RotateByte(b, 4) ^ 0x63);
  }
  for (uint32_t v = 0; v < 256; ++v) {
    inverse_substitution[substitution[v]] = static_cast<uint8_t>(v);
  }
}

AesTables::AesTables() noexcept {
  for (uint32_t v = 0; v < 256; ++v) {
    const uint8_t s = substitution[v];
    const uint8_t s2 = Double(s);
    SetRotated(forward, v, Column(s2, s, s, static_cast<uint8_t>(s2 ^ s)));
    const uint8_t t = inverse_substitution[v];
    const uint8_t t2 = Double(t);
    const uint8_t t4 = Double(t2);
    const uint8_t t8 = Double(t4);
    SetRotated(inverse, v,
               Column(static_cast<uint8_t>(t8 ^ t4 ^ t2), static_cast<uint8_t>(t8 ^ t),
                      static_cast<uint8_t>(t8 ^ t4 ^ t), static_cast<uint8_t>(t8 ^ t2 ^ t)));
  }
}

const AesTables& SharedAesTables() noexcept {
  static const AesTables tables;
  return tables;
}

const AesBoxes& SharedAesBoxes() noexcept {
  static const AesBoxes boxes;
  return boxes;
}

}  // namespace mirolta
