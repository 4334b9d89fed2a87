// Messages longer than 2^32 bytes. All but the last block is absorbed by a kernel that leaves the
// chaining words alone, so the count is what the digest shows of it; OpenSSL is given that count.
#include <gtest/gtest.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

#include <cstdlib>

#include "digest_support.h"
#include "md5_engine.h"
#include "sha1_engine.h"
#include "sha256_engine.h"

namespace mirolta::test {
namespace {

bool skipping = false;

template <typename Primitive>
struct SkippingPrimitive : Primitive {
  static void Compress(uint32_t* state, const uint8_t* blocks, size_t count) {
    if (!skipping) Primitive::Kernel()(state, blocks, count);
  }
  static CompressBlocks Kernel() noexcept { return Compress; }
};

constexpr uint32_t kPiece = 1u << 26;

struct LongMessage {
  uint64_t count;
  Bytes tail;  // the bytes of the last, unfinished block
};

// Feeds message.count zero bytes without looking at them, then the tail, which is digested.
template <typename Primitive>
Bytes DigestOfLong(const LongMessage& message, uint32_t piece) {
  struct Engine final : BlockHashEngine<SkippingPrimitive<Primitive>> {};
  Engine engine;
  uint8_t* zeros = static_cast<uint8_t*>(std::calloc(piece, 1));
  skipping = true;
  for (uint64_t left = message.count; left != 0;) {
    const auto now = static_cast<uint32_t>(left < piece ? left : piece);
    EXPECT_EQ(engine.Update(zeros, now), S_OK);
    left -= now;
  }
  skipping = false;
  std::free(zeros);
  Feed(engine, message.tail);
  EXPECT_EQ(engine.Final(), S_OK);
  return RawBytes(engine);
}

template <typename Context, typename Final>
Bytes PeerDigestOfLong(Context context, Final final, const LongMessage& message, size_t size) {
  // The peer counts bits, in two words, with no bytes waiting after whole blocks.
  const uint64_t bits = message.count * 8;
  context.Nl = static_cast<uint32_t>(bits);
  context.Nh = static_cast<uint32_t>(bits >> 32);
  return final(context, message.tail, size);
}

class LongMessages : public testing::TestWithParam<uint64_t> {};

// 2^29 bytes fill the low word of bits, 2^32 the low word of bytes.
INSTANTIATE_TEST_SUITE_P(Counts, LongMessages,
                         testing::Values((uint64_t{1} << 29) - 64, uint64_t{1} << 29,
                                         (uint64_t{1} << 32) - 64, uint64_t{1} << 32,
                                         (uint64_t{1} << 32) + 64, (uint64_t{5} << 32) + 192));

TEST_P(LongMessages, AgreeWithThePeer) {
  for (const size_t tail : {0u, 3u, 56u, 63u}) {
    const LongMessage message = {GetParam(), PatternBytes(tail)};

    MD5_CTX md5;
    MD5_Init(&md5);
    const auto finish_md5 = [](MD5_CTX context, const Bytes& rest, size_t size) {
      Bytes out(size);
      MD5_Update(&context, rest.data(), rest.size());
      MD5_Final(out.data(), &context);
      return out;
    };
    EXPECT_EQ(DigestOfLong<Md5Primitive>(message, kPiece),
              PeerDigestOfLong(md5, finish_md5, message, 16));

    SHA_CTX sha1;
    SHA1_Init(&sha1);
    const auto finish_sha1 = [](SHA_CTX context, const Bytes& rest, size_t size) {
      Bytes out(size);
      SHA1_Update(&context, rest.data(), rest.size());
      SHA1_Final(out.data(), &context);
      return out;
    };
    EXPECT_EQ(DigestOfLong<Sha1Primitive>(message, kPiece),
              PeerDigestOfLong(sha1, finish_sha1, message, 20));

    SHA256_CTX sha256;
    SHA256_Init(&sha256);
    const auto finish_sha256 = [](SHA256_CTX context, const Bytes& rest, size_t size) {
      Bytes out(size);
      SHA256_Update(&context, rest.data(), rest.size());
      SHA256_Final(out.data(), &context);
      return out;
    };
    EXPECT_EQ(DigestOfLong<Sha256Primitive>(message, kPiece),
              PeerDigestOfLong(sha256, finish_sha256, message, 32));
  }
}

// A piece that is no multiple of a block carries in the middle of an Update.
TEST(LongMessageCarry, InsideAnUnevenUpdate) {
  const LongMessage message = {(uint64_t{1} << 32) + 128, PatternBytes(7)};
  EXPECT_EQ(DigestOfLong<Sha256Primitive>(message, kPiece - 1),
            DigestOfLong<Sha256Primitive>(message, kPiece));
}

}  // namespace
}  // namespace mirolta::test
