// What both stream filters share: the binding, the guard around calls that reach it, and the stream
// operations that carry no data.
#pragma once

#include "dispatch_object.h"
#include "messages.h"
#include "mirolta.h"
#include "stream_binding.h"

namespace mirolta {

// StreamFilter<kClass, Dual> is the base of a filter with the dispatch interface Dual. Read, Write
// and CopyTo are its own business, through StreamOperation.
template <const ClassDescription& kClass, typename Dual>
class StreamFilter : public DispatchObject<kClass, Dual, IStream> {
  using Base = DispatchObject<kClass, Dual, IStream>;

 public:
  HRESULT STDMETHODCALLTYPE get_Stream(IUnknown** stream) override {
    return Frame(stream, [&]() -> HRESULT {
      *stream = binding_.Object();
      if (*stream == nullptr) return Raise(kMessageNoStream);
      (*stream)->AddRef();
      return S_OK;
    });
  }
  HRESULT STDMETHODCALLTYPE putref_Stream(IUnknown* stream) override {
    return Frame(stream, [&] {
      return SUCCEEDED(binding_.Bind(stream)) ? S_OK : Raise(kMessageNoStreamInterface);
    });
  }
  HRESULT STDMETHODCALLTYPE get_SeekingForbidden(VARIANT_BOOL* value) override {
    return PlainFrame(value, [&] { return Store(value, seeking_forbidden_); });
  }
  HRESULT STDMETHODCALLTYPE put_SeekingForbidden(VARIANT_BOOL value) override {
    return PlainFrame([&] { return Store(&seeking_forbidden_, value); });
  }
  HRESULT STDMETHODCALLTYPE get_codePage(LONG* value) override {
    return PlainFrame(value, [&] { return Store(value, code_page_); });
  }
  HRESULT STDMETHODCALLTYPE put_codePage(LONG value) override {
    return PlainFrame([&] { return Store(&code_page_, value); });
  }

  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                 ULARGE_INTEGER* position) override {
    return PassOn([&](IStream* target) {
      const bool only_asks = move.QuadPart == 0 && origin == STREAM_SEEK_CUR;
      if (seeking_forbidden_ != 0 && !only_asks) return E_UNEXPECTED;
      return target->Seek(move, origin, position);
    });
  }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
    return PassOn([&](IStream* target) { return target->SetSize(size); });
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD flags) override {
    return PassOn([&](IStream* target) { return target->Commit(flags); });
  }
  HRESULT STDMETHODCALLTYPE Revert() override {
    return PassOn([&](IStream* target) { return target->Revert(); });
  }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                       DWORD type) override {
    return PassOn([&](IStream* target) { return target->LockRegion(offset, count, type); });
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER offset, ULARGE_INTEGER count,
                                         DWORD type) override {
    return PassOn([&](IStream* target) { return target->UnlockRegion(offset, count, type); });
  }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG* statistics, DWORD flags) override {
    return PassOn([&](IStream* target) { return target->Stat(statistics, flags); });
  }
  // Two filters over one position would digest or transform each other's bytes.
  HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

 protected:
  explicit StreamFilter(IUnknown* outer) : Base(outer) {}

  using Base::Frame;
  using Base::PlainFrame;
  using Base::Raise;

  template <typename Value>
  static HRESULT Store(Value* place, Value value) {
    *place = value;
    return S_OK;
  }

  // WhenIdle is Frame for work that must not run inside a stream operation. The lock lets its owner
  // in again, so what it finds there is this thread, called back by the bound stream.
  // Errors: E_UNEXPECTED inside a stream operation.
  template <typename Work>
  HRESULT WhenIdle(Work work, StackUse use = StackUse::kShort) {
    return Frame([&]() -> HRESULT { return inside_ ? E_UNEXPECTED : work(); }, use);
  }

  // StreamOperation runs work(target) under the lock; target is null if nothing is bound, and lives
  // until work is done even if the bound stream binds the filter to another. A chain of filters
  // that leads back to this one ends here instead of going round.
  // Errors: as WhenIdle.
  template <typename Work>
  HRESULT StreamOperation(Work work, StackUse use = StackUse::kShort) {
    return WhenIdle(
        [&]() -> HRESULT {
          OwnedReference<IStream> target;
          target.Assign(binding_.Target());
          inside_ = true;
          const HRESULT status = work(target.Get());
          inside_ = false;
          return status;
        },
        use);
  }

  LONG code_page() const { return code_page_; }

 private:
  template <typename Call>
  HRESULT PassOn(Call call) {
    return StreamOperation([&](IStream* target) -> HRESULT {
      return target == nullptr ? STG_E_REVERTED : call(target);
    });
  }

  StreamBinding binding_;
  // What the system itself sets is 1; callers' values are kept as given.
  VARIANT_BOOL seeking_forbidden_ = 1;
  LONG code_page_ = 0;
  bool inside_ = false;
};

}  // namespace mirolta
