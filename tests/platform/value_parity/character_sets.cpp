// Conversions between character sets, of texts and of every byte.
#include <cstring>
#include <string>

#include "printing.h"
#include "sections.h"

namespace mirolta::value_parity {

void CharacterSets() {
  using Text = std::basic_string<OLECHAR>;
  Section("charset");
  const UINT pages[] = {0,    437, 850, 1250, 1251, 1252,  1253,  1254,  1255,  1256,  1257,
                        1258, 932, 936, 949,  950,  20127, 28591, 28605, 65000, 65001, 12345};
  const Text samples[] = {Text(),
                          OLESTR("a"),
                          OLESTR("plain text 123"),
                          OLESTR("\u00E9\u00E8\u00FC"),
                          OLESTR("\u20AC"),
                          OLESTR("\u0416\u0438"),
                          OLESTR("\u03B1\u03B2"),
                          OLESTR("\u05D0"),
                          OLESTR("\u0627"),
                          OLESTR("\u3042\u30A2\u4E9C"),
                          OLESTR("\u4E2D\u6587"),
                          OLESTR("\uAC00"),
                          Text{0xD83D, 0xDE00},
                          Text{0xD83D, 'x'},
                          Text{'x', 0xDE00},
                          OLESTR("\u0001\u007F\u0080\u009F"),
                          OLESTR("+&~"),
                          Text(OLESTR("a\0b"), 3),
                          OLESTR("\uFF71"),
                          OLESTR("\u2500"),
                          OLESTR("\u00A5\u203E")};
  for (const UINT page : pages) {
    for (const Text& sample : samples) {
      const INT length = static_cast<INT>(sample.size());
      const std::string what = Decimal(page) + " " + Quoted(sample.data(), sample.size());
      char bytes[64];
      memset(bytes, 0x55, sizeof bytes);
      const INT needed =
          WideCharToMultiByte(page, 0, sample.data(), length, nullptr, 0, nullptr, nullptr);
      const INT written =
          WideCharToMultiByte(page, 0, sample.data(), length, bytes, 64, nullptr, nullptr);
      std::string result = Decimal(needed) + " " + Decimal(written) + " ";
      for (INT i = 0; i < written; ++i) result += Hex(static_cast<BYTE>(bytes[i]), 2);
      Print("encode " + what, result);
      OLECHAR text[64];
      const INT back = MultiByteToWideChar(page, 0, bytes, written, text, 64);
      Print("decode " + what, Decimal(back) + " " + Quoted(text, static_cast<size_t>(back)));
      const INT terminated =
          WideCharToMultiByte(page, 0, sample.c_str(), -1, bytes, 64, nullptr, nullptr);
      const INT short_room =
          WideCharToMultiByte(page, 0, sample.data(), length, bytes, 1, nullptr, nullptr);
      Print("ends " + what, Decimal(terminated) + " " + Decimal(short_room));
    }
    // Every byte alone, and every lead byte with a trail byte.
    for (unsigned byte = 0; byte < 256; ++byte) {
      for (const unsigned trail : {0u, 0x41u, 0xA1u}) {
        const char bytes[2] = {static_cast<char>(byte), static_cast<char>(trail)};
        OLECHAR text[8];
        const INT count = MultiByteToWideChar(page, 0, bytes, trail == 0 ? 1 : 2, text, 8);
        Print("bytes " + Decimal(page) + " " + Hex(byte, 2) + Hex(trail, 2),
              Decimal(count) + " " + Quoted(text, static_cast<size_t>(count)));
      }
    }
  }
}

}  // namespace mirolta::value_parity
