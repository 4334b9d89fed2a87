#include "values/value_marshal.h"

#include <string.h>

#include "engine/host_errors.h"
#include "engine/script_context.h"
#include "objects/dispatch_object.h"
#include "objects/object_handle.h"
#include "objects/script_object.h"
#include "objects/stream_object.h"
#include "platform.h"
#include "values/array_value.h"
#include "values/script_dates.h"

namespace mirolta::host {
namespace {

HRESULT TextFromScript(duk_context* engine, duk_idx_t index, VARIANT* out) {
  duk_size_t size = 0;
  const char* bytes = duk_get_lstring(engine, index, &size);
  // The engine counts a character of ASCII, and no other, as one byte.
  const bool is_ascii = duk_get_length(engine, index) == size;
  // A symbol's text is not ASCII.
  if (!is_ascii && duk_is_symbol(engine, index)) return DISP_E_TYPEMISMATCH;
  const size_t count = is_ascii ? size : DecodeFromEngine(bytes, size, nullptr);
  const BSTR text = SysAllocStringLen(nullptr, static_cast<UINT>(count));
  if (text == nullptr) return E_OUTOFMEMORY;
  if (is_ascii) {
    for (size_t i = 0; i < size; ++i) text[i] = static_cast<OLECHAR>(bytes[i]);
  } else {
    DecodeFromEngine(bytes, size, text);
  }
  out->vt = VT_BSTR;
  out->bstrVal = text;
  return S_OK;
}

void NumberFromScript(double number, VARIANT* out) {
  if (number >= -2147483648.0 && number <= 2147483647.0 &&
      number == static_cast<double>(static_cast<LONG>(number))) {
    out->vt = VT_I4;
    out->lVal = static_cast<LONG>(number);
  } else {
    out->vt = VT_R8;
    out->dblVal = number;
  }
}

HRESULT BytesFromScript(duk_context* engine, duk_idx_t index, VARIANT* out) {
  const uint8_t* bytes = nullptr;
  size_t size = 0;
  BytesAt(engine, index, &bytes, &size);
  SAFEARRAY* array =
      SafeArrayCreateVector(VT_UI1, LowerBoundAt(engine, index), static_cast<ULONG>(size));
  if (array == nullptr) return E_OUTOFMEMORY;
  if (size != 0) {
    void* data = nullptr;
    const HRESULT status = SafeArrayAccessData(array, &data);
    if (FAILED(status)) {
      SafeArrayDestroy(array);
      return status;
    }
    memcpy(data, bytes, size);
    SafeArrayUnaccessData(array);
  }
  out->vt = VT_ARRAY | VT_UI1;
  out->parray = array;
  return S_OK;
}

// The milliseconds of the Date at `index`; false if there is none.
bool DateAt(duk_context* engine, duk_idx_t index, double* milliseconds) {
  index = duk_normalize_index(engine, index);
  PushKept(engine, "getTime");
  duk_dup(engine, index);
  const bool is_date = duk_pcall_method(engine, 0) == DUK_EXEC_SUCCESS;
  if (is_date) *milliseconds = duk_get_number(engine, -1);
  duk_pop(engine);
  return is_date;
}

HRESULT ObjectFromScript(duk_context* engine, duk_idx_t index, VARIANT* out) {
  SlotNumber number = kNoSlot;
  if (HandleAt(engine, index, &number)) {
    const ObjectSlot* slot = ContextOf(engine).objects.Find(number);
    if (slot == nullptr) return kDisconnected;
    // Its value is VT_EMPTY, which a callee must not take for data.
    if (IsClosedStream(*slot)) return kStreamClosed;
    return VariantCopy(out, &slot->value);
  }
  if (PushArrayOf(engine, index)) {
    const HRESULT status = VariantFromScript(engine, -1, out);
    duk_pop(engine);
    return status;
  }
  double milliseconds = 0;
  if (DateAt(engine, index, &milliseconds)) {
    out->vt = VT_DATE;
    out->date = AutomationDate(milliseconds);
    return S_OK;
  }
  IDispatch* wrapper = WrapScriptObject(engine, index);
  if (wrapper == nullptr) return E_OUTOFMEMORY;
  out->vt = VT_DISPATCH;
  out->pdispVal = wrapper;
  return S_OK;
}

void PushObject(duk_context* engine, IUnknown* object) {
  if (object == nullptr) {
    duk_push_null(engine);
    return;
  }
  // A wrapped script object of this engine is unwrapped.
  if (PushWrappedObject(engine, object)) return;
  void* found = nullptr;
  if (SUCCEEDED(object->QueryInterface(IID_IDispatch, &found))) {
    PushDispatch(engine, static_cast<IDispatch*>(found));
    return;
  }
  if (SUCCEEDED(object->QueryInterface(IID_IStream, &found))) {
    PushStream(engine, static_cast<IStream*>(found));
    return;
  }
  object->AddRef();
  VARIANT value = {};
  value.vt = VT_UNKNOWN;
  value.punkVal = object;
  PushSlotObject(engine, SlotKind::kUnknown, value, PushPlainObject);
}

double DecimalNumber(const DECIMAL& value) {
  double number =
      static_cast<double>(value.Hi32) * 18446744073709551616.0 + static_cast<double>(value.Lo64);
  for (unsigned i = 0; i < value.scale; ++i) number /= 10;
  return (value.sign & DECIMAL_NEG) != 0 ? -number : number;
}

// Converts a value of any number type; false for other types.
bool NumberOf(const VARIANT& value, double* number) {
  switch (value.vt) {
    case VT_I1:
      *number = static_cast<signed char>(value.cVal);
      return true;
    case VT_UI1:
      *number = value.bVal;
      return true;
    case VT_I2:
      *number = value.iVal;
      return true;
    case VT_UI2:
      *number = value.uiVal;
      return true;
    case VT_I4:
    case VT_INT:
    case VT_ERROR:
    case VT_HRESULT:
      *number = value.lVal;
      return true;
    case VT_UI4:
    case VT_UINT:
      *number = value.ulVal;
      return true;
    case VT_I8:
      *number = static_cast<double>(value.llVal);
      return true;
    case VT_UI8:
      *number = static_cast<double>(value.ullVal);
      return true;
    case VT_R4:
      *number = static_cast<double>(value.fltVal);
      return true;
    case VT_R8:
      *number = value.dblVal;
      return true;
    case VT_CY:
      *number = static_cast<double>(value.cyVal.int64) / 10000;
      return true;
    case VT_DECIMAL:
      *number = DecimalNumber(value.decVal);
      return true;
    default:
      return false;
  }
}

void PushDate(duk_context* engine, double date) {
  PushKept(engine, "Date");
  duk_push_number(engine, ScriptMilliseconds(date));
  duk_new(engine, 1);
}

// Pushes the value behind a reference; the copy is cleared on an engine error too.
void PushReferenced(duk_context* engine, const VARIANT& reference) {
  VARIANT plain = {};
  const HRESULT status = VariantCopyInd(&plain, &reference);
  if (FAILED(status)) ThrowStatus(engine, status);
  const auto push = [](duk_context* inner, void* value) -> duk_ret_t {
    PushVariant(inner, *static_cast<const VARIANT*>(value));
    return 1;
  };
  const bool failed = duk_safe_call(engine, push, &plain, 0, 1) != DUK_EXEC_SUCCESS;
  VariantClear(&plain);
  if (failed) (void)duk_throw(engine);
}

}  // namespace

HRESULT PlainFromScript(duk_context* engine, duk_idx_t index, VARIANT* out) {
  switch (duk_get_type(engine, index)) {
    case DUK_TYPE_UNDEFINED:
    case DUK_TYPE_NONE:
      return S_OK;
    case DUK_TYPE_NULL:
      out->vt = VT_NULL;
      return S_OK;
    case DUK_TYPE_BOOLEAN:
      out->vt = VT_BOOL;
      out->boolVal = duk_get_boolean(engine, index) ? VARIANT_TRUE : VARIANT_FALSE;
      return S_OK;
    case DUK_TYPE_NUMBER:
      NumberFromScript(duk_get_number(engine, index), out);
      return S_OK;
    case DUK_TYPE_STRING:
      return TextFromScript(engine, index, out);
    default:
      return S_FALSE;
  }
}

HRESULT VariantFromScript(duk_context* engine, duk_idx_t index, VARIANT* out) {
  const HRESULT status = PlainFromScript(engine, index, out);
  if (status != S_FALSE) return status;
  switch (duk_get_type(engine, index)) {
    case DUK_TYPE_BUFFER:
      return BytesFromScript(engine, index, out);
    case DUK_TYPE_OBJECT:
    case DUK_TYPE_LIGHTFUNC:
      if (duk_is_buffer_data(engine, index)) return BytesFromScript(engine, index, out);
      return ObjectFromScript(engine, index, out);
    default:
      return DISP_E_TYPEMISMATCH;
  }
}

bool IsPlain(duk_context* engine, duk_idx_t index) {
  constexpr duk_uint_t kPlain = DUK_TYPE_MASK_UNDEFINED | DUK_TYPE_MASK_NULL |
                                DUK_TYPE_MASK_BOOLEAN | DUK_TYPE_MASK_NUMBER | DUK_TYPE_MASK_STRING;
  return duk_check_type_mask(engine, index, kPlain) != 0;
}

bool PushIfPlain(duk_context* engine, const VARIANT& value) {
  double number = 0;
  if (value.vt == VT_EMPTY || (value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND)) {
    duk_push_undefined(engine);
  } else if (value.vt == VT_NULL) {
    duk_push_null(engine);
  } else if (value.vt == VT_BOOL) {
    duk_push_boolean(engine, value.boolVal != VARIANT_FALSE);
  } else if (NumberOf(value, &number)) {
    duk_push_number(engine, number);
  } else {
    return false;
  }
  return true;
}

void PushVariant(duk_context* engine, const VARIANT& value) {
  if (PushIfPlain(engine, value)) return;
  if ((value.vt & VT_BYREF) != 0) {
    PushReferenced(engine, value);
  } else if ((value.vt & VT_ARRAY) != 0) {
    PushArray(engine, value);
  } else {
    switch (value.vt) {
      case VT_BSTR:
        PushUnits(engine, UnitsView(value.bstrVal, SysStringLen(value.bstrVal)));
        break;
      case VT_DATE:
        PushDate(engine, value.date);
        break;
      case VT_DISPATCH:
      case VT_UNKNOWN:
        PushObject(engine, value.punkVal);
        break;
      default:
        ThrowStatus(engine, DISP_E_BADVARTYPE);
    }
  }
}

bool LeaveIfCommon(VARIANT* result, VARIANT* left) noexcept {
  if (result->vt == VT_DISPATCH && result->pdispVal != nullptr) {
    void* found = nullptr;
    if (IsWrappedObject(result->pdispVal) ||
        FAILED(result->pdispVal->QueryInterface(IID_IDispatch, &found))) {
      return false;
    }
    left->vt = VT_DISPATCH;
    left->pdispVal = static_cast<IDispatch*>(found);
    return true;
  }
  if (result->vt != VT_BSTR && result->vt != (VT_ARRAY | VT_UI1)) return false;
  *left = *result;
  result->vt = VT_EMPTY;
  return true;
}

void PushLeft(duk_context* engine, const VARIANT& left) {
  if (left.vt == VT_DISPATCH) {
    PushDispatch(engine, left.pdispVal);
    return;
  }
  ScopedVariant& kept = ContextOf(engine).left_result;
  ClearBeforeEnd(kept);
  static_cast<VARIANT&>(kept) = left;
  PushVariant(engine, kept);
  ClearBeforeEnd(kept);
  kept.vt = VT_EMPTY;
}

void PushUnits(duk_context* engine, UnitsView units) {
  constexpr size_t kFew = 512;
  char few[kFew];
  if (units.size() <= kFew && NarrowAscii(units.data(), units.size(), few)) {
    duk_push_lstring(engine, few, units.size());
    return;
  }
  const size_t size = EngineByteLength(units.data(), units.size());
  auto* bytes = static_cast<char*>(duk_push_fixed_buffer(engine, size));
  EncodeForEngine(units.data(), units.size(), bytes);
  duk_buffer_to_string(engine, -1);
}

uint8_t* PushBytes(duk_context* engine, size_t size) {
  auto* bytes = static_cast<uint8_t*>(duk_push_fixed_buffer(engine, size));
  duk_push_buffer_object(engine, -1, 0, size, DUK_BUFOBJ_UINT8ARRAY);
  duk_remove(engine, -2);
  return bytes;
}

bool BytesAt(duk_context* engine, duk_idx_t index, const uint8_t** bytes, size_t* size) {
  if (!duk_is_buffer_data(engine, index)) return false;
  duk_size_t length = 0;
  *bytes = static_cast<const uint8_t*>(duk_get_buffer_data(engine, index, &length));
  *size = *bytes == nullptr ? 0 : length;
  return true;
}

void InstallMarshalling(duk_context* engine) {
  duk_get_global_string(engine, "Date");
  duk_get_prop_string(engine, -1, "prototype");
  duk_get_prop_string(engine, -1, "getTime");
  KeepValue(engine, "getTime");
  duk_pop(engine);
  KeepValue(engine, "Date");
}

}  // namespace mirolta::host
