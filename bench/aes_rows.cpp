// AES, and its key set-up.
#include <gcrypt.h>
#include <nettle/aes.h>
#include <openssl/aes.h>
#include <openssl/evp.h>

#include <array>

#include "aes_kernels.h"
#include "bench_ciphers.h"

namespace mirolta::bench {

namespace {

BlockFunction AesKernel(const uint8_t* key, size_t key_size, bool encrypts) {
  const auto schedule = std::make_shared<AesSchedule>();
  if (!ExpandAesKey(key, static_cast<uint32_t>(key_size), schedule.get())) return nullptr;
  const AesTransform run =
      encrypts ? CurrentKernel<kAesEncryptKernels>() : CurrentKernel<kAesDecryptKernels>();
  return [=](const uint8_t* in, size_t length, uint8_t* out) {
    run(*schedule, in, out, static_cast<uint32_t>(length / kAesBlockSize));
  };
}

BlockFunction OpenSslAes(const uint8_t* key, size_t key_size, bool encrypts) {
  const auto schedule = std::make_shared<AES_KEY>();
  const int bits = static_cast<int>(8 * key_size);
  encrypts ? AES_set_encrypt_key(key, bits, schedule.get())
           : AES_set_decrypt_key(key, bits, schedule.get());
  const auto run = encrypts ? AES_encrypt : AES_decrypt;
  return [=](const uint8_t* in, size_t length, uint8_t* out) {
    for (size_t i = 0; i < length; i += kAesBlockSize) run(in + i, out + i, schedule.get());
  };
}

template <typename Context, auto kSetEncrypt, auto kSetDecrypt, auto kEncrypt, auto kDecrypt>
BlockFunction NettleAes(const uint8_t* key, size_t, bool encrypts) {
  const auto context = std::make_shared<Context>();
  encrypts ? kSetEncrypt(context.get(), key) : kSetDecrypt(context.get(), key);
  const auto run = encrypts ? kEncrypt : kDecrypt;
  return
      [=](const uint8_t* in, size_t length, uint8_t* out) { run(context.get(), length, out, in); };
}

constexpr auto kNettle128 = NettleAes<aes128_ctx, aes128_set_encrypt_key, aes128_set_decrypt_key,
                                      aes128_encrypt, aes128_decrypt>;
constexpr auto kNettle256 = NettleAes<aes256_ctx, aes256_set_encrypt_key, aes256_set_decrypt_key,
                                      aes256_encrypt, aes256_decrypt>;

const CipherCase kCases[] = {
    {"AES-128 encrypt", OLESTR("AES"), 16, 16, true, AesKernel, OpenSslAes, kNettle128,
     "AES-128-ECB", "AES-128", GCRY_CIPHER_AES128},
    {"AES-128 decrypt", OLESTR("AES"), 16, 16, false, AesKernel, OpenSslAes, kNettle128,
     "AES-128-ECB", "AES-128", GCRY_CIPHER_AES128},
    {"AES-256 encrypt", OLESTR("AES"), 32, 16, true, AesKernel, OpenSslAes, kNettle256,
     "AES-256-ECB", "AES-256", GCRY_CIPHER_AES256},
    {"AES-256 decrypt", OLESTR("AES"), 32, 16, false, AesKernel, OpenSslAes, kNettle256,
     "AES-256-ECB", "AES-256", GCRY_CIPHER_AES256},
};

constexpr struct {
  size_t size;
  double required;
  double stretch;
  double engine_required;
} kSizes[] = {
    {16, 0.9, 1.0, 0.8}, {1 << 10, 3.0, 3.7, 0}, {16 << 10, 3.5, 4.0, 0}, {1 << 20, 3.5, 3.9, 0}};

// Key set-up of both directions; the output is a key's encryption of a block.
template <typename Set, typename Encrypt>
Contestant SetUpContestant(const char* name, Set set, Encrypt encrypt) {
  const ByteOperands keys(32);
  return {name, [=](size_t operand) { set(keys.at(operand)); },
          [=] {
            std::vector<uint8_t> block(kAesBlockSize);
            encrypt(block.data());
            return TextOf(block);
          }};
}

std::vector<Contestant> MakeKeySetUps() {
  const auto ours = std::make_shared<AesSchedule>();
  const auto openssl = std::make_shared<std::array<AES_KEY, 2>>();
  const auto nettle = std::make_shared<std::array<aes256_ctx, 2>>();
  return {
      SetUpContestant(
          kOurs, [=](const uint8_t* key) { (void)ExpandAesKey(key, 32, ours.get()); },
          [=](uint8_t* block) { CurrentKernel<kAesEncryptKernels>()(*ours, block, block, 1); }),
      SetUpContestant(
          "OpenSSL",
          [=](const uint8_t* key) {
            AES_set_encrypt_key(key, 256, &(*openssl)[0]);
            AES_set_decrypt_key(key, 256, &(*openssl)[1]);
          },
          [=](uint8_t* block) { AES_encrypt(block, block, &(*openssl)[0]); }),
      SetUpContestant(
          "nettle",
          [=](const uint8_t* key) {
            aes256_set_encrypt_key(&(*nettle)[0], key);
            aes256_invert_key(&(*nettle)[1], &(*nettle)[0]);
          },
          [=](uint8_t* block) { aes256_encrypt(&(*nettle)[0], kAesBlockSize, block, block); }),
  };
}

}  // namespace

void AddAesRows(RowList* rows) {
  for (const CipherCase& cipher : kCases) {
    for (const auto& size : kSizes) {
      AddCipherRow(rows, cipher, size.size, size.required, size.stretch, size.engine_required);
    }
  }
  rows->push_back(
      {"kernel/AES-256 key set-up/both directions", 0, 1.0, 1.4, kOperands, 0, MakeKeySetUps});
}

}  // namespace mirolta::bench
