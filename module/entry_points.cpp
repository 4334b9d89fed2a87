// The entry points: what the loader and the host call.
#include "class_registration.h"
#include "class_table.h"
#include "mirolta.h"
#include "module_state.h"
#include "scoped_lock.h"

using namespace mirolta;

namespace {

void Attach(HINSTANCE instance) {
  InitModuleState(instance, ClassTable(), LIBID_MIROLTALib);
  for (ClassRow* row = ClassTable(); row->id != nullptr; ++row) row->init_term(true);
  DisableThreadLibraryCalls(instance);
}

void Detach() {
  for (ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    if (row->factory != nullptr) row->factory->Release();
    row->factory = nullptr;
    row->init_term(false);
  }
  TermModuleState();
}

// Makes the row's factory unless another thread was first.
HRESULT EnsureFactory(ModuleState& module, ClassRow& row) {
  ScopedLock hold(module.class_objects_lock);
  if (row.factory != nullptr) return S_OK;
  return row.create_factory(row.create_instance, IID_IUnknown,
                            reinterpret_cast<void**>(&row.factory));
}

}  // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID) {
  if (reason == DLL_PROCESS_ATTACH) Attach(instance);
  if (reason == DLL_PROCESS_DETACH) Detach();
  return TRUE;
}

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* out) {
  ModuleState* const module = CurrentModule();
  if (module == nullptr) return E_INVALIDARG;
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  ClassRow* const row = FindClass(clsid);
  if (row == nullptr) return CLASS_E_CLASSNOTAVAILABLE;
  const HRESULT status = EnsureFactory(*module, *row);
  if (row->factory == nullptr) return FAILED(status) ? status : CLASS_E_CLASSNOTAVAILABLE;
  return row->factory->QueryInterface(iid, out);
}

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllCanUnloadNow() {
  const ModuleState* const module = CurrentModule();
  return module != nullptr && module->lock_count != 0 ? S_FALSE : S_OK;
}

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllRegisterServer() {
  return CurrentModule() == nullptr ? E_INVALIDARG : RegisterModule();
}

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllUnregisterServer() {
  return CurrentModule() == nullptr ? E_INVALIDARG : UnregisterModule();
}
