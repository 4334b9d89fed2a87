// A type library for the tests of type information: one interface with every form of member, one
// without members, and a class. SampleObject records what its members receive.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "portable/module_resources.h"
#include "seam/interface_table.h"
#include "stub_dispatch.h"
#include "test_values.h"
#include "text.h"

namespace mirolta::test {

inline constexpr IID kSampleInterface = {0x1B0E6A4F, 0x6D0B, 0x4C57, {1, 2, 3, 4, 5, 6, 7, 8}};
inline constexpr IID kEmptyInterface = {0x1B0E6A50, 0x6D0B, 0x4C57, {1, 2, 3, 4, 5, 6, 7, 8}};
inline constexpr CLSID kSampleClass = {0x1B0E6A51, 0x6D0B, 0x4C57, {1, 2, 3, 4, 5, 6, 7, 8}};
inline constexpr GUID kSampleLibrary = {0x1B0E6A52, 0x6D0B, 0x4C57, {1, 2, 3, 4, 5, 6, 7, 8}};

struct ISample : IDispatch {
  virtual HRESULT STDMETHODCALLTYPE get_Value(BSTR* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Count(LONG* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Count(LONG value) = 0;
  virtual HRESULT STDMETHODCALLTYPE Echo(VARIANT v, LONG number, VARIANT_BOOL flag,
                                         VARIANT* out) = 0;
  virtual HRESULT STDMETHODCALLTYPE Take(VARIANT v) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Item(LONG index, BSTR* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE put_Item(LONG index, BSTR value) = 0;
  virtual HRESULT STDMETHODCALLTYPE get_Object(IUnknown** value) = 0;
  virtual HRESULT STDMETHODCALLTYPE putref_Object(IUnknown* value) = 0;
  virtual HRESULT STDMETHODCALLTYPE Fail(LONG status) = 0;
  virtual HRESULT STDMETHODCALLTYPE Write(VARIANT_BOOL flag, BSTR text) = 0;
  virtual HRESULT STDMETHODCALLTYPE Self(ISample** out) = 0;
};

inline constexpr ValueType kSampleReference = {VT_DISPATCH, OLESTR("ISample")};

// clang-format off
inline constexpr MemberRow kSampleMembers[] = {
    Row<&ISample::get_Value>(0, OLESTR("Value"), kGet, {}, kText, OLESTR("The text")),
    Row<&ISample::get_Count>(1, OLESTR("Count"), kGet, {}, kLong, OLESTR("The count")),
    Row<&ISample::put_Count>(1, OLESTR("Count"), kPut, {In(OLESTR("lCount"), kLong)}, kNone,
        OLESTR("The count")),
    Row<&ISample::Echo>(2, OLESTR("Echo"), kMethod,
        {In(OLESTR("vData"), kVariant), Default(OLESTR("lNumber"), kLong, -1),
         Default(OLESTR("bFlag"), kBool, -1)}, kVariant, OLESTR("Gives the data back")),
    Row<&ISample::Take>(3, OLESTR("Take"), kMethod, {Optional(OLESTR("vData"), kVariant)}, kNone,
        nullptr),
    Row<&ISample::get_Item>(4, OLESTR("Item"), kGet, {Default(OLESTR("lIndex"), kLong, 7)}, kText,
        nullptr),
    Row<&ISample::put_Item>(4, OLESTR("Item"), kPut,
        {Default(OLESTR("lIndex"), kLong, 7), In(OLESTR("bstrItem"), kText)}, kNone, nullptr),
    Row<&ISample::get_Object>(5, OLESTR("Object"), kGet, {}, kUnknown, nullptr),
    Row<&ISample::putref_Object>(5, OLESTR("Object"), kPutRef, {In(OLESTR("pObject"), kUnknown)},
        kNone, nullptr),
    Row<&ISample::Fail>(6, OLESTR("Fail"), kMethod, {In(OLESTR("lStatus"), kLong)}, kNone, nullptr),
    Row<&ISample::Write>(8, OLESTR("Write"), kMethod,
        {In(OLESTR("bFlag"), kBool), In(OLESTR("bstrText"), kText)}, kNone, nullptr),
    Row<&ISample::Self>(9, OLESTR("Self"), kMethod, {}, kSampleReference, nullptr),
};
inline constexpr InterfaceTable kSampleTable = {
    &kSampleInterface, OLESTR("ISample"), OLESTR("A sample"), kSampleMembers,
    sizeof(kSampleMembers) / sizeof(kSampleMembers[0])};
inline constexpr InterfaceTable kEmptyTable = {&kEmptyInterface, OLESTR("IEmpty"), nullptr, nullptr,
                                               0};
inline constexpr const InterfaceTable* kSampleInterfaces[] = {&kEmptyTable, &kSampleTable};
inline constexpr ClassTableRow kSampleClasses[] = {
    {&kSampleClass, OLESTR("Sample"), OLESTR("The sample class"), &kSampleTable}};
inline constexpr TypeLibraryTable kSampleLibraryTable = {
    &kSampleLibrary, OLESTR("SampleLib"), OLESTR("Sample Library"), 3, 7, kSampleInterfaces, 2,
    kSampleClasses, 1};
// clang-format on

// Lives on the stack; its fields hold the arguments of the last calls.
class SampleObject final : public StubDispatch<ISample> {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override {
    return StubDispatch::QueryInterface(iid == kSampleInterface ? IID_IDispatch : iid, out);
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO* exception,
                                   UINT* bad_argument) override {
    const int calls_before = calls;
    const HRESULT status =
        type_info->Invoke(this, id, flags, params, result, exception, bad_argument);
    EXPECT_TRUE(status != DISP_E_EXCEPTION || calls > calls_before) << "raised by no member";
    return status;
  }

  HRESULT STDMETHODCALLTYPE get_Value(BSTR* value) override {
    ++calls;
    *value = SysAllocString(OLESTR("the value"));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Count(LONG* value) override {
    ++calls;
    *value = count;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Count(LONG value) override {
    ++calls;
    count = value;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Echo(VARIANT v, LONG number, VARIANT_BOOL flag, VARIANT* out) override {
    ++calls;
    last_type = V_VT(&v);
    last_number = number;
    last_flag = flag;
    return VariantCopy(out, &v);
  }
  HRESULT STDMETHODCALLTYPE Take(VARIANT v) override {
    ++calls;
    last_type = V_VT(&v);
    last_number = V_VT(&v) == VT_ERROR ? v.scode : 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Item(LONG index, BSTR* value) override {
    ++calls;
    last_number = index;
    *value = SysAllocStringLen(item.data(), static_cast<UINT>(item.size()));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE put_Item(LONG index, BSTR value) override {
    ++calls;
    last_number = index;
    item.assign(value != nullptr ? value : OLESTR(""), SysStringLen(value));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE get_Object(IUnknown** value) override {
    ++calls;
    *value = object;
    if (object != nullptr) object->AddRef();
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE putref_Object(IUnknown* value) override {
    ++calls;
    object = value;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Fail(LONG status) override {
    ++calls;
    if (publishes) Publish(OLESTR("described by the member"));
    return status;
  }
  HRESULT STDMETHODCALLTYPE Write(VARIANT_BOOL flag, BSTR text) override {
    ++calls;
    last_flag = flag;
    item.assign(text != nullptr ? text : OLESTR(""), SysStringLen(text));
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Self(ISample** out) override {
    ++calls;
    AddRef();
    *out = this;
    return S_OK;
  }

  // Sets the thread's error information.
  static void Publish(const OLECHAR* description) {
    ICreateErrorInfo* error = nullptr;
    ASSERT_EQ(CreateErrorInfo(&error), S_OK);
    IErrorInfo* info = nullptr;
    error->SetDescription(const_cast<OLECHAR*>(description));
    error->SetSource(const_cast<OLECHAR*>(OLESTR("the sample")));
    error->QueryInterface(IID_IErrorInfo, reinterpret_cast<void**>(&info));
    SetErrorInfo(0, info);
    info->Release();
    error->Release();
  }

  ITypeInfo* type_info = nullptr;  // of ISample, no reference held
  int calls = 0;
  LONG count = 5;
  LONG last_number = 0;
  VARTYPE last_type = 0;
  VARIANT_BOOL last_flag = 0;
  Text item;
  IUnknown* object = nullptr;
  bool publishes = false;
};

// Takes the thread's error description; empty if there is none.
inline Text TakeErrorDescription() {
  IErrorInfo* info = nullptr;
  if (GetErrorInfo(0, &info) != S_OK) return {};
  BSTR text = nullptr;
  info->GetDescription(&text);
  Text description(text != nullptr ? text : OLESTR(""), SysStringLen(text));
  SysFreeString(text);
  info->Release();
  return description;
}

// A BSTR as a comparable text, freed.
inline Text TakeText(BSTR text) {
  Text copy(text != nullptr ? text : OLESTR("(null)"), text != nullptr ? SysStringLen(text) : 6);
  SysFreeString(text);
  return copy;
}

// A test with the sample library and the type information of ISample.
class SampleLibraryTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(MiroltaTypeLibFromTable(&kSampleLibraryTable, &library), S_OK);
    ASSERT_EQ(library->GetTypeInfoOfGuid(kSampleInterface, &info), S_OK);
    SetErrorInfo(0, nullptr);
  }
  void TearDown() override {
    if (info != nullptr) info->Release();
    if (library != nullptr) library->Release();
  }

  ITypeLib* library = nullptr;
  ITypeInfo* info = nullptr;
};

}  // namespace mirolta::test
