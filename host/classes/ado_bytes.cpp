#include "classes/ado_bytes.h"

#include <algorithm>
#include <new>
#include <utility>

#include "classes/ado_errors.h"

namespace mirolta::host {
namespace {

constexpr size_t kBlock = 65536;
constexpr uint64_t kWholeStream = ~uint64_t{0} >> 1;

void Check(HRESULT status) {
  if (status == E_OUTOFMEMORY) throw std::bad_alloc();
  if (FAILED(status)) Fail(status);
}

[[noreturn]] void FailForSize() {
  Fail(E_OUTOFMEMORY, "A stream holds at most 1 GB");
}

LARGE_INTEGER MoveBy(uint64_t distance) {
  LARGE_INTEGER move;
  move.QuadPart = static_cast<LONGLONG>(distance);
  return move;
}

uint64_t SizeOf(IStream* stream) {
  STATSTG statistics = {};
  Check(stream->Stat(&statistics, STATFLAG_NONAME));
  return statistics.cbSize.QuadPart;
}

void ResizeStream(IStream* stream, uint64_t size) {
  if (size > AdoBytes::kMost) FailForSize();
  ULARGE_INTEGER wanted;
  wanted.QuadPart = size;
  Check(stream->SetSize(wanted));
}

void MakeContent(OwnedReference<IStream>* content) {
  Check(CreateStreamOnHGlobal(nullptr, TRUE, content->Put()));
}

}  // namespace

void AdoBytes::Open(bool may_read, bool may_write) {
  MakeContent(&content_);
  may_read_ = may_read;
  may_write_ = may_write;
}

uint64_t AdoBytes::Size() const {
  return SizeOf(content_.Get());
}

uint64_t AdoBytes::Position() const {
  ULARGE_INTEGER position;
  position.QuadPart = 0;
  Check(content_->Seek(MoveBy(0), STREAM_SEEK_CUR, &position));
  return position.QuadPart;
}

void AdoBytes::SetPosition(uint64_t position) {
  Check(content_->Seek(MoveBy(position), STREAM_SEEK_SET, nullptr));
}

void AdoBytes::Resize(uint64_t size) {
  ResizeStream(content_.Get(), size);
}

size_t AdoBytes::Append(uint64_t count, std::string* bytes) {
  const uint64_t position = Position();
  const uint64_t size = Size();
  const auto wanted = static_cast<size_t>(std::min(count, size - std::min(size, position)));
  if (wanted == 0) return 0;
  const size_t old_size = bytes->size();
  bytes->resize(old_size + wanted);
  ULONG got = 0;
  Check(content_->Read(bytes->data() + old_size, static_cast<ULONG>(wanted), &got));
  bytes->resize(old_size + got);
  return got;
}

void AdoBytes::Put(std::string_view bytes) {
  if (bytes.empty()) return;
  if (bytes.size() > kMost || Position() > kMost - bytes.size()) FailForSize();
  ULONG written = 0;
  Check(content_->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written));
}

HRESULT AdoBytes::Load(IStream* file) {
  OwnedReference<IStream> loaded;
  MakeContent(&loaded);
  // A device has no size.
  STATSTG statistics = {};
  const uint64_t expected =
      SUCCEEDED(file->Stat(&statistics, STATFLAG_NONAME)) ? statistics.cbSize.QuadPart : 0;
  ResizeStream(loaded.Get(), expected);
  std::string block(kBlock, '\0');
  uint64_t size = 0;
  for (ULONG got = 1; got != 0; size += got) {
    const HRESULT status = file->Read(block.data(), static_cast<ULONG>(kBlock), &got);
    if (FAILED(status)) return status;
    if (got > kMost - size) FailForSize();
    ULONG written = 0;
    if (got != 0) Check(loaded->Write(block.data(), got, &written));
  }
  ResizeStream(loaded.Get(), size);
  Check(loaded->Seek(MoveBy(0), STREAM_SEEK_SET, nullptr));
  content_ = std::move(loaded);
  return S_OK;
}

HRESULT AdoBytes::Save(IStream* file) {
  SetPosition(0);
  ULARGE_INTEGER all;
  all.QuadPart = kWholeStream;
  const HRESULT status = content_->CopyTo(file, all, nullptr, nullptr);
  SetPosition(0);
  return status;
}

HRESULT AdoBytes::ToRead() const {
  if (!IsOpen()) return kAdoClosed;
  return may_read_ ? S_OK : STG_E_ACCESSDENIED;
}

HRESULT AdoBytes::ToWrite() const {
  if (!IsOpen()) return kAdoClosed;
  return may_write_ ? S_OK : STG_E_ACCESSDENIED;
}

HRESULT STDMETHODCALLTYPE AdoBytes::QueryInterface(REFIID iid, void** out) {
  return owner_->QueryInterface(iid, out);
}

HRESULT STDMETHODCALLTYPE AdoBytes::Read(void* bytes, ULONG count, ULONG* read) {
  if (read != nullptr) *read = 0;
  const HRESULT status = ToRead();
  return FAILED(status) ? status : content_->Read(bytes, count, read);
}

HRESULT STDMETHODCALLTYPE AdoBytes::Write(const void* bytes, ULONG count, ULONG* written) {
  if (written != nullptr) *written = 0;
  const HRESULT status = ToWrite();
  if (FAILED(status)) return status;
  ULARGE_INTEGER position;
  position.QuadPart = 0;
  const HRESULT found = content_->Seek(MoveBy(0), STREAM_SEEK_CUR, &position);
  if (FAILED(found)) return found;
  if (count > kMost || position.QuadPart > kMost - count) return STG_E_MEDIUMFULL;
  return content_->Write(bytes, count, written);
}

HRESULT STDMETHODCALLTYPE AdoBytes::Seek(LARGE_INTEGER move, DWORD origin,
                                         ULARGE_INTEGER* position) {
  return IsOpen() ? content_->Seek(move, origin, position) : kAdoClosed;
}

HRESULT STDMETHODCALLTYPE AdoBytes::SetSize(ULARGE_INTEGER size) {
  const HRESULT status = ToWrite();
  if (FAILED(status)) return status;
  return size.QuadPart > kMost ? STG_E_MEDIUMFULL : content_->SetSize(size);
}

HRESULT STDMETHODCALLTYPE AdoBytes::CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                           ULARGE_INTEGER* written) {
  if (read != nullptr) read->QuadPart = 0;
  if (written != nullptr) written->QuadPart = 0;
  const HRESULT status = ToRead();
  return FAILED(status) ? status : content_->CopyTo(to, count, read, written);
}

HRESULT STDMETHODCALLTYPE AdoBytes::Commit(DWORD flags) {
  return IsOpen() ? content_->Commit(flags) : kAdoClosed;
}

HRESULT STDMETHODCALLTYPE AdoBytes::Revert() {
  return IsOpen() ? content_->Revert() : kAdoClosed;
}

HRESULT STDMETHODCALLTYPE AdoBytes::LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                               DWORD type) {
  return IsOpen() ? content_->LockRegion(offset, count, type) : kAdoClosed;
}

HRESULT STDMETHODCALLTYPE AdoBytes::UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                                 DWORD type) {
  return IsOpen() ? content_->UnlockRegion(offset, count, type) : kAdoClosed;
}

HRESULT STDMETHODCALLTYPE AdoBytes::Stat(STATSTG* statistics, DWORD flags) {
  return IsOpen() ? content_->Stat(statistics, flags) : kAdoClosed;
}

HRESULT STDMETHODCALLTYPE AdoBytes::Clone(IStream** out) {
  if (out != nullptr) *out = nullptr;
  return IsOpen() ? content_->Clone(out) : kAdoClosed;
}

}  // namespace mirolta::host
