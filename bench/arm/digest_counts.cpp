// Digests: compression of long messages, and the whole digest of a short one.
#include <gcrypt.h>
#include <nettle/md5.h>
#include <nettle/sha1.h>
#include <nettle/sha2.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

#include "bench_bytes.h"
#include "bench_digests.h"
#include "counted_row.h"

namespace mirolta::bench {

namespace {

using DigestFunction = void (*)(const uint8_t* in, size_t length, uint8_t* out);

template <typename Context, auto kInit, auto kUpdate, auto kFinal>
void OpenSslDigest(const uint8_t* in, size_t length, uint8_t* out) {
  Context context;
  kInit(&context);
  kUpdate(&context, in, length);
  kFinal(out, &context);
}

template <typename Context, auto kInit, auto kUpdate, auto kDigest, size_t kSize>
void NettleDigest(const uint8_t* in, size_t length, uint8_t* out) {
  Context context;
  kInit(&context);
  kUpdate(&context, length, in);
  kDigest(&context, kSize, out);
}

constexpr struct {
  const char* name;
  const OLECHAR* our_name;
  size_t size;
  DigestFunction openssl;
  DigestFunction nettle;
  int gcrypt;
} kDigests[] = {
    {"MD5", OLESTR("MD5"), 16, OpenSslDigest<MD5_CTX, MD5_Init, MD5_Update, MD5_Final>,
     NettleDigest<md5_ctx, md5_init, md5_update, md5_digest, 16>, GCRY_MD_MD5},
    {"SHA-1", OLESTR("SHA1"), 20, OpenSslDigest<SHA_CTX, SHA1_Init, SHA1_Update, SHA1_Final>,
     NettleDigest<sha1_ctx, sha1_init, sha1_update, sha1_digest, 20>, GCRY_MD_SHA1},
    {"SHA-256", OLESTR("SHA256"), 32,
     OpenSslDigest<SHA256_CTX, SHA256_Init, SHA256_Update, SHA256_Final>,
     NettleDigest<sha256_ctx, sha256_init, sha256_update, sha256_digest, 32>, GCRY_MD_SHA256},
};

// The message starts at `offset` bytes from an aligned address.
constexpr struct {
  const char* name;
  size_t length;
  size_t offset;
  size_t count;
} kMessages[] = {{"4 KiB", 4096, 0, 4}, {"4 KiB unaligned", 4096, 1, 4}, {"64 bytes", 64, 0, 64}};

}  // namespace

void AddCountedDigests(CountedRows* rows) {
  for (const auto& digest : kDigests) {
    for (const auto& message : kMessages) {
      const auto make = [&digest, &message]() -> std::vector<Counted> {
        const auto bytes =
            std::make_shared<std::vector<uint8_t>>(RandomBytes(message.offset + message.length));
        const uint8_t* const in = bytes->data() + message.offset;
        const size_t length = message.length;
        const auto out = std::make_shared<std::vector<uint8_t>>(digest.size);
        const auto engine = MakeHashEngine(digest.our_name);
        const size_t size = digest.size;
        const auto text = [out, bytes] { return TextOf(*out); };
        return {
            MakeCounted(
                "ours",
                [=] {
                  (void)engine->Init();
                  (void)engine->Update(in, static_cast<uint32_t>(length));
                  (void)engine->Final();
                },
                [=] {
                  const uint8_t* const result = engine->RawDigest();
                  return std::string(result, result + size);
                }),
            MakeCounted(
                "OpenSSL", [=] { digest.openssl(in, length, out->data()); }, text),
            MakeCounted(
                "nettle", [=] { digest.nettle(in, length, out->data()); }, text),
            MakeCounted(
                "libgcrypt", [=] { gcry_md_hash_buffer(digest.gcrypt, out->data(), in, length); },
                text),
        };
      };
      rows->push_back(
          {std::string(digest.name) + "/" + message.name, message.length, message.count, make});
    }
  }
}

}  // namespace mirolta::bench
