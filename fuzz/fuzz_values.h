// Automation values from fuzz input: every type, by value and by reference, arrays and objects.
#pragma once

#include <cstring>
#include <deque>

#include "fuzz_input.h"
#include "stub_dispatch.h"

namespace mirolta::fuzz {

// An object with a given default value.
class ValueObject final : public test::StubDispatch<> {
 public:
  VARIANT value = {};
  HRESULT status = S_OK;

  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT* result,
                                   EXCEPINFO*, UINT*) override {
    return FAILED(status) || result == nullptr ? status : VariantCopy(result, &value);
  }
};

// FuzzValues owns the values that it creates.
class FuzzValues {
 public:
  FuzzValues() = default;
  ~FuzzValues() {
    for (VARIANT& value : owned_) VariantClear(&value);
  }
  FuzzValues(const FuzzValues&) = delete;
  FuzzValues& operator=(const FuzzValues&) = delete;

  // A value that FuzzValues owns.
  VARIANT Next(FuzzInput& in, int depth = 0) {
    const uint8_t kind = in.Byte();
    VARIANT& value = Own();
    switch (kind % 24) {
      case 0:
        break;
      case 1:
        V_VT(&value) = VT_NULL;
        break;
      case 2:
      case 3:
      case 4: {
        const auto text = in.Text(kind >= 240 ? 4000 : 60);
        V_VT(&value) = VT_BSTR;
        value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
        break;
      }
      case 5:
      case 6:
      case 7:
      case 8:
        Array(in, VT_UI1, &value);
        break;
      case 9: {
        constexpr VARTYPE kTypes[] = {VT_I1, VT_UI2,  VT_I4,      VT_UI4,     VT_UI8,
                                      VT_R8, VT_UINT, VT_BSTR,    VT_VARIANT, VT_DISPATCH,
                                      VT_CY, VT_BOOL, VT_UNKNOWN, VT_DATE};
        Array(in, kTypes[in.Byte() % (sizeof kTypes / sizeof kTypes[0])], &value);
        break;
      }
      case 10:
        V_VT(&value) = VT_BSTR;
        break;
      case 11:
        V_VT(&value) = VT_ERROR;
        value.scode = in.Byte() % 2 != 0 ? DISP_E_PARAMNOTFOUND : static_cast<SCODE>(in.Long());
        break;
      case 12:
        if (depth < 3) {
          objects_.emplace_back();
          ValueObject& object = objects_.back();
          object.status = in.Byte() % 8 == 0 ? static_cast<HRESULT>(in.Long()) : S_OK;
          object.value = Next(in, depth + 1);
          V_VT(&value) = in.Byte() % 4 == 0 ? VT_UNKNOWN : VT_DISPATCH;
          value.pdispVal = &object;
        }
        break;
      case 13:
        V_VT(&value) = in.Byte() % 2 != 0 ? VT_DISPATCH : VT_UNKNOWN;
        break;
      case 14: {  // any type without pointers
        V_VT(&value) = static_cast<VARTYPE>(in.Byte());
        if (V_VT(&value) == VT_BSTR || V_VT(&value) == VT_DISPATCH || V_VT(&value) == VT_UNKNOWN) {
          break;
        }
        value.ullVal = in.Huge();
        break;
      }
      case 15:
        V_VT(&value) = VT_BOOL;
        value.boolVal = static_cast<VARIANT_BOOL>(in.Word());
        break;
      case 16:
      case 17: {  // by reference
        if (depth >= 3) break;
        Next(in, depth + 1);
        VARIANT& target = owned_.back();
        const VARTYPE type = V_VT(&target);
        if (kind % 24 == 16 || type == VT_EMPTY || (type & VT_BYREF) != 0) {
          V_VT(&value) = VT_BYREF | VT_VARIANT;
          value.pvarVal = in.Byte() % 16 == 0 ? nullptr : &target;
        } else {
          V_VT(&value) = static_cast<VARTYPE>(VT_BYREF | type);
          value.byref = in.Byte() % 16 == 0  ? nullptr
                        : type == VT_DECIMAL ? static_cast<void*>(&target)
                                             : static_cast<void*>(&target.byref);
        }
        return value;
      }
      case 18:
        V_VT(&value) = VT_R8;
        value.ullVal = in.Huge();
        break;
      case 19:
        V_VT(&value) = VT_DATE;
        value.ullVal = in.Huge();
        break;
      case 20: {
        V_VT(&value) = VT_DECIMAL;
        value.decVal.scale = in.Byte() % 29;
        value.decVal.sign = in.Byte() % 2 != 0 ? 0x80 : 0;
        value.decVal.Hi32 = in.Long();
        value.decVal.Lo64 = in.Huge();
        V_VT(&value) = VT_DECIMAL;
        break;
      }
      default:
        V_VT(&value) = VT_I4;
        value.lVal = kind >= 128 ? static_cast<LONG>(in.Long()) : static_cast<int8_t>(in.Byte());
        break;
    }
    return value;
  }

 private:
  VARIANT& Own() {
    owned_.emplace_back();
    VariantInit(&owned_.back());
    return owned_.back();
  }
  static void Array(FuzzInput& in, VARTYPE type, VARIANT* value) {
    const Bytes bytes = in.Some(type == VT_UI1 ? 300 : 0);
    const bool two = in.Byte() % 16 == 0;
    SAFEARRAYBOUND bounds[2] = {{static_cast<ULONG>(bytes.size()), 0}, {in.Byte() % 3u, 0}};
    if (type != VT_UI1) bounds[0].cElements = in.Byte() % 20u;
    if (in.Byte() % 16 == 0) bounds[0].lLbound = static_cast<LONG>(in.Long());
    V_VT(value) = static_cast<VARTYPE>(VT_ARRAY | type);
    value->parray = SafeArrayCreate(type, two ? 2 : 1, bounds);
    void* data = nullptr;
    if (value->parray == nullptr || type != VT_UI1 || two || bytes.empty()) return;
    if (SafeArrayAccessData(value->parray, &data) != S_OK) return;
    memcpy(data, bytes.data(), bytes.size());
    SafeArrayUnaccessData(value->parray);
  }

  std::deque<VARIANT> owned_;
  std::deque<ValueObject> objects_;
};

constexpr LONG kCodePages[] = {0,   -1,  -2,    65001, 65000, 1252, 1251, 437,   932,
                               850, 874, 20127, 28591, 77777, 1,    -99,  12000, 0x7FFFFFFF};
inline LONG NextCodePage(FuzzInput& in) {
  return kCodePages[in.Byte() % (sizeof kCodePages / sizeof kCodePages[0])];
}

}  // namespace mirolta::fuzz
