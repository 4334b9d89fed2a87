#include "cipher_algorithms.h"

#include <new>

#include "aes_engine.h"
#include "des_engine.h"

namespace mirolta {

const NameSlot kCipherNames[] = {OLESTR("AES"), OLESTR("DES"), OLESTR("")};

namespace {

template <typename Engine>
CipherEngine* Make() {
  return new (std::nothrow) Engine;
}

struct Maker {
  LONG algorithm;
  CipherEngine* (*make)();
};

constexpr Maker kMakers[] = {
    {kCipherAes, Make<AesEngine>},
    {kCipherDes, Make<DesEngine>},
};

}  // namespace

LONG FindCipherAlgorithm(const OLECHAR* name, uint32_t length) noexcept {
  return FindName(kCipherNames, name, length);
}

std::unique_ptr<CipherEngine> CreateCipherEngine(LONG algorithm) noexcept {
  for (const Maker& maker : kMakers) {
    if (maker.algorithm == algorithm) return std::unique_ptr<CipherEngine>(maker.make());
  }
  return nullptr;
}

}  // namespace mirolta
