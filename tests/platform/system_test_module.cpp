// A module with one class, for the tests of resources and class objects. Its objects do nothing but
// count themselves.
#include "system_test_module.h"

#include <atomic>
#include <new>

#include "mirolta/bool.h"
#include "mirolta/runtime.h"
#include "portable/module_resources.h"

#define EXPORT extern "C" __attribute__((visibility("default")))

namespace mirolta {
namespace {

std::atomic<LONG> g_count = 0;
std::atomic<void (*)()> g_on_can_unload = nullptr;
std::atomic<void (*)()> g_on_released = nullptr;

// Makes a call that a test asked for, once.
void Call(std::atomic<void (*)()>& hook) {
  if (void (*const call)() = hook.exchange(nullptr)) call();
}

constexpr StringResource kStrings[] = {{100, u"Test module"}, {101, u""}, {65535, u"last"}};
constexpr BYTE kBytes[] = {1, 2, 3};
constexpr DataResource kData[] = {{u"REGISTRY", 7, kBytes, 3}, {u"OTHER", 7, kBytes, 2}};
constexpr InterfaceTable kInterface = {&kTestInterface, u"ITest", u"A test", nullptr, 0};
constexpr const InterfaceTable* kInterfaces[] = {&kInterface};
constexpr ClassTableRow kClasses[] = {{&kTestClass, u"Test", u"A class", &kInterface}};
constexpr TypeLibraryTable kLibrary = {
    &kTestLibrary, u"TestLib", u"Test 1.18 Type Library", 1, 0x12, kInterfaces, 1, kClasses, 1};
constexpr ModuleResources kResources = {kStrings, 3, kData, 2, &kLibrary};

// Attached for as long as the module is loaded.
struct Attachment {
  Attachment() : handle(MiroltaAttachModule(&kResources)) {}
  ~Attachment() { MiroltaDetachModule(handle); }
  HINSTANCE handle;
};
const Attachment g_attachment;

class Factory final : public IClassFactory {
 public:
  Factory() { ++g_count; }
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = nullptr;
    if (iid != IID_IUnknown && iid != IID_IClassFactory) return E_NOINTERFACE;
    *out = this;
    AddRef();
    return S_OK;
  }
  ULONG STDMETHODCALLTYPE AddRef() override {
    return static_cast<ULONG>(InterlockedIncrement(&references_));
  }
  ULONG STDMETHODCALLTYPE Release() override {
    const LONG left = InterlockedDecrement(&references_);
    if (left == 0) {
      this->~Factory();
      ::operator delete(this);
      --g_count;
      Call(g_on_released);
    }
    return static_cast<ULONG>(left);
  }
  // The factory's objects are factories, which is all that a count needs.
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    *out = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    Factory* made = new (std::nothrow) Factory;
    if (made == nullptr) return E_OUTOFMEMORY;
    const HRESULT status = made->QueryInterface(iid, out);
    made->Release();
    return status;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL lock) override {
    if (lock) {
      ++g_count;
    } else {
      --g_count;
    }
    return S_OK;
  }

 private:
  ~Factory() = default;
  LONG volatile references_ = 1;
};

}  // namespace
}  // namespace mirolta

EXPORT HRESULT DllGetClassObject(REFCLSID id, REFIID iid, void** out);
EXPORT HRESULT DllCanUnloadNow();
EXPORT HINSTANCE TestModuleHandle();
EXPORT void TestModuleOnCanUnload(void (*call)());
EXPORT void TestModuleOnReleased(void (*call)());

EXPORT HRESULT DllGetClassObject(REFCLSID id, REFIID iid, void** out) {
  using namespace mirolta;
  *out = nullptr;
  if (id == kHollowClass) return S_OK;
  if (id != kTestClass) return CLASS_E_CLASSNOTAVAILABLE;
  Factory* factory = new (std::nothrow) Factory;
  if (factory == nullptr) return E_OUTOFMEMORY;
  const HRESULT status = factory->QueryInterface(iid, out);
  factory->Release();
  return status;
}

EXPORT HRESULT DllCanUnloadNow() {
  const bool idle = mirolta::g_count.load() == 0;
  mirolta::Call(mirolta::g_on_can_unload);
  return idle ? S_OK : S_FALSE;
}

// What happens once inside the next last Release, when nothing is counted any more.
EXPORT void TestModuleOnReleased(void (*call)()) {
  mirolta::g_on_released = call;
}

// What happens once inside the next DllCanUnloadNow, after it has counted.
EXPORT void TestModuleOnCanUnload(void (*call)()) {
  mirolta::g_on_can_unload = call;
}

EXPORT HINSTANCE TestModuleHandle() {
  return mirolta::g_attachment.handle;
}
