#include <gtest/gtest.h>

#include <string>

#include "platform.h"

namespace mirolta {
namespace {

constexpr UINT kUtf7 = 65000;
using Text = std::basic_string<OLECHAR>;

std::string Encode(const Text& text) {
  char bytes[64];
  const INT size = WideCharToMultiByte(kUtf7, 0, text.data(), static_cast<INT>(text.size()), bytes,
                                       64, nullptr, nullptr);
  return std::string(bytes, static_cast<size_t>(size));
}
Text Decode(const std::string& bytes) {
  OLECHAR text[64];
  const INT size =
      MultiByteToWideChar(kUtf7, 0, bytes.data(), static_cast<INT>(bytes.size()), text, 64);
  return Text(text, static_cast<size_t>(size));
}

struct Row {
  Text text;
  std::string bytes;
};

TEST(Utf7Text, TextsGoThereAndBack) {
  const Row rows[] = {
      {OLESTR("plain 123 '(),-./:?\t\r\n"), "plain 123 '(),-./:?\t\r\n"},
      {OLESTR("+"), "+-"},
      {OLESTR("++"), "+-+-"},
      {OLESTR("a\u00E9"), "a+AOk-"},
      {OLESTR("\u00E9a"), "+AOk-a"},
      {OLESTR("\u00E9-"), "+AOk--"},
      {OLESTR("\u00E9!"), "+AOkAIQ-"},
      {OLESTR("\u00E9 \u00E9"), "+AOk- +AOk-"},
      {OLESTR("\u00E9+-"), "+AOk-+--"},
      {OLESTR("\u00E9\u00E9\u00E9\u00E9."), "+AOkA6QDpAOk-."},
      {OLESTR("~"), "+AH4-"},
      {OLESTR("\x01"), "+AAE-"},
      {Text{'a', 0, 'b'}, std::string("a\0b", 3)},
      {Text{0xD83D, 0xDE00}, "+2D3eAA-"},
      {Text{'x', 0xDE00}, "x+3gA-"},
  };
  for (const Row& row : rows) {
    EXPECT_EQ(Encode(row.text), row.bytes);
    EXPECT_EQ(Decode(row.bytes), row.text) << row.bytes;
  }
}

TEST(Utf7Text, TerminatorAddsOneByte) {
  EXPECT_EQ(WideCharToMultiByte(kUtf7, 0, OLESTR("key"), -1, nullptr, 0, nullptr, nullptr), 4);
  EXPECT_EQ(WideCharToMultiByte(kUtf7, 0, OLESTR("\u00E9"), -1, nullptr, 0, nullptr, nullptr), 6);
}

TEST(Utf7Text, UnusualBytesGiveWhatCanBeRead) {
  const Row rows[] = {
      {OLESTR(""), "+"},
      {OLESTR(""), "+AO-"},
      {OLESTR("\u00E9"), "+AOk"},
      {OLESTR("\u00E9"), "+AOkA6"},
      {OLESTR("\u00E9!"), "+AOk!"},
      {OLESTR("\u00E9="), "+AOk="},
      {OLESTR("\u00E9\u3E00"), "+AOk+AOk-"},
      {OLESTR("!"), "+!"},
      {OLESTR("~\\"), "~\\"},
      {OLESTR("\u0080\u00FF"), "\x80\xFF"},
      {OLESTR("\u00E9\u0080"), "+AOk\x80"},
  };
  for (const Row& row : rows) EXPECT_EQ(Decode(row.bytes), row.text) << row.bytes;
  OLECHAR text[4];
  EXPECT_EQ(MultiByteToWideChar(kUtf7, 8, "a", 1, text, 4), 0);
}

}  // namespace
}  // namespace mirolta
