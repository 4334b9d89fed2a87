#include "big_random.h"

#include "big_bytes.h"

namespace mirolta {

HRESULT Random(BigInt& n, LONG size, bool ensure_size, bool odd) noexcept {
  if (size < 1) return E_INVALIDARG;
  const uint32_t length = static_cast<uint32_t>(size);
  uint8_t* const bytes = NewArray<uint8_t>(CheckedSize(length));
  if (bytes == nullptr) return E_OUTOFMEMORY;
  HRESULT status = E_FAIL;
  const RandomSource& source = CurrentRandomSource();
  if (source.seed(ClockSeed())) {
    for (uint32_t i = 0; i < length; ++i) bytes[i] = static_cast<uint8_t>(source.next());
    if (ensure_size) bytes[0] |= 0xC0;
    if (odd) bytes[length - 1] |= 1;
    status = FromBytes(n, bytes, length);
  }
  WipeMemory(bytes, length);
  delete[] bytes;
  return status;
}

}  // namespace mirolta
