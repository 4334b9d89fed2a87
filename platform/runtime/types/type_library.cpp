// Type libraries: the object that lists a library's types, and loading one from a module's file.
#include "mirolta/bool.h"
#include "mirolta/module.h"
#include "portable/module_resources.h"
#include "texts/wide_text.h"
#include "types/documentation.h"
#include "types/library_object.h"

namespace mirolta::runtime {

namespace {

class TypeLibrary final : public LibraryObject<ITypeLib, IID_ITypeLib> {
 public:
  explicit TypeLibrary(CopiedLibrary* library) : LibraryObject(library) {}

  UINT GetTypeInfoCount() override { return TypeCount(*library_); }

  HRESULT GetTypeInfo(UINT index, ITypeInfo** out) override {
    if (out == nullptr) return E_INVALIDARG;
    *out = nullptr;
    if (index >= TypeCount(*library_)) return TYPE_E_ELEMENTNOTFOUND;
    return MakeTypeInfo(library_, index, out);
  }

  HRESULT GetTypeInfoType(UINT index, TYPEKIND* kind) override {
    if (kind == nullptr) return E_INVALIDARG;
    if (index >= TypeCount(*library_)) return TYPE_E_ELEMENTNOTFOUND;
    *kind = index < library_->table.interface_count ? TKIND_DISPATCH : TKIND_COCLASS;
    return S_OK;
  }

  HRESULT GetTypeInfoOfGuid(REFGUID guid, ITypeInfo** out) override {
    if (out == nullptr) return E_INVALIDARG;
    *out = nullptr;
    const TypeLibraryTable& table = library_->table;
    for (unsigned i = 0; i < table.interface_count; ++i) {
      if (*table.interfaces[i]->iid == guid) return MakeTypeInfo(library_, i, out);
    }
    for (unsigned i = 0; i < table.class_count; ++i) {
      if (*table.classes[i].id == guid) {
        return MakeTypeInfo(library_, table.interface_count + i, out);
      }
    }
    return TYPE_E_ELEMENTNOTFOUND;
  }

  HRESULT GetLibAttr(TLIBATTR** attributes) override {
    if (attributes == nullptr) return E_INVALIDARG;
    *attributes = static_cast<TLIBATTR*>(AllocateRuntime(sizeof(TLIBATTR)));
    if (*attributes == nullptr) return E_OUTOFMEMORY;
    **attributes = TLIBATTR{
        library_->id,          0, sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32, library_->table.major,
        library_->table.minor, 0};
    return S_OK;
  }
  void ReleaseTLibAttr(TLIBATTR* attributes) override { FreeRuntime(attributes); }

  HRESULT GetTypeComp(ITypeComp** out) override {
    if (out != nullptr) *out = nullptr;
    return E_NOTIMPL;
  }

  HRESULT GetDocumentation(INT index, BSTR* name, BSTR* help, DWORD* help_context,
                           BSTR* help_file) override {
    if (index >= 0) {
      ITypeInfo* info = nullptr;
      const HRESULT status = GetTypeInfo(static_cast<UINT>(index), &info);
      if (FAILED(status)) return status;
      const HRESULT result = info->GetDocumentation(-1, name, help, help_context, help_file);
      info->Release();
      return result;
    }
    return CopyDocumentation(library_->table.name, library_->table.help, name, help, help_context,
                             help_file);
  }

  HRESULT IsName(LPOLESTR name, ULONG, BOOL* found) override {
    if (name == nullptr || found == nullptr) return E_INVALIDARG;
    *found = FALSE;
    ForEachName([&](UINT, MEMBERID, const OLECHAR* candidate) {
      if (EqualsIgnoringAsciiCase(candidate, name)) *found = TRUE;
    });
    return S_OK;
  }

  HRESULT FindName(LPOLESTR name, ULONG, ITypeInfo** infos, MEMBERID* ids, USHORT* count) override {
    if (name == nullptr || infos == nullptr || ids == nullptr || count == nullptr) {
      return E_INVALIDARG;
    }
    const USHORT capacity = *count;
    *count = 0;
    HRESULT status = S_OK;
    ForEachName([&](UINT type, MEMBERID id, const OLECHAR* candidate) {
      if (FAILED(status) || *count == capacity || !EqualsIgnoringAsciiCase(candidate, name)) return;
      status = MakeTypeInfo(library_, type, &infos[*count]);
      if (FAILED(status)) return;
      ids[*count] = id;
      *count = static_cast<USHORT>(*count + 1);
    });
    if (FAILED(status)) {
      while (*count > 0) {
        *count = static_cast<USHORT>(*count - 1);
        infos[*count]->Release();
        infos[*count] = nullptr;
      }
    }
    return status;
  }

 private:
  // Visits the names of types and members; a property's get and put share one name.
  template <typename Visit>
  void ForEachName(Visit visit) const {
    const TypeLibraryTable& table = library_->table;
    for (unsigned i = 0; i < table.interface_count; ++i) {
      const InterfaceTable& one = *table.interfaces[i];
      visit(i, -1, one.name);
      for (unsigned k = 0; k < one.member_count; ++k) {
        const bool repeats = k > 0 && one.members[k].id == one.members[k - 1].id;
        if (!repeats) visit(i, one.members[k].id, one.members[k].name);
      }
    }
    for (unsigned i = 0; i < table.class_count; ++i) {
      visit(table.interface_count + i, -1, table.classes[i].name);
    }
  }
};

}  // namespace

HRESULT MakeTypeLib(CopiedLibrary* library, ITypeLib** out) {
  *out = NewRuntime<TypeLibrary>(library);
  if (*out != nullptr) return S_OK;
  ReleaseReference(library);
  return E_OUTOFMEMORY;
}

}  // namespace mirolta::runtime

using namespace mirolta;
using namespace mirolta::runtime;

extern "C" HRESULT mirolta::MiroltaTypeLibFromTable(const TypeLibraryTable* table, ITypeLib** out) {
  if (table == nullptr || out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  CopiedLibrary* copy = CopyTypeLibrary(*table);
  return copy == nullptr ? E_OUTOFMEMORY : MakeTypeLib(copy, out);
}

extern "C" HRESULT LoadTypeLib(const OLECHAR* file, ITypeLib** out) {
  if (file == nullptr || out == nullptr) return E_INVALIDARG;
  *out = nullptr;
  const HMODULE module = LoadLibraryW(file);
  if (module == nullptr) return TYPE_E_CANTLOADLIBRARY;
  const ModuleResources* resources = MiroltaModuleResources(module);
  const HRESULT status = resources == nullptr || resources->type_library == nullptr
                             ? TYPE_E_CANTLOADLIBRARY
                             : MiroltaTypeLibFromTable(resources->type_library, out);
  FreeLibrary(module);
  return status;
}
