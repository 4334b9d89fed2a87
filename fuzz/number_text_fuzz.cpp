// Conversion to and from decimal and hexadecimal text, with other characters between the digits.
#include <string>

#include "big_numbers.h"
#include "big_text.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

// The digits of the text, in the peer's form.
std::string DigitsOf(const std::basic_string<OLECHAR>& text, int base) {
  std::string digits = "0";
  for (const OLECHAR c : text) {
    const bool decimal = c >= '0' && c <= '9';
    const bool letter = (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
    if (decimal || (base == 16 && letter)) digits += static_cast<char>(c);
  }
  return digits;
}

void CheckText(const BigInt& n, uint32_t base) {
  NumberText text;
  FUZZ_CHECK(ToText(text, n, base) == S_OK);
  if (n.IsZero()) {
    FUZZ_CHECK(text.Characters() == nullptr);
    return;
  }
  PeerNumber size(n);
  mpz_abs(size.get(), size.get());
  char* const expected = mpz_get_str(nullptr, static_cast<int>(base), size.get());
  std::string ours;
  for (uint32_t i = 0; i < text.Length(); ++i) ours += static_cast<char>(text.Characters()[i]);
  FUZZ_CHECK(ours == expected);
  FUZZ_CHECK(text.Characters()[text.Length()] == 0);
  free(expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const bool many = in.Byte() % 16 == 0;
  const BigInt n = NextNumber(in, many ? 5000 : 200);
  CheckText(n, 10);
  CheckText(n, 16);
  std::basic_string<OLECHAR> text = in.Text(many ? 1810 : 100);
  // Long runs of digits from short input.
  if (many) {
    while (!text.empty() && text.size() < 900) text += text;
    text.resize(text.size() % 1811);
  }
  for (const int base : {10, 16}) {
    BigInt read;
    const uint32_t length = static_cast<uint32_t>(text.size());
    FUZZ_CHECK((base == 16 ? FromHexText(read, text.data(), length)
                           : FromDecimalText(read, text.data(), length)) == S_OK);
    PeerNumber peer;
    FUZZ_CHECK(mpz_set_str(peer.get(), DigitsOf(text, base).c_str(), base) == 0);
    FUZZ_CHECK(Equals(read, peer.get()));
    CheckText(read, 10);
    CheckText(read, 16);
  }
  return 0;
}
