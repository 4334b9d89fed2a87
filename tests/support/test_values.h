// Automation values for tests, made in one line.
#pragma once

#include <cstring>
#include <string_view>
#include <utility>

#include "bytes.h"
#include "platform.h"

namespace mirolta::test {

// TestValue owns a VARIANT.
class TestValue {
 public:
  TestValue() { VariantInit(&value_); }
  explicit TestValue(VARTYPE type) : TestValue() { V_VT(&value_) = type; }
  TestValue(TestValue&& other) : TestValue() { std::swap(value_, other.value_); }
  TestValue& operator=(TestValue&& other) {
    std::swap(value_, other.value_);
    return *this;
  }
  ~TestValue() { VariantClear(&value_); }

  VARIANT* operator&() { return &value_; }
  VARIANT* operator->() { return &value_; }
  operator const VARIANT&() const { return value_; }

 private:
  VARIANT value_;
};

// A text literal, zero characters in it included.
template <size_t kSize>
TestValue TextValue(const OLECHAR (&text)[kSize]) {
  TestValue value(VT_BSTR);
  value->bstrVal = SysAllocStringLen(text, static_cast<UINT>(kSize - 1));
  return value;
}

// A text that is no literal.
inline TestValue TextValue(std::basic_string_view<OLECHAR> text) {
  TestValue value(VT_BSTR);
  value->bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return value;
}

inline TestValue NumberValue(LONG number) {
  TestValue value(VT_I4);
  value->lVal = number;
  return value;
}

// A one-dimensional array whose data starts with the given bytes; elements times the size of the
// type is the size of the data.
inline TestValue ArrayValue(VARTYPE type, ULONG elements, const Bytes& data, LONG lower = 0) {
  TestValue value;
  SAFEARRAYBOUND bound = {elements, lower};
  value->parray = SafeArrayCreate(type, 1, &bound);
  V_VT(&value) = static_cast<VARTYPE>(VT_ARRAY | type);
  if (!data.empty()) {
    void* place = nullptr;
    SafeArrayAccessData(value->parray, &place);
    std::memcpy(place, data.data(), data.size());
    SafeArrayUnaccessData(value->parray);
  }
  return value;
}

inline TestValue BytesValue(const Bytes& bytes, LONG lower = 0) {
  return ArrayValue(VT_UI1, static_cast<ULONG>(bytes.size()), bytes, lower);
}

// The value holds a reference of its own.
inline TestValue ObjectValue(IDispatch* object) {
  TestValue value(VT_DISPATCH);
  value->pdispVal = object;
  if (object != nullptr) object->AddRef();
  return value;
}

inline TestValue UnknownValue(IUnknown* object) {
  TestValue value(VT_UNKNOWN);
  value->punkVal = object;
  if (object != nullptr) object->AddRef();
  return value;
}

// By-reference values: plain VARIANTs, because they own nothing.
inline VARIANT ReferenceTo(VARTYPE type, void* place) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = static_cast<VARTYPE>(VT_BYREF | type);
  V_BYREF(&value) = place;
  return value;
}

// The bytes of a 0x2011 value; empty for any other.
inline Bytes BytesOfArray(const VARIANT& value) {
  if (V_VT(&value) != (VT_ARRAY | VT_UI1)) return {};
  LONG lower = 0, upper = -1;
  SafeArrayGetLBound(value.parray, 1, &lower);
  SafeArrayGetUBound(value.parray, 1, &upper);
  void* data = nullptr;
  SafeArrayAccessData(value.parray, &data);
  const uint8_t* bytes = static_cast<const uint8_t*>(data);
  Bytes out(bytes, bytes + (upper - lower + 1));
  SafeArrayUnaccessData(value.parray);
  return out;
}

}  // namespace mirolta::test
