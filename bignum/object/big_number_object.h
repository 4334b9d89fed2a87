// PexBigNumber: big integers for scripts.
#pragma once

#include "big_int.h"
#include "big_variant.h"
#include "dispatch_object.h"
#include "mirolta.h"

namespace mirolta {

extern const ClassDescription kBigNumberClass;

// BigNumberObject holds one number, initially zero. Binary operations do not change it and return a
// new object. No member locks: callers use an object from one thread at a time. No member raises a
// message, and one that fails leaves the number unchanged.
class BigNumberObject final : public DispatchObject<kBigNumberClass, IPexBigNumber> {
 public:
  explicit BigNumberObject(IUnknown* outer) : DispatchObject(outer) {}

  HRESULT STDMETHODCALLTYPE get_Value(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE put_Value(VARIANT value) override;
  HRESULT STDMETHODCALLTYPE get_Hex(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE put_Hex(VARIANT value) override;
  HRESULT STDMETHODCALLTYPE get_Text(LONG lCP, BSTR* text) override;
  HRESULT STDMETHODCALLTYPE put_Text(LONG lCP, BSTR text) override;
  HRESULT STDMETHODCALLTYPE get_Binary(VARIANT* value) override;
  HRESULT STDMETHODCALLTYPE put_Binary(VARIANT value) override;
  HRESULT STDMETHODCALLTYPE Add(VARIANT v, IPexBigNumber** ppObj) override;
  HRESULT STDMETHODCALLTYPE Sub(VARIANT v, IPexBigNumber** ppObj) override;
  HRESULT STDMETHODCALLTYPE Mul(VARIANT v, IPexBigNumber** ppObj) override;
  HRESULT STDMETHODCALLTYPE Div(VARIANT v, IPexBigNumber** ppObj) override;
  HRESULT STDMETHODCALLTYPE Mod(VARIANT v, IPexBigNumber** ppObj) override;
  HRESULT STDMETHODCALLTYPE Inc(VARIANT v) override;
  HRESULT STDMETHODCALLTYPE Dec(VARIANT v) override;
  HRESULT STDMETHODCALLTYPE Cmp(VARIANT v, LONG* plResult) override;
  HRESULT STDMETHODCALLTYPE NewNumber(VARIANT v, IPexBigNumber** ppObj) override;
  HRESULT STDMETHODCALLTYPE Random(LONG lSize, VARIANT_BOOL bEnsureSize,
                                   VARIANT_BOOL bOdd) override;
  HRESULT STDMETHODCALLTYPE GCD(VARIANT v, IPexBigNumber** ppObj) override;
  HRESULT STDMETHODCALLTYPE ModExp(VARIANT ve, VARIANT vm, IPexBigNumber** ppObj) override;
  HRESULT STDMETHODCALLTYPE ModInv(VARIANT vm, IPexBigNumber** ppObj) override;

 private:
  // A binary operation: r := a op b.
  using Operation = HRESULT (*)(BigInt& r, const BigInt& a, const BigInt& b) noexcept;

  HRESULT Give(VARTYPE type, NumberBase base, VARIANT* value) const;
  HRESULT Take(const VARIANT& value, NumberBase base);
  HRESULT Operate(Operation operation, const VARIANT& v, IPexBigNumber** out) const;
  HRESULT Step(HRESULT (BigInt::*change)(const BigInt&) noexcept, const VARIANT& v);
  // Return sets *out to a new object with the value, which it moves from.
  static HRESULT Return(BigInt& value, IPexBigNumber** out);

  BigInt number_;
};

// The class's instance creator; outer is the object that aggregates the new one, or null.
HRESULT CreatePexBigNumber(IUnknown* outer, REFIID iid, void** out);

}  // namespace mirolta
