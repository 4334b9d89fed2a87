// An automation module for the host's tests: a class without a type library whose members take and
// return every kind of value, count their calls and fail on demand.
#include <dlfcn.h>
#include <string.h>

#include <map>
#include <string>

#include "objects/counted_object.h"
#include "platform.h"

namespace {

constexpr CLSID kFakeClass = {
    0x3B1F6A52, 0x77C0, 0x4D0E, {0x8E, 0x21, 0x6B, 0x9D, 0x40, 0x1C, 0xF3, 0xA8}};
constexpr OLECHAR kProgIdKey[] = OLESTR("Fake.Object\\CLSID");

using mirolta::host::CountedObject;

LONG live_objects = 0;

using Text = std::basic_string<OLECHAR>;

Text Ascii(const std::string& text) {
  return Text(text.begin(), text.end());
}

HRESULT Give(VARIANT* result, const Text& text) {
  if (result == nullptr) return S_OK;
  result->vt = VT_BSTR;
  result->bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return result->bstrVal != nullptr ? S_OK : E_OUTOFMEMORY;
}

HRESULT GiveNumber(VARIANT* result, LONG number) {
  if (result == nullptr) return S_OK;
  result->vt = VT_I4;
  result->lVal = number;
  return S_OK;
}

// An object without IDispatch and IStream.
class PlainObject final : public CountedObject<PlainObject, IUnknown> {
 public:
  static bool Implements(REFIID) { return false; }
};

// A two-dimensional array of strings "row,column", rows 1..2, columns 0..2.
void GiveTable(VARIANT* result) {
  SAFEARRAYBOUND bounds[2] = {{2, 1}, {3, 0}};
  SAFEARRAY* array = SafeArrayCreate(VT_BSTR, 2, bounds);
  for (LONG row = 1; row <= 2; ++row) {
    for (LONG column = 0; column < 3; ++column) {
      LONG indices[2] = {row, column};
      const Text text = Ascii(std::to_string(row) + "," + std::to_string(column));
      const BSTR element = SysAllocString(text.c_str());
      SafeArrayPutElement(array, indices, element);
      SysFreeString(element);
    }
  }
  result->vt = VT_ARRAY | VT_BSTR;
  result->parray = array;
}

// One element, 7, in the most dimensions that an array has. Bound i is i.
void GiveDeepArray(VARIANT* result) {
  constexpr UINT kDimensions = 60;
  SAFEARRAYBOUND bounds[kDimensions];
  LONG indices[kDimensions];
  for (UINT i = 0; i < kDimensions; ++i) {
    bounds[i] = {1, static_cast<LONG>(i)};
    indices[i] = static_cast<LONG>(i);
  }
  SAFEARRAY* array = SafeArrayCreate(VT_I4, kDimensions, bounds);
  LONG element = 7;
  SafeArrayPutElement(array, indices, &element);
  result->vt = VT_ARRAY | VT_I4;
  result->parray = array;
}

void GiveBytes(VARIANT* result, LONG lower, std::string bytes) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, lower, static_cast<ULONG>(bytes.size()));
  void* data = nullptr;
  SafeArrayAccessData(array, &data);
  if (!bytes.empty()) memcpy(data, bytes.data(), bytes.size());
  SafeArrayUnaccessData(array);
  result->vt = VT_ARRAY | VT_UI1;
  result->parray = array;
}

// Two elements, each of the bytes of `element`.
void GivePair(VARTYPE type, const void* element, VARIANT* result) {
  SAFEARRAY* array = SafeArrayCreateVector(type, 0, 2);
  for (LONG index = 0; index < 2; ++index)
    SafeArrayPutElement(array, &index, const_cast<void*>(element));
  result->vt = static_cast<VARTYPE>(VT_ARRAY | type);
  result->parray = array;
}

void GiveVariants(VARIANT* result) {
  SAFEARRAY* array = SafeArrayCreateVector(VT_VARIANT, 0, 3);
  VARIANT element = {};
  LONG index = 0;
  element.vt = VT_I2;
  element.iVal = -7;
  SafeArrayPutElement(array, &index, &element);
  index = 1;
  VariantInit(&element);
  element.vt = VT_BSTR;
  element.bstrVal = SysAllocString(OLESTR("x"));
  SafeArrayPutElement(array, &index, &element);
  VariantClear(&element);
  result->vt = VT_ARRAY | VT_VARIANT;
  result->parray = array;
}

BYTE referenced_byte = 200;

// Makes a value by the name of its kind.
HRESULT MakeValue(const std::string& kind, VARIANT* result) {
  static const std::map<std::string, void (*)(VARIANT*)> kMakers = {
      {"empty", [](VARIANT* v) { v->vt = VT_EMPTY; }},
      {"null", [](VARIANT* v) { v->vt = VT_NULL; }},
      {"i1", [](VARIANT* v) { v->vt = VT_I1, v->cVal = static_cast<CHAR>(-5); }},
      {"ui1", [](VARIANT* v) { v->vt = VT_UI1, v->bVal = 250; }},
      {"i2", [](VARIANT* v) { v->vt = VT_I2, v->iVal = -300; }},
      {"ui2", [](VARIANT* v) { v->vt = VT_UI2, v->uiVal = 65000; }},
      {"ui4", [](VARIANT* v) { v->vt = VT_UI4, v->ulVal = 4000000000u; }},
      {"i8", [](VARIANT* v) { v->vt = VT_I8, v->llVal = -(LONGLONG{1} << 40); }},
      {"ui8", [](VARIANT* v) { v->vt = VT_UI8, v->ullVal = ULONGLONG{1} << 63; }},
      {"r4", [](VARIANT* v) { v->vt = VT_R4, v->fltVal = 1.5f; }},
      {"cy", [](VARIANT* v) { v->vt = VT_CY, v->cyVal.int64 = -12345; }},
      {"date", [](VARIANT* v) { v->vt = VT_DATE, v->date = 36526.5; }},
      {"error", [](VARIANT* v) { v->vt = VT_ERROR, v->scode = E_FAIL; }},
      {"missing", [](VARIANT* v) { v->vt = VT_ERROR, v->scode = DISP_E_PARAMNOTFOUND; }},
      {"nullobject", [](VARIANT* v) { v->vt = VT_DISPATCH, v->pdispVal = nullptr; }},
      {"plainobject", [](VARIANT* v) { v->vt = VT_UNKNOWN, v->punkVal = new PlainObject; }},
      {"decimal",
       [](VARIANT* v) {
         v->decVal = DECIMAL{};
         v->decVal.Lo64 = 12345;
         v->decVal.scale = 2;
         v->decVal.sign = DECIMAL_NEG;
         v->vt = VT_DECIMAL;
       }},
      {"table", GiveTable},
      {"deep", GiveDeepArray},
      {"shorts",
       [](VARIANT* v) {
         const SHORT element = -2;
         GivePair(VT_I2, &element, v);
       }},
      {"doubles",
       [](VARIANT* v) {
         const double element = 0.5;
         GivePair(VT_R8, &element, v);
       }},
      {"decimals",
       [](VARIANT* v) {
         DECIMAL element = {};
         element.Lo64 = 12345;
         element.scale = 2;
         GivePair(VT_DECIMAL, &element, v);
       }},
      {"variants", GiveVariants},
      {"bytes", [](VARIANT* v) { GiveBytes(v, 0, std::string("\0\x01\xFF", 3)); }},
      {"nobytes", [](VARIANT* v) { GiveBytes(v, 0, ""); }},
      {"bytesfrom5", [](VARIANT* v) { GiveBytes(v, 5, "ab"); }},
      {"byref", [](VARIANT* v) { v->vt = VT_BYREF | VT_UI1, v->pbVal = &referenced_byte; }},
      {"emptytext", [](VARIANT* v) { v->vt = VT_BSTR, v->bstrVal = nullptr; }},
      {"record", [](VARIANT* v) { v->vt = VT_RECORD; }},
  };
  const auto maker = kMakers.find(kind);
  if (maker == kMakers.end()) return E_INVALIDARG;
  maker->second(result);
  return S_OK;
}

// The type of a value and, for simple types, the value.
Text Describe(const VARIANT& value) {
  std::string text = std::to_string(value.vt);
  switch (value.vt) {
    case VT_I4:
      return Ascii(text + ":" + std::to_string(value.lVal));
    case VT_R8:
    case VT_DATE:
      return Ascii(text + ":" + std::to_string(value.dblVal));
    case VT_BOOL:
      return Ascii(text + ":" + std::to_string(value.boolVal));
    case VT_BSTR: {
      text += ":";
      for (UINT i = 0; i < SysStringLen(value.bstrVal); ++i) {
        text += (i > 0 ? " " : "") + std::to_string(value.bstrVal[i]);
      }
      return Ascii(text);
    }
    case VT_ARRAY | VT_UI1: {
      LONG lower = 0, upper = 0;
      SafeArrayGetLBound(value.parray, 1, &lower);
      SafeArrayGetUBound(value.parray, 1, &upper);
      return Ascii(text + ":" + std::to_string(lower) + ".." + std::to_string(upper));
    }
    default:
      return Ascii(text);
  }
}

HRESULT DefaultValue(const VARIANT& value, VARIANT* result, EXCEPINFO* exception) {
  if (value.vt != VT_DISPATCH || value.pdispVal == nullptr) return DISP_E_TYPEMISMATCH;
  DISPPARAMS none = {};
  VARIANT unused = {};
  const HRESULT status =
      value.pdispVal->Invoke(DISPID_VALUE, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_PROPERTYGET,
                             &none, result != nullptr ? result : &unused, exception, nullptr);
  VariantClear(&unused);
  return status;
}

HRESULT ReadAll(const VARIANT& value, VARIANT* result) {
  if (value.vt != VT_UNKNOWN && value.vt != VT_DISPATCH) return DISP_E_TYPEMISMATCH;
  void* found = nullptr;
  const HRESULT status = value.punkVal->QueryInterface(IID_IStream, &found);
  if (FAILED(status)) return status;
  IStream* const stream = static_cast<IStream*>(found);
  std::string bytes;
  char part[3];
  ULONG got = 0;
  while (SUCCEEDED(stream->Read(part, sizeof part, &got)) && got > 0) bytes.append(part, got);
  stream->Release();
  return Give(result, Ascii(bytes));
}

enum MemberId : DISPID {
  kValue = DISPID_VALUE,
  kDescribe = 1,
  kSame,
  kMake,
  kItem,
  kHeld,
  kFail,
  kFailBare,
  kDefaultOf,
  kReadAll,
  kCount,
  kLookups,
  kLive,
  kChild,
  kCallBack,
  kPutKind,
  kReadOnly,
  kFailCode,
};

struct Member {
  const OLECHAR* name;
  DISPID id;
  WORD kinds;
};
constexpr WORD kGetPut = DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT;
constexpr Member kMembers[] = {
    {OLESTR("Value"), kValue, kGetPut},
    {OLESTR("Describe"), kDescribe, DISPATCH_METHOD},
    {OLESTR("Same"), kSame, DISPATCH_METHOD},
    {OLESTR("Make"), kMake, DISPATCH_METHOD},
    {OLESTR("Item"), kItem, kGetPut},
    {OLESTR("Held"), kHeld, DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUTREF},
    {OLESTR("Fail"), kFail, DISPATCH_METHOD},
    {OLESTR("FailBare"), kFailBare, DISPATCH_METHOD},
    {OLESTR("FailCode"), kFailCode, DISPATCH_METHOD},
    {OLESTR("DefaultOf"), kDefaultOf, DISPATCH_METHOD},
    {OLESTR("ReadAll"), kReadAll, DISPATCH_METHOD},
    {OLESTR("Count"), kCount, DISPATCH_METHOD},
    {OLESTR("Lookups"), kLookups, DISPATCH_PROPERTYGET},
    {OLESTR("Live"), kLive, DISPATCH_PROPERTYGET},
    {OLESTR("Child"), kChild, DISPATCH_PROPERTYGET},
    {OLESTR("CallBack"), kCallBack, DISPATCH_METHOD},
    {OLESTR("PutKind"), kPutKind, kGetPut | DISPATCH_PROPERTYPUTREF},
    {OLESTR("ReadOnly"), kReadOnly, DISPATCH_PROPERTYGET},
};

bool SameName(const OLECHAR* a, const OLECHAR* b) {
  const auto lower = [](OLECHAR c) {
    return c >= 'A' && c <= 'Z' ? static_cast<OLECHAR>(c + 32) : c;
  };
  for (; lower(*a) == lower(*b); ++a, ++b) {
    if (*a == 0) return true;
  }
  return false;
}

class FakeObject final : public CountedObject<FakeObject, IDispatch> {
 public:
  FakeObject() { InterlockedIncrement(&live_objects); }

  static bool Implements(REFIID iid) { return iid == IID_IDispatch; }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** out) override {
    *out = nullptr;
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                          DISPID* ids) override {
    ++lookups_;
    for (const Member& member : kMembers) {
      if (SameName(member.name, names[0])) {
        ids[0] = member.id;
        return S_OK;
      }
    }
    ids[0] = DISPID_UNKNOWN;
    return DISP_E_UNKNOWNNAME;
  }

  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO* exception, UINT*) override {
    for (const Member& member : kMembers) {
      if (member.id == id && (member.kinds & flags) != 0) {
        return Call(id, flags, *params, result, exception);
      }
    }
    return DISP_E_MEMBERNOTFOUND;
  }

 private:
  friend CountedObject;

  ~FakeObject() {
    VariantClear(&value_);
    if (held_ != nullptr) held_->Release();
    InterlockedDecrement(&live_objects);
  }

  HRESULT Call(DISPID id, WORD flags, const DISPPARAMS& params, VARIANT* result,
               EXCEPINFO* exception) {
    const bool is_put = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    if (is_put && (params.cNamedArgs != 1 || params.rgdispidNamedArgs[0] != DISPID_PROPERTYPUT)) {
      return E_INVALIDARG;
    }
    // Last argument first.
    const VARIANT* arguments = params.rgvarg;
    const UINT count = params.cArgs;
    switch (id) {
      case kValue:
        if (is_put) return VariantCopy(&value_, arguments);
        if (count == 1) return Give(result, Ascii("value with ") + Describe(arguments[0]));
        return VariantCopy(result, &value_);
      case kItem:
        return Item(is_put, arguments, count, result);
      case kHeld:
        return Held(is_put, arguments, result);
      case kPutKind:
        if (!is_put) return GiveNumber(result, put_kind_);
        put_kind_ = flags;
        return S_OK;
      case kCount:
        return GiveNumber(result, static_cast<LONG>(count));
      case kLookups:
        return GiveNumber(result, lookups_);
      case kLive:
        return GiveNumber(result, live_objects);
      case kReadOnly:
        return count == 0 ? GiveNumber(result, 11) : DISP_E_BADPARAMCOUNT;
      case kChild:
        result->vt = VT_DISPATCH;
        result->pdispVal = new FakeObject;
        return S_OK;
      case kFail:
        return Fail(arguments, count, exception);
      default:
        return count == 1 ? CallWithOne(id, arguments[0], result, exception) : DISP_E_BADPARAMCOUNT;
    }
  }

  static HRESULT CallWithOne(DISPID id, const VARIANT& argument, VARIANT* result,
                             EXCEPINFO* exception) {
    switch (id) {
      case kDescribe:
        return Give(result, Describe(argument));
      case kSame:
        return result != nullptr ? VariantCopy(result, &argument) : S_OK;
      case kMake: {
        if (argument.vt != VT_BSTR) return DISP_E_TYPEMISMATCH;
        const Text kind(argument.bstrVal, SysStringLen(argument.bstrVal));
        return MakeValue(std::string(kind.begin(), kind.end()), result);
      }
      case kFailBare:
        return argument.vt == VT_I4 ? argument.lVal : E_INVALIDARG;
      case kFailCode:
        exception->wCode = static_cast<WORD>(argument.lVal);
        return DISP_E_EXCEPTION;
      case kDefaultOf:
        return DefaultValue(argument, result, exception);
      case kReadAll:
        return ReadAll(argument, result);
      case kCallBack:
        return CallBack(argument, result, exception);
      default:
        return E_UNEXPECTED;
    }
  }

  // Item(index) holds a value for each index.
  HRESULT Item(bool is_put, const VARIANT* arguments, UINT count, VARIANT* result) {
    if (count != (is_put ? 2u : 1u)) return DISP_E_PARAMNOTOPTIONAL;
    const VARIANT& index = arguments[count - 1];
    if (index.vt != VT_I4) return DISP_E_TYPEMISMATCH;
    if (!is_put) return GiveNumber(result, items_[index.lVal]);
    items_[index.lVal] = arguments[0].lVal;
    return S_OK;
  }

  HRESULT Held(bool is_put, const VARIANT* arguments, VARIANT* result) {
    if (is_put) {
      if (held_ != nullptr) held_->Release();
      held_ = arguments[0].punkVal;
      if (held_ != nullptr) held_->AddRef();
      return S_OK;
    }
    if (held_ != nullptr) held_->AddRef();
    result->vt = VT_UNKNOWN;
    result->punkVal = held_;
    return S_OK;
  }

  // Fail(status, description, source)
  static HRESULT Fail(const VARIANT* arguments, UINT count, EXCEPINFO* exception) {
    if (count != 3) return DISP_E_BADPARAMCOUNT;
    exception->scode = arguments[2].lVal;
    exception->bstrDescription = SysAllocString(arguments[1].bstrVal);
    exception->bstrSource = SysAllocString(arguments[0].bstrVal);
    return DISP_E_EXCEPTION;
  }

  // Calls `member` of the object with the number 1, or the object itself if it has none.
  static HRESULT CallBack(const VARIANT& function, VARIANT* result, EXCEPINFO* exception) {
    if (function.vt != VT_DISPATCH) return DISP_E_TYPEMISMATCH;
    VARIANT one = {};
    one.vt = VT_I4;
    one.lVal = 1;
    DISPPARAMS params = {&one, nullptr, 1, 0};
    OLECHAR name[] = OLESTR("member");
    LPOLESTR names[] = {name};
    DISPID id = DISPID_VALUE;
    if (FAILED(function.pdispVal->GetIDsOfNames(IID_NULL, names, 1, 0, &id))) id = DISPID_VALUE;
    return function.pdispVal->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, result, exception,
                                     nullptr);
  }

  LONG lookups_ = 0;
  LONG put_kind_ = 0;
  VARIANT value_{};
  IUnknown* held_ = nullptr;
  std::map<LONG, LONG> items_;
};

class FakeFactory final : public IClassFactory {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = iid == IID_IUnknown || iid == IID_IClassFactory ? this : nullptr;
    return *out != nullptr ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    *out = nullptr;
    if (outer != nullptr) return CLASS_E_NOAGGREGATION;
    auto* object = new FakeObject;
    const HRESULT status = object->QueryInterface(iid, out);
    object->Release();
    return status;
  }
  HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }
};

FakeFactory factory;

LONG WriteDefault(const Text& path, const Text& value) {
  HKEY key = nullptr;
  LONG error = RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr,
                               &key, nullptr);
  if (error != ERROR_SUCCESS) return error;
  error = RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(value.c_str()),
                         static_cast<DWORD>((value.size() + 1) * sizeof(OLECHAR)));
  RegCloseKey(key);
  return error;
}

Text ClassKey() {
  OLECHAR id[39];
  StringFromGUID2(kFakeClass, id, 39);
  return Ascii("CLSID\\") + id;
}

}  // namespace

#define EXPORTED extern "C" __attribute__((visibility("default")))

EXPORTED HRESULT DllGetClassObject(REFCLSID id, REFIID iid, void** out);
EXPORTED HRESULT DllCanUnloadNow();
EXPORTED HRESULT DllRegisterServer();
EXPORTED HRESULT DllUnregisterServer();

EXPORTED HRESULT DllGetClassObject(REFCLSID id, REFIID iid, void** out) {
  *out = nullptr;
  return id == kFakeClass ? factory.QueryInterface(iid, out) : CLASS_E_CLASSNOTAVAILABLE;
}

EXPORTED HRESULT DllCanUnloadNow() {
  return live_objects == 0 ? S_OK : S_FALSE;
}

EXPORTED HRESULT DllRegisterServer() {
  Dl_info facts = {};
  if (dladdr(&live_objects, &facts) == 0) return E_FAIL;
  OLECHAR id[39];
  StringFromGUID2(kFakeClass, id, 39);
  LONG error = WriteDefault(kProgIdKey, id);
  if (error == ERROR_SUCCESS) error = WriteDefault(ClassKey(), Ascii("Fake Class"));
  if (error == ERROR_SUCCESS) {
    error = WriteDefault(ClassKey() + Ascii("\\InprocServer32"), Ascii(facts.dli_fname));
  }
  // A registration that fails after it has written.
  if (getenv("FAKE_REGISTRATION_FAILS") != nullptr) return E_FAIL;
  return HRESULT_FROM_WIN32(error);
}

EXPORTED HRESULT DllUnregisterServer() {
  RegDeleteKeyW(HKEY_CLASSES_ROOT, (ClassKey() + Ascii("\\InprocServer32")).c_str());
  RegDeleteKeyW(HKEY_CLASSES_ROOT, ClassKey().c_str());
  RegDeleteKeyW(HKEY_CLASSES_ROOT, kProgIdKey);
  return HRESULT_FROM_WIN32(RegDeleteKeyW(HKEY_CLASSES_ROOT, OLESTR("Fake.Object")));
}
