// OpenSSL as the peer of the digests.
#pragma once

#include <openssl/evp.h>
#include <openssl/hmac.h>

#include "digest_support.h"

namespace mirolta::test {

inline const EVP_MD* PeerOf(const Algorithm& algorithm) {
  const EVP_MD* const digests[] = {EVP_md5(), EVP_sha1(), EVP_sha256()};
  return digests[FindHashAlgorithm(algorithm.name)];
}

inline Bytes PeerDigest(const Algorithm& algorithm, const Bytes& message) {
  Bytes digest(EVP_MAX_MD_SIZE);
  unsigned length = 0;
  EVP_Digest(message.data(), message.size(), digest.data(), &length, PeerOf(algorithm), nullptr);
  return Head(digest, length);
}

inline Bytes PeerHmac(const Algorithm& algorithm, const Bytes& key, const Bytes& message) {
  Bytes mac(EVP_MAX_MD_SIZE);
  unsigned length = 0;
  const uint8_t none = 0;
  HMAC(PeerOf(algorithm), key.empty() ? &none : key.data(), static_cast<int>(key.size()),
       message.data(), message.size(), mac.data(), &length);
  return Head(mac, length);
}

}  // namespace mirolta::test
