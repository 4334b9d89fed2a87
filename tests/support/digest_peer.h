// OpenSSL as the peer of the digests.
#pragma once

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <string>
#include <string_view>

#include "bytes.h"
#include "platform.h"

namespace mirolta::test {

// By the name that the classes give a digest, which is the peer's too.
inline const EVP_MD* PeerOf(std::basic_string_view<OLECHAR> name) {
  return EVP_get_digestbyname(std::string(name.begin(), name.end()).c_str());
}

inline Bytes PeerDigest(const OLECHAR* name, const Bytes& message) {
  Bytes digest(EVP_MAX_MD_SIZE);
  unsigned length = 0;
  EXPECT_EQ(
      EVP_Digest(message.data(), message.size(), digest.data(), &length, PeerOf(name), nullptr), 1);
  return Head(digest, length);
}

inline Bytes PeerHmac(const OLECHAR* name, const Bytes& key, const Bytes& message) {
  Bytes mac(EVP_MAX_MD_SIZE);
  unsigned length = 0;
  const uint8_t none = 0;
  HMAC(PeerOf(name), key.empty() ? &none : key.data(), static_cast<int>(key.size()), message.data(),
       message.size(), mac.data(), &length);
  return Head(mac, length);
}

}  // namespace mirolta::test
