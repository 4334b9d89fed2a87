// Conversions of objects through their default value.
#include "object.h"
#include "printing.h"
#include "sections.h"
#include "values.h"

namespace mirolta::value_parity {

void Objects() {
  Section("object");
  Object object;
  const auto run = [&object](const char* what, VARTYPE tag, USHORT flags, VARTYPE type) {
    VARIANT from = Of(tag);
    if (tag == VT_DISPATCH) {
      from.pdispVal = &object;
    } else {
      from.punkVal = &object;
    }
    object.last_call = "none";
    VARIANT to = Sentinel();
    const HRESULT status = VariantChangeTypeEx(&to, &from, kEnglish, flags, type);
    std::string result = Status(status) + " " + Show(to) + " call " + object.last_call;
    VariantClear(&to);
    result += " references " + Decimal(object.references);
    Print(std::string(what) + " " + Decimal(tag) + " f" + Decimal(flags) + " -> " + Decimal(type),
          result);
  };
  for (const bool refuses : {false, true}) {
    object.has_dispatch = !refuses;
    object.value = Integer(VT_I4, 1234);
    for (const VARTYPE tag : {VT_DISPATCH, VT_UNKNOWN}) {
      for (const VARTYPE type : kTypes) {
        for (const int flags : {0, 1})
          run(refuses ? "refuses" : "number", tag, static_cast<USHORT>(flags), type);
      }
    }
  }
  object.has_dispatch = true;
  const VARIANT values[] = {Of(VT_EMPTY),          Of(VT_NULL),          Of(VT_BSTR),
                            Integer(VT_ERROR, -5), Integer(VT_BOOL, -1), Words(OLESTR("12")),
                            Words(OLESTR("x")),    Real(VT_R8, 2.5),     Of(VT_DISPATCH)};
  for (const VARIANT& value : values) {
    object.value = value;
    for (const VARTYPE type : {VT_I4, VT_BSTR, VT_R8, VT_BOOL}) run("value", VT_DISPATCH, 0, type);
  }
  for (const HRESULT status : {E_FAIL, DISP_E_MEMBERNOTFOUND, DISP_E_TYPEMISMATCH, E_OUTOFMEMORY}) {
    object.status = status;
    for (const VARTYPE type : {VT_I4, VT_BSTR}) run("fails", VT_DISPATCH, 0, type);
  }
}

}  // namespace mirolta::value_parity
