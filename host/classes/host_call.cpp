#include "classes/host_call.h"

#include <new>

namespace mirolta::host {
namespace {

// Converts a copy of `value` to `type`.
void Convert(const VARIANT& value, VARTYPE type, ScopedVariant* converted) {
  const HRESULT status = VariantChangeType(converted, &value, 0, type);
  if (FAILED(status)) Fail(status);
}

// The value that a reference to a VARIANT leads to.
const VARIANT& Followed(const VARIANT& value) {
  return value.vt == (VT_BYREF | VT_VARIANT) && value.pvarVal != nullptr ? *value.pvarVal : value;
}

bool IsMissing(const VARIANT& value) {
  return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

}  // namespace

void Fail(HRESULT number, std::string_view description) {
  throw CallError{number, UnitsFromSystem(description)};
}

bool HostCall::Has(UINT index) const {
  return index < Count() && !IsMissing(Followed(params_.rgvarg[params_.cArgs - 1 - index]));
}

const VARIANT& HostCall::At(UINT index) const {
  if (!Has(index)) Fail(DISP_E_PARAMNOTOPTIONAL);
  return Followed(params_.rgvarg[params_.cArgs - 1 - index]);
}

const VARIANT& HostCall::Value() const {
  if (!is_put_) Fail(DISP_E_PARAMNOTOPTIONAL);
  return Followed(params_.rgvarg[0]);
}

Units HostCall::Text(UINT index, UnitsView otherwise) const {
  return Has(index) ? Text(index) : Units(otherwise);
}

int32_t HostCall::Integer(UINT index, int32_t otherwise) const {
  return Has(index) ? Integer(index) : otherwise;
}

bool HostCall::Truth(UINT index, bool otherwise) const {
  return Has(index) ? Truth(index) : otherwise;
}

// Values that have the type already are not converted: the conversion is costly, since it wipes the stack.
Units HostCall::TextOf(const VARIANT& value) {
  if (value.vt == VT_BSTR) return {value.bstrVal, SysStringLen(value.bstrVal)};
  ScopedVariant text;
  Convert(value, VT_BSTR, &text);
  return {text.bstrVal, SysStringLen(text.bstrVal)};
}

int32_t HostCall::IntegerOf(const VARIANT& value) {
  if (value.vt == VT_I4) return value.lVal;
  ScopedVariant number;
  Convert(value, VT_I4, &number);
  return number.lVal;
}

double HostCall::NumberOf(const VARIANT& value) {
  if (value.vt == VT_R8) return value.dblVal;
  ScopedVariant number;
  Convert(value, VT_R8, &number);
  return number.dblVal;
}

bool HostCall::TruthOf(const VARIANT& value) {
  if (value.vt == VT_BOOL) return value.boolVal != VARIANT_FALSE;
  ScopedVariant truth;
  Convert(value, VT_BOOL, &truth);
  return truth.boolVal != VARIANT_FALSE;
}

void HostCall::Return(const VARIANT& value) {
  if (FAILED(VariantCopy(result_, &value))) throw std::bad_alloc();
}

void HostCall::ReturnText(UnitsView text) {
  const BSTR copy = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  if (copy == nullptr) throw std::bad_alloc();
  result_->vt = VT_BSTR;
  result_->bstrVal = copy;
}

void HostCall::ReturnInteger(int32_t number) {
  result_->vt = VT_I4;
  result_->lVal = number;
}

void HostCall::ReturnNumber(double number) {
  result_->vt = VT_R8;
  result_->dblVal = number;
}

void HostCall::ReturnDate(DATE date) {
  result_->vt = VT_DATE;
  result_->date = date;
}

void HostCall::ReturnTruth(bool truth) {
  result_->vt = VT_BOOL;
  result_->boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
}

void HostCall::ReturnNull() {
  result_->vt = VT_NULL;
}

void HostCall::ReturnObject(IDispatch* object) {
  result_->vt = VT_DISPATCH;
  result_->pdispVal = object;
}

void HostCall::ReturnUnknown(IUnknown* object) {
  result_->vt = VT_UNKNOWN;
  result_->punkVal = object;
}

void HostCall::ReturnBytes(std::string_view bytes) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, 0, static_cast<ULONG>(bytes.size()));
  if (array == nullptr) throw std::bad_alloc();
  result_->vt = VT_ARRAY | VT_UI1;
  result_->parray = array;
  void* data = nullptr;
  if (FAILED(SafeArrayAccessData(array, &data))) throw std::bad_alloc();
  bytes.copy(static_cast<char*>(data), bytes.size());
  static_cast<void>(SafeArrayUnaccessData(array));
}

void HostCall::ReturnArray(const ValueList& values) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(values.Count()));
  if (array == nullptr) throw std::bad_alloc();
  result_->vt = VT_ARRAY | VT_VARIANT;
  result_->parray = array;
  void* data = nullptr;
  if (FAILED(SafeArrayAccessData(array, &data))) throw std::bad_alloc();
  auto* elements = static_cast<VARIANT*>(data);
  bool copied = true;
  for (size_t i = 0; i < values.Count(); ++i) {
    copied = copied && SUCCEEDED(VariantCopy(&elements[i], &values.At(i)));
  }
  static_cast<void>(SafeArrayUnaccessData(array));
  if (!copied) throw std::bad_alloc();
}

}  // namespace mirolta::host
