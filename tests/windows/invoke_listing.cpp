// Prints what late-bound calls through a module's type information do, one a line: the status, the
// argument it names, and what the member received. Built natively and for Windows, where the system
// makes the calls, so that the two can be compared.
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "mirolta.h"

namespace {

std::string received;  // by the members of the last call

std::string Hex(HRESULT status) {
  char text[16];
  snprintf(text, sizeof text, "%08x", static_cast<unsigned>(status));
  return text;
}

std::string Shown(const VARIANT& value) {
  std::string text = "vt" + Hex(V_VT(&value)).substr(4);
  if (V_VT(&value) == VT_I4) text += ":" + std::to_string(static_cast<long long>(V_I4(&value)));
  if (V_VT(&value) == VT_ERROR) text += ":" + Hex(V_ERROR(&value));
  if (V_VT(&value) == VT_BSTR) text += ":" + std::to_string(SysStringLen(V_BSTR(&value)));
  return text;
}

std::string Shown(LONG value) {
  return std::to_string(static_cast<long long>(value));
}

std::string Shown(BSTR text) {
  return "text" + std::to_string(SysStringLen(text));
}

template <typename... Values>
HRESULT Note(const char* name, const Values&... values) {
  received += std::string(" ") + name + "(";
  ((received += Shown(values) + ";"), ...);
  received += ")";
  return S_OK;
}

// A number that records how its members are called.
class Recorder final : public IPexBigNumber {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    *out = IsEqualGUID(iid, IID_IUnknown) || IsEqualGUID(iid, IID_IDispatch) ? this : nullptr;
    return *out != nullptr ? S_OK : E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    *count = 0;
    return Note("GetTypeInfoCount");
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*,
                                   UINT*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE get_Value(VARIANT* value) override {
    V_VT(value) = VT_I4;
    V_I4(value) = 7;
    return Note("get_Value");
  }
  HRESULT STDMETHODCALLTYPE put_Value(VARIANT value) override { return Note("put_Value", value); }
  HRESULT STDMETHODCALLTYPE get_Hex(VARIANT*) override { return Note("get_Hex"); }
  HRESULT STDMETHODCALLTYPE put_Hex(VARIANT value) override { return Note("put_Hex", value); }
  HRESULT STDMETHODCALLTYPE get_Text(LONG lCP, BSTR* text) override {
    *text = nullptr;
    return Note("get_Text", lCP);
  }
  HRESULT STDMETHODCALLTYPE put_Text(LONG lCP, BSTR text) override {
    return Note("put_Text", lCP, text);
  }
  HRESULT STDMETHODCALLTYPE get_Binary(VARIANT*) override { return Note("get_Binary"); }
  HRESULT STDMETHODCALLTYPE put_Binary(VARIANT value) override { return Note("put_Binary", value); }
  HRESULT STDMETHODCALLTYPE Add(VARIANT v, IPexBigNumber** out) override {
    *out = nullptr;
    return Note("Add", v);
  }
  HRESULT STDMETHODCALLTYPE Sub(VARIANT, IPexBigNumber**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Mul(VARIANT, IPexBigNumber**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Div(VARIANT, IPexBigNumber**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Mod(VARIANT, IPexBigNumber**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Inc(VARIANT v) override { return Note("Inc", v); }
  HRESULT STDMETHODCALLTYPE Dec(VARIANT v) override { return Note("Dec", v); }
  HRESULT STDMETHODCALLTYPE Cmp(VARIANT v, LONG* order) override {
    *order = 3;
    return Note("Cmp", v);
  }
  HRESULT STDMETHODCALLTYPE NewNumber(VARIANT, IPexBigNumber**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Random(LONG size, VARIANT_BOOL ensure, VARIANT_BOOL odd) override {
    return Note("Random", size, LONG{ensure}, LONG{odd});
  }
  HRESULT STDMETHODCALLTYPE GCD(VARIANT, IPexBigNumber**) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE ModExp(VARIANT e, VARIANT m, IPexBigNumber** out) override {
    *out = nullptr;
    return Note("ModExp", e, m);
  }
  HRESULT STDMETHODCALLTYPE ModInv(VARIANT, IPexBigNumber**) override { return E_NOTIMPL; }
};

constexpr DISPID kValue = 0, kText = 3, kAdd = 5, kInc = 10, kCmp = 12, kRandom = 14, kModExp = 16;
constexpr WORD kPut = DISPATCH_PROPERTYPUT, kGet = DISPATCH_PROPERTYGET, kCall = DISPATCH_METHOD;
constexpr DISPID kPutName = DISPID_PROPERTYPUT;

VARIANT Number(LONG number) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_I4;
  V_I4(&value) = number;
  return value;
}

VARIANT Missing() {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_ERROR;
  V_ERROR(&value) = DISP_E_PARAMNOTFOUND;
  return value;
}

VARIANT Reference(VARTYPE type, void* place) {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = static_cast<VARTYPE>(VT_BYREF | type);
  V_BYREF(&value) = place;
  return value;
}

Recorder recorder;
ITypeInfo* info;
int line = 0;

// Arguments in the order of the source; the names belong to the last of them, which come first in
// memory.
void Call(const char* what, DISPID id, WORD flags, std::vector<VARIANT> arguments,
          std::vector<DISPID> names = {}) {
  std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
  DISPPARAMS params = {reversed.data(), names.data(), static_cast<UINT>(reversed.size()),
                       static_cast<UINT>(names.size())};
  VARIANT result;
  VariantInit(&result);
  EXCEPINFO exception = {};
  UINT bad_argument = 99;
  received.clear();
  const HRESULT status =
      info->Invoke(&recorder, id, flags, &params, &result, &exception, &bad_argument);
  printf("invoke %d %s => %s argument %u%s result %s\n", ++line, what, Hex(status).c_str(),
         static_cast<unsigned>(bad_argument), received.c_str(), Shown(result).c_str());
  VariantClear(&result);
}

void CallAll() {
  BSTR text = SysAllocString(OLESTR("12"));
  VARIANT text_value;
  VariantInit(&text_value);
  V_VT(&text_value) = VT_BSTR;
  V_BSTR(&text_value) = text;
  VARIANT number = Number(5);
  LONG plain = 6;
  VARIANT missing = Missing();
  VARIANT to_text = Reference(VT_BSTR, &text);
  VARIANT to_number = Reference(VT_VARIANT, &number);
  VARIANT empty;
  VariantInit(&empty);

  Call("put by its name", kValue, kPut, {number}, {kPutName});
  Call("put without a name", kValue, kPut, {number});
  Call("put by the index", kValue, kPut, {number}, {0});
  Call("put of nothing", kValue, kPut, {});
  Call("put of nothing by its name", kValue, kPut, {}, {});
  Call("put of two", kValue, kPut, {number, number}, {kPutName});
  Call("put of two without a name", kValue, kPut, {number, number});
  Call("put as put or putref", kValue, kPut | DISPATCH_PROPERTYPUTREF, {number}, {kPutName});
  Call("put as putref", kValue, DISPATCH_PROPERTYPUTREF, {number}, {kPutName});
  Call("put of a reference to a value", kValue, kPut, {to_number}, {kPutName});
  Call("put of a missing value", kValue, kPut, {missing}, {kPutName});
  Call("put with an index", kText, kPut, {number, text_value}, {kPutName});
  Call("put with an index, without a name", kText, kPut, {number, text_value});
  Call("put without the index", kText, kPut, {text_value}, {kPutName});
  Call("put with a missing index", kText, kPut, {missing, text_value}, {kPutName});
  Call("put with a named index", kText, kPut, {number, text_value}, {kPutName, 0});
  Call("put of a number as text", kText, kPut, {number, number}, {kPutName});
  Call("get", kValue, kGet, {});
  Call("get as method or get", kValue, kGet | kCall, {});
  Call("get as method", kValue, kCall, {});
  Call("get with an argument too many", kValue, kGet, {number});
  Call("get with an index", kText, kGet, {number});
  Call("get without the index", kText, kGet, {});
  Call("method", kAdd, kCall, {number});
  Call("method as get", kAdd, kGet, {number});
  Call("method of a reference to a value", kAdd, kCall, {to_number});
  Call("method of a reference to a number", kAdd, kCall, {Reference(VT_I4, &plain)});
  Call("method of a reference to a text", kAdd, kCall, {to_text});
  VARIANT value_to_text = Reference(VT_VARIANT, &to_text);
  Call("method of a reference to a reference to a text", kAdd, kCall, {value_to_text});
  VARIANT twice = Reference(VT_VARIANT, &to_number);
  Call("method of a reference to a reference to a value", kAdd, kCall, {twice});
  Call("method of a reference to nothing", kAdd, kCall, {Reference(VT_VARIANT, nullptr)});
  Call("method of an empty value", kAdd, kCall, {empty});
  Call("method of a missing value", kAdd, kCall, {missing});
  Call("method of a reference to a missing value", kAdd, kCall,
       {Reference(VT_VARIANT, &missing)});
  Call("method of nothing", kAdd, kCall, {});
  Call("method of two", kAdd, kCall, {number, number});
  Call("method by index", kAdd, kCall, {number}, {0});
  Call("method by a put's name", kAdd, kCall, {number}, {kPutName});
  Call("method by a wrong index", kAdd, kCall, {number}, {1});
  Call("optional left out", kInc, kCall, {});
  Call("optional missing", kInc, kCall, {missing});
  Call("optional reference to missing", kInc, kCall, {Reference(VT_VARIANT, &missing)});
  Call("optional given", kInc, kCall, {number});
  Call("with a number as result", kCmp, kCall, {number});
  Call("defaults", kRandom, kCall, {number});
  Call("defaults for missing ones", kRandom, kCall, {number, missing, missing});
  Call("defaults for a reference to a missing one", kRandom, kCall,
       {number, Reference(VT_VARIANT, &missing)});
  Call("no default for a missing one", kRandom, kCall, {missing});
  Call("no default for one left out", kRandom, kCall, {});
  Call("references to numbers", kRandom, kCall,
       {Reference(VT_I4, &plain), to_number, Reference(VT_I4, &plain)});
  Call("named", kRandom, kCall, {number, number}, {2});
  Call("named in another order", kRandom, kCall, {number, number, empty}, {1, 2});
  Call("named twice", kRandom, kCall, {number, number}, {1, 1});
  Call("named and by position", kRandom, kCall, {number, number}, {0});
  Call("all named", kRandom, kCall, {number, number, number}, {2, 1, 0});
  Call("two values", kModExp, kCall, {number, text_value});
  Call("two values, one of them given", kModExp, kCall, {number});
  Call("two values in another order", kModExp, kCall, {number, text_value}, {0, 1});
  Call("no such member", 77, kCall, {});
  Call("a reference to no array as a number", kRandom, kCall, {Reference(VT_UI1 | VT_ARRAY, nullptr)});
  SysFreeString(text);
}

void LookUp(const OLECHAR* name, const char* shown) {
  LPOLESTR names[] = {const_cast<LPOLESTR>(name)};
  MEMBERID id = 99;
  const HRESULT status = info->GetIDsOfNames(names, 1, &id);
  printf("name %d %s => %s id %08x\n", ++line, shown, Hex(status).c_str(),
         static_cast<unsigned>(id));
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  OLECHAR file[1024] = {};
  MultiByteToWideChar(CP_ACP, 0, arguments[1], -1, file, 1024);
  ITypeLib* library = nullptr;
  // The members are called by code of the module where the runtime is the portable one.
  if (LoadLibraryW(file) == nullptr || FAILED(LoadTypeLib(file, &library))) return 1;
  if (FAILED(library->GetTypeInfoOfGuid(IID_IPexBigNumber, &info))) return 1;
  CallAll();
  LookUp(OLESTR("add"), "add");
  LookUp(OLESTR("Nothing"), "Nothing");
  LookUp(OLESTR("QueryInterface"), "QueryInterface");
  LookUp(OLESTR("AddRef"), "AddRef");
  LookUp(OLESTR("GetTypeInfoCount"), "GetTypeInfoCount");
  LookUp(OLESTR("Invoke"), "Invoke");
  info->Release();
  library->Release();
  return 0;
}
