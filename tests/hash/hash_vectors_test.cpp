// The published vectors: RFC 1321, RFC 2202, RFC 4231, FIPS 180 and NIST's response files.
#include <gtest/gtest.h>

#include "digest_support.h"
#include "vector_file.h"

namespace mirolta::test {
namespace {

const std::string kFolder = MIROLTA_VECTORS;

// Len counts bits; a message of length 0 stands as one byte.
Bytes MessageOf(const VectorCase& one) {
  Bytes message = one.Bytes("Msg");
  const unsigned long bits = one.Number("Len");
  if (bits % 8 != 0) throw std::runtime_error("not whole bytes");
  if (bits == 0 && message == Bytes{0}) message.clear();
  if (message.size() != bits / 8) throw std::runtime_error("Len is not the message's");
  return message;
}

void CheckMessages(const OLECHAR* name, const std::string& file) {
  const auto engine = MakeEngine(name);
  for (const VectorCase& one : ReadVectorFile(kFolder + file, {"Len", "Msg", "MD"})) {
    EXPECT_EQ(DigestOf(*engine, MessageOf(one)), one.Bytes("MD")) << file << ":" << one.line;
  }
}

TEST(HashVectors, Messages) {
  CheckMessages(OLESTR("MD5"), "/hashes/MD5/rfc-1321.txt");
  CheckMessages(OLESTR("SHA1"), "/hashes/SHA1/SHA1ShortMsg.rsp");
  CheckMessages(OLESTR("SHA1"), "/hashes/SHA1/SHA1LongMsg.rsp");
  CheckMessages(OLESTR("SHA256"), "/hashes/SHA2/SHA256ShortMsg.rsp");
  CheckMessages(OLESTR("SHA256"), "/hashes/SHA2/SHA256LongMsg.rsp");
}

// Each checkpoint is a chain of 1000 digests, each of the three before it.
void CheckMonteCarlo(const OLECHAR* name, const std::string& file) {
  const auto engine = MakeEngine(name);
  const auto cases = ReadVectorFile(kFolder + file, {"Seed", "COUNT", "MD"});
  Bytes seed = cases.at(0).Bytes("Seed");
  ASSERT_EQ(cases.size(), 101u);
  for (size_t i = 1; i < cases.size(); ++i) {
    ASSERT_EQ(cases[i].Number("COUNT"), i - 1);
    Bytes a = seed, b = seed, c = seed;
    for (int round = 0; round < 1000; ++round) {
      engine->Start();
      for (const Bytes* one : {&a, &b, &c}) Feed(*engine, *one);
      engine->Finish();
      a = b;
      b = c;
      c = RawBytes(*engine);
    }
    seed = c;
    ASSERT_EQ(seed, cases[i].Bytes("MD")) << file << ":" << cases[i].line;
  }
}

TEST(HashVectors, MonteCarlo) {
  CheckMonteCarlo(OLESTR("SHA1"), "/hashes/SHA1/SHA1Monte.rsp");
  CheckMonteCarlo(OLESTR("SHA256"), "/hashes/SHA2/SHA256Monte.rsp");
}

void CheckHmac(const OLECHAR* name, const std::string& file) {
  const auto engine = MakeEngine(name);
  for (const VectorCase& one : ReadVectorFile(kFolder + file, {"Len", "Key", "Msg", "MD"})) {
    ASSERT_EQ(engine->SetKey(BytesValue(one.Bytes("Key")), 0), S_OK);
    EXPECT_EQ(DigestOf(*engine, MessageOf(one)), one.Bytes("MD")) << file << ":" << one.line;
  }
}

TEST(HashVectors, Hmac) {
  CheckHmac(OLESTR("MD5"), "/HMAC/rfc-2202-md5.txt");
  CheckHmac(OLESTR("SHA1"), "/HMAC/rfc-2202-sha1.txt");
  CheckHmac(OLESTR("SHA256"), "/HMAC/rfc-4231-sha256.txt");
}

// RFC 4231, 4.6: of this digest the standard prints 128 bits only.
TEST(HashVectors, TruncatedHmac) {
  const auto engine = MakeEngine(OLESTR("SHA256"));
  ASSERT_EQ(engine->SetKey(BytesValue(Bytes(20, 0x0C)), 0), S_OK);
  Bytes mac = DigestOf(*engine, BytesOf("Test With Truncation"));
  mac.resize(16);
  EXPECT_EQ(mac, BytesOfHex("a3b6167473100ee06e0c796c2955552b"));
}

// FIPS 180-2, appendices A and B, and RFC 1321's manner of it for MD5: the letter a, a million
// times, in pieces of odd sizes.
TEST(HashVectors, AMillionTimesTheLetterA) {
  const Bytes letters(997, 'a');
  const struct {
    const OLECHAR* name;
    const char* digest;
  } rows[] = {
      {OLESTR("MD5"), "7707d6ae4e027c70eea2a935c2296f21"},
      {OLESTR("SHA1"), "34aa973cd4c4daa4f61eeb2bdbad27316534016f"},
      {OLESTR("SHA256"), "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  for (const auto& row : rows) {
    const auto engine = MakeEngine(row.name);
    uint32_t piece = 1;
    for (uint32_t left = 1000000; left != 0;) {
      const uint32_t now = piece < left ? piece : left;
      ASSERT_EQ(engine->Update(letters.data(), now), S_OK);
      left -= now;
      piece = (piece + 62) % 997 | 1;
    }
    ASSERT_NE(engine->Digest(), nullptr);
    EXPECT_EQ(RawBytes(*engine), BytesOfHex(row.digest));
  }
}

// FIPS 180-2, A.2 and B.2: a message of two blocks after padding.
TEST(HashVectors, TwoBlocks) {
  const Bytes message = BytesOf("abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq");
  const auto sha1 = MakeEngine(OLESTR("SHA1"));
  EXPECT_EQ(DigestOf(*sha1, message), BytesOfHex("84983e441c3bd26ebaae4aa1f95129e5e54670f1"));
  const auto sha256 = MakeEngine(OLESTR("SHA256"));
  EXPECT_EQ(DigestOf(*sha256, message),
            BytesOfHex("248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"));
}

}  // namespace
}  // namespace mirolta::test
