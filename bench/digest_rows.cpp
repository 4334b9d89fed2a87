// Digests: the compression kernels, and whole computations from start to digest.
#include <botan/hash.h>
#include <gcrypt.h>
#include <nettle/md5.h>
#include <nettle/sha1.h>
#include <nettle/sha2.h>
#include <openssl/evp.h>
#include <openssl/md5.h>
#include <openssl/sha.h>

#include <algorithm>

#include "bench_bytes.h"
#include "bench_digests.h"
#include "hash_kernels.h"

namespace mirolta::bench {

namespace {

// The low-level functions have a context type for each algorithm.
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

// The chaining value after whole blocks, which the kernel rows compare.
template <typename Context, auto kInit, auto kUpdate, uint32_t Context::*... kWords>
void OpenSslChain(const uint8_t* in, size_t length, uint8_t* out) {
  Context context;
  kInit(&context);
  kUpdate(&context, in, length);
  const uint32_t words[] = {context.*kWords...};
  std::memcpy(out, words, sizeof words);
}
void OpenSslSha256Chain(const uint8_t* in, size_t length, uint8_t* out) {
  SHA256_CTX context;
  SHA256_Init(&context);
  SHA256_Update(&context, in, length);
  std::memcpy(out, context.h, sizeof context.h);
}

using DigestFunction = void (*)(const uint8_t* in, size_t length, uint8_t* out);

struct DigestCase {
  const char* name;
  const OLECHAR* our_name;
  CompressBlocks (*kernel)() noexcept;
  std::vector<uint32_t> initial;
  double required;
  double stretch;
  double block_required;  // of one block
  DigestFunction openssl;
  DigestFunction openssl_chain;
  DigestFunction nettle;
  int gcrypt;
};

const DigestCase kDigests[] = {
    {"MD5",
     OLESTR("MD5"),
     CurrentKernel<kMd5Kernels>,
     {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476},
     0.97,
     1.07,
     1.3,
     OpenSslDigest<MD5_CTX, MD5_Init, MD5_Update, MD5_Final>,
     OpenSslChain<MD5_CTX, MD5_Init, MD5_Update, &MD5_CTX::A, &MD5_CTX::B, &MD5_CTX::C,
                  &MD5_CTX::D>,
     NettleDigest<md5_ctx, md5_init, md5_update, md5_digest, 16>,
     GCRY_MD_MD5},
    {"SHA-1",
     OLESTR("SHA1"),
     CurrentKernel<kSha1Kernels>,
     {0x67452301, 0xEFCDAB89, 0x98BADCFE, 0x10325476, 0xC3D2E1F0},
     0.98,
     1.02,
     1.0,
     OpenSslDigest<SHA_CTX, SHA1_Init, SHA1_Update, SHA1_Final>,
     OpenSslChain<SHA_CTX, SHA1_Init, SHA1_Update, &SHA_CTX::h0, &SHA_CTX::h1, &SHA_CTX::h2,
                  &SHA_CTX::h3, &SHA_CTX::h4>,
     NettleDigest<sha1_ctx, sha1_init, sha1_update, sha1_digest, 20>,
     GCRY_MD_SHA1},
    {"SHA-256",
     OLESTR("SHA256"),
     CurrentKernel<kSha256Kernels>,
     {0x6A09E667, 0xBB67AE85, 0x3C6EF372, 0xA54FF53A, 0x510E527F, 0x9B05688C, 0x1F83D9AB,
      0x5BE0CD19},
     0.98,
     1.02,
     1.0,
     OpenSslDigest<SHA256_CTX, SHA256_Init, SHA256_Update, SHA256_Final>,
     OpenSslSha256Chain,
     NettleDigest<sha256_ctx, sha256_init, sha256_update, sha256_digest, 32>,
     GCRY_MD_SHA256},
};

std::vector<Contestant> MakeKernels(const DigestCase& digest, size_t size) {
  const ByteOperands in(size);
  const size_t chain_size = 4 * digest.initial.size();
  const CompressBlocks kernel = digest.kernel();
  return {ByteContestant(kOurs, in, chain_size,
                         [&digest, kernel](const uint8_t* data, size_t length, uint8_t* out) {
                           uint32_t words[8];
                           std::copy(digest.initial.begin(), digest.initial.end(), words);
                           kernel(words, data, length / kHashBlockSize);
                           std::memcpy(out, words, 4 * digest.initial.size());
                         }),
          ByteContestant("OpenSSL", in, chain_size, digest.openssl_chain)};
}

std::vector<Contestant> MakeEngines(const DigestCase& digest, size_t size) {
  const ByteOperands in(size);
  const std::shared_ptr<HashEngine> ours = MakeHashEngine(digest.our_name);
  const size_t digest_size = static_cast<size_t>(ours->DigestSize());
  const auto digest_method =
      std::shared_ptr<EVP_MD>(EVP_MD_fetch(nullptr, digest.name, nullptr), EVP_MD_free);
  const auto digest_context = std::shared_ptr<EVP_MD_CTX>(EVP_MD_CTX_new(), EVP_MD_CTX_free);
  EVP_DigestInit_ex2(digest_context.get(), digest_method.get(), nullptr);
  const std::shared_ptr<Botan::HashFunction> botan = Botan::HashFunction::create(digest.name);
  gcry_md_hd_t handle = nullptr;
  gcry_md_open(&handle, digest.gcrypt, 0);
  const auto gcrypt = std::shared_ptr<gcry_md_handle>(handle, gcry_md_close);
  return {
      OwnPlaceContestant(
          kOurs, in, digest_size,
          [=](const uint8_t* data, size_t length) {
            ours->Init();
            ours->Update(data, static_cast<uint32_t>(length));
            ours->Final();
          },
          [=] { return ours->RawDigest(); }),
      ByteContestant("OpenSSL", in, digest_size, digest.openssl),
      ByteContestant("OpenSSL EVP", in, digest_size,
                     [=](const uint8_t* data, size_t length, uint8_t* out) {
                       (void)digest_method;
                       EVP_DigestInit_ex2(digest_context.get(), nullptr, nullptr);
                       EVP_DigestUpdate(digest_context.get(), data, length);
                       EVP_DigestFinal_ex(digest_context.get(), out, nullptr);
                     }),
      ByteContestant("nettle", in, digest_size, digest.nettle),
      ByteContestant("Botan", in, digest_size,
                     [=](const uint8_t* data, size_t length, uint8_t* out) {
                       botan->update(data, length);
                       botan->final(out);
                     }),
      OwnPlaceContestant(
          "libgcrypt", in, digest_size,
          [=](const uint8_t* data, size_t length) {
            gcry_md_reset(gcrypt.get());
            gcry_md_write(gcrypt.get(), data, length);
            gcry_md_final(gcrypt.get());
          },
          [=] { return gcry_md_read(gcrypt.get(), 0); }),
  };
}

}  // namespace

void AddDigestRows(RowList* rows) {
  for (const DigestCase& digest : kDigests) {
    for (const size_t size : {size_t{16} << 10, size_t{1} << 20}) {
      const double bytes = static_cast<double>(size);
      const std::string name = std::string(digest.name) + "/" + SizeName(size);
      rows->push_back({"kernel/" + name, bytes, digest.required, digest.stretch, kOperands, 0,
                       [&digest, size] { return MakeKernels(digest, size); }});
      rows->push_back({"engine/" + name, bytes, digest.required, digest.stretch, kOperands, 0,
                       [&digest, size] { return MakeEngines(digest, size); }});
    }
    for (const size_t size : {size_t{16}, size_t{64}}) {
      const double required = size == 64 ? digest.block_required : 1.0;
      rows->push_back({"engine/" + std::string(digest.name) + "/" + SizeName(size),
                       static_cast<double>(size), required, required + 0.2, kOperands, 0,
                       [&digest, size] { return MakeEngines(digest, size); }});
    }
  }
}

}  // namespace mirolta::bench
