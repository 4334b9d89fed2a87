// Digests and ciphers: kernels and engines.
#include "aes_kernels.h"
#include "bench_bytes.h"
#include "bench_digests.h"
#include "des_kernels.h"
#include "hash_kernels.h"
#include "speed_row.h"

namespace mirolta::bench {

namespace {

using Bytes = std::vector<uint8_t>;

template <const auto& kKernels>
SpeedTask Compress(size_t size) {
  const auto data = std::make_shared<Bytes>(RandomBytes(size));
  const auto chain = std::make_shared<HashChain>();
  const CompressBlocks compress = CurrentKernel<kKernels>();
  return {[=] {
            *chain = {};
            compress(chain->words, data->data(), size / kHashBlockSize);
          },
          [=] {
            std::string text;
            for (const uint32_t word : chain->words) text += std::to_string(word) + " ";
            return text;
          }};
}

template <typename Schedule, auto kExpand, const auto& kKernels, uint32_t kKeySize,
          uint32_t kBlockSize>
SpeedTask Transform(size_t size) {
  const auto schedule = std::make_shared<Schedule>();
  (void)kExpand(RandomBytes(kKeySize, 3).data(), kKeySize, schedule.get());
  const auto in = std::make_shared<Bytes>(RandomBytes(size));
  const auto out = std::make_shared<Bytes>(size);
  const auto transform = CurrentKernel<kKernels>();
  return {[=] {
            transform(*schedule, in->data(), out->data(), static_cast<uint32_t>(size / kBlockSize));
          },
          [=] { return TextOf(*out); }};
}

constexpr auto Aes128 = Transform<AesSchedule, ExpandAesKey, kAesEncryptKernels, 16, kAesBlockSize>;
constexpr auto Aes256 = Transform<AesSchedule, ExpandAesKey, kAesDecryptKernels, 32, kAesBlockSize>;
constexpr auto Des = Transform<DesSchedule, ExpandDesKey, kDesEncryptKernels, 8, kDesBlockSize>;
constexpr auto TripleDes =
    Transform<DesSchedule, ExpandDesKey, kDesDecryptKernels, 24, kDesBlockSize>;

SpeedTask Digest(const OLECHAR* name, size_t size, bool keyed) {
  const auto data = std::make_shared<Bytes>(RandomBytes(size));
  const std::shared_ptr<HashEngine> engine = MakeHashEngine(name);
  if (keyed) {
    VARIANT key;
    VariantInit(&key);
    V_VT(&key) = VT_BSTR;
    V_BSTR(&key) = SysAllocString(OLESTR("the key of every row"));
    (void)engine->SetKey(key, 0);
    VariantClear(&key);
  }
  return {
      [=] {
        (void)(keyed ? engine->BeginKeyed() : engine->Init());
        engine->Update(data->data(), static_cast<uint32_t>(size));
        (void)(keyed ? engine->FinishKeyed() : engine->Final());
      },
      [=] { return std::string(engine->RawDigest(), engine->RawDigest() + engine->DigestSize()); }};
}

constexpr size_t kPage = size_t{16} << 10;
constexpr size_t kLong = size_t{64} << 10;

}  // namespace

void AddByteRows(SpeedRows* rows) {
  const SpeedRow own[] = {
      {"kernel/MD5/16 KiB", kPage, [] { return Compress<kMd5Kernels>(kPage); }},
      {"kernel/SHA-1/16 KiB", kPage, [] { return Compress<kSha1Kernels>(kPage); }},
      {"kernel/SHA-256/16 KiB", kPage, [] { return Compress<kSha256Kernels>(kPage); }},
      {"kernel/AES-128 encrypt/16 KiB", kPage, [] { return Aes128(kPage); }},
      {"kernel/AES-128 encrypt/16 bytes", 16, [] { return Aes128(16); }},
      {"kernel/AES-256 decrypt/16 KiB", kPage, [] { return Aes256(kPage); }},
      {"kernel/DES encrypt/64 KiB", kLong, [] { return Des(kLong); }},
      {"kernel/DES encrypt/8 bytes", 8, [] { return Des(8); }},
      {"kernel/Triple DES decrypt/64 KiB", kLong, [] { return TripleDes(kLong); }},
      {"engine/MD5/64 bytes", 64, [] { return Digest(OLESTR("MD5"), 64, false); }},
      {"engine/SHA-1/16 KiB", kPage, [] { return Digest(OLESTR("SHA1"), kPage, false); }},
      {"engine/SHA-256/64 bytes", 64, [] { return Digest(OLESTR("SHA256"), 64, false); }},
      {"engine/SHA-256/16 KiB", kPage, [] { return Digest(OLESTR("SHA256"), kPage, false); }},
      {"engine/HMAC of SHA-256/64 bytes", 64, [] { return Digest(OLESTR("SHA256"), 64, true); }},
  };
  rows->insert(rows->end(), std::begin(own), std::end(own));
}

}  // namespace mirolta::bench
