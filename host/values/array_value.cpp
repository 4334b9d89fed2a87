#include "values/array_value.h"

#include <string.h>

#include "engine/host_errors.h"
#include "engine/properties.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "objects/object_handle.h"
#include "values/scoped_variant.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr char kLowerBoundKey[] = DUK_HIDDEN_SYMBOL("lower");
constexpr char kArrayKey[] = DUK_HIDDEN_SYMBOL("array");
constexpr UINT kMostDimensions = 60;

// The base of the native members of VBArray: a copy of the array that `this` wraps.
struct ArrayFunction {
  ScopedVariant array;

  void Open(duk_context* engine) {
    duk_push_this(engine);
    if (!duk_is_object(engine, -1) || !PushArrayOf(engine, -1)) {
      ThrowStatus(engine, kArrayExpected);
    }
    const HRESULT status = VariantFromScript(engine, -1, &array);
    if (FAILED(status)) ThrowStatus(engine, status);
    duk_pop_2(engine);
  }

  UINT Dimensions() const { return SafeArrayGetDim(array.parray); }

  void Bounds(duk_context* engine, UINT dimension, LONG* lower, LONG* upper) const {
    if (dimension < 1 || dimension > Dimensions() ||
        FAILED(SafeArrayGetLBound(array.parray, dimension, lower)) ||
        FAILED(SafeArrayGetUBound(array.parray, dimension, upper))) {
      ThrowStatus(engine, kSubscriptOutOfRange);
    }
  }

  // The dimension given as the first argument, 1 if it is omitted.
  UINT DimensionArgument(duk_context* engine) const {
    return duk_is_undefined(engine, 0) ? 1 : duk_to_uint32(engine, 0);
  }

  void PushElement(duk_context* engine, LONG* indices) {
    VariantClear(&element);
    const VARTYPE type = array.vt & VT_TYPEMASK;
    HRESULT status;
    if (type == VT_VARIANT) {
      status = SafeArrayGetElement(array.parray, indices, &element);
    } else if (type == VT_DECIMAL) {
      status = SafeArrayGetElement(array.parray, indices, &element.decVal);
      element.vt = VT_DECIMAL;
    } else {
      element.llVal = 0;
      status = SafeArrayGetElement(array.parray, indices, &element.llVal);
      if (SUCCEEDED(status)) element.vt = type;
    }
    if (FAILED(status)) {
      ThrowStatus(engine, status == DISP_E_BADINDEX ? kSubscriptOutOfRange : status);
    }
    PushVariant(engine, element);
  }

  ScopedVariant element;
};

struct DimensionsFunction : ArrayFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    duk_push_uint(engine, Dimensions());
    return 1;
  }
};

template <bool kIsUpper>
struct BoundFunction : ArrayFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    LONG lower = 0, upper = 0;
    Bounds(engine, DimensionArgument(engine), &lower, &upper);
    duk_push_int(engine, kIsUpper ? upper : lower);
    return 1;
  }
};

struct GetItemFunction : ArrayFunction {
  duk_ret_t Run(duk_context* engine) {
    const duk_idx_t given = duk_get_top(engine);
    Open(engine);
    const UINT dimensions = Dimensions();
    if (static_cast<UINT>(given) != dimensions || dimensions > kMostDimensions) {
      ThrowStatus(engine, kSubscriptOutOfRange);
    }
    LONG indices[kMostDimensions];
    for (duk_idx_t i = 0; i < given; ++i) indices[i] = duk_to_int32(engine, i);
    PushElement(engine, indices);
    return 1;
  }
};

// All elements in column-major order: the first index varies fastest.
struct ToArrayFunction : ArrayFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    const UINT dimensions = Dimensions();
    if (dimensions == 0 || dimensions > kMostDimensions) ThrowStatus(engine, kArrayExpected);
    LONG indices[kMostDimensions], lower[kMostDimensions], upper[kMostDimensions];
    bool more = true;
    for (UINT i = 0; i < dimensions; ++i) {
      Bounds(engine, i + 1, &lower[i], &upper[i]);
      indices[i] = lower[i];
      if (upper[i] < lower[i]) more = false;
    }
    const duk_idx_t list = duk_push_array(engine);
    for (duk_uarridx_t at = 0; more; ++at) {
      PushElement(engine, indices);
      duk_put_prop_index(engine, list, at);
      UINT i = 0;
      while (i < dimensions && indices[i] == upper[i]) {
        indices[i] = lower[i];
        ++i;
      }
      more = i < dimensions;
      if (more) ++indices[i];
    }
    return 1;
  }
};

bool IsArrayValue(duk_context* engine, duk_idx_t index) {
  return duk_is_buffer_data(engine, index) || SlotAt(engine, index, SlotKind::kArray) != nullptr;
}

// new VBArray(value)
duk_ret_t ConstructVbArray(duk_context* engine) {
  ThrowIfClosed(engine, 0);
  if (!IsArrayValue(engine, 0)) ThrowStatus(engine, kArrayExpected);
  PushKept(engine, "VBArray.prototype");
  duk_push_object(engine);
  duk_dup(engine, -2);
  duk_set_prototype(engine, -2);
  duk_dup(engine, 0);
  duk_put_prop_string(engine, -2, kArrayKey);
  return 1;
}

constexpr duk_function_list_entry kMembers[] = {
    {"dimensions", RunProtected<DimensionsFunction>, 0},
    {"lbound", RunProtected<BoundFunction<false>>, 1},
    {"ubound", RunProtected<BoundFunction<true>>, 1},
    {"getItem", RunProtected<GetItemFunction>, DUK_VARARGS},
    {"toArray", RunProtected<ToArrayFunction>, 0},
    {nullptr, nullptr, 0},
};

bool PushByteArray(duk_context* engine, const VARIANT& array) {
  LONG lower = 0, upper = 0;
  if (array.vt != (VT_ARRAY | VT_UI1) || array.parray == nullptr ||
      SafeArrayGetDim(array.parray) != 1 || FAILED(SafeArrayGetLBound(array.parray, 1, &lower)) ||
      FAILED(SafeArrayGetUBound(array.parray, 1, &upper))) {
    return false;
  }
  const size_t size = static_cast<size_t>(int64_t{upper} - lower + 1);
  uint8_t* bytes = PushBytes(engine, size);
  if (size != 0) {
    void* data = nullptr;
    const HRESULT status = SafeArrayAccessData(array.parray, &data);
    if (FAILED(status)) ThrowStatus(engine, status);
    memcpy(bytes, data, size);
    SafeArrayUnaccessData(array.parray);
  }
  if (lower != 0) {
    duk_push_int(engine, lower);
    duk_put_prop_string(engine, -2, kLowerBoundKey);
  }
  return true;
}

}  // namespace

void PushArray(duk_context* engine, const VARIANT& array) {
  if (PushByteArray(engine, array)) return;
  VARIANT copy = {};
  const HRESULT status = VariantCopy(&copy, &array);
  if (FAILED(status)) ThrowStatus(engine, status);
  PushSlotObject(engine, SlotKind::kArray, copy, PushPlainObject);
}

bool CanBeLent(duk_context* engine, duk_idx_t index) {
  const uint8_t* bytes = nullptr;
  size_t size = 0;
  if (!BytesAt(engine, index, &bytes, &size) || size == 0) return false;
  // The name is hidden, so that no trap of a proxy among the prototypes runs.
  return !duk_is_object(engine, index) ||
         duk_has_prop_heapptr(engine, index, ContextOf(engine).lower_bound_name) == 0;
}

LONG LowerBoundAt(duk_context* engine, duk_idx_t index) {
  if (!PushOwn(engine, index, kLowerBoundKey)) return 0;
  const LONG lower = duk_get_int(engine, -1);
  duk_pop(engine);
  return lower;
}

bool PushArrayOf(duk_context* engine, duk_idx_t index) {
  return PushOwn(engine, index, kArrayKey);
}

void InstallVbArray(duk_context* engine) {
  ContextOf(engine).lower_bound_name = KeepName(engine, kLowerBoundKey);
  duk_push_c_function(engine, ConstructVbArray, 1);
  duk_push_object(engine);
  duk_put_function_list(engine, -1, kMembers);
  duk_dup_top(engine);
  KeepValue(engine, "VBArray.prototype");
  duk_put_prop_string(engine, -2, "prototype");
  duk_put_global_string(engine, "VBArray");
}

}  // namespace mirolta::host
