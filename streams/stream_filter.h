// What both stream filters share: the bound stream, the guard around calls of it, the algorithm and
// key of each direction, and the stream operations that carry no data of their own.
#pragma once

#include "dispatch_object.h"
#include "key_conversion.h"
#include "messages.h"
#include "mirolta.h"
#include "stream_binding.h"
#include "stream_transfer.h"

namespace mirolta {

// StreamFilter<kClass, Dual, Direction> is the base of a filter with the dispatch interface Dual;
// Direction is the class of its read and write directions, a FilterDirection. The filter itself
// implements Read and Write, with StreamOperation, and Copy.
template <const ClassDescription& kClass, typename Dual, typename Direction>
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
  HRESULT STDMETHODCALLTYPE get_ReadAlgorithm(BSTR* name) override {
    return GetAlgorithm(read_, name);
  }
  HRESULT STDMETHODCALLTYPE put_ReadAlgorithm(BSTR name) override {
    return PutAlgorithm(read_, name);
  }
  HRESULT STDMETHODCALLTYPE get_WriteAlgorithm(BSTR* name) override {
    return GetAlgorithm(write_, name);
  }
  HRESULT STDMETHODCALLTYPE put_WriteAlgorithm(BSTR name) override {
    return PutAlgorithm(write_, name);
  }
  HRESULT STDMETHODCALLTYPE get_ReadKey(VARIANT* key) override { return GetKey(read_, key); }
  HRESULT STDMETHODCALLTYPE put_ReadKey(VARIANT key) override { return PutKey(read_, key); }
  HRESULT STDMETHODCALLTYPE get_WriteKey(VARIANT* key) override { return GetKey(write_, key); }
  HRESULT STDMETHODCALLTYPE put_WriteKey(VARIANT key) override { return PutKey(write_, key); }
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
  HRESULT STDMETHODCALLTYPE CopyTo(IStream* to, ULARGE_INTEGER count, ULARGE_INTEGER* read,
                                   ULARGE_INTEGER* written) override {
    return StreamOperation(
        [&](IStream* target) -> HRESULT {
          if (target == nullptr) return STG_E_REVERTED;
          if (to == nullptr) return STG_E_INVALIDPOINTER;
          CopyTotals totals;
          const HRESULT status = Copy(target, to, count.QuadPart, &totals);
          if (FAILED(status)) return status;
          totals.Report(read, written);
          return S_OK;
        },
        StackUse::kMedium);
  }
  // Not supported: two filters on one stream would digest or transform each other's bytes.
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

  // WhenIdle is Frame for work that must not run inside a stream operation. The lock is recursive;
  // a call from inside comes from the bound stream, on the same thread, and inside_ detects it.
  // Errors: E_UNEXPECTED inside a stream operation.
  template <typename Work>
  HRESULT WhenIdle(Work work, StackUse use = StackUse::kShort) {
    return Frame([&]() -> HRESULT { return inside_ ? E_UNEXPECTED : work(); }, use);
  }

  // StreamOperation runs work(target) under the lock. target is null if no stream is bound; it is
  // referenced until work returns, even if the bound stream binds the filter to another. A cycle of
  // filters ends here instead of recursing without end.
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

  // WithEngine runs work on the direction's engine.
  // Errors: raises "Not initialized." without an algorithm.
  template <typename Work>
  static HRESULT WithEngine(const Direction& direction, Work work) {
    auto* const engine = direction.Engine();
    return engine != nullptr ? work(*engine) : Raise(kMessageNotInitialized);
  }

  // PrepareChange is called under the lock before a member changes a direction's engine; if it
  // fails, the member returns its status and changes nothing.
  virtual HRESULT PrepareChange(const Direction&) { return S_OK; }

  // ChangeDirection runs work, which changes the direction's engine, under the lock.
  // Errors: those of PrepareChange.
  template <typename Work>
  HRESULT ChangeDirection(const Direction& direction, Work work) {
    return Frame([&]() -> HRESULT {
      const HRESULT status = PrepareChange(direction);
      return FAILED(status) ? status : work();
    });
  }

  // Copy reads up to count bytes from target, passes them through the reading direction and writes
  // them to `to`; CopyTo reports the totals if it succeeds.
  virtual HRESULT Copy(IStream* target, IStream* to, ULONGLONG count, CopyTotals* totals) = 0;

  bool IsInStreamOperation() const { return inside_; }

 private:
  HRESULT GetAlgorithm(const Direction& direction, BSTR* name) {
    return PlainFrame(name, [&] { return direction.GetName(name); });
  }
  HRESULT PutAlgorithm(Direction& direction, BSTR name) {
    return ChangeDirection(direction, [&] {
      return direction.SetAlgorithm(name) ? S_OK : Raise(kMessageAlgorithmNotFound);
    });
  }
  HRESULT GetKey(const Direction& direction, VARIANT* key) {
    return Frame(key, [&] {
      return WithEngine(direction, [&](auto& engine) { return engine.GetKey(key); });
    });
  }
  // Reading a key may run the caller's code, which may replace the engine: it is looked up again.
  HRESULT PutKey(const Direction& direction, const VARIANT& key) {
    return ChangeDirection(direction, [&] {
      return WithEngine(direction, [&](auto& before) {
        const PlainKey plain(before, key, code_page_);
        return WithEngine(direction, [&](auto& engine) { return plain.GiveTo(engine); });
      });
    });
  }

  template <typename Call>
  HRESULT PassOn(Call call) {
    return StreamOperation([&](IStream* target) -> HRESULT {
      return target == nullptr ? STG_E_REVERTED : call(target);
    });
  }

  StreamBinding binding_;
  // Initially 1, not VARIANT_TRUE; callers' values are kept unchanged.
  VARIANT_BOOL seeking_forbidden_ = 1;
  LONG code_page_ = 0;
  bool inside_ = false;

 protected:
  // Declared after binding_, so that keys and queues are wiped before the bound stream, which is
  // the caller's code, is released.
  Direction read_;
  Direction write_;
};

}  // namespace mirolta
