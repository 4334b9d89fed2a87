#include "hostile_values.h"

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "big_number_object.h"
#include "member_calls.h"

namespace mirolta::test {

namespace {

// The most that a cipher's queue holds.
constexpr ULONG kQueueLimit = 1048832;
constexpr ULONG kSixteenMegabytes = 16u << 20;

using Bounds = std::vector<SAFEARRAYBOUND>;

}  // namespace

HostileValues::HostileValues()
    : with_text_(TextValue(OLESTR("abc"))), with_bytes_(BytesValue(Bytes(16, 0x35))) {
  failing_.status = E_ACCESSDENIED;
  itself_.value = TestValue(VT_DISPATCH);
  itself_.value->pdispVal = &itself_;
  itself_.references = 1000000;
  without_dispatch_.has_dispatch = false;
  AddPlain();
  AddNumbers();
  AddTexts();
  AddArrays();
  AddObjects();
  AddReferences();
  AddFixed();
}

HostileValues::~HostileValues() {
  V_VT(&itself_.value) = VT_EMPTY;
  SafeArrayUnlock(locked_);
  hollow_->pvData = hollow_data_;
  for (VARIANT& value : owned_) VariantClear(&value);
}

VARIANT& HostileValues::Own(VARTYPE type) {
  owned_.emplace_back();
  VariantInit(&owned_.back());
  V_VT(&owned_.back()) = type;
  return owned_.back();
}

VARIANT& HostileValues::OwnText(const Text& text) {
  VARIANT& value = Own(VT_BSTR);
  value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return value;
}

VARIANT& HostileValues::OwnArray(VARTYPE type, const Bounds& bounds) {
  Bounds copy = bounds;
  VARIANT& value = Own(static_cast<VARTYPE>(VT_ARRAY | type));
  value.parray = SafeArrayCreate(type, static_cast<UINT>(copy.size()), copy.data());
  if (value.parray == nullptr) {
    std::fprintf(stderr, "no array of type %u\n", static_cast<unsigned>(type));
    std::abort();
  }
  return value;
}

void HostileValues::Add(const std::string& name, const VARIANT& value, bool is_long) {
  values_.push_back({name, value, is_long});
}

void HostileValues::AddBoth(const std::string& name, VARIANT& value, bool is_long) {
  Add(name, value, is_long);
  // All members of the union start where the first does; a decimal is the value itself.
  void* const place =
      V_VT(&value) == VT_DECIMAL ? static_cast<void*>(&value) : static_cast<void*>(&value.byref);
  Add("&" + name, ReferenceTo(V_VT(&value), place), is_long);
}

void HostileValues::AddPlain() {
  for (const auto& [name, type] : std::initializer_list<std::pair<const char*, VARTYPE>>{
           {"empty", VT_EMPTY}, {"null", VT_NULL}}) {
    AddBoth(name, Own(type));
  }
  VARIANT& missing = Own(VT_ERROR);
  missing.scode = DISP_E_PARAMNOTFOUND;
  AddBoth("missing", missing);
  VARIANT& error = Own(VT_ERROR);
  error.scode = E_ACCESSDENIED;
  AddBoth("error", error);
  // Types that no VARIANT has.
  for (const auto& [name, type] :
       std::initializer_list<std::pair<const char*, VARTYPE>>{{"type-variant", VT_VARIANT},
                                                              {"type-15", 15},
                                                              {"type-void", VT_VOID},
                                                              {"type-ptr", VT_PTR},
                                                              {"type-userdefined", VT_USERDEFINED},
                                                              {"type-100", 100},
                                                              {"type-4095", 0x0FFF}}) {
    Add(name, Own(type));
    owned_.pop_back();  // nothing to clear, and it could not be
  }
}

void HostileValues::AddNumbers() {
  // Seven in every type that has numbers.
  for (const auto& [name, type] :
       std::initializer_list<std::pair<const char*, VARTYPE>>{{"i1", VT_I1},
                                                              {"ui1", VT_UI1},
                                                              {"i2", VT_I2},
                                                              {"ui2", VT_UI2},
                                                              {"i4", VT_I4},
                                                              {"ui4", VT_UI4},
                                                              {"i8", VT_I8},
                                                              {"ui8", VT_UI8},
                                                              {"int", VT_INT},
                                                              {"uint", VT_UINT},
                                                              {"r4", VT_R4},
                                                              {"r8", VT_R8},
                                                              {"cy", VT_CY},
                                                              {"date", VT_DATE},
                                                              {"decimal", VT_DECIMAL}}) {
    TestValue seven = NumberValue(7);
    VARIANT& value = Own(VT_EMPTY);
    if (VariantChangeType(&value, &seven, 0, type) != S_OK) std::abort();
    AddBoth(name, value);
  }
  VARIANT& truth = Own(VT_BOOL);
  truth.boolVal = VARIANT_TRUE;
  AddBoth("bool", truth);
  VARIANT& below = Own(VT_I4);
  below.lVal = -7;
  Add("i4-negative", below);
  VARIANT& small = Own(VT_I2);
  small.iVal = -7;
  Add("i2-negative", small);
  VARIANT& most = Own(VT_UI4);
  most.ulVal = 0xFFFFFFFF;
  Add("ui4-most", most);
  for (const auto& [name, number] :
       std::initializer_list<std::pair<const char*, double>>{{"r8-negative", -1.5},
                                                             {"r8-half", 2.5},
                                                             {"r8-1e10", 1e10},
                                                             {"r8-1e300", 1e300},
                                                             {"r8-nan", std::nan("")},
                                                             {"r8-infinite", INFINITY}}) {
    VARIANT& value = Own(VT_R8);
    value.dblVal = number;
    Add(name, value);
  }
}

void HostileValues::AddTexts() {
  AddBoth("text", OwnText(OLESTR("abc")));
  AddBoth("text-null", Own(VT_BSTR));
  Add("text-empty", OwnText(OLESTR("")));
  Add("text-number", OwnText(OLESTR("7")));
  Add("text-algorithm", OwnText(OLESTR("AES")));
  Add("text-algorithm-zero", OwnText(Text(OLESTR("AES\0x"), 5)));
  Add("text-zero-inside", OwnText(Text(OLESTR("ab\0cd"), 5)));
  Add("text-zero-first", OwnText(Text(OLESTR("\0ab"), 3)));
  Add("text-half-pair", OwnText(Text(1, static_cast<OLECHAR>(0xD800))));
  VARIANT& odd = Own(VT_BSTR);
  odd.bstrVal = SysAllocStringByteLen("abcde", 5);
  Add("text-odd-bytes", odd);
  Add("text-16", OwnText(OLESTR("0123456789abcdef")));
  Add("text-10000-digits", OwnText(Text(10000, OLESTR('7'))), true);
  Add("text-16MB", OwnText(Text(kSixteenMegabytes / 2, OLESTR('7'))), true);
}

void HostileValues::AddArrays() {
  AddBoth("bytes-16", OwnArray(VT_UI1, {{16, 0}}));
  AddBoth("bytes-0", OwnArray(VT_UI1, {{0, 0}}));
  AddBoth("bytes-null", Own(VT_ARRAY | VT_UI1));
  Add("bytes-8", OwnArray(VT_UI1, {{8, 0}}));
  Add("bytes-17", OwnArray(VT_UI1, {{17, 0}}));
  Add("bytes-from-5", OwnArray(VT_UI1, {{16, 5}}));
  Add("bytes-from-least", OwnArray(VT_UI1, {{16, static_cast<LONG>(0x80000000)}}));
  Add("bytes-4x4", OwnArray(VT_UI1, {{4, 0}, {4, 0}}));
  Add("bytes-4x0", OwnArray(VT_UI1, {{4, 0}, {0, 0}}));
  Add("bytes-10000", OwnArray(VT_UI1, {{10000, 0}}), true);
  VARIANT& full = OwnArray(VT_UI1, {{10000, 0}});
  std::memset(full.parray->pvData, 0xA5, 10000);
  Add("bytes-10000-full", full, true);
  Add("bytes-queue-limit", OwnArray(VT_UI1, {{kQueueLimit, 0}}), true);
  Add("bytes-past-limit", OwnArray(VT_UI1, {{kQueueLimit + 1, 0}}), true);
  Add("bytes-16MB", OwnArray(VT_UI1, {{kSixteenMegabytes, 0}}), true);
  VARIANT& locked = OwnArray(VT_UI1, {{16, 0}});
  locked_ = locked.parray;
  SafeArrayLock(locked_);
  Add("bytes-locked", locked);
  // The descriptor counts elements and points to no data.
  VARIANT& hollow = OwnArray(VT_UI1, {{16, 0}});
  hollow_ = hollow.parray;
  hollow_data_ = std::exchange(hollow_->pvData, nullptr);
  AddBoth("bytes-hollow", hollow);
  for (const auto& [name, type] : std::initializer_list<std::pair<const char*, VARTYPE>>{
           {"i1s", VT_I1},           {"i2s", VT_I2},
           {"ui2s", VT_UI2},         {"i4s", VT_I4},
           {"ui4s", VT_UI4},         {"i8s", VT_I8},
           {"ui8s", VT_UI8},         {"ints", VT_INT},
           {"uints", VT_UINT},       {"r4s", VT_R4},
           {"r8s", VT_R8},           {"cys", VT_CY},
           {"dates", VT_DATE},       {"bools", VT_BOOL},
           {"decimals", VT_DECIMAL}, {"errors", VT_ERROR},
           {"texts", VT_BSTR},       {"variants", VT_VARIANT},
           {"unknowns", VT_UNKNOWN}, {"dispatches", VT_DISPATCH}}) {
    AddBoth(name, OwnArray(type, {{16, 0}}));
  }
  Add("array-of-empty", Own(VT_ARRAY | VT_EMPTY));
}

void HostileValues::AddObjects() {
  const auto object = [&](FakeObject& fake, VARTYPE type) -> VARIANT& {
    VARIANT& value = Own(type);
    value.pdispVal = &fake;
    ++fake.references;
    return value;
  };
  AddBoth("object-text", object(with_text_, VT_DISPATCH));
  AddBoth("object-bytes", object(with_bytes_, VT_DISPATCH));
  AddBoth("unknown-text", object(with_text_, VT_UNKNOWN));
  AddBoth("object-null", Own(VT_DISPATCH));
  AddBoth("unknown-null", Own(VT_UNKNOWN));
  // A number that holds zero, whose default value cannot be read.
  void* zero = nullptr;
  if (CreatePexBigNumber(nullptr, IID_IDispatch, &zero) != S_OK) std::abort();
  VARIANT& number = Own(VT_DISPATCH);
  number.pdispVal = static_cast<IDispatch*>(zero);
  Add("number-zero", number);
  Add("object-failing", object(failing_, VT_DISPATCH));
  Add("object-itself", object(itself_, VT_DISPATCH));
  Add("unknown-without-dispatch", object(without_dispatch_, VT_UNKNOWN));
}

void HostileValues::AddReferences() {
  VARIANT& text = OwnText(OLESTR("abc"));
  VARIANT& array = OwnArray(VT_UI1, {{16, 0}});
  VARIANT& empty = Own(VT_EMPTY);
  Add("&variant-text", ReferenceTo(VT_VARIANT, &text));
  Add("&variant-bytes", ReferenceTo(VT_VARIANT, &array));
  Add("&variant-empty", ReferenceTo(VT_VARIANT, &empty));
  // A reference to a reference.
  VARIANT& inner = Own(VT_EMPTY);
  inner = ReferenceTo(VT_BSTR, &text.bstrVal);
  Add("&variant-&text", ReferenceTo(VT_VARIANT, &inner));
  VARIANT& twice = Own(VT_EMPTY);
  twice = ReferenceTo(VT_VARIANT, &text);
  Add("&variant-&variant", ReferenceTo(VT_VARIANT, &twice));
  VARIANT& itself = Own(VT_EMPTY);
  itself = ReferenceTo(VT_VARIANT, &itself);
  Add("&variant-itself", ReferenceTo(VT_VARIANT, &itself));
  // References to nothing.
  for (const auto& [name, type] :
       std::initializer_list<std::pair<const char*, VARTYPE>>{{"i1", VT_I1},
                                                              {"i2", VT_I2},
                                                              {"i4", VT_I4},
                                                              {"i8", VT_I8},
                                                              {"r4", VT_R4},
                                                              {"r8", VT_R8},
                                                              {"cy", VT_CY},
                                                              {"date", VT_DATE},
                                                              {"bool", VT_BOOL},
                                                              {"text", VT_BSTR},
                                                              {"decimal", VT_DECIMAL},
                                                              {"error", VT_ERROR},
                                                              {"object", VT_DISPATCH},
                                                              {"unknown", VT_UNKNOWN},
                                                              {"variant", VT_VARIANT},
                                                              {"bytes", VT_ARRAY | VT_UI1}}) {
    Add(std::string("&nothing-") + name, ReferenceTo(type, nullptr));
  }
}

void HostileValues::AddFixed() {
  const auto text = [&](const std::string& name, VARIANT& value) {
    texts_.push_back({name, value, false});
  };
  text("null", Own(VT_BSTR));
  for (const char* const plain : {"", "MD5", "SHA1", "SHA256", "AES", "DES", "md5", "aes", " AES",
                                  "AES ", "SHA2", "abc", "7"}) {
    text(std::string("'") + plain + "'", OwnText(WideOf(plain)));
  }
  text("'AES' zero", OwnText(Text(OLESTR("AES\0"), 4)));
  text("'MD5' zero 'x'", OwnText(Text(OLESTR("MD5\0x"), 5)));
  text("half-pair", OwnText(Text(1, static_cast<OLECHAR>(0xDC00))));
  text("10000 digits", OwnText(Text(10000, OLESTR('7'))));
  texts_.push_back({"16MB", OwnText(Text(kSixteenMegabytes / 2, OLESTR('7'))), true});
  for (const LONG number :
       std::initializer_list<LONG>{0, 1, -1, -2, 2, 7, 33, 64, 1252, 65001, 77777, 0x7FFFFFFF,
                                   static_cast<LONG>(0x80000000)}) {
    VARIANT& value = Own(VT_I4);
    value.lVal = number;
    numbers_.push_back({std::to_string(number), value, number > 100});
  }
  for (const int flag : {0, -1, 1, 2, 0x7FFF}) {
    VARIANT& value = Own(VT_BOOL);
    value.boolVal = static_cast<VARIANT_BOOL>(flag);
    switches_.push_back({std::to_string(flag), value, false});
  }
  VARIANT& stream = Own(VT_UNKNOWN);
  IStream* memory = nullptr;
  if (CreateStreamOnHGlobal(nullptr, TRUE, &memory) != S_OK) std::abort();
  stream.punkVal = memory;
  objects_.push_back({"stream", stream, false});
  objects_.push_back({"null", Own(VT_UNKNOWN), false});
  VARIANT& other = Own(VT_UNKNOWN);
  other.punkVal = &with_text_;
  ++with_text_.references;
  objects_.push_back({"no stream", other, false});
}

const std::vector<HostileValue>& HostileValues::OfType(VARTYPE type) const {
  switch (type) {
    case VT_BSTR:
      return texts_;
    case VT_I4:
      return numbers_;
    case VT_BOOL:
      return switches_;
    case VT_UNKNOWN:
      return objects_;
    default:
      return values_;
  }
}

}  // namespace mirolta::test
