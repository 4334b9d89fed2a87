// A call of a member of the host's own classes: its arguments and its result.
#pragma once

#include <string_view>

#include "classes/value_list.h"
#include "values/scoped_variant.h"
#include "values/text_encoding.h"

namespace mirolta::host {

// CallError ends a call by exception; the caller gets its number and description.
struct CallError {
  HRESULT number = E_FAIL;
  Units description;  // the standard wording if empty
};
// Shapes: `description` is UTF-8.
[[noreturn]] void Fail(HRESULT number, std::string_view description = {});

class HostCall {
 public:
  // `params` has no named arguments but the value of a put; *result is VT_EMPTY.
  HostCall(const DISPPARAMS& params, bool is_put, VARIANT* result)
      : params_(params), is_put_(is_put), result_(result) {}
  HostCall(const HostCall&) = delete;
  HostCall& operator=(const HostCall&) = delete;
  ~HostCall() = default;

  bool IsPut() const { return is_put_; }
  // The number of arguments, without the value of a put.
  UINT Count() const { return params_.cArgs - (is_put_ ? 1 : 0); }
  // Has returns whether the argument was given.
  bool Has(UINT index) const;
  // At returns an argument, Value the value of a put; a reference to a VARIANT is followed.
  // Errors: DISP_E_PARAMNOTOPTIONAL if the argument was not given.
  const VARIANT& At(UINT index) const;
  const VARIANT& Value() const;

  // The argument, converted as the platform converts; with `otherwise`, that if it was not given.
  // Errors: as At; DISP_E_TYPEMISMATCH and DISP_E_OVERFLOW of the conversion.
  Units Text(UINT index) const { return TextOf(At(index)); }
  Units Text(UINT index, UnitsView otherwise) const;
  int32_t Integer(UINT index) const { return IntegerOf(At(index)); }
  int32_t Integer(UINT index, int32_t otherwise) const;
  double Number(UINT index) const { return NumberOf(At(index)); }
  bool Truth(UINT index) const { return TruthOf(At(index)); }
  bool Truth(UINT index, bool otherwise) const;

  static Units TextOf(const VARIANT& value);
  static int32_t IntegerOf(const VARIANT& value);
  static double NumberOf(const VARIANT& value);
  static bool TruthOf(const VARIANT& value);

  // Each sets the result, once. ReturnObject takes the reference; null gives null.
  // Errors: E_OUTOFMEMORY.
  void Return(const VARIANT& value);
  void ReturnText(UnitsView text);
  void ReturnInteger(int32_t number);
  void ReturnNumber(double number);
  void ReturnDate(DATE date);
  void ReturnTruth(bool truth);
  void ReturnNull();
  void ReturnObject(IDispatch* object);
  void ReturnUnknown(IUnknown* object);
  // A byte array.
  void ReturnBytes(std::string_view bytes);
  // An array of VARIANTs with the lower bound 0.
  void ReturnArray(const ValueList& values);

 private:
  const DISPPARAMS& params_;
  bool is_put_;
  VARIANT* result_;
};

}  // namespace mirolta::host
