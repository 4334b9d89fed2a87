#include "stream_transfer.h"

#include <cstring>

namespace mirolta {

HRESULT ReadFrom(IStream* source, void* bytes, ULONG count, ULONG* done) {
  *done = 0;
  const HRESULT status = source->Read(bytes, count, done);
  *done = std::min(*done, count);
  return status;
}

HRESULT WriteTo(IStream* target, const void* bytes, ULONG count, ULONG* done) {
  *done = 0;
  const HRESULT status = target->Write(bytes, count, done);
  *done = std::min(*done, count);
  return status;
}

HRESULT SendQueue(ByteBuffer& queue, IStream* target) {
  if (queue.Length() == 0) return S_OK;
  ULONG sent = 0;
  const HRESULT status = WriteTo(target, queue.Data(), queue.Length(), &sent);
  queue.Consume(sent);
  return status;
}

PassedBytes::~PassedBytes() {
  // All of it: a source may write more than it reports.
  if (data_ != nullptr) WipeMemory(data_, size_);
  delete[] data_;
}

HRESULT PassedBytes::Fill(IStream* source, ULONG count) {
  const ULONG size = count != 0 ? count : 1;
  data_ = NewArray<uint8_t>(CheckedSize(size));
  if (data_ == nullptr) return E_OUTOFMEMORY;
  std::memset(data_, 0, size);
  size_ = size;
  return ReadFrom(source, data_, count, &count_);
}

}  // namespace mirolta
