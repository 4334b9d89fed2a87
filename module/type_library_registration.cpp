#include "type_library_registration.h"

#include "module_state.h"

namespace mirolta {

namespace {

using UnregisterTypeLibrary = HRESULT(STDAPICALLTYPE*)(REFGUID library, WORD major, WORD minor,
                                                       LCID locale, SYSKIND kind);

// Replaces the extension, or appends one.
void ReplaceEnding(OLECHAR* file, const OLECHAR* ending) {
  OLECHAR* place = nullptr;
  OLECHAR* c = file;
  for (; *c != 0; ++c) {
    if (*c == OLESTR('.')) place = c;
  }
  if (place == nullptr) place = c;
  while ((*place++ = *ending++) != 0) {
  }
}

// Truncates a file name after its last separator.
void CutToFolder(OLECHAR* file) {
  OLECHAR* end = file;
  for (OLECHAR* c = file; *c != 0; ++c) {
    if (*c == OLESTR('\\') || *c == OLESTR('/') || *c == OLESTR(':')) end = c + 1;
  }
  *end = 0;
}

}  // namespace

HRESULT FindModuleTypeLibrary(ITypeLib** library, OLECHAR (&file)[MAX_PATH + 5]) {
  OLECHAR module_file[MAX_PATH + 1];
  if (!ModuleFileName(module_file)) return E_FAIL;
  unsigned length = 0;
  do {
    file[length] = module_file[length];
  } while (module_file[length++] != 0);
  if (SUCCEEDED(LoadTypeLib(file, library))) return S_OK;
  ReplaceEnding(file, OLESTR(".tlb"));
  return LoadTypeLib(file, library);
}

HRESULT RegisterModuleTypeLibrary() {
  ITypeLib* library = nullptr;
  OLECHAR file[MAX_PATH + 5];
  HRESULT status = FindModuleTypeLibrary(&library, file);
  if (FAILED(status)) return status;
  OLECHAR folder[MAX_PATH + 5];
  unsigned length = 0;
  do {
    folder[length] = file[length];
  } while (file[length++] != 0);
  CutToFolder(folder);
  status = RegisterTypeLib(library, file, folder);
  library->Release();
  return status;
}

HRESULT UnregisterModuleTypeLibrary() {
  ITypeLib* library = nullptr;
  OLECHAR file[MAX_PATH + 5];
  HRESULT status = FindModuleTypeLibrary(&library, file);
  if (FAILED(status)) return status;
  TLIBATTR* attributes = nullptr;
  status = library->GetLibAttr(&attributes);
  if (SUCCEEDED(status)) {
    const HMODULE automation = LoadLibraryW(OLESTR("oleaut32.dll"));
    if (automation != nullptr) {
      // Through a generic function pointer: a direct cast between the types is warned of.
      const auto unregister = reinterpret_cast<UnregisterTypeLibrary>(
          reinterpret_cast<void*>(GetProcAddress(automation, "UnRegisterTypeLib")));
      if (unregister != nullptr) {
        status = unregister(attributes->guid, attributes->wMajorVerNum, attributes->wMinorVerNum,
                            attributes->lcid, attributes->syskind);
      }
      FreeLibrary(automation);
    }
    library->ReleaseTLibAttr(attributes);
  }
  library->Release();
  return status;
}

}  // namespace mirolta
