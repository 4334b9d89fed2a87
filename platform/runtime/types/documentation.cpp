#include "types/documentation.h"

namespace mirolta::runtime {

HRESULT CopyDocumentation(const OLECHAR* name_text, const OLECHAR* help_text, BSTR* name,
                          BSTR* help, DWORD* help_context, BSTR* help_file) {
  if (help_context != nullptr) *help_context = 0;
  if (help_file != nullptr) *help_file = nullptr;
  if (name != nullptr) *name = nullptr;
  if (help != nullptr) *help = nullptr;
  if (name != nullptr && name_text != nullptr) {
    *name = SysAllocString(name_text);
    if (*name == nullptr) return E_OUTOFMEMORY;
  }
  if (help != nullptr && help_text != nullptr) {
    *help = SysAllocString(help_text);
    if (*help != nullptr) return S_OK;
    if (name != nullptr) {
      SysFreeString(*name);
      *name = nullptr;
    }
    return E_OUTOFMEMORY;
  }
  return S_OK;
}

}  // namespace mirolta::runtime
