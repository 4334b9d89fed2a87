// Late-bound calls: member look-up, coercion of arguments, defaults, results and descriptions.
#include <initializer_list>
#include <vector>

#include "fake_object.h"
#include "late_bound.h"
#include "type_info_sample.h"

namespace mirolta::test {
namespace {

constexpr DISPID kValueId = 0;
constexpr DISPID kCountId = 1;
constexpr DISPID kEchoId = 2;
constexpr DISPID kTakeId = 3;
constexpr DISPID kItemId = 4;
constexpr DISPID kObjectId = 5;
constexpr DISPID kFailId = 6;
constexpr DISPID kWriteId = 8;
constexpr DISPID kSelfId = 9;

TestValue MissingValue() {
  TestValue value(VT_ERROR);
  value->scode = DISP_E_PARAMNOTFOUND;
  return value;
}

TestValue BoolValue(bool truth) {
  TestValue value(VT_BOOL);
  value->boolVal = truth ? VARIANT_TRUE : VARIANT_FALSE;
  return value;
}

class TypeInfoInvokeTest : public SampleLibraryTest {
 protected:
  void SetUp() override {
    SampleLibraryTest::SetUp();
    object.type_info = info;
  }

  SampleObject object;
  LateBound late{&object};
};

TEST_F(TypeInfoInvokeTest, ReadsAProperty) {
  ASSERT_EQ(late.Get(kValueId), S_OK);
  EXPECT_EQ(late.ResultText(), OLESTR("the value"));
}

TEST_F(TypeInfoInvokeTest, ReadsAPropertyWhenAskedForMethodOrProperty) {
  ASSERT_EQ(late.Call(kCountId, DISPATCH_METHOD | DISPATCH_PROPERTYGET), S_OK);
  EXPECT_EQ(late.Type(), VT_I4);
  EXPECT_EQ(late.result->lVal, 5);
}

TEST_F(TypeInfoInvokeTest, WritesAProperty) {
  EXPECT_EQ(late.Put(kCountId, {NumberValue(42)}), S_OK);
  EXPECT_EQ(object.count, 42);
  EXPECT_EQ(late.Type(), VT_EMPTY);
}

TEST_F(TypeInfoInvokeTest, AMethodWithoutResultGivesEmpty) {
  EXPECT_EQ(late.Method(kTakeId, {NumberValue(1)}), S_OK);
  EXPECT_EQ(late.Type(), VT_EMPTY);
  EXPECT_EQ(object.last_type, VT_I4);
}

TEST_F(TypeInfoInvokeTest, AnObjectComesBackWithItsReference) {
  ASSERT_EQ(late.Method(kSelfId), S_OK);
  EXPECT_EQ(late.Type(), VT_DISPATCH);
  EXPECT_EQ(late.result->pdispVal, static_cast<IDispatch*>(&object));
  EXPECT_EQ(object.references, 2u);
  VariantClear(&late.result);
  EXPECT_EQ(object.references, 1u);
}

TEST_F(TypeInfoInvokeTest, WithoutPlaceForTheResultItIsDropped) {
  DISPPARAMS none = {};
  EXPECT_EQ(info->Invoke(&object, kSelfId, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            S_OK);
  EXPECT_EQ(object.calls, 1);
  EXPECT_EQ(object.references, 1u);
  EXPECT_EQ(info->Invoke(&object, kValueId, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
            S_OK);
  EXPECT_EQ(object.calls, 2);
}

TEST_F(TypeInfoInvokeTest, UnknownIdsAndWrongKindsAreNotFound) {
  EXPECT_EQ(late.Method(7), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(late.Method(-1), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(late.Get(kEchoId, {NumberValue(1)}), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(late.Call(kCountId, DISPATCH_METHOD), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(late.Put(kValueId, {NumberValue(1)}), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(late.Put(kCountId, {NumberValue(1)}, DISPATCH_PROPERTYPUTREF), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(late.Call(kCountId, 0), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(object.calls, 0);
}

TEST_F(TypeInfoInvokeTest, NeedsAnInstanceAndParameters) {
  DISPPARAMS none = {};
  EXPECT_EQ(info->Invoke(nullptr, kValueId, DISPATCH_PROPERTYGET, &none, nullptr, nullptr, nullptr),
            E_INVALIDARG);
  EXPECT_EQ(
      info->Invoke(&object, kValueId, DISPATCH_PROPERTYGET, nullptr, nullptr, nullptr, nullptr),
      E_INVALIDARG);
  DISPPARAMS no_arguments = {nullptr, nullptr, 1, 0};
  EXPECT_EQ(
      info->Invoke(&object, kTakeId, DISPATCH_METHOD, &no_arguments, nullptr, nullptr, nullptr),
      E_INVALIDARG);
  VARIANT argument = NumberValue(1);
  DISPPARAMS no_names = {&argument, nullptr, 1, 1};
  EXPECT_EQ(info->Invoke(&object, kTakeId, DISPATCH_METHOD, &no_names, nullptr, nullptr, nullptr),
            E_INVALIDARG);
  EXPECT_EQ(object.calls, 0);
}

TEST_F(TypeInfoInvokeTest, DefaultsStandForArgumentsLeftOut) {
  ASSERT_EQ(late.Method(kEchoId, {NumberValue(3)}), S_OK);
  EXPECT_EQ(object.last_number, -1);
  EXPECT_EQ(object.last_flag, VARIANT_TRUE);
  EXPECT_EQ(late.result->lVal, 3);
  ASSERT_EQ(late.Method(kEchoId, {NumberValue(3), NumberValue(9)}), S_OK);
  EXPECT_EQ(object.last_number, 9);
  EXPECT_EQ(object.last_flag, VARIANT_TRUE);
  ASSERT_EQ(late.Method(kEchoId, {NumberValue(3), NumberValue(9), BoolValue(false)}), S_OK);
  EXPECT_EQ(object.last_flag, VARIANT_FALSE);
}

TEST_F(TypeInfoInvokeTest, DefaultsStandForMissingArguments) {
  const TestValue missing = MissingValue();
  ASSERT_EQ(late.Method(kEchoId, {NumberValue(3), missing, BoolValue(false)}), S_OK);
  EXPECT_EQ(object.last_number, -1);
  EXPECT_EQ(object.last_flag, VARIANT_FALSE);
  ASSERT_EQ(late.Method(kEchoId, {NumberValue(3), missing, missing}), S_OK);
  EXPECT_EQ(object.last_flag, VARIANT_TRUE);
}

TEST_F(TypeInfoInvokeTest, AReferenceToAMissingArgumentIsMissingToo) {
  TestValue missing = MissingValue();
  ASSERT_EQ(late.Method(kEchoId, {NumberValue(3), ReferenceTo(VT_VARIANT, &missing)}), S_OK);
  EXPECT_EQ(object.last_number, -1);
}

TEST_F(TypeInfoInvokeTest, AnOptionalValueArrivesAsMissing) {
  ASSERT_EQ(late.Method(kTakeId), S_OK);
  EXPECT_EQ(object.last_type, VT_ERROR);
  EXPECT_EQ(object.last_number, DISP_E_PARAMNOTFOUND);
  object.last_type = VT_EMPTY;
  ASSERT_EQ(late.Method(kTakeId, {MissingValue()}), S_OK);
  EXPECT_EQ(object.last_type, VT_ERROR);
}

TEST_F(TypeInfoInvokeTest, AMissingRequiredValueArrivesAsMissing) {
  ASSERT_EQ(late.Method(kEchoId, {MissingValue()}), S_OK);
  EXPECT_EQ(object.last_type, VT_ERROR);
}

TEST_F(TypeInfoInvokeTest, AMissingRequiredTypedArgumentIsRefused) {
  EXPECT_EQ(late.Method(kWriteId, {BoolValue(true), MissingValue()}), DISP_E_PARAMNOTOPTIONAL);
  EXPECT_EQ(late.bad_argument, 0u);
  EXPECT_EQ(late.Method(kWriteId, {MissingValue(), TextValue(OLESTR("x"))}),
            DISP_E_PARAMNOTOPTIONAL);
  EXPECT_EQ(late.bad_argument, 1u);
  EXPECT_EQ(object.calls, 0);
}

TEST_F(TypeInfoInvokeTest, CountsOfArgumentsAreChecked) {
  EXPECT_EQ(late.Method(kEchoId), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late.Method(kWriteId, {BoolValue(true)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late.Method(kTakeId, {NumberValue(1), NumberValue(2)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late.Method(kSelfId, {NumberValue(1)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late.Get(kValueId, {NumberValue(1)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late.Put(kCountId, {NumberValue(1), NumberValue(2)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late.Method(kEchoId, {NumberValue(1), NumberValue(1), NumberValue(1), NumberValue(1)}),
            DISP_E_BADPARAMCOUNT);
  VARIANT argument = NumberValue(1);
  DISPID name = 0;
  DISPPARAMS more_names = {&argument, &name, 0, 1};
  EXPECT_EQ(info->Invoke(&object, kTakeId, DISPATCH_METHOD, &more_names, nullptr, nullptr, nullptr),
            DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(object.calls, 0);
}

TEST_F(TypeInfoInvokeTest, APutNamesItsValue) {
  for (const WORD flags :
       {WORD{DISPATCH_PROPERTYPUT}, WORD{DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF}}) {
    EXPECT_EQ(late.Call(kCountId, flags), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(late.Call(kCountId, flags, {NumberValue(1)}), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(late.Call(kCountId, flags, {NumberValue(1)}, {0}), DISP_E_PARAMNOTFOUND);
    EXPECT_EQ(late.Call(kItemId, flags, {NumberValue(1), TextValue(OLESTR("x"))}),
              DISP_E_PARAMNOTFOUND);
    // The named argument comes first.
    EXPECT_EQ(late.Call(kItemId, flags, {TextValue(OLESTR("x")), NumberValue(1)},
                        {0, DISPID_PROPERTYPUT}),
              DISP_E_PARAMNOTFOUND);
  }
  FakeObject other;
  EXPECT_EQ(late.Call(kObjectId, DISPATCH_PROPERTYPUTREF, {ObjectValue(&other)}),
            DISP_E_PARAMNOTFOUND);
  EXPECT_EQ(late.bad_argument, LateBound::kNoArgument);
  EXPECT_EQ(object.calls, 0);
  ASSERT_EQ(late.Call(kItemId, DISPATCH_PROPERTYPUT, {NumberValue(3), TextValue(OLESTR("x"))},
                      {DISPID_PROPERTYPUT, 0}),
            S_OK);
  EXPECT_EQ(object.last_number, 3);
}

TEST_F(TypeInfoInvokeTest, NamedArgumentsFindTheirPlace) {
  // Call(1, bFlag := False, lNumber := 8): named arguments come first in memory.
  ASSERT_EQ(late.Call(kEchoId, DISPATCH_METHOD, {NumberValue(1), NumberValue(8), BoolValue(false)},
                      {2, 1}),
            S_OK);
  EXPECT_EQ(object.last_number, 8);
  EXPECT_EQ(object.last_flag, VARIANT_FALSE);
  EXPECT_EQ(late.result->lVal, 1);
  ASSERT_EQ(late.Call(kEchoId, DISPATCH_METHOD, {NumberValue(1), BoolValue(false)}, {2}), S_OK);
  EXPECT_EQ(object.last_number, -1);
  EXPECT_EQ(object.last_flag, VARIANT_FALSE);
  ASSERT_EQ(late.Call(kEchoId, DISPATCH_METHOD, {NumberValue(4)}, {0}), S_OK);
  EXPECT_EQ(late.result->lVal, 4);
}

TEST_F(TypeInfoInvokeTest, NamedArgumentsThatFitNowhereAreRefused) {
  EXPECT_EQ(late.Call(kEchoId, DISPATCH_METHOD, {NumberValue(1), NumberValue(2)}, {3}),
            DISP_E_PARAMNOTFOUND);
  EXPECT_EQ(late.bad_argument, 0u);
  EXPECT_EQ(late.Call(kEchoId, DISPATCH_METHOD, {NumberValue(1), NumberValue(2)}, {-1}),
            DISP_E_PARAMNOTFOUND);
  // Twice the same name, a name that a positional argument has taken, a put's name on a method.
  EXPECT_EQ(late.Call(kEchoId, DISPATCH_METHOD, {NumberValue(1), NumberValue(2)}, {1, 1}),
            DISP_E_PARAMNOTFOUND);
  EXPECT_EQ(late.bad_argument, 1u);
  EXPECT_EQ(late.Call(kEchoId, DISPATCH_METHOD, {NumberValue(1), NumberValue(2)}, {0}),
            DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late.Call(kTakeId, DISPATCH_METHOD, {NumberValue(1)}, {DISPID_PROPERTYPUT}),
            DISP_E_PARAMNOTFOUND);
  EXPECT_EQ(object.calls, 0);
}

TEST_F(TypeInfoInvokeTest, PropertiesTakeArguments) {
  ASSERT_EQ(late.Put(kItemId, {NumberValue(3), TextValue(OLESTR("abc"))}), S_OK);
  EXPECT_EQ(object.last_number, 3);
  EXPECT_EQ(object.item, OLESTR("abc"));
  ASSERT_EQ(late.Put(kItemId, {TextValue(OLESTR("def"))}), S_OK);
  EXPECT_EQ(object.last_number, 7);
  EXPECT_EQ(object.item, OLESTR("def"));
  ASSERT_EQ(late.Get(kItemId, {NumberValue(2)}), S_OK);
  EXPECT_EQ(object.last_number, 2);
  EXPECT_EQ(late.ResultText(), OLESTR("def"));
  ASSERT_EQ(late.Get(kItemId), S_OK);
  EXPECT_EQ(object.last_number, 7);
}

TEST_F(TypeInfoInvokeTest, TextBecomesANumberAndANumberText) {
  ASSERT_EQ(late.Put(kCountId, {TextValue(OLESTR("-17"))}), S_OK);
  EXPECT_EQ(object.count, -17);
  ASSERT_EQ(late.Method(kWriteId, {BoolValue(true), NumberValue(251)}), S_OK);
  EXPECT_EQ(object.item, OLESTR("251"));
}

TEST_F(TypeInfoInvokeTest, TruthValuesAreCoerced) {
  ASSERT_EQ(late.Method(kWriteId, {NumberValue(2), TextValue(OLESTR(""))}), S_OK);
  EXPECT_EQ(object.last_flag, VARIANT_TRUE);
  ASSERT_EQ(late.Method(kWriteId, {NumberValue(0), TextValue(OLESTR(""))}), S_OK);
  EXPECT_EQ(object.last_flag, VARIANT_FALSE);
  ASSERT_EQ(late.Put(kCountId, {BoolValue(true)}), S_OK);
  EXPECT_EQ(object.count, -1);
}

TEST_F(TypeInfoInvokeTest, ObjectsAreTakenByTheirDefaultValue) {
  FakeObject other(NumberValue(64));
  ASSERT_EQ(late.Put(kCountId, {ObjectValue(&other)}), S_OK);
  EXPECT_EQ(object.count, 64);
  EXPECT_EQ(other.references, 1u);
}

TEST_F(TypeInfoInvokeTest, ArgumentsThatCannotBeBroughtAreNamed) {
  EXPECT_EQ(late.Method(kEchoId, {NumberValue(1), TextValue(OLESTR("abc"))}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(late.bad_argument, 0u);
  EXPECT_EQ(late.Method(kEchoId, {NumberValue(1), TextValue(OLESTR("abc")), BoolValue(true)}),
            DISP_E_TYPEMISMATCH);
  EXPECT_EQ(late.bad_argument, 1u);
  TestValue large(VT_R8);
  large->dblVal = 1e10;
  EXPECT_EQ(late.Put(kCountId, {large}), DISP_E_OVERFLOW);
  EXPECT_EQ(late.bad_argument, 0u);
  EXPECT_EQ(late.Put(kCountId, {BytesValue({1})}), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(object.calls, 0);
  EXPECT_EQ(late.Type(), VT_EMPTY);
}

TEST_F(TypeInfoInvokeTest, ReferencesAreFollowed) {
  TestValue number = NumberValue(12);
  TestValue text = TextValue(OLESTR("by reference"));
  LONG plain = 13;
  ASSERT_EQ(late.Put(kCountId, {ReferenceTo(VT_VARIANT, &number)}), S_OK);
  EXPECT_EQ(object.count, 12);
  ASSERT_EQ(late.Put(kCountId, {ReferenceTo(VT_I4, &plain)}), S_OK);
  EXPECT_EQ(object.count, 13);
  ASSERT_EQ(late.Method(kWriteId, {BoolValue(true), ReferenceTo(VT_BSTR, &text->bstrVal)}), S_OK);
  EXPECT_EQ(object.item, OLESTR("by reference"));
  ASSERT_EQ(late.Method(kWriteId, {BoolValue(true), ReferenceTo(VT_VARIANT, &text)}), S_OK);
  EXPECT_EQ(object.item, OLESTR("by reference"));
  // A member that takes any value gets the reference.
  ASSERT_EQ(late.Method(kEchoId, {ReferenceTo(VT_VARIANT, &text)}), S_OK);
  EXPECT_EQ(object.last_type, VT_BYREF | VT_VARIANT);
  ASSERT_EQ(late.Method(kEchoId, {ReferenceTo(VT_BSTR, &text->bstrVal)}), S_OK);
  EXPECT_EQ(object.last_type, VT_BYREF | VT_BSTR);
  TestValue missing = MissingValue();
  ASSERT_EQ(late.Method(kTakeId, {ReferenceTo(VT_VARIANT, &missing)}), S_OK);
  EXPECT_EQ(object.last_type, VT_BYREF | VT_VARIANT);
  ASSERT_EQ(late.Method(kTakeId, {ReferenceTo(VT_VARIANT, nullptr)}), S_OK);
  EXPECT_EQ(object.last_type, VT_BYREF | VT_VARIANT);
  // The callers' values stay theirs.
  EXPECT_EQ(V_VT(&text), VT_BSTR);
  EXPECT_EQ(Text(text->bstrVal), OLESTR("by reference"));
}

TEST_F(TypeInfoInvokeTest, AReferenceToNothingIsRefused) {
  EXPECT_EQ(late.Method(kFailId, {ReferenceTo(VT_VARIANT, nullptr)}), E_INVALIDARG);
  EXPECT_EQ(late.bad_argument, 0u);
  EXPECT_EQ(object.calls, 0);
}

TEST_F(TypeInfoInvokeTest, ObjectsAreSetByReference) {
  FakeObject other;
  ASSERT_EQ(late.Put(kObjectId, {ObjectValue(&other)}, DISPATCH_PROPERTYPUTREF), S_OK);
  EXPECT_EQ(object.object, static_cast<IUnknown*>(&other));
  EXPECT_EQ(other.references, 1u);
  object.object = nullptr;
  ASSERT_EQ(
      late.Put(kObjectId, {UnknownValue(&other)}, DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF),
      S_OK);
  EXPECT_EQ(object.object, static_cast<IUnknown*>(&other));
  ASSERT_EQ(late.Get(kObjectId), S_OK);
  EXPECT_EQ(late.Type(), VT_UNKNOWN);
  EXPECT_EQ(other.references, 2u);
  VariantClear(&late.result);
  EXPECT_EQ(other.references, 1u);
}

TEST_F(TypeInfoInvokeTest, AnObjectOfNothingIsSetToo) {
  object.object = &object;
  ASSERT_EQ(late.Put(kObjectId, {UnknownValue(nullptr)}, DISPATCH_PROPERTYPUTREF), S_OK);
  EXPECT_EQ(object.object, nullptr);
}

TEST_F(TypeInfoInvokeTest, AFailureIsAnExceptionWithItsStatus) {
  late.result = NumberValue(1);
  EXPECT_EQ(late.Method(kFailId, {NumberValue(E_OUTOFMEMORY)}), E_OUTOFMEMORY);
  EXPECT_TRUE(late.raised);
  EXPECT_EQ(late.exception.wCode, 0);
  EXPECT_FALSE(late.has_description);
  EXPECT_FALSE(late.has_source);
  EXPECT_EQ(late.exception.pfnDeferredFillIn, nullptr);
  EXPECT_EQ(late.Type(), VT_EMPTY);
  EXPECT_EQ(late.bad_argument, LateBound::kNoArgument);
}

TEST_F(TypeInfoInvokeTest, TheMembersDescriptionIsTheExceptions) {
  object.publishes = true;
  EXPECT_EQ(late.Method(kFailId, {NumberValue(E_FAIL)}), E_FAIL);
  EXPECT_TRUE(late.raised);
  EXPECT_EQ(late.description, OLESTR("described by the member"));
  EXPECT_EQ(late.source, OLESTR("the sample"));
}

TEST_F(TypeInfoInvokeTest, AnEarlierDescriptionIsNotTheExceptionsAndStays) {
  SampleObject::Publish(OLESTR("from before"));
  EXPECT_EQ(late.Method(kFailId, {NumberValue(E_FAIL)}), E_FAIL);
  EXPECT_TRUE(late.raised);
  EXPECT_FALSE(late.has_description);
  EXPECT_EQ(TakeErrorDescription(), OLESTR("from before"));
}

TEST_F(TypeInfoInvokeTest, ANewDescriptionReplacesAnEarlierOne) {
  SampleObject::Publish(OLESTR("from before"));
  object.publishes = true;
  EXPECT_EQ(late.Method(kFailId, {NumberValue(E_FAIL)}), E_FAIL);
  EXPECT_TRUE(late.raised);
  EXPECT_EQ(late.description, OLESTR("described by the member"));
  EXPECT_NE(TakeErrorDescription(), OLESTR("from before"));
}

TEST_F(TypeInfoInvokeTest, WithoutPlaceForTheExceptionTheDescriptionStaysWithTheThread) {
  object.publishes = true;
  VARIANT argument = NumberValue(E_FAIL);
  DISPPARAMS params = {&argument, nullptr, 1, 0};
  ASSERT_EQ(info->Invoke(&object, kFailId, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr),
            DISP_E_EXCEPTION);
  EXPECT_EQ(TakeErrorDescription(), OLESTR("described by the member"));
}

TEST_F(TypeInfoInvokeTest, ASuccessKeepsAnEarlierDescription) {
  SampleObject::Publish(OLESTR("from before"));
  ASSERT_EQ(late.Get(kCountId), S_OK);
  EXPECT_EQ(TakeErrorDescription(), OLESTR("from before"));
}

TEST_F(TypeInfoInvokeTest, ASuccessThatDescribesKeepsTheNewerDescription) {
  SampleObject::Publish(OLESTR("from before"));
  object.publishes = true;
  ASSERT_EQ(late.Method(kFailId, {NumberValue(S_FALSE)}), S_OK);
  EXPECT_EQ(TakeErrorDescription(), OLESTR("described by the member"));
}

TEST_F(TypeInfoInvokeTest, RefusedArgumentsLeaveTheDescriptionAlone) {
  SampleObject::Publish(OLESTR("from before"));
  EXPECT_EQ(late.Method(kWriteId, {BoolValue(true)}), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late.exception.scode, 0);
  EXPECT_EQ(TakeErrorDescription(), OLESTR("from before"));
}

TEST_F(TypeInfoInvokeTest, TypesWithoutMembersHaveNoneToCall) {
  DISPPARAMS none = {};
  ITypeInfo* other = nullptr;
  ASSERT_EQ(library->GetTypeInfoOfGuid(kEmptyInterface, &other), S_OK);
  EXPECT_EQ(other->Invoke(&object, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND);
  other->Release();
  ASSERT_EQ(library->GetTypeInfoOfGuid(kSampleClass, &other), S_OK);
  EXPECT_EQ(other->Invoke(&object, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND);
  other->Release();
}

}  // namespace
}  // namespace mirolta::test
