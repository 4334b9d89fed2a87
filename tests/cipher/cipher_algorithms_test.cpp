#include "cipher_algorithms.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "cipher_engine.h"

namespace mirolta::test {
namespace {

TEST(CipherAlgorithms, TableHoldsTwoNamesAndAnEmptyOne) {
  static_assert(sizeof(kCipherNames[0]) == 16 * sizeof(OLECHAR));
  EXPECT_EQ(std::basic_string<OLECHAR>(kCipherNames[0]), OLESTR("AES"));
  EXPECT_EQ(std::basic_string<OLECHAR>(kCipherNames[1]), OLESTR("DES"));
  EXPECT_EQ(kCipherNames[2][0], 0);
}

TEST(CipherAlgorithms, AreFoundByTheirExactNamesOnly) {
  EXPECT_EQ(FindCipherAlgorithm(OLESTR("AES")), 0);
  EXPECT_EQ(FindCipherAlgorithm(OLESTR("DES")), 1);
  for (const OLECHAR* other :
       {OLESTR("aes"), OLESTR("Aes"), OLESTR("des"), OLESTR(""), OLESTR("AE"), OLESTR("AES "),
        OLESTR(" AES"), OLESTR("AES-128"), OLESTR("3DES"), OLESTR("DESX"), OLESTR("MD5")}) {
    EXPECT_EQ(FindCipherAlgorithm(other), -1);
  }
  EXPECT_EQ(FindCipherAlgorithm(nullptr), -1);
}

TEST(CipherAlgorithms, MakeEmptyEnginesByNumberAndName) {
  const struct {
    LONG algorithm;
    const OLECHAR* name;
    uint32_t block_size;
  } kRows[] = {{kCipherAes, OLESTR("AES"), 16}, {kCipherDes, OLESTR("DES"), 8}};
  for (const auto& row : kRows) {
    for (const std::unique_ptr<CipherEngine>& engine :
         {CreateCipherEngine(row.algorithm), CreateCipherEngine(FindCipherAlgorithm(row.name))}) {
      ASSERT_NE(engine, nullptr);
      EXPECT_EQ(engine->BlockSize(), row.block_size);
      EXPECT_FALSE(engine->HasKey());
      EXPECT_EQ(engine->PadType(), 0);
      EXPECT_EQ(engine->EncryptIn().Length(), 0u);
      EXPECT_EQ(engine->EncryptOut().Length(), 0u);
      EXPECT_EQ(engine->DecryptIn().Length(), 0u);
      EXPECT_EQ(engine->DecryptOut().Length(), 0u);
      EXPECT_EQ(engine->EncryptOut().Maximum(), 512u);
    }
  }
  EXPECT_EQ(CreateCipherEngine(LONG{-1}), nullptr);
  EXPECT_EQ(CreateCipherEngine(LONG{2}), nullptr);
}

TEST(CipherAlgorithms, EnginesGiveTheirNamesWhereThereIsRoom) {
  for (LONG algorithm : {kCipherAes, kCipherDes}) {
    const std::unique_ptr<CipherEngine> engine = CreateCipherEngine(algorithm);
    ASSERT_NE(engine, nullptr);
    const std::basic_string<OLECHAR> name = kCipherNames[algorithm];
    OLECHAR buffer[8];
    for (LONG capacity : {4, 5, 64, 0, -1, INT32_MIN}) {
      std::fill(std::begin(buffer), std::end(buffer), OLECHAR{'x'});
      EXPECT_EQ(engine->GetName(buffer, capacity), S_OK) << capacity;
      EXPECT_EQ(std::basic_string<OLECHAR>(buffer), name);
      EXPECT_EQ(buffer[4], OLECHAR{'x'});
    }
    for (LONG capacity : {1, 2, 3}) {
      std::fill(std::begin(buffer), std::end(buffer), OLECHAR{'x'});
      EXPECT_EQ(engine->GetName(buffer, capacity), E_OUTOFMEMORY) << capacity;
      EXPECT_EQ(buffer[0], OLECHAR{'x'});
    }
    EXPECT_EQ(engine->GetName(nullptr, 64), E_OUTOFMEMORY);
    EXPECT_EQ(engine->GetName(nullptr, 0), E_OUTOFMEMORY);

    BSTR text = nullptr;
    EXPECT_EQ(engine->GetNameString(&text), S_OK);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(SysStringLen(text), 3u);
    EXPECT_EQ(std::basic_string<OLECHAR>(text), name);
    SysFreeString(text);
    EXPECT_EQ(engine->GetNameString(nullptr), E_POINTER);
  }
}

}  // namespace
}  // namespace mirolta::test
