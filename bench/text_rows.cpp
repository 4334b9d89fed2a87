// Conversion of numbers to and from text.
#include "bench_numbers.h"
#include "big_text.h"

namespace mirolta::bench {

namespace {

using WideText = std::basic_string<OLECHAR>;

struct Texts {
  std::vector<std::string> narrow;
  std::vector<WideText> wide;
};

std::shared_ptr<Texts> TextsOf(const PeerNumbers& numbers, int base) {
  const auto texts = std::make_shared<Texts>();
  for (const PeerNumber& number : *numbers) {
    std::string text(mpz_sizeinbase(number.gmp.z, base) + 2, 0);
    mpz_get_str(text.data(), base, number.gmp.z);
    text.resize(std::char_traits<char>::length(text.c_str()));
    texts->narrow.push_back(text);
    texts->wide.emplace_back(text.begin(), text.end());
  }
  return texts;
}

std::vector<Contestant> MakeReaders(size_t bits, int base, size_t count) {
  const auto texts = TextsOf(RandomNumbers(bits, 1, Parity::kAny, count), base);
  const auto read = base == 10 ? FromDecimalText : FromHexText;
  return {
      OurContestant([=](BigInt& r, size_t i) {
        const WideText& text = texts->wide[i];
        (void)read(r, text.data(), static_cast<uint32_t>(text.size()));
      }),
      GmpContestant([=](mpz_t r, size_t i) { mpz_set_str(r, texts->narrow[i].c_str(), base); })};
}

std::vector<Contestant> MakeWriters(size_t bits, int base, size_t count) {
  const PeerNumbers numbers = RandomNumbers(bits, 1, Parity::kAny, count);
  const auto ours = std::make_shared<NumberText>();
  const auto gmp = std::make_shared<std::vector<char>>(bits + 2);
  return {{kOurs,
           [=](size_t i) { (void)ToText(*ours, (*numbers)[i].ours, static_cast<uint32_t>(base)); },
           [=] { return std::string(ours->Characters(), ours->Characters() + ours->Length()); }},
          {"GMP", [=](size_t i) { mpz_get_str(gmp->data(), base, (*numbers)[i].gmp.z); },
           [=] { return std::string(gmp->data()); }}};
}

constexpr struct {
  int base;
  const char* name;
  double read_required;
  double read_stretch;
  double write_required;
  double write_stretch;
} kBases[] = {{10, "decimal text", 1.0, 2.0, 0.9, 1.5}, {16, "hexadecimal text", 3, 8, 3, 8}};

}  // namespace

void AddTextRows(RowList* rows) {
  for (const auto& entry : kBases) {
    for (const size_t bits : {256u, 1024u, 4096u, 32768u}) {
      const std::string size = "/" + std::to_string(bits) + " bits";
      const int base = entry.base;
      rows->push_back({"engine/" + std::string(entry.name) + " in" + size, 0, entry.read_required,
                       entry.read_stretch, kOperands, 0,
                       [bits, base] { return MakeReaders(bits, base, kOperands); }});
      rows->push_back({"engine/" + std::string(entry.name) + " out" + size, 0, entry.write_required,
                       entry.write_stretch, kOperands, 0,
                       [bits, base] { return MakeWriters(bits, base, kOperands); }});
    }
  }
  // 999,998 digits; kOperands such numbers would take gigabytes. Reading drops the top bits of numbers
  // of a byte more.
  constexpr size_t kLongOperands = 4;
  constexpr size_t kLongBits = 3321920;
  rows->push_back({"engine/decimal text in/3321920 bits", 0, 1.0, 2.0, kLongOperands, 0,
                   [] { return MakeReaders(kLongBits, 10, kLongOperands); }});
  rows->push_back({"engine/decimal text out/3321920 bits", 0, 1.0, 1.5, kLongOperands, 0,
                   [] { return MakeWriters(kLongBits, 10, kLongOperands); }});
}

}  // namespace mirolta::bench
