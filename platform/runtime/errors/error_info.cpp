#include "mirolta/error_info.h"

#include "errors/error_slot.h"
#include "heap/reference_count.h"
#include "heap/runtime_array.h"
#include "mirolta/system.h"

namespace mirolta::runtime {
namespace {

// An error object. As on the platform it has no lock: it is filled (ICreateErrorInfo) before it is
// published, then only read (IErrorInfo).
class ErrorInfo final : public ICreateErrorInfo, public IErrorInfo {
 public:
  ErrorInfo() = default;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    if (out == nullptr) return E_POINTER;
    *out = nullptr;
    if (iid == IID_IUnknown || iid == IID_ICreateErrorInfo) {
      *out = static_cast<ICreateErrorInfo*>(this);
    } else if (iid == IID_IErrorInfo) {
      *out = static_cast<IErrorInfo*>(this);
    } else {
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return references_.Add(); }
  ULONG STDMETHODCALLTYPE Release() override {
    const ULONG left = references_.Remove();
    if (left == 0) {
      this->~ErrorInfo();
      FreeRuntime(this);
    }
    return left;
  }

  HRESULT STDMETHODCALLTYPE SetGUID(REFGUID guid) override {
    guid_ = guid;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR source) override { return Keep(source, &source_); }
  HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR description) override {
    return Keep(description, &description_);
  }
  HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR help_file) override {
    return Keep(help_file, &help_file_);
  }
  HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD help_context) override {
    help_context_ = help_context;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE GetGUID(GUID* guid) override {
    if (guid == nullptr) return E_INVALIDARG;
    *guid = guid_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetSource(BSTR* source) override { return Give(source_, source); }
  HRESULT STDMETHODCALLTYPE GetDescription(BSTR* description) override {
    return Give(description_, description);
  }
  HRESULT STDMETHODCALLTYPE GetHelpFile(BSTR* help_file) override {
    return Give(help_file_, help_file);
  }
  HRESULT STDMETHODCALLTYPE GetHelpContext(DWORD* help_context) override {
    if (help_context == nullptr) return E_INVALIDARG;
    *help_context = help_context_;
    return S_OK;
  }

 private:
  ~ErrorInfo() {
    SysFreeString(source_);
    SysFreeString(description_);
    SysFreeString(help_file_);
  }

  static HRESULT Keep(const OLECHAR* text, BSTR* kept) {
    BSTR copy = nullptr;
    if (text != nullptr) {
      copy = SysAllocString(text);
      if (copy == nullptr) return E_OUTOFMEMORY;
    }
    SysFreeString(*kept);
    *kept = copy;
    return S_OK;
  }
  // A text that was never set is returned as null.
  static HRESULT Give(BSTR kept, BSTR* out) {
    if (out == nullptr) return E_INVALIDARG;
    *out = nullptr;
    if (kept == nullptr) return S_OK;
    *out = SysAllocString(kept);
    return *out == nullptr ? E_OUTOFMEMORY : S_OK;
  }

  ReferenceCount references_;
  GUID guid_ = GUID_NULL;
  BSTR source_ = nullptr;
  BSTR description_ = nullptr;
  BSTR help_file_ = nullptr;
  DWORD help_context_ = 0;
};

// The thread's slot. Apart from its keeper it needs no dynamic initialisation, so that every
// late-bound call reads it with one load.
constinit thread_local IErrorInfo* t_info = nullptr;

// Releases the error object of a thread that ends.
struct SlotKeeper {
  ~SlotKeeper() {
    if (t_info != nullptr) t_info->Release();
    t_info = nullptr;
  }
  void Keep() {}
};
// NOLINTNEXTLINE(clang-diagnostic-global-constructors,clang-diagnostic-exit-time-destructors): wanted
thread_local SlotKeeper t_keeper;

}  // namespace

IErrorInfo** ThreadErrorSlot() {
  return &t_info;
}

}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" HRESULT CreateErrorInfo(ICreateErrorInfo** out) {
  if (out == nullptr) return E_INVALIDARG;
  *out = NewRuntime<ErrorInfo>();
  return *out == nullptr ? E_OUTOFMEMORY : S_OK;
}

extern "C" HRESULT SetErrorInfo(ULONG reserved, IErrorInfo* info) {
  if (reserved != 0) return E_INVALIDARG;
  IErrorInfo* old = t_info;
  if (info != nullptr) {
    t_keeper.Keep();
    info->AddRef();
  }
  t_info = info;
  if (old != nullptr) old->Release();  // last: this may run code that sets an error
  return S_OK;
}

extern "C" HRESULT GetErrorInfo(ULONG reserved, IErrorInfo** out) {
  if (out == nullptr || reserved != 0) return E_INVALIDARG;
  *out = t_info;
  t_info = nullptr;
  return *out == nullptr ? S_FALSE : S_OK;
}
