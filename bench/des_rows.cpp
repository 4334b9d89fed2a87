// DES and triple DES.
#include <gcrypt.h>
#include <nettle/des.h>
#include <openssl/des.h>

#include <array>

#include "bench_ciphers.h"
#include "des_kernels.h"

namespace mirolta::bench {

namespace {

BlockFunction DesKernel(const uint8_t* key, size_t key_size, bool encrypts) {
  const auto schedule = std::make_shared<DesSchedule>();
  if (!ExpandDesKey(key, static_cast<uint32_t>(key_size), schedule.get())) return nullptr;
  const DesTransform run =
      encrypts ? CurrentKernel<kDesEncryptKernels>() : CurrentKernel<kDesDecryptKernels>();
  return [=](const uint8_t* in, size_t length, uint8_t* out) {
    run(*schedule, in, out, static_cast<uint32_t>(length / kDesBlockSize));
  };
}

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
        DES_ecb_encrypt(from, to, &(*schedules)[0], direction);
      }
    }
  };
}

template <typename Context, auto kSetKey, auto kEncrypt, auto kDecrypt>
BlockFunction NettleDes(const uint8_t* key, size_t, bool encrypts) {
  const auto context = std::make_shared<Context>();
  kSetKey(context.get(), key);
  const auto run = encrypts ? kEncrypt : kDecrypt;
  return
      [=](const uint8_t* in, size_t length, uint8_t* out) { run(context.get(), length, out, in); };
}

constexpr auto kNettleDes = NettleDes<des_ctx, des_set_key, des_encrypt, des_decrypt>;
constexpr auto kNettleDes3 = NettleDes<des3_ctx, des3_set_key, des3_encrypt, des3_decrypt>;

const CipherCase kSingle[] = {
    {"DES encrypt", OLESTR("DES"), 8, 8, true, DesKernel, OpenSslDes, kNettleDes, nullptr, "DES",
     GCRY_CIPHER_DES},
    {"DES decrypt", OLESTR("DES"), 8, 8, false, DesKernel, OpenSslDes, kNettleDes, nullptr, "DES",
     GCRY_CIPHER_DES},
};
const CipherCase kTriple[] = {
    {"Triple DES encrypt", OLESTR("DES"), 24, 8, true, DesKernel, OpenSslDes, kNettleDes3,
     "DES-EDE3-ECB", "TripleDES", GCRY_CIPHER_3DES},
    {"Triple DES decrypt", OLESTR("DES"), 24, 8, false, DesKernel, OpenSslDes, kNettleDes3,
     "DES-EDE3-ECB", "TripleDES", GCRY_CIPHER_3DES},
};

struct SizeRow {
  size_t size;
  double single_required;
  double single_stretch;
  double triple_required;
  double triple_stretch;
};
constexpr SizeRow kSizes[] = {
    {8, 1.0, 1.25, 1.25, 1.5}, {64, 1.0, 1.25, 1.25, 1.5}, {1 << 10, 4, 6, 5, 8},
    {4 << 10, 10, 18, 12, 24}, {64 << 10, 10, 18, 12, 24},
};

}  // namespace

void AddDesRows(RowList* rows) {
  for (const CipherCase& cipher : kSingle) {
    for (const SizeRow& size : kSizes) {
      AddCipherRow(rows, cipher, size.size, size.single_required, size.single_stretch);
    }
  }
  for (const CipherCase& cipher : kTriple) {
    for (const SizeRow& size : kSizes) {
      AddCipherRow(rows, cipher, size.size, size.triple_required, size.triple_stretch);
    }
  }
}

}  // namespace mirolta::bench
