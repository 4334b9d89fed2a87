#include "entry_points.h"

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

// Acquire: whoever reads a factory reads what its creator wrote. Only Detach, which no call survives, takes it
// away.
IUnknown* CachedFactory(const ClassRow& row) {
  return __atomic_load_n(&row.factory, __ATOMIC_ACQUIRE);
}

// Creates the row's factory unless another thread has.
HRESULT MakeFactory(ModuleState& module, ClassRow& row, IUnknown** factory) {
  ScopedLock hold(module.class_objects_lock);
  *factory = CachedFactory(row);
  if (*factory != nullptr) return S_OK;
  void* made = nullptr;
  const HRESULT status = row.create_factory(row.create_instance, IID_IUnknown, &made);
  *factory = static_cast<IUnknown*>(made);
  __atomic_store_n(&row.factory, *factory, __ATOMIC_RELEASE);
  return status;
}

// Returns the row's factory without adding a reference, and creates it if needed.
HRESULT FindFactory(ModuleState& module, ClassRow& row, IUnknown** factory) {
  *factory = CachedFactory(row);
  return *factory != nullptr ? S_OK : MakeFactory(module, row, factory);
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
  IUnknown* factory = nullptr;
  const HRESULT status = FindFactory(*module, *row, &factory);
  if (factory == nullptr) return FAILED(status) ? status : CLASS_E_CLASSNOTAVAILABLE;
  return factory->QueryInterface(iid, out);
}

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllCanUnloadNow() {
  const ModuleState* const module = CurrentModule();
  return module != nullptr && module->lock_count != 0 ? S_FALSE : S_OK;
}

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllRegisterServer() {
  return CurrentModule() == nullptr ? E_INVALIDARG : AsOneRegistryChange(RegisterModule);
}

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllUnregisterServer() {
  if (CurrentModule() == nullptr) return E_INVALIDARG;
  static_cast<void>(AsOneRegistryChange(UnregisterModule));  // never fails as a whole
  return S_OK;
}
