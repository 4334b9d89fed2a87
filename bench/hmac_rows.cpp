// HMAC-SHA256 of short messages, the key set before.
#include <botan/mac.h>
#include <gcrypt.h>
#include <nettle/hmac.h>
#include <openssl/hmac.h>

#include "array_bytes.h"
#include "bench_bytes.h"
#include "bench_digests.h"
#include "owned_value.h"

namespace mirolta::bench {

namespace {

constexpr size_t kKeySize = 32;
constexpr size_t kDigestSize = 32;

std::vector<Contestant> MakeHmacs(size_t size) {
  const ByteOperands in(size);
  const std::vector<uint8_t> key = RandomBytes(kKeySize, 2);

  const std::shared_ptr<HashEngine> ours = MakeHashEngine(OLESTR("SHA256"));
  OwnedVariant value;
  BytesToVariant(key.data(), kKeySize, value.Put());
  ours->SetKey(value.Value(), 0);

  const auto openssl = std::shared_ptr<HMAC_CTX>(HMAC_CTX_new(), HMAC_CTX_free);
  HMAC_Init_ex(openssl.get(), key.data(), kKeySize, EVP_sha256(), nullptr);
  const auto nettle = std::make_shared<hmac_sha256_ctx>();
  hmac_sha256_set_key(nettle.get(), key.size(), key.data());
  const std::shared_ptr<Botan::MessageAuthenticationCode> botan =
      Botan::MessageAuthenticationCode::create("HMAC(SHA-256)");
  botan->set_key(key.data(), key.size());
  gcry_mac_hd_t handle = nullptr;
  gcry_mac_open(&handle, GCRY_MAC_HMAC_SHA256, 0, nullptr);
  gcry_mac_setkey(handle, key.data(), key.size());
  const auto gcrypt = std::shared_ptr<gcry_mac_handle>(handle, gcry_mac_close);

  return {
      OwnPlaceContestant(
          kOurs, in, kDigestSize,
          [=](const uint8_t* data, size_t length) {
            ours->Start();
            ours->Update(data, static_cast<uint32_t>(length));
            ours->Finish();
          },
          [=] { return ours->RawDigest(); }),
      ByteContestant("OpenSSL", in, kDigestSize,
                     [=](const uint8_t* data, size_t length, uint8_t* out) {
                       HMAC_Init_ex(openssl.get(), nullptr, 0, nullptr, nullptr);
                       HMAC_Update(openssl.get(), data, length);
                       HMAC_Final(openssl.get(), out, nullptr);
                     }),
      ByteContestant("nettle", in, kDigestSize,
                     [=](const uint8_t* data, size_t length, uint8_t* out) {
                       hmac_sha256_update(nettle.get(), length, data);
                       hmac_sha256_digest(nettle.get(), kDigestSize, out);
                     }),
      ByteContestant("Botan", in, kDigestSize,
                     [=](const uint8_t* data, size_t length, uint8_t* out) {
                       botan->update(data, length);
                       botan->final(out);
                     }),
      ByteContestant("libgcrypt", in, kDigestSize,
                     [=](const uint8_t* data, size_t length, uint8_t* out) {
                       gcry_mac_reset(gcrypt.get());
                       gcry_mac_write(gcrypt.get(), data, length);
                       size_t written = kDigestSize;
                       gcry_mac_read(gcrypt.get(), out, &written);
                     }),
  };
}

}  // namespace

void AddHmacRows(RowList* rows) {
  for (const size_t size : {size_t{16}, size_t{64}}) {
    rows->push_back({"engine/HMAC-SHA256/" + SizeName(size), static_cast<double>(size), 1.4, 1.5,
                     kOperands, 0, [size] { return MakeHmacs(size); }});
  }
}

}  // namespace mirolta::bench
