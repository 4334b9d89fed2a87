// The three digests as tests see them.
#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <ostream>
#include <string>

#include "hash_algorithms.h"
#include "hash_engine.h"
#include "test_values.h"

namespace mirolta::test {

struct Algorithm {
  const OLECHAR* name;
  const char* label;
  LONG digest_size;
  const char* empty_digest;  // of the empty message, as text
  const char* abc_digest;
};

inline std::ostream& operator<<(std::ostream& out, const Algorithm& algorithm) {
  return out << algorithm.label;
}

inline const Algorithm kAlgorithms[] = {
    {OLESTR("MD5"), "md5", 16, "D41D8CD98F00B204E9800998ECF8427E",
     "900150983CD24FB0D6963F7D28E17F72"},
    {OLESTR("SHA1"), "sha1", 20, "DA39A3EE5E6B4B0D3255BFEF95601890AFD80709",
     "A9993E364706816ABA3E25717850C26C9CD0D89D"},
    {OLESTR("SHA256"), "sha256", 32,
     "E3B0C44298FC1C149AFBF4C8996FB92427AE41E4649B934CA495991B7852B855",
     "BA7816BF8F01CFEA414140DE5DAE2223B00361A396177A9CB410FF61F20015AD"},
};

inline std::unique_ptr<HashEngine> MakeEngine(const OLECHAR* name) {
  HashEngine* engine = nullptr;
  CreateHashEngine(name, &engine);
  return std::unique_ptr<HashEngine>(engine);
}

inline HRESULT Feed(HashEngine& engine, const Bytes& bytes) {
  return engine.Update(bytes.data(), static_cast<uint32_t>(bytes.size()));
}

inline Bytes RawBytes(const HashEngine& engine) {
  return Bytes(engine.RawDigest(), engine.RawDigest() + engine.DigestSize());
}

// The digest as uppercase text, read through Digest.
inline std::string DigestText(HashEngine& engine) {
  const uint8_t* digest = engine.Digest();
  if (digest == nullptr) return "no digest";
  const LONG length = 2 * engine.DigestSize();
  std::vector<OLECHAR> text(static_cast<size_t>(length) + 1);
  if (DigestToHex(digest, length, text.data()) != S_OK) return "no text";
  return std::string(text.begin(), text.end() - 1);
}

// A whole digest of the engine's kind, keyed if it has a key.
inline Bytes DigestOf(HashEngine& engine, const Bytes& bytes) {
  if (engine.Start() != S_OK) return {};
  Feed(engine, bytes);
  if (engine.Finish() != S_OK) return {};
  return RawBytes(engine);
}

// A message as the compression function sees it: with its padding and its length, whole blocks.
inline Bytes Padded(const Algorithm& algorithm, Bytes message) {
  const uint64_t bits = uint64_t{message.size()} * 8;
  message.push_back(0x80);
  while (message.size() % 64 != 56) message.push_back(0);
  Bytes length(8);
  for (size_t i = 0; i < 8; ++i) length[i] = static_cast<uint8_t>(bits >> 8 * i);
  const bool low_first = algorithm.digest_size == 16;
  return message + (low_first ? length : Bytes(length.rbegin(), length.rend()));
}

// A block of the pad byte with the key in it.
inline Bytes KeyPad(const Bytes& key, uint8_t pad_byte) {
  Bytes pad(64, pad_byte);
  for (size_t i = 0; i < key.size(); ++i) pad[i] = static_cast<uint8_t>(pad[i] ^ key[i]);
  return pad;
}
inline Bytes InnerPad(const Bytes& key) {
  return KeyPad(key, 0x36);
}
inline Bytes OuterPad(const Bytes& key) {
  return KeyPad(key, 0x5C);
}

// Tests of one engine, for each algorithm.
class EngineTest : public testing::TestWithParam<Algorithm> {
 protected:
  // The digest of an engine of the same kind without a key.
  Bytes PlainDigestOf(const Bytes& message) const {
    const auto engine = MakeEngine(GetParam().name);
    return DigestOf(*engine, message);
  }

  std::unique_ptr<HashEngine> engine_ = MakeEngine(GetParam().name);
};

#define MIROLTA_FOR_EACH_ALGORITHM(suite)                              \
  INSTANTIATE_TEST_SUITE_P(All, suite, testing::ValuesIn(kAlgorithms), \
                           [](const auto& row) { return std::string(row.param.label); })

}  // namespace mirolta::test
