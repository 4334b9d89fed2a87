// The queues of a cipher engine in the plainest form: one block after the other.
#pragma once

#include <functional>

#include "bytes.h"
#include "cipher_pad.h"
#include "platform.h"

namespace mirolta::test {

// One direction. A queue takes bytes while it stays within maximum.
struct ModelChannel {
  Bytes in;
  Bytes out;
  uint32_t maximum = 512;

  void Reinit(uint32_t limit, uint32_t step) {
    in.clear();
    out.clear();
    const uint32_t wanted = limit > step ? limit : step;
    maximum = (wanted / step + 1) * step;
  }

  bool Append(const uint8_t* data, uint32_t length) {
    if (in.size() + length > maximum) return false;
    in.insert(in.end(), data, data + length);
    return true;
  }

  using Block = std::function<void(const uint8_t* in, uint8_t* out)>;

  HRESULT TransformQueued(uint32_t block_size, const Block& transform) {
    size_t consumed = 0;
    HRESULT status = S_OK;
    while (in.size() - consumed >= block_size) {
      if (out.size() + block_size > maximum) {
        status = E_OUTOFMEMORY;
        break;
      }
      out.resize(out.size() + block_size);
      transform(&in[consumed], &out[out.size() - block_size]);
      consumed += block_size;
    }
    in.erase(in.begin(), in.begin() + static_cast<ptrdiff_t>(consumed));
    return status;
  }

  HRESULT Update(uint32_t block_size, const Block& transform, const uint8_t* data,
                 uint32_t length) {
    if (data != nullptr && length != 0 && !Append(data, length)) return E_OUTOFMEMORY;
    return TransformQueued(block_size, transform);
  }

  HRESULT EncryptFinal(uint32_t block_size, const Block& transform, LONG pad_type) {
    if (!in.empty()) {
      const uint32_t count = block_size - static_cast<uint32_t>(in.size() % block_size);
      if (pad_type < 0) return E_OUTOFMEMORY;  // the model knows no random pads
      const Bytes pad(count, static_cast<uint8_t>(pad_type & 0xFF));
      if (!Append(pad.data(), count)) return E_OUTOFMEMORY;
    }
    return TransformQueued(block_size, transform);
  }

  HRESULT DecryptFinal(uint32_t block_size, const Block& transform) {
    const HRESULT status = TransformQueued(block_size, transform);
    if (FAILED(status)) return status;
    return in.empty() ? S_OK : S_FALSE;
  }
};

}  // namespace mirolta::test
