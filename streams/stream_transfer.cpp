#include "stream_transfer.h"

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
  // The rest of a large request that met a short stream was never touched, and need not be.
  if (data_ != nullptr) WipeMemory(data_, count_);
  delete[] data_;
}

HRESULT PassedBytes::Fill(IStream* source, ULONG count) {
  data_ = NewArray<uint8_t>(count != 0 ? CheckedSize(count) : SizeConstant(1));
  if (data_ == nullptr) return E_OUTOFMEMORY;
  return ReadFrom(source, data_, count, &count_);
}

}  // namespace mirolta
