// Transfers of bytes from and to untrusted streams.
#pragma once

#include <algorithm>
#include <cstring>

#include "byte_buffer.h"
#include "platform.h"

namespace mirolta {

// ReadFrom and WriteTo call the stream once. *done is the count that the stream reports, also when
// it fails, limited to `count`.
HRESULT ReadFrom(IStream* source, void* bytes, ULONG count, ULONG* done);
HRESULT WriteTo(IStream* target, const void* bytes, ULONG count, ULONG* done);

// SendQueue writes the content of the queue in one call and removes the bytes that the stream
// reports as written, also when it fails; the rest stays queued. Returns the stream's status, S_OK
// for an empty queue.
// Alias:  the stream must not change the queue during the call.
HRESULT SendQueue(ByteBuffer& queue, IStream* target);

// PassedBytes holds the bytes of one transfer and wipes them. Bytes that the source reports but did
// not write are zeros.
class PassedBytes {
 public:
  PassedBytes() = default;
  ~PassedBytes();
  PassedBytes(const PassedBytes&) = delete;
  PassedBytes& operator=(const PassedBytes&) = delete;

  // Fill allocates count bytes and reads from source.
  // Errors: E_OUTOFMEMORY with nothing read; those of the source.
  HRESULT Fill(IStream* source, ULONG count);

  const uint8_t* Data() const { return data_; }
  ULONG Count() const { return count_; }

 private:
  uint8_t* data_ = nullptr;
  ULONG size_ = 0;
  ULONG count_ = 0;
};

constexpr ULONG kCopyPiece = 1024;

struct CopyTotals {
  ULONGLONG read = 0;
  ULONGLONG written = 0;

  // Either pointer may be null.
  void Report(ULARGE_INTEGER* read_out, ULARGE_INTEGER* written_out) const {
    if (read_out != nullptr) read_out->QuadPart = read;
    if (written_out != nullptr) written_out->QuadPart = written;
  }
};

// CopyPieces reads up to count bytes from source in pieces and passes each to `take(piece, length,
// &written)`. It ends early after a read of no bytes and after a take that wrote none. The rest of
// a piece that is written in part is dropped. Bytes that the source reports but did not write are
// zeros. Returns the status of the last read or take, which may be any success status.
// Errors: those of read, whose bytes count in the totals all the same; those of take.
template <typename Take>
HRESULT CopyPieces(IStream* source, ULONGLONG count, CopyTotals* totals, Take take) {
  uint8_t piece[kCopyPiece];
  HRESULT status = S_OK;
  while (count != 0) {
    ULONG got = 0;
    std::memset(piece, 0, sizeof piece);
    const ULONG wanted = static_cast<ULONG>(std::min<ULONGLONG>(count, kCopyPiece));
    status = ReadFrom(source, piece, wanted, &got);
    totals->read += got;
    count -= got;
    if (FAILED(status) || got == 0) break;
    ULONG written = 0;
    status = take(piece, got, &written);
    totals->written += written;
    if (FAILED(status) || written == 0) break;
  }
  WipeMemory(piece, sizeof piece);
  return status;
}

}  // namespace mirolta
