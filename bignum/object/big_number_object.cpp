#include "big_number_object.h"

#include "array_bytes.h"
#include "big_code_page_text.h"
#include "big_random.h"
#include "big_variant.h"
#include "gcd.h"
#include "mod_exp.h"

namespace mirolta {

namespace {

TypeInfoHolder type_info(IID_IPexBigNumber);

// From this many 32-bit words on, conversions of a number's text are recursive and use much stack.
constexpr uint32_t kLargeNumberWords = 64;

// WipedNumbers runs a member's work without the lock and wipes stack and registers, since numbers
// are secrets. work(use) sets *use if it used much stack; a failure counts as that.
template <typename Work>
HRESULT WipedNumbers(Work work) {
  StackUse use = StackUse::kMedium;
  auto run = [&]() -> HRESULT {
    const HRESULT status = work(&use);
    if (FAILED(status)) use = StackUse::kDeep;
    return status;
  };
  return RunWiped(run, use);
}

// Notes the stack use of converting a value to a number: long texts are converted recursively.
void NoteSize(const BigInt& number, const VARIANT& value, StackUse* use) {
  if (V_VT(&value) != kByteArrayType && number.Used() >= kLargeNumberWords) *use = StackUse::kDeep;
}

bool IsLeftOut(const VARIANT& value) {
  return V_VT(&value) == VT_ERROR && V_ERROR(&value) == DISP_E_PARAMNOTFOUND;
}

}  // namespace

constexpr ClassDescription kBigNumberClass = {&CLSID_PexBigNumber, &type_info};

HRESULT CreatePexBigNumber(IUnknown* outer, REFIID iid, void** out) {
  return CreateObject<BigNumberObject>(outer, iid, out);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::get_Value(VARIANT* value) {
  return Give(VT_BSTR, NumberBase::kDecimal, value);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::put_Value(VARIANT value) {
  return Take(value, NumberBase::kDecimal);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::get_Hex(VARIANT* value) {
  return Give(VT_BSTR, NumberBase::kHexadecimal, value);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::put_Hex(VARIANT value) {
  return Take(value, NumberBase::kHexadecimal);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::get_Text(LONG lCP, BSTR* text) {
  return WipedNumbers([&](StackUse*) { return NumberToCodePageText(number_, lCP, text); });
}

HRESULT STDMETHODCALLTYPE BigNumberObject::put_Text(LONG lCP, BSTR text) {
  return WipedNumbers([&](StackUse*) { return NumberFromCodePageText(number_, text, lCP); });
}

HRESULT STDMETHODCALLTYPE BigNumberObject::get_Binary(VARIANT* value) {
  return Give(kByteArrayType, NumberBase::kDecimal, value);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::put_Binary(VARIANT value) {
  return Take(value, NumberBase::kDecimal);
}

HRESULT BigNumberObject::Give(VARTYPE type, NumberBase base, VARIANT* value) const {
  return WipedNumbers([&](StackUse* use) {
    if (type == VT_BSTR && number_.Used() >= kLargeNumberWords) *use = StackUse::kDeep;
    return NumberToVariant(number_, type, base, value);
  });
}

HRESULT BigNumberObject::Take(const VARIANT& value, NumberBase base) {
  return WipedNumbers([&](StackUse* use) {
    const HRESULT status = NumberFromVariant(number_, value, base);
    NoteSize(number_, value, use);
    return status;
  });
}

HRESULT BigNumberObject::Return(BigInt& value, IPexBigNumber** out) {
  BigNumberObject* const object = new (std::nothrow) BigNumberObject(nullptr);
  if (object == nullptr) return E_OUTOFMEMORY;
  object->number_.Swap(value);
  void* made = nullptr;
  const HRESULT status = FinishObject(object, IID_IPexBigNumber, &made);
  *out = static_cast<IPexBigNumber*>(made);
  return status;
}

HRESULT BigNumberObject::Operate(Operation operation, const VARIANT& v, IPexBigNumber** out) const {
  if (out == nullptr) return E_POINTER;
  *out = nullptr;
  return WipedNumbers([&](StackUse* use) {
    BigInt operand;
    HRESULT status = NumberFromVariant(operand, v, NumberBase::kDecimal);
    if (FAILED(status)) return status;
    NoteSize(operand, v, use);
    BigInt result;
    status = operation(result, number_, operand);
    return FAILED(status) ? status : Return(result, out);
  });
}

HRESULT STDMETHODCALLTYPE BigNumberObject::Add(VARIANT v, IPexBigNumber** ppObj) {
  return Operate(mirolta::Add, v, ppObj);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::Sub(VARIANT v, IPexBigNumber** ppObj) {
  return Operate(Subtract, v, ppObj);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::Mul(VARIANT v, IPexBigNumber** ppObj) {
  return Operate(Multiply, v, ppObj);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::Div(VARIANT v, IPexBigNumber** ppObj) {
  return Operate(Divide, v, ppObj);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::Mod(VARIANT v, IPexBigNumber** ppObj) {
  return Operate(Remainder, v, ppObj);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::GCD(VARIANT v, IPexBigNumber** ppObj) {
  return Operate(Gcd, v, ppObj);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::ModInv(VARIANT vm, IPexBigNumber** ppObj) {
  return Operate(Inverse, vm, ppObj);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::ModExp(VARIANT ve, VARIANT vm, IPexBigNumber** ppObj) {
  if (ppObj == nullptr) return E_POINTER;
  *ppObj = nullptr;
  return WipedNumbers([&](StackUse* use) {
    *use = StackUse::kDeep;
    BigInt exponent;
    BigInt modulus;
    HRESULT status = NumberFromVariant(exponent, ve, NumberBase::kDecimal);
    if (SUCCEEDED(status)) status = NumberFromVariant(modulus, vm, NumberBase::kDecimal);
    if (FAILED(status)) return status;
    BigInt result;
    status = mirolta::ModExp(result, number_, exponent, modulus);
    return FAILED(status) ? status : Return(result, ppObj);
  });
}

HRESULT BigNumberObject::Step(HRESULT (BigInt::*change)(const BigInt&) noexcept, const VARIANT& v) {
  return WipedNumbers([&](StackUse* use) {
    BigInt amount(1);
    if (!IsLeftOut(v)) {
      const HRESULT status = NumberFromVariant(amount, v, NumberBase::kDecimal);
      if (FAILED(status)) return status;
      NoteSize(amount, v, use);
    }
    return (number_.*change)(amount);
  });
}

HRESULT STDMETHODCALLTYPE BigNumberObject::Inc(VARIANT v) {
  return Step(&BigInt::Add, v);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::Dec(VARIANT v) {
  return Step(&BigInt::Subtract, v);
}

HRESULT STDMETHODCALLTYPE BigNumberObject::Cmp(VARIANT v, LONG* plResult) {
  if (plResult == nullptr) return E_POINTER;
  return WipedNumbers([&](StackUse* use) -> HRESULT {
    BigInt operand;
    const HRESULT status = NumberFromVariant(operand, v, NumberBase::kDecimal);
    if (FAILED(status)) return status;
    NoteSize(operand, v, use);
    *plResult = Compare(number_, operand);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE BigNumberObject::NewNumber(VARIANT v, IPexBigNumber** ppObj) {
  if (ppObj == nullptr) return E_POINTER;
  *ppObj = nullptr;
  return WipedNumbers([&](StackUse* use) -> HRESULT {
    BigInt value;
    // An omitted value is zero. Every failure is reported as E_OUTOFMEMORY, the only one that
    // callers expect of this member.
    if (FAILED(NumberFromVariant(value, v, NumberBase::kDecimal))) return E_OUTOFMEMORY;
    NoteSize(value, v, use);
    return Return(value, ppObj);
  });
}

HRESULT STDMETHODCALLTYPE BigNumberObject::Random(LONG lSize, VARIANT_BOOL bEnsureSize,
                                                  VARIANT_BOOL bOdd) {
  return WipedNumbers(
      [&](StackUse*) { return mirolta::Random(number_, lSize, bEnsureSize != 0, bOdd != 0); });
}

}  // namespace mirolta
