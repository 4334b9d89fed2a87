// Moving bytes from and to streams of which nothing is known.
#pragma once

#include <algorithm>
#include <cstring>

#include "byte_buffer.h"
#include "platform.h"

namespace mirolta {

// ReadFrom and WriteTo call the stream once. *done is what the stream reports, failing or not, but
// never more than count: a stream that reports more is not believed.
HRESULT ReadFrom(IStream* source, void* bytes, ULONG count, ULONG* done);
HRESULT WriteTo(IStream* target, const void* bytes, ULONG count, ULONG* done);

// SendQueue writes what the queue holds, if anything, in one call and removes as much as the stream
// reports written, failing or not; the rest stays queued. Returns the stream's status, or S_OK for
// an empty queue.
// Alias:  the queue stays as it is while the stream is called.
HRESULT SendQueue(ByteBuffer& queue, IStream* target);

// PassedBytes holds the bytes of one transfer on their way through a filter, and wipes them. Bytes
// that the source reports and never wrote are zeros.
class PassedBytes {
 public:
  PassedBytes() = default;
  ~PassedBytes();
  PassedBytes(const PassedBytes&) = delete;
  PassedBytes& operator=(const PassedBytes&) = delete;

  // Fill makes room for count bytes and reads from source.
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

  // Each place may be null.
  void Report(ULARGE_INTEGER* read_out, ULARGE_INTEGER* written_out) const {
    if (read_out != nullptr) read_out->QuadPart = read;
    if (written_out != nullptr) written_out->QuadPart = written;
  }
};

// CopyPieces reads up to count bytes from source, a piece at a time, and has each taken by
// `take(piece, length, &written)`. It ends early after a piece without bytes and after one of which
// nothing was written. A piece that is written in part is not written again. Bytes that the source
// reports and never wrote are zeros. Returns the status of the last read or take: any success
// status if all went well.
// Errors: a failing read's, with the bytes got in the totals all the same; a failing take's.
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
