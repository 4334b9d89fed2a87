#include "class_factory.h"

#include <new>

#include "module_state.h"
#include "scoped_lock.h"

namespace mirolta {

namespace {

class ClassFactory final : public IClassFactory {
 public:
  explicit ClassFactory(InstanceCreator create_instance) : create_instance_(create_instance) {
    InitializeCriticalSection(&lock_);
  }
  ~ClassFactory() { DeleteCriticalSection(&lock_); }

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
    AddRef();
    *out = static_cast<IClassFactory*>(this);
    return S_OK;
  }

  // Under the lock, so that each change between 1 and 2 is seen exactly once.
  ULONG STDMETHODCALLTYPE AddRef() override {
    ScopedLock hold(lock_);
    const LONG count = InterlockedIncrement(&references_);
    if (count == 2) LockModule();
    return static_cast<ULONG>(count);
  }

  ULONG STDMETHODCALLTYPE Release() override {
    LONG count = 0;
    {
      ScopedLock hold(lock_);
      count = InterlockedDecrement(&references_);
      if (count == 1) UnlockModule();
    }
    if (count == 0) delete this;
    return static_cast<ULONG>(count);
  }

  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (outer != nullptr && iid != IID_IUnknown) return CLASS_E_NOAGGREGATION;
    return create_instance_(outer, iid, out);
  }

  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    if (lock) {
      LockModule();
    } else {
      UnlockModule();
    }
    return S_OK;
  }

 private:
  LONG volatile references_ = 0;
  CRITICAL_SECTION lock_;
  InstanceCreator create_instance_;
};

}  // namespace

HRESULT CreateClassFactory(InstanceCreator create_instance, REFIID iid, void** out) {
  ClassFactory* const factory = new (std::nothrow) ClassFactory(create_instance);
  if (factory == nullptr) return E_OUTOFMEMORY;
  const HRESULT status = factory->QueryInterface(iid, out);
  if (FAILED(status)) delete factory;
  return status;
}

}  // namespace mirolta
