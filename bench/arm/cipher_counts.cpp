// AES, DES and triple DES in ECB mode, the only mode of the module.
#include <gcrypt.h>
#include <nettle/aes.h>
#include <nettle/des.h>
#include <openssl/aes.h>
#include <openssl/des.h>
#include <openssl/evp.h>

#include <array>

#include "aes_kernels.h"
#include "bench_bytes.h"
#include "counted_row.h"
#include "des_kernels.h"

namespace mirolta::bench {

namespace {

// Transforms length bytes, whole blocks.
using BlockFunction = std::function<void(const uint8_t* in, size_t length, uint8_t* out)>;
using MakeFunction = BlockFunction (*)(const uint8_t* key, size_t key_size, bool encrypts);

template <typename Schedule, auto kExpand, const auto& kEncrypt, const auto& kDecrypt,
          uint32_t kBlockSize>
BlockFunction Ours(const uint8_t* key, size_t key_size, bool encrypts) {
  const auto schedule = std::make_shared<Schedule>();
  if (!kExpand(key, static_cast<uint32_t>(key_size), schedule.get())) return nullptr;
  const auto run = encrypts ? CurrentKernel<kEncrypt>() : CurrentKernel<kDecrypt>();
  return [=](const uint8_t* in, size_t length, uint8_t* out) {
    run(*schedule, in, out, static_cast<uint32_t>(length / kBlockSize));
  };
}

#if defined(__aarch64__)

// There the functions without EVP do not use the instructions for AES.
BlockFunction OpenSslAes(const uint8_t* key, size_t key_size, bool encrypts) {
  const auto context = std::shared_ptr<EVP_CIPHER_CTX>(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
  EVP_CipherInit_ex(context.get(), key_size == 16 ? EVP_aes_128_ecb() : EVP_aes_256_ecb(), nullptr,
                    key, nullptr, encrypts ? 1 : 0);
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  return [=](const uint8_t* in, size_t length, uint8_t* out) {
    int written = 0;
    EVP_CipherUpdate(context.get(), out, &written, in, static_cast<int>(length));
  };
}

#else

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

#endif

// The peer's functions take blocks as arrays of bytes and do not write to const_DES_cblock.
DES_cblock* BlockAt(const uint8_t* bytes) {
  return reinterpret_cast<DES_cblock*>(const_cast<uint8_t*>(bytes));
}

BlockFunction OpenSslDes(const uint8_t* key, size_t key_size, bool encrypts) {
  const auto schedules = std::make_shared<std::array<DES_key_schedule, 3>>();
  for (size_t i = 0; 8 * i < key_size; ++i) {
    DES_set_key_unchecked(BlockAt(key + 8 * i), &(*schedules)[i]);
  }
  const int direction = encrypts ? DES_ENCRYPT : DES_DECRYPT;
  const bool triple = key_size == 24;
  return [=](const uint8_t* in, size_t length, uint8_t* out) {
    for (size_t i = 0; i < length; i += kDesBlockSize) {
      DES_cblock* const from = BlockAt(in + i);
      DES_cblock* const to = BlockAt(out + i);
      if (triple) {
        DES_ecb3_encrypt(from, to, &(*schedules)[0], &(*schedules)[1], &(*schedules)[2], direction);
      } else {
        DES_ecb_encrypt(from, to, schedules->data(), direction);
      }
    }
  };
}

template <typename Context, auto kSetEncrypt, auto kSetDecrypt, auto kEncrypt, auto kDecrypt>
BlockFunction Nettle(const uint8_t* key, size_t, bool encrypts) {
  const auto context = std::make_shared<Context>();
  (void)(encrypts ? kSetEncrypt : kSetDecrypt)(context.get(), key);
  const auto run = encrypts ? kEncrypt : kDecrypt;
  return
      [=](const uint8_t* in, size_t length, uint8_t* out) { run(context.get(), length, out, in); };
}

BlockFunction Gcrypt(int algorithm, const std::vector<uint8_t>& key, bool encrypts) {
  gcry_cipher_hd_t opened = nullptr;
  if (gcry_cipher_open(&opened, algorithm, GCRY_CIPHER_MODE_ECB, 0) != 0) return nullptr;
  const auto handle = std::shared_ptr<gcry_cipher_handle>(opened, gcry_cipher_close);
  gcry_cipher_setkey(handle.get(), key.data(), key.size());
  const auto run = encrypts ? gcry_cipher_encrypt : gcry_cipher_decrypt;
  return [=](const uint8_t* in, size_t length, uint8_t* out) {
    run(handle.get(), out, length, in, length);
  };
}

constexpr auto kOurAes =
    Ours<AesSchedule, ExpandAesKey, kAesEncryptKernels, kAesDecryptKernels, kAesBlockSize>;
constexpr auto kOurDes =
    Ours<DesSchedule, ExpandDesKey, kDesEncryptKernels, kDesDecryptKernels, kDesBlockSize>;

constexpr struct {
  const char* name;
  size_t key_size;
  MakeFunction ours;
  MakeFunction openssl;
  MakeFunction nettle;
  int gcrypt;
} kCiphers[] = {
    {"AES-128", 16, kOurAes, OpenSslAes,
     Nettle<aes128_ctx, aes128_set_encrypt_key, aes128_set_decrypt_key, aes128_encrypt,
            aes128_decrypt>,
     GCRY_CIPHER_AES128},
    {"AES-256", 32, kOurAes, OpenSslAes,
     Nettle<aes256_ctx, aes256_set_encrypt_key, aes256_set_decrypt_key, aes256_encrypt,
            aes256_decrypt>,
     GCRY_CIPHER_AES256},
    {"DES", 8, kOurDes, OpenSslDes,
     Nettle<des_ctx, des_set_key, des_set_key, des_encrypt, des_decrypt>, GCRY_CIPHER_DES},
    {"Triple DES", 24, kOurDes, OpenSslDes,
     Nettle<des3_ctx, des3_set_key, des3_set_key, des3_encrypt, des3_decrypt>, GCRY_CIPHER_3DES},
};

constexpr struct {
  const char* name;
  size_t length;
  size_t count;
} kSizes[] = {{"4 KiB", 4096, 2}, {"64 bytes", 64, 16}};

}  // namespace

void AddCountedCiphers(CountedRows* rows) {
  for (const auto& cipher : kCiphers) {
    for (const bool encrypts : {true, false}) {
      for (const auto& size : kSizes) {
        const auto make = [&cipher, encrypts, &size]() -> std::vector<Counted> {
          const std::vector<uint8_t> key = RandomBytes(cipher.key_size, 7);
          const auto in = std::make_shared<std::vector<uint8_t>>(RandomBytes(size.length));
          const auto out = std::make_shared<std::vector<uint8_t>>(size.length);
          const auto counted = [=](const char* name, const BlockFunction& run) {
            return MakeCounted(
                name, [=] { run(in->data(), in->size(), out->data()); },
                [=] { return TextOf(*out); });
          };
          return {counted("ours", cipher.ours(key.data(), key.size(), encrypts)),
                  counted("OpenSSL", cipher.openssl(key.data(), key.size(), encrypts)),
                  counted("nettle", cipher.nettle(key.data(), key.size(), encrypts)),
                  counted("libgcrypt", Gcrypt(cipher.gcrypt, key, encrypts))};
        };
        rows->push_back(
            {std::string(cipher.name) + (encrypts ? " encrypt/" : " decrypt/") + size.name,
             size.length, size.count, make});
      }
    }
  }
}

}  // namespace mirolta::bench
