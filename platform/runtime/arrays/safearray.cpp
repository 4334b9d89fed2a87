// SAFEARRAY: descriptors with a hidden word that holds the element type.
#include <cstring>

#include "arrays/safearray_elements.h"
#include "heap/allocation.h"
#include "mirolta/dispatch.h"
#include "mirolta/variant.h"
#include "portable/created_bytes.h"
#include "values/variant_rules.h"

namespace mirolta::runtime {
namespace {

// The platform keeps 16 bytes before the descriptor; their last word is the element type.
constexpr size_t kHiddenBytes = 16;
constexpr UINT kMaxDimensions = 0xFFFF;
constexpr ULONG kMaxLocks = 0xFFFF;

BYTE* BlockOf(SAFEARRAY* array) {
  return static_cast<BYTE*>(static_cast<void*>(array)) - kHiddenBytes;
}

void SetHiddenType(SAFEARRAY* array, DWORD type) {
  memcpy(BlockOf(array) + kHiddenBytes - sizeof type, &type, sizeof type);
}

DWORD HiddenType(SAFEARRAY* array) {
  DWORD type = 0;
  memcpy(&type, BlockOf(array) + kHiddenBytes - sizeof type, sizeof type);
  return type;
}

// The first of these bytes is not 0 for an array of public bytes; only arrays of MiroltaCreateBytes are. Those
// whose descriptor the caller made have no such bytes.
bool CanBePublic(const SAFEARRAY* array) {
  return array->fFeatures == FADF_HAVEVARTYPE && array->cbElements == 1;
}

// Relaxed: several threads may copy an array at once.
void SetPublic(SAFEARRAY* array, bool is_public) {
  __atomic_store_n(BlockOf(array), BYTE{is_public}, __ATOMIC_RELAXED);
}

bool IsPublic(SAFEARRAY* array) {
  return CanBePublic(array) && __atomic_load_n(BlockOf(array), __ATOMIC_RELAXED) != 0;
}

// Bytes of the descriptor with its bounds; SAFEARRAY declares the first.
size_t DescriptorBytes(UINT dimensions) {
  return sizeof(SAFEARRAY) + (dimensions - 1) * sizeof(SAFEARRAYBOUND);
}

SAFEARRAY* NewDescriptor(UINT dimensions) {
  const size_t bytes = kHiddenBytes + DescriptorBytes(dimensions);
  void* block = AllocateRuntime(bytes);
  if (block == nullptr) return nullptr;
  memset(block, 0, bytes);
  SAFEARRAY* array =
      static_cast<SAFEARRAY*>(static_cast<void*>(static_cast<BYTE*>(block) + kHiddenBytes));
  array->cDims = static_cast<USHORT>(dimensions);
  return array;
}

// Bounds returns all cDims bounds, of which the structure declares one.
SAFEARRAYBOUND* Bounds(SAFEARRAY* array) {
  return array->rgsabound;
}

// Errors: false if the elements take 4 GB or more.
bool CountElements(SAFEARRAY* array, ULONG* count) {
  ULONGLONG total = 1;
  for (UINT i = 0; i < array->cDims; ++i) {
    total *= Bounds(array)[i].cElements;
    if (total > 0xFFFFFFFFu) return false;
  }
  if (total * array->cbElements > 0xFFFFFFFFu) return false;
  *count = static_cast<ULONG>(total);
  return true;
}

// What a new array's elements hold.
enum class Content { kCleared, kUnwritten };

HRESULT AllocateData(SAFEARRAY* array, Content content) {
  ULONG count = 0;
  if (!CountElements(array, &count)) return E_OUTOFMEMORY;
  const size_t bytes = size_t{count} * array->cbElements;
  array->pvData = AllocateRuntime(bytes);
  if (array->pvData == nullptr) return E_OUTOFMEMORY;
  if (content == Content::kCleared) memset(array->pvData, 0, bytes);
  return S_OK;
}

SAFEARRAY* CreateArray(VARTYPE type, UINT dimensions, const SAFEARRAYBOUND* bounds,
                       Content content) {
  const ULONG element_size = ElementSize(type);
  if (element_size == 0 || dimensions == 0 || dimensions > kMaxDimensions || bounds == nullptr) {
    return nullptr;
  }
  SAFEARRAY* array = NewDescriptor(dimensions);
  if (array == nullptr) return nullptr;
  array->cbElements = element_size;
  array->fFeatures = ArrayFeatures(type);
  SetHiddenType(array, type);
  for (UINT i = 0; i < dimensions; ++i) Bounds(array)[i] = bounds[dimensions - 1 - i];
  if (FAILED(AllocateData(array, content))) {
    FreeRuntime(BlockOf(array));
    return nullptr;
  }
  return array;
}

HRESULT ClearElements(SAFEARRAY* array) {
  ULONG count = 0;
  if (array->pvData == nullptr || IsPublic(array) || !CountElements(array, &count)) return S_OK;
  return ClearArrayElements(array->fFeatures, array->cbElements, array->pvData, count);
}

// BoundOf returns the bound of dimension 1 (leftmost) to cDims; they are stored in reverse.
SAFEARRAYBOUND* BoundOf(SAFEARRAY* array, UINT dimension) {
  return &Bounds(array)[array->cDims - dimension];
}

// Several threads may read an array at once, each with its own lock count. Relaxed: the caller orders
// its destruction after all use.
ULONG LocksOf(const SAFEARRAY* array) {
  return __atomic_load_n(&array->cLocks, __ATOMIC_RELAXED);
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" {

SAFEARRAY* SafeArrayCreate(VARTYPE type, UINT dimensions, SAFEARRAYBOUND* bounds) {
  return CreateArray(type, dimensions, bounds, Content::kCleared);
}

SAFEARRAY* MiroltaCreateBytes(ULONG count) {
  SAFEARRAYBOUND bound = {count, 0};
  return CreateArray(VT_UI1, 1, &bound, Content::kUnwritten);
}

void MiroltaMarkPublic(SAFEARRAY* bytes) {
  if (CanBePublic(bytes)) SetPublic(bytes, true);
}

SAFEARRAY* SafeArrayCreateVector(VARTYPE type, LONG lower, ULONG elements) {
  SAFEARRAYBOUND bound = {elements, lower};
  SAFEARRAY* array = SafeArrayCreate(type, 1, &bound);
  if (array != nullptr) array->fFeatures |= FADF_CREATEVECTOR;
  return array;
}

HRESULT SafeArrayDestroy(SAFEARRAY* array) {
  if (array == nullptr) return S_OK;
  if (array->cLocks > 0) return DISP_E_ARRAYISLOCKED;
  const HRESULT status = ClearElements(array);
  if (FAILED(status)) return status;
  // The creator of such an array owns the memory of its descriptor and data.
  constexpr USHORT kForeignData = FADF_AUTO | FADF_STATIC | FADF_EMBEDDED;
  if ((array->fFeatures & kForeignData) != 0) return S_OK;
  FreeRuntime(array->pvData);
  FreeRuntime(BlockOf(array));
  return S_OK;
}

HRESULT SafeArrayCopy(SAFEARRAY* from, SAFEARRAY** to) {
  if (to == nullptr) return E_INVALIDARG;
  *to = nullptr;
  if (from == nullptr) return S_OK;
  if (from->cDims == 0 || from->cbElements == 0) return E_INVALIDARG;
  if (IsPublic(from)) SetPublic(from, false);
  SAFEARRAY* made = NewDescriptor(from->cDims);
  if (made == nullptr) return E_OUTOFMEMORY;
  made->cbElements = from->cbElements;
  constexpr USHORT kOfStorage =
      FADF_AUTO | FADF_STATIC | FADF_EMBEDDED | FADF_FIXEDSIZE | FADF_CREATEVECTOR;
  made->fFeatures = static_cast<USHORT>(from->fFeatures & ~kOfStorage);
  constexpr USHORT kHasHiddenWords = FADF_HAVEVARTYPE | FADF_HAVEIID;
  if ((from->fFeatures & kHasHiddenWords) != 0) {
    memcpy(BlockOf(made), BlockOf(from), kHiddenBytes);
  }
  for (UINT i = 0; i < from->cDims; ++i) Bounds(made)[i] = Bounds(from)[i];
  HRESULT status = AllocateData(made, Content::kCleared);
  ULONG count = 0;
  if (SUCCEEDED(status) && from->pvData != nullptr && CountElements(from, &count)) {
    status =
        CopyArrayElements(from->fFeatures, from->cbElements, from->pvData, made->pvData, count);
  }
  if (FAILED(status)) {
    SafeArrayDestroy(made);
    return status;
  }
  *to = made;
  return S_OK;
}

HRESULT SafeArrayLock(SAFEARRAY* array) {
  if (array == nullptr) return E_INVALIDARG;
  if (LocksOf(array) >= kMaxLocks) return E_UNEXPECTED;
  __atomic_add_fetch(&array->cLocks, 1u, __ATOMIC_SEQ_CST);
  return S_OK;
}

HRESULT SafeArrayUnlock(SAFEARRAY* array) {
  if (array == nullptr) return E_INVALIDARG;
  if (LocksOf(array) == 0) return E_UNEXPECTED;
  __atomic_sub_fetch(&array->cLocks, 1u, __ATOMIC_SEQ_CST);
  return S_OK;
}

HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
  if (array == nullptr || data == nullptr) return E_INVALIDARG;
  const HRESULT status = SafeArrayLock(array);
  *data = SUCCEEDED(status) ? array->pvData : nullptr;
  return status;
}

HRESULT SafeArrayUnaccessData(SAFEARRAY* array) {
  return SafeArrayUnlock(array);
}

UINT SafeArrayGetDim(SAFEARRAY* array) {
  return array == nullptr ? 0 : array->cDims;
}

UINT SafeArrayGetElemsize(SAFEARRAY* array) {
  return array == nullptr ? 0 : array->cbElements;
}

HRESULT SafeArrayGetLBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
  if (array == nullptr || bound == nullptr) return E_INVALIDARG;
  if (dimension == 0 || dimension > array->cDims) return DISP_E_BADINDEX;
  *bound = BoundOf(array, dimension)->lLbound;
  return S_OK;
}

HRESULT SafeArrayGetUBound(SAFEARRAY* array, UINT dimension, LONG* bound) {
  if (array == nullptr || bound == nullptr) return E_INVALIDARG;
  if (dimension == 0 || dimension > array->cDims) return DISP_E_BADINDEX;
  const SAFEARRAYBOUND* found = BoundOf(array, dimension);
  // Modulo 2^32, as on the platform: the upper bound of an empty array may wrap around.
  *bound = static_cast<LONG>(static_cast<ULONG>(found->lLbound) + found->cElements - 1u);
  return S_OK;
}

HRESULT SafeArrayGetVartype(SAFEARRAY* array, VARTYPE* type) {
  if (array == nullptr || type == nullptr) return E_INVALIDARG;
  if ((array->fFeatures & FADF_HAVEVARTYPE) != 0) {
    *type = static_cast<VARTYPE>(HiddenType(array));
  } else if ((array->fFeatures & FADF_DISPATCH) != 0) {
    *type = VT_DISPATCH;
  } else if ((array->fFeatures & FADF_UNKNOWN) != 0) {
    *type = VT_UNKNOWN;
  } else {
    return E_INVALIDARG;
  }
  return S_OK;
}

HRESULT SafeArrayPtrOfIndex(SAFEARRAY* array, LONG* indices, void** element) {
  if (array == nullptr || indices == nullptr || element == nullptr) return E_INVALIDARG;
  // indices[0] is the leftmost dimension, whose elements are contiguous.
  size_t offset = 0;
  size_t stride = array->cbElements;
  for (UINT dimension = 1; dimension <= array->cDims; ++dimension) {
    const SAFEARRAYBOUND* bound = BoundOf(array, dimension);
    const LONGLONG place = LONGLONG{indices[dimension - 1]} - bound->lLbound;
    if (place < 0 || place >= LONGLONG{bound->cElements}) return DISP_E_BADINDEX;
    offset += static_cast<size_t>(place) * stride;
    stride *= bound->cElements;
  }
  *element = static_cast<BYTE*>(array->pvData) + offset;
  return S_OK;
}

HRESULT SafeArrayGetElement(SAFEARRAY* array, LONG* indices, void* element) {
  if (array == nullptr || indices == nullptr || element == nullptr) return E_INVALIDARG;
  HRESULT status = SafeArrayLock(array);
  if (FAILED(status)) return status;
  void* from = nullptr;
  status = SafeArrayPtrOfIndex(array, indices, &from);
  if (SUCCEEDED(status)) {
    status = ReadArrayElement(array->fFeatures, array->cbElements, from, element);
  }
  SafeArrayUnlock(array);
  return status;
}

HRESULT SafeArrayPutElement(SAFEARRAY* array, LONG* indices, void* element) {
  if (array == nullptr || indices == nullptr) return E_INVALIDARG;
  HRESULT status = SafeArrayLock(array);
  if (FAILED(status)) return status;
  if (IsPublic(array)) SetPublic(array, false);
  void* to = nullptr;
  status = SafeArrayPtrOfIndex(array, indices, &to);
  if (SUCCEEDED(status)) {
    status = WriteArrayElement(array->fFeatures, array->cbElements, element, to);
  }
  SafeArrayUnlock(array);
  return status;
}
}
