#include "class_registration.h"

#include "module_state.h"
#include "registrar.h"
#include "type_library_registration.h"

namespace mirolta {

namespace {

// ERROR_RESOURCE_TYPE_NOT_FOUND as a status.
constexpr HRESULT kResourceNotFound = static_cast<HRESULT>(0x80070715u);

}  // namespace

HRESULT UpdateRegistry(const ClassRow& row, bool registers) {
  const HINSTANCE instance = CurrentModule()->instance;
  OLECHAR file[MAX_PATH + 1];
  if (!ModuleFileName(file)) return E_FAIL;
  const HRSRC resource =
      FindResourceW(instance, MAKEINTRESOURCEW(row.registry_script), OLESTR("REGISTRY"));
  if (resource == nullptr) return kResourceNotFound;
  const BYTE* const text = static_cast<const BYTE*>(LockResource(LoadResource(instance, resource)));
  if (text == nullptr) return kResourceNotFound;
  const DWORD length = SizeofResource(instance, resource);
  return registers ? RegisterScript(text, length, file) : UnregisterScript(text, length, file);
}

HRESULT RegisterModule() {
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    const HRESULT status = row->update_registry(*row, true);
    if (FAILED(status)) return status;
  }
  return RegisterModuleTypeLibrary();
}

HRESULT UnregisterModule() {
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    row->update_registry(*row, false);
  }
  UnregisterModuleTypeLibrary();
  return S_OK;
}

}  // namespace mirolta
