#include <gtest/gtest.h>

#include "fake_object.h"
#include "portable/test_hooks.h"
#include "text.h"

namespace mirolta::test {
namespace {

TEST(Variant, InitMakesEmpty) {
  VARIANT value;
  memset(static_cast<void*>(&value), 0xFF, sizeof value);
  VariantInit(&value);
  EXPECT_EQ(value.vt, VT_EMPTY);
}

// All tags, plain and with every combination of the array, reference and unknown flags.
TEST(Variant, ClearAcceptsExactlyTheValidTags) {
  for (unsigned type = 0; type < 0x10000; ++type) {
    VARIANT value;
    VariantInit(&value);
    value.vt = static_cast<VARTYPE>(type);
    const unsigned base = type & VT_TYPEMASK;
    const unsigned flags = type & ~unsigned{VT_TYPEMASK};
    const bool valid_base = base <= VT_UINT && base != 15;
    const bool valid_flags = (flags & ~unsigned{VT_ARRAY | VT_BYREF}) == 0;
    const bool valid = valid_base && valid_flags && (base > VT_NULL || flags == 0);
    ASSERT_EQ(VariantClear(&value), valid ? S_OK : DISP_E_BADVARTYPE) << type;
    ASSERT_EQ(unsigned{value.vt}, valid ? 0 : type) << type;
  }
}

TEST(Variant, ClearLeavesReferencesAlone) {
  BSTR text = SysAllocString(OLESTR("text"));
  VARIANT value;
  VariantInit(&value);
  value.vt = VT_BSTR | VT_BYREF;
  value.pbstrVal = &text;
  EXPECT_EQ(VariantClear(&value), S_OK);
  EXPECT_EQ(Text(text), OLESTR("text"));
  SysFreeString(text);
}

TEST(Variant, ClearOfALockedArrayFailsAndKeepsIt) {
  TestValue value(VT_ARRAY | VT_UI1);
  value->parray = SafeArrayCreateVector(VT_UI1, 0, 3);
  SafeArrayLock(value->parray);
  EXPECT_EQ(VariantClear(&value), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(V_VT(&value), VT_ARRAY | VT_UI1);
  ASSERT_NE(value->parray, nullptr);
  TestValue number = NumberValue(1);
  EXPECT_EQ(VariantCopy(&value, &number), DISP_E_ARRAYISLOCKED);
  EXPECT_EQ(V_VT(&value), VT_ARRAY | VT_UI1);
  SafeArrayUnlock(value->parray);
}

TEST(Variant, CopyOwnsItsText) {
  const OLECHAR source[] = {'a', 0, 'b'};
  TestValue from = TextValue(Text(source, 3));
  TestValue to = TextValue(OLESTR("former"));
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  EXPECT_EQ(TextOf(to), Text(source, 3));
  EXPECT_NE(to->bstrVal, from->bstrVal);
  EXPECT_EQ(VariantCopy(&to, &to), S_OK);
  EXPECT_EQ(TextOf(to), Text(source, 3));
}

TEST(Variant, CopyOfNullTextIsEmptyText) {
  TestValue from(VT_BSTR);
  TestValue to;
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  ASSERT_NE(to->bstrVal, nullptr);
  EXPECT_EQ(SysStringLen(to->bstrVal), 0u);
}

TEST(Variant, CopyRefersToTheSameObject) {
  FakeObject object;
  {
    TestValue from(VT_DISPATCH);
    from->pdispVal = &object;
    TestValue to;
    EXPECT_EQ(VariantCopy(&to, &from), S_OK);
    EXPECT_EQ(object.references, 2u);
    from->pdispVal = nullptr;
    EXPECT_EQ(to->pdispVal, &object);
  }
  EXPECT_EQ(object.references, 1u);
}

TEST(Variant, CopyOwnsItsArray) {
  TestValue from(VT_ARRAY | VT_BSTR);
  from->parray = SafeArrayCreateVector(VT_BSTR, 5, 2);
  BSTR text = SysAllocString(OLESTR("element"));
  LONG index = 6;
  ASSERT_EQ(SafeArrayPutElement(from->parray, &index, text), S_OK);
  SysFreeString(text);
  TestValue to;
  EXPECT_EQ(VariantCopy(&to, &from), S_OK);
  EXPECT_NE(to->parray, from->parray);
  VariantClear(&from);
  ASSERT_EQ(SafeArrayGetElement(to->parray, &index, &text), S_OK);
  EXPECT_EQ(Text(text), OLESTR("element"));
  SysFreeString(text);
}

TEST(Variant, CopyRefusesInvalidTagsAndLeavesTheTarget) {
  TestValue to = NumberValue(4711);
  VARIANT invalid;
  VariantInit(&invalid);
  invalid.vt = 15;
  EXPECT_EQ(VariantCopy(&to, &invalid), DISP_E_BADVARTYPE);
  EXPECT_EQ(VariantCopyInd(&to, &invalid), DISP_E_BADVARTYPE);
  EXPECT_EQ(to->lVal, 4711);
}

TEST(Variant, FailedCopyIsEmpty) {
  TestValue from = TextValue(OLESTR("text"));
  TestValue to = NumberValue(1);
  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(VariantCopy(&to, &from), E_OUTOFMEMORY);
  EXPECT_EQ(V_VT(&to), VT_EMPTY);
}

TEST(VariantCopyInd, FollowsReferences) {
  LONG number = -70000;
  VARIANT direct;
  VariantInit(&direct);
  direct.vt = VT_I4 | VT_BYREF;
  direct.plVal = &number;
  TestValue to;
  EXPECT_EQ(VariantCopyInd(&to, &direct), S_OK);
  EXPECT_EQ(V_VT(&to), VT_I4);
  EXPECT_EQ(to->lVal, -70000);
  EXPECT_EQ(VariantCopy(&to, &direct), S_OK);
  EXPECT_EQ(V_VT(&to), VT_I4 | VT_BYREF);

  VARIANT twice;
  VariantInit(&twice);
  twice.vt = VT_VARIANT | VT_BYREF;
  twice.pvarVal = &direct;
  EXPECT_EQ(VariantCopyInd(&to, &twice), S_OK);
  EXPECT_EQ(to->lVal, -70000);

  // Three levels of references are refused.
  VARIANT thrice;
  VariantInit(&thrice);
  thrice.vt = VT_VARIANT | VT_BYREF;
  thrice.pvarVal = &twice;
  EXPECT_EQ(VariantCopyInd(&to, &thrice), E_INVALIDARG);
  EXPECT_EQ(to->lVal, -70000);
}

TEST(VariantCopyInd, CopiesDecimalsAndArraysBehindReferences) {
  DECIMAL decimal;
  memset(&decimal, 0, sizeof decimal);
  decimal.scale = 3;
  decimal.Lo32 = 12345;
  VARIANT reference;
  VariantInit(&reference);
  reference.vt = VT_DECIMAL | VT_BYREF;
  reference.pdecVal = &decimal;
  TestValue to;
  EXPECT_EQ(VariantCopyInd(&to, &reference), S_OK);
  EXPECT_EQ(V_VT(&to), VT_DECIMAL);
  EXPECT_EQ(to->decVal.Lo32, 12345u);
  EXPECT_EQ(to->decVal.scale, 3);

  SAFEARRAY* array = SafeArrayCreateVector(VT_UI1, -5, 7);
  reference.vt = VT_ARRAY | VT_UI1 | VT_BYREF;
  reference.pparray = &array;
  EXPECT_EQ(VariantCopyInd(&to, &reference), S_OK);
  EXPECT_EQ(V_VT(&to), VT_ARRAY | VT_UI1);
  EXPECT_NE(to->parray, array);
  LONG bound = 0;
  EXPECT_EQ(SafeArrayGetLBound(to->parray, 1, &bound), S_OK);
  EXPECT_EQ(bound, -5);
  SafeArrayDestroy(array);
}

TEST(VariantCopyInd, WorksInPlace) {
  BSTR text = SysAllocString(OLESTR("text"));
  TestValue value(VT_BSTR | VT_BYREF);
  value->pbstrVal = &text;
  EXPECT_EQ(VariantCopyInd(&value, &value), S_OK);
  EXPECT_EQ(TextOf(value), OLESTR("text"));
  EXPECT_NE(value->bstrVal, text);
  SysFreeString(text);
}

TEST(VariantCopyInd, OverwritesWhatItRefersTo) {
  TestValue target = TextValue(OLESTR("text"));
  VARIANT reference;
  VariantInit(&reference);
  reference.vt = VT_VARIANT | VT_BYREF;
  reference.pvarVal = &target;
  EXPECT_EQ(VariantCopyInd(&target, &reference), S_OK);
  EXPECT_EQ(TextOf(target), OLESTR("text"));
}

TEST(VariantCopyInd, RefusesReferencesToNothing) {
  TestValue to = NumberValue(4711);
  VARIANT reference;
  VariantInit(&reference);
  for (VARTYPE type : {VT_I4, VT_BSTR, VT_VARIANT, VT_DECIMAL}) {
    reference.vt = static_cast<VARTYPE>(type | VT_BYREF);
    EXPECT_EQ(VariantCopyInd(&to, &reference), E_INVALIDARG) << type;
  }
  EXPECT_EQ(to->lVal, 4711);
}

}  // namespace
}  // namespace mirolta::test
