// Big numbers and RSA: engines.
#include <memory>

#include "bench_bytes.h"
#include "big_bytes.h"
#include "big_text.h"
#include "gcd.h"
#include "mod_exp.h"
#include "rsa_key.h"
#include "speed_row.h"

namespace mirolta::bench {

namespace {

// An odd number of exactly that many bits.
BigInt Number(size_t bits, uint64_t seed) {
  std::vector<uint8_t> bytes = RandomBytes(bits / 8, seed);
  bytes[0] |= 0x80;
  bytes.back() |= 1;
  BigInt n;
  (void)FromBytes(n, bytes.data(), static_cast<uint32_t>(bytes.size()));
  return n;
}

std::string TextOf(const BigInt& n) {
  std::vector<uint8_t> bytes(static_cast<size_t>(ByteLength(n)));
  ToBytes(bytes.data(), n);
  return mirolta::bench::TextOf(bytes);
}

template <typename Work>
SpeedTask Task(Work work) {
  const auto result = std::make_shared<BigInt>();
  return {[=] { work(*result); }, [=] { return TextOf(*result); }};
}

SpeedTask Power(size_t bits) {
  return Task([b = Number(bits, 1), e = Number(bits, 2), m = Number(bits, 3)](BigInt& r) {
    (void)ModExp(r, b, e, m);
  });
}

SpeedTask Multiply(size_t bits) {
  return Task([a = Number(bits, 1), b = Number(bits, 2)](BigInt& r) { r = a * b; });
}

SpeedTask Divide(size_t bits) {
  return Task([a = Number(2 * bits, 1), b = Number(bits, 2)](BigInt& r) { r = a / b; });
}

std::shared_ptr<RsaKey> Key(size_t bits) {
  const auto key = std::make_shared<RsaKey>();
  (void)BuildKey(*key, Number(bits / 2, 7), Number(bits / 2, 8));
  return key;
}

SpeedTask Private(size_t bits) {
  return Task(
      [key = Key(bits), c = Number(bits - 8, 9)](BigInt& r) { (void)RsaDecrypt(r, *key, c); });
}

SpeedTask PrivateByPrimes(size_t bits) {
  return Task([key = Key(bits), c = Number(bits - 8, 9)](BigInt& r) {
    (void)RsaDecryptWithPrimes(r, *key, c);
  });
}

SpeedTask Write(size_t bits, uint32_t base) {
  const auto text = std::make_shared<NumberText>();
  return {[text, base, n = Number(bits, 1)] { (void)ToText(*text, n, base); },
          [text] { return std::string(text->Characters(), text->Characters() + text->Length()); }};
}

SpeedTask Read(size_t bits, uint32_t base) {
  NumberText written;
  (void)ToText(written, Number(bits, 1), base);
  const std::basic_string<OLECHAR> text(written.Characters(), written.Length());
  const auto read = base == 10 ? FromDecimalText : FromHexText;
  return Task([=](BigInt& r) { (void)read(r, text.data(), static_cast<uint32_t>(text.size())); });
}

}  // namespace

void AddNumberRows(SpeedRows* rows) {
  const SpeedRow own[] = {
      {"engine/multiply/1,024 bits", 0, [] { return Multiply(1024); }},
      {"engine/multiply/16,384 bits", 0, [] { return Multiply(16384); }},
      {"engine/multiply/1,000,000 bits", 0, [] { return Multiply(1000000); }},
      {"engine/divide/1,024 bits", 0, [] { return Divide(1024); }},
      {"engine/divide/16,384 bits", 0, [] { return Divide(16384); }},
      {"engine/power/256 bits", 0, [] { return Power(256); }},
      {"engine/power/512 bits", 0, [] { return Power(512); }},
      {"engine/power/1,024 bits", 0, [] { return Power(1024); }},
      {"engine/power/2,048 bits", 0, [] { return Power(2048); }},
      {"engine/RSA private/1,024 bits", 0, [] { return Private(1024); }},
      {"engine/RSA private by primes/1,024 bits", 0, [] { return PrivateByPrimes(1024); }},
      {"engine/RSA private by primes/2,048 bits", 0, [] { return PrivateByPrimes(2048); }},
      {"engine/decimal text written/16,384 bits", 0, [] { return Write(16384, 10); }},
      {"engine/decimal text read/16,384 bits", 0, [] { return Read(16384, 10); }},
      {"engine/hexadecimal text written/16,384 bits", 0, [] { return Write(16384, 16); }},
      {"engine/hexadecimal text read/16,384 bits", 0, [] { return Read(16384, 16); }},
  };
  rows->insert(rows->end(), std::begin(own), std::end(own));
}

}  // namespace mirolta::bench
