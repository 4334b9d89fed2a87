// The published known-answer and multi-block files, through engines and through every kernel.
#include <gtest/gtest.h>

#include "aes_kernels.h"
#include "des_kernels.h"
#include "kernel_checks.h"
#include "response_file.h"
#include "test_engines.h"

namespace mirolta {
namespace {

const std::string kFolder = MIROLTA_CIPHER_VECTORS;

void CheckEngine(LONG algorithm, const Bytes& key, const Bytes& plaintext,
                 const Bytes& ciphertext) {
  const std::unique_ptr<CipherEngine> engine = KeyedEngine(algorithm, key);
  EXPECT_EQ(Encrypt(*engine, plaintext), S_OK);
  EXPECT_EQ(engine->EncryptFinal(), S_OK);
  EXPECT_EQ(TakeAll(engine->EncryptOut()), ciphertext);
  EXPECT_EQ(Decrypt(*engine, ciphertext), S_OK);
  EXPECT_EQ(engine->DecryptFinal(), S_OK);
  EXPECT_EQ(TakeAll(engine->DecryptOut()), plaintext);
}

template <typename List, typename Schedule>
void CheckKernels(const List& list, const Schedule& schedule, uint32_t block_size, const Bytes& in,
                  const Bytes& expected) {
  for (size_t i = 0; i < list.size(); ++i) {
    if ((list[i].needs & ~ProcessorFeatures()) != 0) continue;
    Bytes out(in.size());
    list[i].function(schedule, in.data(), out.data(),
                             static_cast<uint32_t>(in.size() / block_size));
    EXPECT_EQ(out, expected) << list[i].name;
  }
}

TEST(CipherVectors, AesFiles) {
  for (const char* kind : {"GFSbox", "KeySbox", "MMT", "VarKey", "VarTxt"}) {
    for (const char* bits : {"128", "192", "256"}) {
      const std::string path = kFolder + "/AES/ECB/ECB" + kind + bits + ".rsp";
      SCOPED_TRACE(path);
      for (VectorCase& one : ReadVectorCases(path)) {
        const Bytes& key = one["KEY"];
        const Bytes& plaintext = one["PLAINTEXT"];
        const Bytes& ciphertext = one["CIPHERTEXT"];
        ASSERT_EQ(key.size() * 8, std::stoul(bits));
        CheckEngine(kCipherAes, key, plaintext, ciphertext);
        AesSchedule schedule = {};
        ASSERT_TRUE(ExpandAesKey(key.data(), static_cast<uint32_t>(key.size()), &schedule));
        CheckKernels(kAesEncryptKernels, schedule, kAesBlockSize, plaintext, ciphertext);
        CheckKernels(kAesDecryptKernels, schedule, kAesBlockSize, ciphertext, plaintext);
      }
    }
  }
}

// The forms in which a case's keys can be given.
std::vector<Bytes> DesKeys(VectorCase& one) {
  const Bytes first = one.count("KEYs") != 0 ? one["KEYs"] : one["KEY1"];
  const Bytes second = one.count("KEYs") != 0 ? one["KEYs"] : one["KEY2"];
  const Bytes third = one.count("KEYs") != 0 ? one["KEYs"] : one["KEY3"];
  std::vector<Bytes> keys = {first + second + third};
  if (first == third) keys.push_back(first + second);
  if (first == second && second == third) keys.push_back(first);
  return keys;
}

TEST(CipherVectors, TripleDesFiles) {
  size_t forms[25] = {};
  for (const char* kind :
       {"MMT1", "MMT2", "MMT3", "invperm", "permop", "subtab", "varkey", "vartext"}) {
    const std::string path = kFolder + "/3DES/ECB/TECB" + kind + ".rsp";
    SCOPED_TRACE(path);
    for (VectorCase& one : ReadVectorCases(path)) {
      const Bytes& plaintext = one["PLAINTEXT"];
      const Bytes& ciphertext = one["CIPHERTEXT"];
      for (const Bytes& key : DesKeys(one)) {
        ASSERT_TRUE(key.size() == 8 || key.size() == 16 || key.size() == 24);
        ++forms[key.size()];
        CheckEngine(kCipherDes, key, plaintext, ciphertext);
        DesSchedule schedule = {};
        ASSERT_TRUE(ExpandDesKey(key.data(), static_cast<uint32_t>(key.size()), &schedule));
        CheckKernels(kDesEncryptKernels, schedule, kDesBlockSize, plaintext, ciphertext);
        CheckKernels(kDesDecryptKernels, schedule, kDesBlockSize, ciphertext, plaintext);
      }
    }
  }
  EXPECT_GT(forms[8], 0u);
  EXPECT_GT(forms[16], forms[8]);
  EXPECT_GT(forms[24], forms[16]);
}

}  // namespace
}  // namespace mirolta
