#include "value_resolution.h"

#include <gtest/gtest.h>

#include <deque>

#include "fake_object.h"
#include "owned_value.h"

namespace mirolta::test {
namespace {

TEST(ResolveValue, NullArgumentsAreRefused) {
  VARIANT out;
  V_VT(&out) = VT_I4;
  EXPECT_EQ(ResolveValue(nullptr, &out), E_POINTER);
  EXPECT_EQ(V_VT(&out), VT_EMPTY);
  TestValue value = NumberValue(1);
  EXPECT_EQ(ResolveValue(&value, nullptr), E_POINTER);
}

TEST(ResolveValue, PlainAndReferredValuesAreCopied) {
  TestValue text = TextValue(OLESTR("abc"));
  OwnedVariant out;
  ASSERT_EQ(ResolveValue(&text, out.Put()), S_OK);
  ASSERT_EQ(out.Type(), VT_BSTR);
  EXPECT_NE(V_BSTR(out.Get()), text->bstrVal);
  EXPECT_EQ(std::basic_string<OLECHAR>(V_BSTR(out.Get())), OLESTR("abc"));

  LONG number = 77;
  VARIANT reference = ReferenceTo(VT_I4, &number);
  ASSERT_EQ(ResolveValue(&reference, out.Put()), S_OK);
  ASSERT_EQ(out.Type(), VT_I4);
  EXPECT_EQ(V_I4(out.Get()), 77);

  VARIANT to_value = ReferenceTo(VT_VARIANT, &text);
  ASSERT_EQ(ResolveValue(&to_value, out.Put()), S_OK);
  EXPECT_EQ(out.Type(), VT_BSTR);
}

TEST(ResolveValue, ObjectsGiveTheirDefaultValue) {
  FakeObject object(NumberValue(5));
  for (const bool as_unknown : {false, true}) {
    object.reads = 0;
    TestValue value = as_unknown ? UnknownValue(&object) : ObjectValue(&object);
    OwnedVariant out;
    ASSERT_EQ(ResolveValue(&value, out.Put()), S_OK);
    EXPECT_EQ(out.Type(), VT_I4);
    EXPECT_EQ(V_I4(out.Get()), 5);
    EXPECT_EQ(object.reads, 1);
    EXPECT_EQ(object.last_flags, DISPATCH_PROPERTYGET);  // no call of a method
    EXPECT_EQ(object.references, 2u);                    // the test's and the value's
  }
  EXPECT_EQ(object.references, 1u);
}

TEST(ResolveValue, AnObjectByReferenceGivesItsDefaultValue) {
  FakeObject object(NumberValue(5));
  IDispatch* pointer = &object;
  VARIANT reference = ReferenceTo(VT_DISPATCH, &pointer);
  OwnedVariant out;
  ASSERT_EQ(ResolveValue(&reference, out.Put()), S_OK);
  EXPECT_EQ(out.Type(), VT_I4);
  EXPECT_EQ(object.references, 1u);
}

TEST(ResolveValue, DefaultValueByReferenceIsFollowed) {
  LONG number = 12;
  FakeObject object;
  *&object.value = ReferenceTo(VT_I4, &number);
  TestValue value = ObjectValue(&object);
  OwnedVariant out;
  ASSERT_EQ(ResolveValue(&value, out.Put()), S_OK);
  EXPECT_EQ(out.Type(), VT_I4);
  EXPECT_EQ(V_I4(out.Get()), 12);
}

TEST(ResolveValue, ReferencesToNothingAreRefused) {
  constexpr VARTYPE kTypes[] = {
      VT_I1,       VT_I2,      VT_I4,      VT_I8,   VT_R8,    VT_BOOL,    VT_BSTR,
      VT_DISPATCH, VT_UNKNOWN, VT_DECIMAL, VT_DATE, VT_ERROR, VT_VARIANT, VT_ARRAY | VT_UI1};
  for (const VARTYPE type : kTypes) {
    VARIANT reference = ReferenceTo(type, nullptr);
    VARIANT outer = ReferenceTo(VT_VARIANT, &reference);
    for (const VARIANT* const value : {&reference, &outer}) {
      OwnedVariant out;
      EXPECT_EQ(ResolveValue(value, out.Put()), E_INVALIDARG) << type;
      EXPECT_EQ(out.Type(), VT_EMPTY);
    }
  }
}

TEST(ResolveValue, ObjectsWithoutDispatchFail) {
  OwnedVariant out;
  for (const VARTYPE type : {VT_DISPATCH, VT_UNKNOWN}) {
    TestValue null(type);
    null->punkVal = nullptr;
    EXPECT_EQ(ResolveValue(&null, out.Put()), E_FAIL);
    EXPECT_EQ(out.Type(), VT_EMPTY);
  }
  FakeObject object;
  object.has_dispatch = false;
  TestValue value = UnknownValue(&object);
  EXPECT_EQ(ResolveValue(&value, out.Put()), E_FAIL);
  EXPECT_EQ(object.references, 2u);
}

TEST(ResolveValue, AFailingReadGivesItsStatus) {
  FakeObject object(NumberValue(5));
  object.status = DISP_E_MEMBERNOTFOUND;
  TestValue value = ObjectValue(&object);
  OwnedVariant out;
  EXPECT_EQ(ResolveValue(&value, out.Put()), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(out.Type(), VT_EMPTY);
  EXPECT_EQ(object.references, 2u);
}

TEST(ResolveValue, ACallerMayCountObjectsWithoutAReadableValueAsEmpty) {
  static IUnknown* asked = nullptr;
  static bool answer = false;
  const CountsAsEmpty ask = [](IUnknown* object) noexcept {
    asked = object;
    return answer;
  };
  FakeObject object(NumberValue(5));
  FakeObject outer(ObjectValue(&object));
  OwnedVariant out;
  // What can be read is read.
  answer = true;
  ASSERT_EQ(ResolveValue(&outer.value, out.Put(), ask), S_OK);
  EXPECT_EQ(out.Type(), VT_I4);
  EXPECT_EQ(asked, nullptr);
  object.status = E_ACCESSDENIED;
  TestValue chain = ObjectValue(&outer);
  for (const VARIANT* input : {&outer.value, &chain}) {
    asked = nullptr;
    answer = true;
    EXPECT_EQ(ResolveValue(input, out.Put(), ask), S_OK);
    EXPECT_EQ(out.Type(), VT_EMPTY);
    EXPECT_EQ(asked, &object);
    answer = false;
    EXPECT_EQ(ResolveValue(input, out.Put(), ask), E_ACCESSDENIED);
    EXPECT_EQ(out.Type(), VT_EMPTY);
  }
  // There is no object to ask.
  asked = nullptr;
  answer = true;
  TestValue nothing = ObjectValue(nullptr);
  EXPECT_EQ(ResolveValue(&nothing, out.Put(), ask), E_FAIL);
  EXPECT_EQ(asked, nullptr);
}

TEST(ResolveValue, AnObjectThatGivesNoInterfaceFails) {
  FakeObject object(NumberValue(5));
  object.gives_null = true;
  TestValue value = ObjectValue(&object);
  OwnedVariant out;
  EXPECT_EQ(ResolveValue(&value, out.Put()), E_FAIL);
  EXPECT_EQ(out.Type(), VT_EMPTY);
  EXPECT_EQ(object.reads, 0);
}

#ifndef _WIN32  // where the system itself follows such a reference
TEST(ResolveValue, ADefaultValueThatRefersToNothingGivesTheCopysStatus) {
  FakeObject object;
  *&object.value = ReferenceTo(VT_I4, nullptr);
  TestValue value = ObjectValue(&object);
  VARIANT copy;
  VariantInit(&copy);
  const HRESULT refusal = VariantCopyInd(&copy, &object.value);
  EXPECT_LT(refusal, 0);
  OwnedVariant out;
  EXPECT_EQ(ResolveValue(&value, out.Put()), refusal);
  EXPECT_EQ(out.Type(), VT_EMPTY);
  EXPECT_EQ(object.references, 2u);
}
#endif

TEST(ResolveValue, ChainsOf64ObjectsAreFollowedLongerOnesFail) {
  for (const size_t length : {2u, 64u, 65u}) {
    std::deque<FakeObject> chain(length);
    chain.back().value = NumberValue(3);
    for (size_t i = 0; i + 1 < length; ++i) chain[i].value = ObjectValue(&chain[i + 1]);
    TestValue value = ObjectValue(&chain[0]);
    OwnedVariant out;
    EXPECT_EQ(ResolveValue(&value, out.Put()), length <= 64 ? S_OK : DISP_E_TYPEMISMATCH);
    EXPECT_EQ(out.Type(), length <= 64 ? VT_I4 : VT_EMPTY);
    EXPECT_EQ(chain.back().reads, length <= 64 ? 1 : 0);
    chain.back().value = TestValue();
    for (size_t i = 0; i + 1 < length; ++i) chain[i].value = TestValue();
    EXPECT_EQ(chain.back().references, length == 1 ? 2u : 1u);
  }
}

TEST(ResolveValue, AnObjectThatGivesItselfEnds) {
  FakeObject object;
  object.value = ObjectValue(&object);
  TestValue value = ObjectValue(&object);
  OwnedVariant out;
  EXPECT_EQ(ResolveValue(&value, out.Put()), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(object.reads, kMaximumDefaultValueChain);
  object.value = TestValue();
  EXPECT_EQ(object.references, 2u);
}

}  // namespace
}  // namespace mirolta::test
