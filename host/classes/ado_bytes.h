// The bytes of an ADODB.Stream, and the IStream that it is.
#pragma once

#include <string>
#include <string_view>

#include "platform.h"

namespace mirolta::host {

// A part of the object `owner`: its references and its identity are the owner's. The position is that
// of the object's own members. While it is closed, the members of IStream fail.
class AdoBytes final : public IStream {
 public:
  static constexpr uint64_t kMost = uint64_t{1} << 30;

  explicit AdoBytes(IUnknown* owner) : owner_(owner) {}
  AdoBytes(const AdoBytes&) = delete;
  AdoBytes& operator=(const AdoBytes&) = delete;
  ~AdoBytes() = default;

  // Open opens an empty stream.
  // Errors: throws std::bad_alloc.
  void Open(bool may_read, bool may_write);
  void Close() { content_.Reset(); }
  bool IsOpen() const { return static_cast<bool>(content_); }
  bool MayRead() const { return may_read_; }
  bool MayWrite() const { return may_write_; }

  // The members below need an open stream and ignore whether it may be read or written.
  uint64_t Size() const;
  uint64_t Position() const;
  // SetPosition accepts a position beyond the end.
  void SetPosition(uint64_t position);
  // Resize cuts the bytes or appends zeros.
  // Errors: throws E_OUTOFMEMORY beyond kMost, std::bad_alloc.
  void Resize(uint64_t size);
  // Append appends the next bytes, at most `count`, to *bytes and returns how many there were.
  // Errors: throws std::bad_alloc.
  size_t Append(uint64_t count, std::string* bytes);
  // Put writes all bytes.
  // Errors: as Resize; nothing is written then.
  void Put(std::string_view bytes);
  // Load replaces the bytes by those of a file and goes to their start.
  // Errors: returns the file's status; throws E_OUTOFMEMORY beyond kMost, std::bad_alloc; the bytes
  //         stay then.
  [[nodiscard]] HRESULT Load(IStream* file);
  // Save writes all bytes to a file and goes to the start.
  // Errors: returns the file's status.
  [[nodiscard]] HRESULT Save(IStream* file);

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
  ULONG STDMETHODCALLTYPE AddRef() override { return owner_->AddRef(); }
  ULONG STDMETHODCALLTYPE Release() override { return owner_->Release(); }
  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read) override;
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override;
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                 ULARGE_INTEGER* position) override;
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override;
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                   ULARGE_INTEGER* written) override;
  HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override;
  HRESULT STDMETHODCALLTYPE Revert() override;
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                       DWORD type) override;
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                         DWORD type) override;
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* statistics, DWORD flags) override;
  // The clone shares the bytes until this stream is closed or loaded.
  HRESULT STDMETHODCALLTYPE Clone(IStream** out) override;

 private:
  HRESULT ToRead() const;
  HRESULT ToWrite() const;

  IUnknown* const owner_;
  OwnedReference<IStream> content_;  // null while closed
  bool may_read_ = false;
  bool may_write_ = false;
};

}  // namespace mirolta::host
