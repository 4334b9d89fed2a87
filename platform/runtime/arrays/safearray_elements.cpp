#include "arrays/safearray_elements.h"

#include <cstring>

#include "heap/wipe_on_free.h"
#include "mirolta/dispatch.h"
#include "values/variant_rules.h"

namespace mirolta::runtime {
namespace {

constexpr USHORT kInterfaces = FADF_UNKNOWN | FADF_DISPATCH;

// The array of texts, values or interfaces at `elements`.
BSTR* Texts(void* elements) {
  return static_cast<BSTR*>(elements);
}
VARIANT* Values(void* elements) {
  return static_cast<VARIANT*>(elements);
}
IUnknown** Objects(void* elements) {
  return static_cast<IUnknown**>(elements);
}

}  // namespace

USHORT ArrayFeatures(VARTYPE type) {
  switch (type) {
    case VT_BSTR:
      return FADF_BSTR | FADF_HAVEVARTYPE;
    case VT_VARIANT:
      return FADF_VARIANT | FADF_HAVEVARTYPE;
    case VT_UNKNOWN:
      return FADF_UNKNOWN | FADF_HAVEIID;
    case VT_DISPATCH:
      return FADF_DISPATCH | FADF_HAVEIID;
    default:
      return FADF_HAVEVARTYPE;
  }
}

HRESULT ClearArrayElements(USHORT features, ULONG element_size, void* elements, ULONG count) {
  if ((features & FADF_BSTR) != 0) {
    for (ULONG i = 0; i < count; ++i) SysFreeString(Texts(elements)[i]);
  } else if ((features & kInterfaces) != 0) {
    for (ULONG i = 0; i < count; ++i) {
      if (Objects(elements)[i] != nullptr) Objects(elements)[i]->Release();
    }
  } else if ((features & FADF_VARIANT) != 0) {
    for (ULONG i = 0; i < count; ++i) {
      const HRESULT status = VariantClear(&Values(elements)[i]);
      if (FAILED(status)) return status;
    }
  }
  if (WipesOnFree()) {
    memset(elements, 0, size_t{element_size} * count);
  }
  return S_OK;
}

HRESULT CopyArrayElements(USHORT features, ULONG element_size, const void* from, void* to,
                          ULONG count) {
  if ((features & FADF_VARIANT) != 0) {
    const VARIANT* values = static_cast<const VARIANT*>(from);
    for (ULONG i = 0; i < count; ++i) {
      const HRESULT status = VariantCopy(&Values(to)[i], &values[i]);
      if (FAILED(status)) return status;
    }
    return S_OK;
  }
  if ((features & FADF_BSTR) != 0) {
    const BSTR* texts = static_cast<const BSTR*>(from);
    for (ULONG i = 0; i < count; ++i) {
      const HRESULT status = CopyText(texts[i], &Texts(to)[i]);
      if (FAILED(status)) return status;
    }
    return S_OK;
  }
  memcpy(to, from, size_t{element_size} * count);
  if ((features & kInterfaces) != 0) {
    for (ULONG i = 0; i < count; ++i) {
      if (Objects(to)[i] != nullptr) Objects(to)[i]->AddRef();
    }
  }
  return S_OK;
}

HRESULT ReadArrayElement(USHORT features, ULONG element_size, const void* from, void* to) {
  if ((features & FADF_VARIANT) != 0) VariantInit(Values(to));
  return CopyArrayElements(features, element_size, from, to, 1);
}

HRESULT WriteArrayElement(USHORT features, ULONG element_size, void* from, void* to) {
  if ((features & FADF_VARIANT) != 0) return VariantCopy(Values(to), Values(from));
  if ((features & FADF_BSTR) != 0) {
    BSTR made = nullptr;
    const HRESULT status = CopyText(static_cast<BSTR>(from), &made);
    if (FAILED(status)) return status;
    SysFreeString(*Texts(to));
    *Texts(to) = made;
    return S_OK;
  }
  if ((features & kInterfaces) != 0) {
    IUnknown* object = static_cast<IUnknown*>(from);
    if (object != nullptr) object->AddRef();
    if (*Objects(to) != nullptr) (*Objects(to))->Release();
    *Objects(to) = object;
    return S_OK;
  }
  if (from == nullptr) return E_INVALIDARG;
  memcpy(to, from, element_size);
  return S_OK;
}

}  // namespace mirolta::runtime
