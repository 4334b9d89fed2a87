// How cost scales with length and with the number of calls, objects and threads.
#include <malloc.h>

#include <thread>

#include "bench_digests.h"
#include "bench_module.h"
#include "bench_numbers.h"
#include "big_text.h"
#include "cipher_algorithms.h"

namespace mirolta::bench {

namespace {

constexpr size_t kMebibyte = size_t{1} << 20;
constexpr uint32_t kPiece = 64;

std::vector<Contestant> MakeSplitDigest() {
  const ByteOperands in(kMebibyte);
  const auto engine = MakeHashEngine(OLESTR("SHA256"));
  const auto digest = [=](uint32_t piece) {
    return [=](const uint8_t* data, size_t length, uint8_t* out) {
      engine->Init();
      for (size_t i = 0; i < length; i += piece) engine->Update(data + i, piece);
      engine->Final();
      std::memcpy(out, engine->RawDigest(), 32);
    };
  };
  return {ByteContestant(kOurs, in, 32, digest(kPiece)),
          ByteContestant("one call", in, 32, digest(kMebibyte))};
}

std::vector<Contestant> MakeSplitCipher(const OLECHAR* name, uint32_t key_size) {
  const ByteOperands in(kMebibyte);
  const std::vector<uint8_t> key = RandomBytes(key_size, 3);
  const std::shared_ptr<CipherEngine> engine = CreateCipherEngine(FindCipherAlgorithm(name));
  OwnedVariant value;
  (void)BytesToVariant(key.data(), key_size, value.Put());
  (void)engine->SetKey(value.Value(), 0);
  const auto encrypt = [=](uint32_t piece) {
    return [=](const uint8_t* data, size_t length, uint8_t* out) {
      for (size_t i = 0; i < length; i += piece) (void)engine->EncryptUpdate(data + i, piece);
      engine->EncryptOut().Take(out, static_cast<uint32_t>(length));
    };
  };
  return {ByteContestant(kOurs, in, kMebibyte, encrypt(kPiece)),
          ByteContestant("one call", in, kMebibyte, encrypt(kMebibyte))};
}

// Few operands: a predictor cannot learn even one of this size.
constexpr size_t kLargeNumbers = 4;

std::vector<Contestant> MakeLargeProducts(size_t bits) {
  const PeerNumbers a = RandomNumbers(bits, 1, Parity::kAny, kLargeNumbers);
  const PeerNumbers b = RandomNumbers(bits, 2, Parity::kAny, kLargeNumbers);
  return {
      OurContestant([=](BigInt& r, size_t i) { (void)Multiply(r, (*a)[i].ours, (*b)[i].ours); }),
      GmpContestant([=](mpz_t r, size_t i) { mpz_mul(r, (*a)[i].gmp.z, (*b)[i].gmp.z); })};
}

constexpr size_t kDigits = 100000;

std::vector<Contestant> MakeLargeWriters() {
  const PeerNumbers numbers = RandomNumbers(332192, 1, Parity::kAny, kLargeNumbers);
  const auto ours = std::make_shared<NumberText>();
  const auto gmp = std::make_shared<std::vector<char>>(kDigits + 10);
  return {{kOurs, [=](size_t i) { (void)ToText(*ours, (*numbers)[i].ours, 10); },
           [=] { return std::string(ours->Characters(), ours->Characters() + ours->Length()); }},
          {"GMP", [=](size_t i) { mpz_get_str(gmp->data(), 10, (*numbers)[i].gmp.z); },
           [=] { return std::string(gmp->data()); }}};
}

// Creation and release of an object. Before it is measured, 100,000 show whether memory grows.
std::vector<Contestant> MakeObjects() {
  const auto make = [] { return NewHashObject(OLESTR("SHA256")); };
  return {{kOurs, [=](size_t) { make(); },
           [=]() -> std::string {
             make();
             const size_t before = mallinfo2().uordblks;
             for (int i = 0; i < 100000; ++i) make();
             return mallinfo2().uordblks <= before ? "constant memory" : "";
           }}};
}

constexpr size_t kThreads = 8;
constexpr size_t kCallsPerThread = 16;  // makes the cost of starting a thread negligible

std::vector<Contestant> MakeThreads() {
  const ByteOperands in(kMebibyte);
  const ArrayOperands arrays = Arrays(in, kThreads);
  std::vector<std::shared_ptr<IHashObject>> objects;
  for (size_t i = 0; i < kThreads; ++i) objects.push_back(NewHashObject(OLESTR("SHA256")));
  const auto work = [=](size_t i) {
    for (size_t call = 0; call < kCallsPerThread; ++call) {
      (void)objects[i]->HashData((*arrays)[i].Value(), -1);
    }
  };
  const auto digests = [=] {
    std::string all;
    for (const auto& object : objects) {
      OwnedVariant value;
      (void)object->get_BinaryValue(value.Put());
      all += TextOf(value.Value());
    }
    return all;
  };
  return {{kOurs,
           [=](size_t) {
             std::vector<std::thread> threads;
             for (size_t i = 0; i < kThreads; ++i) threads.emplace_back(work, i);
             for (std::thread& thread : threads) thread.join();
           },
           digests},
          {"one thread",
           [=](size_t) {
             for (size_t i = 0; i < kThreads; ++i) work(i);
           },
           digests}};
}

}  // namespace

void AddScalingRows(RowList* rows) {
  const double mebibyte = static_cast<double>(kMebibyte);
  rows->push_back(
      {"scaling/SHA-256 in 64-byte calls/1 MiB", mebibyte, 0, 0, kOperands, 0, MakeSplitDigest});
  rows->push_back({"scaling/AES-128 in 64-byte calls/1 MiB", mebibyte, 0.6, 0.8, kOperands, 0,
                   [] { return MakeSplitCipher(OLESTR("AES"), 16); }});
  rows->push_back({"scaling/DES in 64-byte calls/1 MiB", mebibyte, 0, 0, kOperands, 0,
                   [] { return MakeSplitCipher(OLESTR("DES"), 8); }});
  for (const size_t bits : {10000u, 100000u, 1000000u}) {
    rows->push_back({"scaling/multiply/" + std::to_string(bits) + " bits", 0, 0, 0, kLargeNumbers,
                     0, [bits] { return MakeLargeProducts(bits); }});
  }
  rows->push_back(
      {"scaling/decimal text out/100000 digits", 0, 0, 0, kLargeNumbers, 0, MakeLargeWriters});
  rows->push_back({"scaling/object made and released/one", 0, 0, 0, 1, 0, MakeObjects});
  rows->push_back({"scaling/8 threads on 8 objects/128 MiB",
                   static_cast<double>(kThreads * kCallsPerThread) * mebibyte, 0, 0, 1, 0,
                   MakeThreads, true});
}

}  // namespace mirolta::bench
