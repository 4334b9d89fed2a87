#include "status_model.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdio>

#include "value_model.h"

namespace mirolta::test {

namespace {

constexpr HRESULT kAlgorithmNotFound = MIROLTA_STATUS(0x80042777u);
constexpr HRESULT kNotInitialized = MIROLTA_STATUS(0x80042778u);
constexpr HRESULT kKeyNotSet = MIROLTA_STATUS(0x80042779u);
constexpr HRESULT kTooMuchData = MIROLTA_STATUS(0x8004277Au);
constexpr HRESULT kNoStream = MIROLTA_STATUS(0x80042775u);

// What a member does with an argument.
enum class Rule {
  kWholeData,       // bytes of a digest in one call
  kPieceOfData,     // more bytes of a digest
  kHashKey,         // any length
  kEncrypted,       // bytes for a cipher's queue
  kDecrypted,       //
  kAesKey,          // 16, 24 or 32 bytes
  kDesKey,          // 8, 16 or 24 bytes
  kDecimal,         // a number, texts decimal
  kHexadecimal,     // a number, texts hexadecimal
  kDivisor,         // a decimal number that may not be zero
  kMessage,         // a hexadecimal number below the modulus
  kNewNumber,       // a decimal number, every failure reported as missing memory
  kHashName,        // a text: one of the digests
  kCipherName,      // a text: one of the ciphers
  kCipherNameValue,  // a value that is made a text: one of the ciphers
  kText,            // any text
  kInteger,         // any 32-bit number
  kSize,            // a 32-bit number, 1 at least
  kKeySize,         // a 32-bit number, 2 at least: a key of one byte has no primes
  kSwitch,          // any truth value
  kStream,          // an object that is a stream
};

// What an object needs before it reads the argument; a fresh one lacks it.
enum class Needs { kNothing, kAlgorithm, kRsaKey };

struct Row {
  const char* member;
  const char* parameter;
  Rule rule;
  Needs needs = Needs::kNothing;
  bool has_default = false;  // a late-bound caller may leave the argument out
};

constexpr bool kOptional = true;

constexpr Row kRows[] = {
    {"HashObject.InitHash", "bstrAlg", Rule::kHashName},
    {"HashObject.HashData", "vData", Rule::kWholeData, Needs::kAlgorithm},
    {"HashObject.HashData", "lCP", Rule::kInteger, Needs::kAlgorithm, kOptional},
    {"HashObject.HashUpdate", "vData", Rule::kPieceOfData, Needs::kAlgorithm},
    {"HashObject.HashUpdate", "lCP", Rule::kInteger, Needs::kAlgorithm, kOptional},
    {"HashObject.codePage put", "lCP", Rule::kInteger},
    {"HashObject.Key put", "vKey", Rule::kHashKey, Needs::kAlgorithm},

    {"SymmetricCryptObject.Key put", "vKey", Rule::kAesKey, Needs::kAlgorithm},
    {"SymmetricCryptObject.codePage put", "lCP", Rule::kInteger},
    {"SymmetricCryptObject.Encrypt", "vData", Rule::kEncrypted, Needs::kAlgorithm},
    {"SymmetricCryptObject.Encrypt", "bFinalize", Rule::kSwitch, Needs::kAlgorithm, kOptional},
    {"SymmetricCryptObject.Decrypt", "vData", Rule::kDecrypted, Needs::kAlgorithm},
    {"SymmetricCryptObject.Decrypt", "bFinalize", Rule::kSwitch, Needs::kAlgorithm, kOptional},
    {"SymmetricCryptObject.Reset", "lWhat", Rule::kInteger, Needs::kAlgorithm, kOptional},
    {"SymmetricCryptObject.Init", "vAlg", Rule::kCipherNameValue},
    {"SymmetricCryptObject.PadType put", "lPad", Rule::kInteger, Needs::kAlgorithm},

    {"PexBigNumber.Value put", "vValue", Rule::kDecimal},
    {"PexBigNumber.Hex put", "vValue", Rule::kHexadecimal},
    {"PexBigNumber.Text get", "lCP", Rule::kInteger, Needs::kNothing, kOptional},
    {"PexBigNumber.Text put", "lCP", Rule::kInteger, Needs::kNothing, kOptional},
    {"PexBigNumber.Text put", "bstrText", Rule::kText},
    {"PexBigNumber.Binary put", "vValue", Rule::kDecimal},
    {"PexBigNumber.Add", "v", Rule::kDecimal},
    {"PexBigNumber.Sub", "v", Rule::kDecimal},
    {"PexBigNumber.Mul", "v", Rule::kDecimal},
    {"PexBigNumber.Div", "v", Rule::kDivisor},
    {"PexBigNumber.Mod", "v", Rule::kDivisor},
    {"PexBigNumber.Inc", "v", Rule::kDecimal},
    {"PexBigNumber.Dec", "v", Rule::kDecimal},
    {"PexBigNumber.Cmp", "v", Rule::kDecimal},
    {"PexBigNumber.NewNumber", "v", Rule::kNewNumber},
    {"PexBigNumber.Random", "lSize", Rule::kSize},
    {"PexBigNumber.Random", "bEnsureSize", Rule::kSwitch, Needs::kNothing, kOptional},
    {"PexBigNumber.Random", "bOdd", Rule::kSwitch, Needs::kNothing, kOptional},
    {"PexBigNumber.GCD", "v", Rule::kDecimal},
    {"PexBigNumber.ModExp", "ve", Rule::kDecimal},
    {"PexBigNumber.ModExp", "vm", Rule::kDivisor},
    {"PexBigNumber.ModInv", "vm", Rule::kDivisor},

    {"RSACrypt.CreateKeys", "v1", Rule::kHexadecimal},
    {"RSACrypt.CreateKeys", "v2", Rule::kHexadecimal},
    {"RSACrypt.CreateRandKeys", "lByteSize", Rule::kKeySize, Needs::kNothing, kOptional},
    {"RSACrypt.CreateRandKeys", "bExactSize", Rule::kSwitch, Needs::kNothing, kOptional},
    {"RSACrypt.Modulus put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.PublicExp put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.SecretExp put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.P put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.Q put", "vValue", Rule::kHexadecimal},
    {"RSACrypt.Encrypt", "vData", Rule::kMessage, Needs::kRsaKey},
    {"RSACrypt.Decrypt", "vData", Rule::kHexadecimal, Needs::kRsaKey},
    {"RSACrypt.DecryptPQ", "vData", Rule::kHexadecimal, Needs::kRsaKey},

    {"ToviStreamDigest.Stream putref", "pStream", Rule::kStream},
    {"ToviStreamDigest.ReadAlgorithm put", "bstrAlg", Rule::kHashName},
    {"ToviStreamDigest.WriteAlgorithm put", "bstrAlg", Rule::kHashName},
    {"ToviStreamDigest.WriteKey put", "vKey", Rule::kHashKey, Needs::kAlgorithm},
    {"ToviStreamDigest.ReadKey put", "vKey", Rule::kHashKey, Needs::kAlgorithm},
    {"ToviStreamDigest.WriteHashEnable put", "bEnable", Rule::kSwitch},
    {"ToviStreamDigest.ReadHashEnable put", "bEnable", Rule::kSwitch},
    {"ToviStreamDigest.SeekingForbidden put", "bForbidden", Rule::kSwitch},
    {"ToviStreamDigest.codePage put", "lCP", Rule::kInteger},

    {"ToviStreamCrypt.Stream putref", "pStream", Rule::kStream},
    {"ToviStreamCrypt.ReadAlgorithm put", "bstrAlg", Rule::kCipherName},
    {"ToviStreamCrypt.WriteAlgorithm put", "bstrAlg", Rule::kCipherName},
    // Subject gives the read side AES and the write side DES.
    {"ToviStreamCrypt.ReadKey put", "vKey", Rule::kAesKey, Needs::kAlgorithm},
    {"ToviStreamCrypt.WriteKey put", "vKey", Rule::kDesKey, Needs::kAlgorithm},
    {"ToviStreamCrypt.SeekingForbidden put", "bForbidden", Rule::kSwitch},
    {"ToviStreamCrypt.codePage put", "lCP", Rule::kInteger},
    {"ToviStreamCrypt.WriteDecrypt put", "bDecrypt", Rule::kSwitch},
    {"ToviStreamCrypt.ReadDecrypt put", "bDecrypt", Rule::kSwitch},
    {"ToviStreamCrypt.ReadPadType put", "lPadType", Rule::kInteger, Needs::kAlgorithm},
    {"ToviStreamCrypt.WritePadType put", "lPadType", Rule::kInteger, Needs::kAlgorithm},
};

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

// --- Numbers of any size -------------------------------------------------------------------------

// How many bytes or digits a number has from its first that is not zero, and that one.
struct Magnitude {
  size_t digits = 0;
  int bits_of_digit = 4;
  int first = 0;

  void Append(int digit) {
    if (digits == 0) first = digit;
    if (digits != 0 || digit != 0) ++digits;
  }
  bool IsZero() const { return digits == 0; }
};

Magnitude MagnitudeOfText(const Text& text, bool hexadecimal) {
  Magnitude magnitude;
  for (const OLECHAR c : text) {
    if (c >= '0' && c <= '9') magnitude.Append(c - '0');
    if (hexadecimal && c >= 'a' && c <= 'f') magnitude.Append(c - 'a' + 10);
    if (hexadecimal && c >= 'A' && c <= 'F') magnitude.Append(c - 'A' + 10);
  }
  return magnitude;
}

Result<Magnitude> MagnitudeOf(const VARIANT& value, bool hexadecimal) {
  // References are copied as such, and are no numbers then.
  if (!IsType(V_VT(&value))) return {DISP_E_BADVARTYPE};
  if (IsZeroNumber(value)) return {S_OK};
  const bool is_reference = (V_VT(&value) & VT_BYREF) != 0;
  const Result<VARIANT> plain = is_reference      ? Result<VARIANT>{S_OK, value}
                                : IsObject(value) ? Resolved(value)
                                                  : Copied(value);
  if (plain.failed()) return {plain.status};
  switch (V_VT(&plain.value)) {
    case VT_EMPTY:
    case VT_NULL:
      return {S_OK};
    case VT_ERROR:
      return {plain.value.scode == DISP_E_PARAMNOTFOUND ? S_OK : DISP_E_TYPEMISMATCH};
    case VT_BSTR:
      return {S_OK, MagnitudeOfText(TextIn(plain.value.bstrVal), hexadecimal)};
    case kBytesType: {
      const Result<size_t> count = ArrayByteCount(plain.value.parray, S_OK);
      Magnitude magnitude;
      magnitude.bits_of_digit = 8;
      for (size_t i = 0; i < count.value; ++i) {
        magnitude.Append(static_cast<const uint8_t*>(plain.value.parray->pvData)[i]);
      }
      return {S_OK, magnitude};
    }
    case VT_I1:
    case VT_UI1:
    case VT_I2:
    case VT_UI2:
    case VT_I4:
    case VT_UI4:
    case VT_R4:
    case VT_R8: {
      const double number = NumberIn(plain.value).value;
      if (!(number >= -0.5 && number < 4294967295.5)) return {DISP_E_OVERFLOW};
      char digits[16];
      std::snprintf(digits, sizeof digits, "%X", static_cast<unsigned>(std::nearbyint(number)));
      return {S_OK, MagnitudeOfText(WideOf(digits), true)};
    }
    default:
      return {DISP_E_TYPEMISMATCH};
  }
}

// Against the modulus of a ready object, 0x79... of 127 bits. No value has its very first byte.
bool IsBelowModulus(const Magnitude& m) {
  const size_t bits = m.digits * static_cast<size_t>(m.bits_of_digit);
  if (bits != 128) return bits < 128;
  return m.first < (m.bits_of_digit == 8 ? 0x79 : 0x7);
}

HRESULT NumberStatus(const VARIANT& value, Rule rule) {
  const bool hexadecimal = rule == Rule::kHexadecimal || rule == Rule::kMessage;
  const Result<Magnitude> magnitude = MagnitudeOf(value, hexadecimal);
  if (magnitude.failed()) return rule == Rule::kNewNumber ? E_OUTOFMEMORY : magnitude.status;
  if (rule == Rule::kDivisor && magnitude.value.IsZero()) return DISP_E_DIVBYZERO;
  if (rule == Rule::kMessage && !IsBelowModulus(magnitude.value)) return kTooMuchData;
  return S_OK;
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

// What a late-bound call makes of an argument before the member sees it: a status, and the value in
// the declared type as far as the member's answer depends on it.
Result<VARIANT> Delivered(const Row& row, const VARIANT& value) {
  Result<VARIANT> out = {S_OK, value};
  // A member that takes any value gets it as it is, a reference too.
  if (TakesAnyValue(row.rule)) return out;
  if (IsMissing(value)) {
    // The defaults are values that the member takes.
    out.value.lVal = 32;
    return row.has_default ? out : Result<VARIANT>{DISP_E_PARAMNOTOPTIONAL};
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

size_t StatusModelRows() {
  return sizeof kRows / sizeof kRows[0];
}

Outcome ExpectedOutcome(const Member& member, const std::string& parameter, State state, bool late,
                        const VARIANT& value) {
  for (const Row& row : kRows) {
    if (member.Name() != row.member || parameter != row.parameter) continue;
    Result<VARIANT> argument = {S_OK, value};
    HRESULT status_of_text = S_OK;
    const bool is_text = row.rule == Rule::kHashName || row.rule == Rule::kCipherName ||
                         row.rule == Rule::kText;
    if (late) {
      argument = Delivered(row, value);
      if (argument.failed()) return {argument.status, false};
      if (is_text) {
        const Result<CoercedText> text = CoercedToText(value);
        if (text.failed()) return {text.status, false};
        status_of_text = TextStatus(text.value.text, row.rule);
      }
    }
    if (state == State::kFresh && row.needs == Needs::kAlgorithm) return {kNotInitialized, true};
    if (state == State::kFresh && row.needs == Needs::kRsaKey) return {kKeyNotSet, true};
    const HRESULT status =
        late && is_text ? status_of_text : MemberStatus(row.rule, argument.value);
    // A late-bound call knows one success only.
    return {late && SUCCEEDED(status) ? S_OK : status, true};
  }
  ADD_FAILURE() << "no row: " << member.Name() << " " << parameter;
  return {E_FAIL, false};
}

}  // namespace mirolta::test
