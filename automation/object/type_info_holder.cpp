#include "type_info_holder.h"

#include <cstring>
#include <new>

#include "scoped_lock.h"

namespace mirolta {

namespace {

constexpr WORD kMajorVersion = 1;
constexpr WORD kMinorVersion = 0;

// The library in the module's own file, else the registered one.
HRESULT LoadModuleTypeLib(LCID locale, ITypeLib** out) {
  OLECHAR file[MAX_PATH + 1];
  if (ModuleFileName(file) && SUCCEEDED(LoadTypeLib(file, out))) return S_OK;
  return LoadRegTypeLib(CurrentModule()->type_library, kMajorVersion, kMinorVersion, locale, out);
}

UINT TextLength(const OLECHAR* text) {
  UINT length = 0;
  while (text[length] != 0) ++length;
  return length;
}

}  // namespace

// The acquire pairs with the release in Load: who sees the pointer sees the names too. A thread that
// has returned from here may load the pointer relaxed, since it cannot read an earlier value of the
// same atomic; only the unloading of the module, which no call survives, removes it.
HRESULT TypeInfoHolder::Ensure(LCID locale) {
  if (info_.load(std::memory_order_acquire) != nullptr) return S_OK;
  ModuleState* const module = CurrentModule();
  if (module == nullptr) return E_FAIL;
  ScopedLock hold(module->type_info_lock);
  // Relaxed: written under this lock.
  if (info_.load(std::memory_order_relaxed) != nullptr) return S_OK;
  return Load(locale);
}

HRESULT TypeInfoHolder::Load(LCID locale) {
  ITypeLib* library = nullptr;
  HRESULT status = LoadModuleTypeLib(locale, &library);
  if (FAILED(status)) return status;
  ITypeInfo* info = nullptr;
  status = library->GetTypeInfoOfGuid(*iid_, &info);
  library->Release();
  if (FAILED(status)) return status;
  status = BuildNames(info);
  if (FAILED(status)) {
    info->Release();
    return status;
  }
  cleanup_ = {Release, this, nullptr};
  AddModuleCleanup(&cleanup_);
  info_.store(info, std::memory_order_release);
  return S_OK;
}

HRESULT TypeInfoHolder::BuildNames(ITypeInfo* info) {
  TYPEATTR* attributes = nullptr;
  HRESULT status = info->GetTypeAttr(&attributes);
  if (FAILED(status)) return status;
  const UINT functions = attributes->cFuncs;
  info->ReleaseTypeAttr(attributes);

  names_ = NewArray<CachedName>(CheckedSize(functions));
  if (names_ == nullptr) return E_OUTOFMEMORY;
  for (UINT i = 0; i < functions && SUCCEEDED(status); ++i) {
    FUNCDESC* function = nullptr;
    status = info->GetFuncDesc(i, &function);
    if (FAILED(status)) break;
    const MEMBERID id = function->memid;
    info->ReleaseFuncDesc(function);
    BSTR name = nullptr;
    UINT found = 0;
    status = info->GetNames(id, &name, 1, &found);
    if (SUCCEEDED(status) && found == 1) names_[name_count_++] = {name, SysStringLen(name), id};
  }
  if (FAILED(status)) DropNames();
  return status;
}

void TypeInfoHolder::DropNames() {
  for (UINT i = 0; i < name_count_; ++i) SysFreeString(names_[i].name);
  delete[] names_;
  names_ = nullptr;
  name_count_ = 0;
}

void TypeInfoHolder::Release(void* holder) {
  TypeInfoHolder* const self = static_cast<TypeInfoHolder*>(holder);
  self->info_.exchange(nullptr)->Release();
  self->DropNames();
}

HRESULT TypeInfoHolder::Get(LCID locale, ITypeInfo** out) {
  *out = nullptr;
  const HRESULT status = Ensure(locale);
  if (FAILED(status)) return status;
  *out = info_.load(std::memory_order_relaxed);
  (*out)->AddRef();
  return S_OK;
}

const TypeInfoHolder::CachedName* TypeInfoHolder::FindCached(const OLECHAR* name) const {
  const UINT length = TextLength(name);
  for (UINT i = name_count_; i-- > 0;) {
    const CachedName& candidate = names_[i];
    if (candidate.length == length &&
        std::memcmp(candidate.name, name, length * sizeof(OLECHAR)) == 0) {
      return &candidate;
    }
  }
  return nullptr;
}

HRESULT TypeInfoHolder::GetIDsOfNames(LPOLESTR* names, UINT count, LCID locale, DISPID* ids) {
  const HRESULT status = Ensure(locale);
  if (FAILED(status)) return status;
  if (count > 0 && (names == nullptr || ids == nullptr)) return E_POINTER;
  for (UINT i = 0; i < count; ++i) {
    if (names[i] == nullptr) return E_POINTER;
    const CachedName* const cached = FindCached(names[i]);
    if (cached != nullptr) {
      ids[i] = cached->id;
      continue;
    }
    // The type information's own look-up ignores case.
    const HRESULT found =
        info_.load(std::memory_order_relaxed)->GetIDsOfNames(&names[i], 1, &ids[i]);
    if (FAILED(found)) return found;
  }
  return S_OK;
}

HRESULT TypeInfoHolder::Invoke(void* instance, DISPID id, LCID locale, WORD flags,
                               DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                               UINT* bad_argument) {
  const HRESULT status = Ensure(locale);
  if (FAILED(status)) return status;
  return info_.load(std::memory_order_relaxed)
      ->Invoke(instance, id, flags, params, result, exception, bad_argument);
}

}  // namespace mirolta
