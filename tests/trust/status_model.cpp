#include "status_model.h"

#include <gtest/gtest.h>

#include "number_model.h"
#include "status_rows.h"
#include "system_rules.h"
#include "value_model.h"

namespace mirolta::test {

namespace {

constexpr HRESULT kAlgorithmNotFound = static_cast<HRESULT>(0x80042777);
constexpr HRESULT kNotInitialized = static_cast<HRESULT>(0x80042778);
constexpr HRESULT kKeyNotSet = static_cast<HRESULT>(0x80042779);
constexpr HRESULT kNoStream = static_cast<HRESULT>(0x80042775);

HRESULT NameStatus(const Text& name, std::initializer_list<const OLECHAR*> known) {
  for (const OLECHAR* const one : known) {
    if (name == one) return S_OK;
  }
  return kAlgorithmNotFound;
}

// --- Bytes ---------------------------------------------------------------------------------------

HRESULT DataStatus(const VARIANT& value, bool in_pieces) {
  const Result<VARIANT> plain = Resolved(value);
  if (plain.failed()) return plain.status;
  if (V_VT(&plain.value) == kBytesType) {
    const Result<size_t> count = ArrayByteCount(plain.value.parray, E_POINTER);
    if (count.failed()) return count.status;
    return count.value == 0 ? S_FALSE : S_OK;
  }
  const Result<CoercedText> text = TextFrom(plain.value);
  if (text.failed()) return text.status;
  return in_pieces && text.value.ByteCount() == 0 ? S_FALSE : S_OK;
}

// The queue takes so many bytes in all; a ready object has so many of plaintext in it.
constexpr size_t kQueueLimit = 1048832;
constexpr size_t kPlaintextWaiting = 5;

HRESULT CipherDataStatus(const VARIANT& value, size_t waiting) {
  const Result<VARIANT> plain = Resolved(value);
  if (plain.failed()) return plain.status;
  size_t bytes = 0;
  if (V_VT(&plain.value) == kBytesType) {
    // Only the caller's own array counts, not one behind an object.
    if (IsObject(Followed(value).value)) return DISP_E_TYPEMISMATCH;
    const Result<size_t> count = ArrayByteCount(plain.value.parray, DISP_E_TYPEMISMATCH);
    if (count.failed()) return count.status;
    bytes = count.value;
  } else {
    const Result<CoercedText> text = TextFrom(plain.value);
    if (text.failed()) return text.status;
    bytes = text.value.ByteCount();
  }
  return waiting + bytes > kQueueLimit ? E_OUTOFMEMORY : S_OK;
}

struct Key {
  size_t bytes;
  bool is_text;
  bool is_table;  // an array of more than one dimension
};

Result<Key> KeyFrom(const VARIANT& value) {
  const Result<VARIANT> plain = Copied(value);
  if (plain.failed()) return {plain.status};
  if (V_VT(&plain.value) == kBytesType) {
    const Result<size_t> count = ArrayByteCount(plain.value.parray, E_POINTER);
    return {count.status, {count.value, false, !count.failed() && plain.value.parray->cDims != 1}};
  }
  const Result<CoercedText> text = CoercedToText(plain.value);
  return {text.status, {text.value.ByteCount(), true, false}};
}

HRESULT HashKeyStatus(const VARIANT& value) {
  const Result<Key> key = KeyFrom(value);
  if (key.failed()) return key.status;
  if (key.value.is_table) return DISP_E_TYPEMISMATCH;
  // An empty array is no key, an empty text one without bytes.
  return key.value.bytes == 0 && !key.value.is_text ? E_UNEXPECTED : S_OK;
}

HRESULT CipherKeyStatus(const VARIANT& value, std::initializer_list<size_t> lengths) {
  const Result<Key> key = KeyFrom(value);
  if (key.failed()) return key.status;
  for (const size_t length : lengths) {
    if (key.value.bytes == length) return S_OK;
  }
  return E_INVALIDARG;
}

// --- Whole calls ---------------------------------------------------------------------------------

HRESULT IntegerStatus(LONG number, Rule rule) {
  if (rule == Rule::kSize) return number < 1 ? E_INVALIDARG : S_OK;
  if (rule == Rule::kKeySize) return number < 2 ? E_INVALIDARG : S_OK;
  return S_OK;
}

HRESULT TextStatus(const Text& text, Rule rule) {
  if (rule == Rule::kHashName) {
    return NameStatus(text, {OLESTR("MD5"), OLESTR("SHA1"), OLESTR("SHA256")});
  }
  if (rule == Rule::kCipherName || rule == Rule::kCipherNameValue) {
    return NameStatus(text, {OLESTR("AES"), OLESTR("DES")});
  }
  return S_OK;
}

// What the member itself says to an argument that has the declared type.
HRESULT MemberStatus(Rule rule, const VARIANT& value) {
  switch (rule) {
    case Rule::kWholeData:
      return DataStatus(value, false);
    case Rule::kPieceOfData:
      return DataStatus(value, true);
    case Rule::kHashKey:
      return HashKeyStatus(value);
    case Rule::kEncrypted:
      return CipherDataStatus(value, kPlaintextWaiting);
    case Rule::kDecrypted:
      return CipherDataStatus(value, 0);
    case Rule::kAesKey:
      return CipherKeyStatus(value, {16, 24, 32});
    case Rule::kDesKey:
      return CipherKeyStatus(value, {8, 16, 24});
    case Rule::kDecimal:
    case Rule::kHexadecimal:
    case Rule::kDivisor:
    case Rule::kMessage:
    case Rule::kNewNumber:
      return NumberStatus(value, rule);
    case Rule::kCipherNameValue: {
      const Result<VARIANT> plain = Copied(value);
      if (plain.failed()) return plain.status;
      const Result<CoercedText> text = CoercedToText(plain.value);
      return text.failed() ? text.status : TextStatus(text.value.text, rule);
    }
    case Rule::kHashName:
    case Rule::kCipherName:
    case Rule::kText:
      return TextStatus(TextIn(value.bstrVal), rule);
    case Rule::kInteger:
    case Rule::kSize:
    case Rule::kKeySize:
      return IntegerStatus(value.lVal, rule);
    case Rule::kSwitch:
      return S_OK;
    case Rule::kStream: {
      if (value.punkVal == nullptr) return E_POINTER;
      IStream* stream = nullptr;
      if (value.punkVal->QueryInterface(IID_IStream, reinterpret_cast<void**>(&stream)) != S_OK) {
        return kNoStream;
      }
      stream->Release();
      return S_OK;
    }
  }
  return E_FAIL;
}

bool TakesAnyValue(Rule rule) {
  return rule <= Rule::kNewNumber || rule == Rule::kCipherNameValue;
}

bool IsMissing(const VARIANT& value) {
  return V_VT(&value) == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
}

// The system converts an argument that is left out like any other.
constexpr HRESULT kNotOptional = kPortableRuntime ? DISP_E_PARAMNOTOPTIONAL : DISP_E_TYPEMISMATCH;

// What a late-bound call makes of an argument before the member sees it: a status, and the value in
// the declared type as far as the member's answer depends on it.
Result<VARIANT> Delivered(const StatusRow& row, const VARIANT& value) {
  Result<VARIANT> out = {S_OK, value};
  if (TakesAnyValue(row.rule)) {
    // The member gets the value as it is, a reference too; the system's call copies it first.
    return kPortableRuntime || IsType(V_VT(&value)) ? out : Result<VARIANT>{DISP_E_BADVARTYPE};
  }
  if (IsMissing(value)) {
    // The defaults are values that the member takes.
    out.value.lVal = 32;
    return row.has_default ? out : Result<VARIANT>{kNotOptional};
  }
  if (!kPortableRuntime && (V_VT(&value) & VT_BYREF) != 0 && value.byref == nullptr) {
    return {DISP_E_TYPEMISMATCH};
  }
  switch (row.rule) {
    case Rule::kSwitch:
      return {CoercedNumber(value).status, value};
    case Rule::kInteger:
    case Rule::kSize:
    case Rule::kKeySize: {
      const Result<LONG> number = CoercedInteger(value);
      out.value.lVal = number.value;
      return {number.status, out.value};
    }
    case Rule::kStream: {
      if (!IsType(V_VT(&value))) return {DISP_E_BADVARTYPE};
      const Result<VARIANT> plain = Followed(value);
      if (plain.failed() || IsObject(plain.value)) return plain;
      return {DISP_E_TYPEMISMATCH};
    }
    default:
      return out;  // texts
  }
}

}  // namespace

Outcome ExpectedOutcome(const Member& member, const std::string& parameter, State state, bool late,
                        const VARIANT& value) {
  const StatusRow* const row = FindStatusRow(member, parameter);
  if (row == nullptr) {
    ADD_FAILURE() << "no row: " << member.Name() << " " << parameter;
    return {E_FAIL, false};
  }
  Result<VARIANT> argument = {S_OK, value};
  HRESULT status_of_text = S_OK;
  const bool is_text =
      row->rule == Rule::kHashName || row->rule == Rule::kCipherName || row->rule == Rule::kText;
  if (late) {
    argument = Delivered(*row, value);
    if (argument.failed()) return {argument.status, false};
    if (is_text) {
      const Result<CoercedText> text = CoercedToText(value);
      if (text.failed()) return {text.status, false};
      status_of_text = TextStatus(text.value.text, row->rule);
    }
  }
  if (state == State::kFresh && row->needs == Needs::kAlgorithm) return {kNotInitialized, true};
  if (state == State::kFresh && row->needs == Needs::kRsaKey) return {kKeyNotSet, true};
  const HRESULT status = late && is_text ? status_of_text : MemberStatus(row->rule, argument.value);
  // A late-bound call knows one success only.
  return {late && SUCCEEDED(status) ? S_OK : status, true};
}

}  // namespace mirolta::test
