#include "bench_ciphers.h"

#include <botan/block_cipher.h>
#include <gcrypt.h>
#include <openssl/evp.h>

#include "array_bytes.h"
#include "cipher_algorithms.h"
#include "owned_value.h"

namespace mirolta::bench {

namespace {

void AddPeers(const CipherCase& cipher, const ByteOperands& in, std::vector<Contestant>* to) {
  const std::vector<uint8_t> key = CipherKey(cipher);
  const size_t size = in.Length();
  const size_t block_size = cipher.block_size;
  to->push_back(
      ByteContestant("OpenSSL", in, size, cipher.openssl(key.data(), key.size(), cipher.encrypts)));
  if (cipher.evp != nullptr) {
    const auto evp = std::shared_ptr<EVP_CIPHER>(EVP_CIPHER_fetch(nullptr, cipher.evp, nullptr),
                                                 EVP_CIPHER_free);
    const auto context = std::shared_ptr<EVP_CIPHER_CTX>(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
    EVP_CipherInit_ex2(context.get(), evp.get(), key.data(), nullptr, cipher.encrypts ? 1 : 0,
                       nullptr);
    EVP_CIPHER_CTX_set_padding(context.get(), 0);
    to->push_back(ByteContestant(
        "OpenSSL EVP", in, size, [=](const uint8_t* data, size_t length, uint8_t* out) {
          (void)evp;
          int written = 0;
          EVP_CipherUpdate(context.get(), out, &written, data, static_cast<int>(length));
        }));
  }
  to->push_back(
      ByteContestant("nettle", in, size, cipher.nettle(key.data(), key.size(), cipher.encrypts)));
  const std::shared_ptr<Botan::BlockCipher> botan = Botan::BlockCipher::create(cipher.botan);
  botan->set_key(key.data(), key.size());
  const bool encrypts = cipher.encrypts;
  to->push_back(
      ByteContestant("Botan", in, size, [=](const uint8_t* data, size_t length, uint8_t* out) {
        const size_t blocks = length / block_size;
        encrypts ? botan->encrypt_n(data, out, blocks) : botan->decrypt_n(data, out, blocks);
      }));
  gcry_cipher_hd_t handle = nullptr;
  gcry_cipher_open(&handle, cipher.gcrypt, GCRY_CIPHER_MODE_ECB, 0);
  gcry_cipher_setkey(handle, key.data(), key.size());
  const auto gcrypt = std::shared_ptr<gcry_cipher_handle>(handle, gcry_cipher_close);
  to->push_back(
      ByteContestant("libgcrypt", in, size, [=](const uint8_t* data, size_t length, uint8_t* out) {
        encrypts ? gcry_cipher_encrypt(gcrypt.get(), out, length, data, length)
                 : gcry_cipher_decrypt(gcrypt.get(), out, length, data, length);
      }));
}

std::shared_ptr<CipherEngine> KeyedEngine(const CipherCase& cipher) {
  const std::vector<uint8_t> key = CipherKey(cipher);
  std::shared_ptr<CipherEngine> engine = CreateCipherEngine(FindCipherAlgorithm(cipher.our_name));
  OwnedVariant value;
  BytesToVariant(key.data(), static_cast<uint32_t>(key.size()), value.Put());
  if (FAILED(engine->SetKey(value.Value(), 0))) return nullptr;
  return engine;
}

// The direction is no part of what is measured, as in the peers' functions.
template <bool kEncrypts>
Contestant EngineContestant(const std::shared_ptr<CipherEngine>& engine, const ByteOperands& in,
                            size_t size) {
  return ByteContestant(kOurs, in, size,
                        [engine](const uint8_t* data, size_t length, uint8_t* out) {
                          const uint32_t count = static_cast<uint32_t>(length);
                          if constexpr (kEncrypts) {
                            if (SUCCEEDED(engine->EncryptUpdate(data, count)))
                              engine->EncryptOut().Take(out, count);
                          } else {
                            if (SUCCEEDED(engine->DecryptUpdate(data, count)))
                              engine->DecryptOut().Take(out, count);
                          }
                        });
}

}  // namespace

std::vector<uint8_t> CipherKey(const CipherCase& cipher) {
  return RandomBytes(cipher.key_size, 3);
}

std::vector<Contestant> MakeCipherKernels(const CipherCase& cipher, size_t size) {
  const ByteOperands in(size);
  const std::vector<uint8_t> key = CipherKey(cipher);
  std::vector<Contestant> all = {
      ByteContestant(kOurs, in, size, cipher.kernel(key.data(), key.size(), cipher.encrypts))};
  AddPeers(cipher, in, &all);
  return all;
}

std::vector<Contestant> MakeCipherEngines(const CipherCase& cipher, size_t size) {
  const ByteOperands in(size);
  const std::shared_ptr<CipherEngine> engine = KeyedEngine(cipher);
  std::vector<Contestant> all = {cipher.encrypts ? EngineContestant<true>(engine, in, size)
                                                 : EngineContestant<false>(engine, in, size)};
  AddPeers(cipher, in, &all);
  return all;
}

void AddCipherRow(RowList* rows, const CipherCase& cipher, size_t size, double required,
                  double stretch, double engine_required) {
  const std::string name = std::string(cipher.name) + "/" + SizeName(size);
  const double bytes = static_cast<double>(size);
  rows->push_back({"kernel/" + name, bytes, required, stretch, kOperands, 0,
                   [&cipher, size] { return MakeCipherKernels(cipher, size); }});
  rows->push_back({"engine/" + name, bytes, engine_required, 0, kOperands, 0,
                   [&cipher, size] { return MakeCipherEngines(cipher, size); }});
}

}  // namespace mirolta::bench
