// Arguments of a call. Byte arrays of scripts: which ones automation reads in place, and what callees may do.
#include "values/byte_loan.h"

#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "host_fixture.h"
#include "objects/dispatch_object.h"
#include "stub_dispatch.h"
#include "values/argument_list.h"
#include "values/scoped_variant.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

std::string BytesOf(SAFEARRAY* array) {
  void* data = nullptr;
  EXPECT_EQ(SafeArrayAccessData(array, &data), S_OK);
  const auto* bytes = static_cast<const char*>(data);
  std::string text(bytes, bytes + array->rgsabound[0].cElements);
  EXPECT_EQ(SafeArrayUnaccessData(array), S_OK);
  return text;
}

// Shows its last argument to the test during the call.
class ReadingObject final : public test::StubDispatch<> {
 public:
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID* ids) override {
    ids[0] = 1;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID, REFIID, LCID, WORD, DISPPARAMS* params, VARIANT*,
                                   EXCEPINFO*, UINT*) override {
    VARIANT* const argument = &params->rgvarg[0];
    EXPECT_EQ(argument->vt, VT_ARRAY | VT_UI1);
    EXPECT_EQ(SafeArrayGetDim(argument->parray), 1u);
    data = argument->parray->pvData;
    bytes = BytesOf(argument->parray);
    if (work) work(argument);
    return S_OK;
  }

  const void* data = nullptr;
  std::string bytes;
  std::function<void(VARIANT*)> work;
};

class ByteLoanTest : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    Name("o", &object_);
    Run("var b = new Uint8Array([65, 66, 67, 68]);");
    Pass("b");  // the first use of a member looks it up, and copies
  }
  void Name(const char* name, IDispatch* object) {
    object->AddRef();
    PushDispatch(Api(), object);
    duk_put_global_string(Api(), name);
  }
  // Where the engine has the bytes of a value.
  const void* Place(const char* value) {
    duk_eval_string(Api(), value);
    const uint8_t* bytes = nullptr;
    size_t size = 0;
    EXPECT_TRUE(BytesAt(Api(), -1, &bytes, &size));
    duk_pop(Api());
    return bytes;
  }
  void Pass(const std::string& value) {
    EXPECT_EQ(Run(("o.Value = " + value + "; 'passed'").c_str()), "passed");
  }

  ReadingObject object_;
};

TEST_F(ByteLoanTest, AutomationReadsTheBytesWhereTheScriptHasThem) {
  Pass("b");
  EXPECT_EQ(object_.data, Place("b"));
  EXPECT_EQ(object_.bytes, "ABCD");
  Pass("b.subarray(1, 3)");
  EXPECT_EQ(object_.data, static_cast<const uint8_t*>(Place("b")) + 1);
  EXPECT_EQ(object_.bytes, "BC");
}

TEST_F(ByteLoanTest, WhatACalleeKeepsIsACopy) {
  ScopedVariant kept;
  object_.work = [&](const VARIANT* argument) { VariantCopy(&kept, argument); };
  Pass("b");
  Run("b[0] = 97;");
  object_.work = nullptr;
  Pass("b");
  EXPECT_EQ(object_.bytes, "aBCD");
  EXPECT_EQ(BytesOf(kept.parray), "ABCD");
  VARTYPE type = VT_EMPTY;
  EXPECT_EQ(SafeArrayGetVartype(kept.parray, &type), S_OK);
  EXPECT_EQ(type, VT_UI1);
}

TEST_F(ByteLoanTest, ArraysThatScriptsCannotHaveInPlaceAreCopied) {
  Pass("new Uint8Array(0)");
  EXPECT_EQ(object_.bytes, "");
  VARIANT shifted = {};
  shifted.parray = SafeArrayCreateVector(VT_UI1, -3, 2);
  shifted.vt = VT_ARRAY | VT_UI1;
  PushVariant(Api(), shifted);
  VariantClear(&shifted);
  duk_put_global_string(Api(), "shifted");
  LONG lower = 0;
  object_.work = [&](const VARIANT* argument) { SafeArrayGetLBound(argument->parray, 1, &lower); };
  Pass("shifted");
  EXPECT_NE(object_.data, Place("shifted"));
  EXPECT_EQ(lower, -3);
  Pass("b");
  EXPECT_EQ(lower, 0);
}

TEST_F(ByteLoanTest, ACalleeThatFreesItsArgumentFreesNothingOfTheScript) {
  object_.work = [](VARIANT* argument) { EXPECT_EQ(VariantClear(argument), DISP_E_ARRAYISLOCKED); };
  Pass("b");
  object_.work = nullptr;
  Pass("b");
  EXPECT_EQ(object_.bytes, "ABCD");
  EXPECT_EQ(object_.data, Place("b"));
}

TEST_F(ByteLoanTest, AnArrayThatIsLeftLockedKeepsItsBytes) {
  SAFEARRAY* locked = nullptr;
  object_.work = [&](const VARIANT* argument) {
    locked = argument->parray;
    SafeArrayLock(locked);
  };
  Pass("b");
  Run("b[0] = 97;");
  object_.work = nullptr;
  Pass("b");
  EXPECT_EQ(object_.bytes, "aBCD");
  EXPECT_EQ(BytesOf(locked), "ABCD");
  EXPECT_EQ(SafeArrayUnlock(locked), S_OK);
  EXPECT_EQ(SafeArrayDestroy(locked), S_OK);
}

TEST_F(ByteLoanTest, AnArrayBesideAnObjectIsCopied) {
  for (int i = 0; i < 2; ++i) {
    Run("o.Value(o, b)");
    EXPECT_NE(object_.data, Place("b"));
    EXPECT_EQ(object_.bytes, "ABCD");
  }
}

TEST_F(ByteLoanTest, ACallWithinACallLendsOtherBytes) {
  ReadingObject inner;
  Name("inner", &inner);
  Run("inner.Value = b; var c = new Uint8Array([69, 70]);");
  object_.work = [&](const VARIANT* argument) {
    Run("inner.Value = c");
    EXPECT_EQ(BytesOf(argument->parray), "ABCD");
  };
  Pass("b");
  EXPECT_EQ(inner.data, Place("c"));
  EXPECT_EQ(inner.bytes, "EF");
  Run("inner = null");
}

TEST(ArgumentListTest, FewAndManyValuesAreEmptyAtFirstAndClearedOnce) {
  ReadingObject object;
  ArgumentList list;
  for (const size_t count : {size_t{1}, size_t{4}, size_t{5}, size_t{300}, size_t{2}, size_t{0}}) {
    list.Resize(count);
    ASSERT_EQ(list.Count(), count);
    EXPECT_EQ(object.references, 1u);
    for (size_t i = 0; i < count; ++i) {
      VARIANT* const value = list.Values() + i;
      ASSERT_EQ(value->vt, VT_EMPTY);
      value->vt = VT_DISPATCH;
      value->pdispVal = &object;
      object.AddRef();
    }
  }
  {
    ArgumentList last;
    last.Resize(1);
    last.Values()->vt = VT_DISPATCH;
    last.Values()->pdispVal = &object;
    object.AddRef();
  }
  EXPECT_EQ(object.references, 1u);
}

}  // namespace
}  // namespace mirolta::host
