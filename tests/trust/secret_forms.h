// Secrets by seed, and the forms in which they may lie in memory: the watch looks for all of them.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "aes_schedule.h"
#include "big_bytes.h"
#include "block_hash_engine.h"
#include "bytes.h"
#include "des_schedule.h"
#include "limb_basics.h"
#include "md5_engine.h"
#include "sha1_engine.h"
#include "sha256_engine.h"
#include "small_primes.h"
#include "trust_heap.h"

namespace mirolta::test {

inline Bytes Secret(unsigned seed, size_t size) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random() >> 7);
  return bytes;
}

inline Bytes Reversed(const Bytes& bytes) {
  return Bytes(bytes.rbegin(), bytes.rend());
}

inline Bytes Masked(Bytes bytes, uint8_t mask) {
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(byte ^ mask);
  return bytes;
}

// A character that is one byte in every character set, and not zero.
inline uint8_t TextByte(uint8_t byte) {
  return static_cast<uint8_t>(0x20 + (byte & 0x3F));
}

inline void WatchFor(const Bytes& bytes) {
  WatchForSecret(bytes.data(), bytes.size());
}
// Also as UTF-16 units.
inline void WatchForText(const Bytes& text) {
  Bytes units;
  for (const uint8_t byte : text) {
    units.push_back(byte);
    units.push_back(0);
  }
  units.resize(std::min(units.size(), size_t{512}));
  WatchFor(units);
}

// A number in both byte orders.
inline void WatchForNumber(const Bytes& number) {
  WatchFor(number);
  WatchFor(Reversed(number));
}

// Schedules as words and as bytes in order.
template <size_t kCount>
void WatchForWords(const uint32_t (&words)[kCount], size_t count) {
  Bytes native(count * 4);
  std::memcpy(native.data(), words, native.size());
  Bytes in_order;
  for (size_t i = 0; i < count; ++i) {
    for (int shift = 24; shift >= 0; shift -= 8) {
      in_order.push_back(static_cast<uint8_t>(words[i] >> shift));
    }
  }
  WatchFor(native);
  WatchFor(in_order);
}

template <typename Schedule>
void WatchForSchedule(const Schedule& schedule, size_t words) {
  WatchForWords(schedule.encryption, words);
  WatchForWords(schedule.decryption, words);
}

// The key as HMAC pads it to a block, and the chaining values after both pads.
template <typename Primitive>
void WatchForPads(const Bytes& key) {
  Bytes padded = key;
  if (key.size() > kHashBlockSize) {
    HashEngine* made = nullptr;
    (void)CreateHashEngine(kHashAlgorithms[Primitive::kAlgorithm], &made);
    const std::unique_ptr<HashEngine> engine(made);
    (void)engine->Update(key.data(), static_cast<uint32_t>(key.size()));
    (void)engine->Final();
    padded.assign(engine->RawDigest(), engine->RawDigest() + engine->DigestSize());
  }
  WatchFor(padded);
  const size_t used = padded.size();
  padded.resize(kHashBlockSize);
  for (const uint8_t mask : {uint8_t{0x36}, uint8_t{0x5C}}) {
    const Bytes pad = Masked(padded, mask);
    WatchFor(Bytes(pad.begin(), pad.begin() + static_cast<std::ptrdiff_t>(used)));
    uint32_t words[Primitive::kWordCount];
    std::copy(std::begin(Primitive::kInitial), std::end(Primitive::kInitial), words);
    Primitive::Kernel()(words, pad.data(), 1);
    WatchForWords(words, Primitive::kWordCount);
  }
}

// What an algorithm derives from its key: a cipher's schedule, a digest's HMAC pads.
inline void WatchForDerived(const std::string& algorithm, const Bytes& key) {
  const uint32_t length = static_cast<uint32_t>(key.size());
  if (algorithm == "AES") {
    AesSchedule schedule;
    ASSERT_TRUE(ExpandAesKey(key.data(), length, &schedule));
    WatchForSchedule(schedule, 4 * (schedule.rounds + 1));
  } else if (algorithm == "DES") {
    DesSchedule schedule;
    ASSERT_TRUE(ExpandDesKey(key.data(), length, &schedule));
    WatchForSchedule(schedule, 2 * schedule.rounds);
  } else if (algorithm == "MD5") {
    WatchForPads<Md5Primitive>(key);
  } else if (algorithm == "SHA1") {
    WatchForPads<Sha1Primitive>(key);
  } else {
    ASSERT_EQ(algorithm, "SHA256");
    WatchForPads<Sha256Primitive>(key);
  }
}

inline BigInt NumberOf(const Bytes& bytes) {
  BigInt number;
  EXPECT_EQ(FromBytes(number, bytes.data(), static_cast<uint32_t>(bytes.size())), S_OK);
  return number;
}

inline Bytes BytesOfNumber(const BigInt& number) {
  Bytes bytes(static_cast<size_t>(ByteLength(number)));
  ToBytes(bytes.data(), number);
  return bytes;
}

// A number in both byte orders and in digits of 52 bits.
inline void WatchForDigits(const BigInt& number) {
  const Bytes bytes = BytesOfNumber(number);
  if (bytes.size() < 16) return;
  WatchForNumber(bytes);
  Bytes digits;
  for (uint64_t bit = 0; bit < number.BitLength(); bit += 52) {
    uint64_t digit = 0;
    for (unsigned i = 0; i < 52; ++i) digit |= uint64_t{number.TestBit(bit + i)} << i;
    for (unsigned i = 0; i < 8; ++i) digits.push_back(static_cast<uint8_t>(digit >> (8 * i)));
  }
  digits.resize(std::min(digits.size(), size_t{512}));
  WatchFor(digits);
}

inline BigInt PowerOfTwo(uint64_t bits) {
  Bytes bytes(static_cast<size_t>(bits / 8 + 1));
  bytes[0] = static_cast<uint8_t>(1u << bits % 8);
  return NumberOf(bytes);
}

// x * 2^bits mod m, for each number of bits that Montgomery's form may have there.
inline void WatchForMontgomeryForms(const BigInt& x, const BigInt& m) {
  const uint64_t bits = m.BitLength();
  const uint64_t limbs = (bits + kLimbBits - 1) / kLimbBits * kLimbBits;
  const uint64_t digits = (bits + 2 + 51) / 52 * 52;
  for (const uint64_t shift : {limbs, digits}) WatchForDigits(x * PowerOfTwo(shift) % m);
}

// What the search for a prime keeps of its start and of the windows after it: minus the number
// modulo each small prime.
inline void WatchForResidues(const BigInt& start, uint32_t window, unsigned windows) {
  BigInt number = start;
  for (unsigned i = 0; i <= windows; ++i) {
    Bytes residues;
    for (SmallPrime prime; prime.Index() < 200; prime.Next()) {
      if (prime.Index() < 100) continue;  // too small to identify
      const uint32_t p = prime.Value();
      const BigInt residue = number % BigInt(p);
      const uint16_t first = static_cast<uint16_t>((p - residue.GetWord(0)) % p);
      residues.push_back(static_cast<uint8_t>(first));
      residues.push_back(static_cast<uint8_t>(first >> 8));
    }
    WatchFor(residues);
    ASSERT_EQ(number.Add(BigInt(window)), S_OK);
  }
}

}  // namespace mirolta::test
