#include "values/value_marshal.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <cmath>
#include <string>
#include <vector>

#include "engine/host_errors.h"
#include "host_fixture.h"
#include "objects/dispatch_object.h"
#include "objects/script_object.h"
#include "stub_dispatch.h"
#include "values/scoped_variant.h"
#include "values/script_dates.h"

namespace mirolta::host {
namespace {

// Records its calls and answers with what the test sets.
class RecordingObject final : public test::StubDispatch<> {
 public:
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    ++lookups;
    EXPECT_EQ(count, 1u);
    name = names[0];
    ids[0] = 17;
    return lookup_status;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID iid, LCID, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    EXPECT_EQ(iid, IID_NULL);
    last_id = id;
    all_flags.push_back(flags);
    argument_count = params->cArgs;
    named_count = params->cNamedArgs;
    VariantClear(&last_argument);
    if (params->cArgs > 0) VariantCopy(&last_argument, &params->rgvarg[0]);
    const bool is_put = (flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
    EXPECT_EQ(result == nullptr, is_put);
    if (is_put) {
      EXPECT_EQ(params->rgdispidNamedArgs[0], DISPID_PROPERTYPUT);
    }
    if (flags == DISPATCH_PROPERTYPUTREF && refuses_references) return DISP_E_MEMBERNOTFOUND;
    if (result != nullptr) VariantCopy(result, &answer);
    return S_OK;
  }

  int lookups = 0;
  HRESULT lookup_status = S_OK;
  Units name;
  DISPID last_id = 0;
  std::vector<WORD> all_flags;
  UINT argument_count = 0;
  UINT named_count = 0;
  bool refuses_references = true;
  ScopedVariant last_argument;
  ScopedVariant answer;
};

class ValueMarshal : public EngineTest {
 protected:
  void SetUp() override {
    EngineTest::SetUp();
    object_.AddRef();
    PushDispatch(Api(), &object_);
    duk_put_global_string(Api(), "o");
  }
  void Convert(const char* script, VARIANT* out) {
    ASSERT_EQ(duk_peval_string(Api(), script), 0) << duk_safe_to_string(Api(), -1);
    ASSERT_EQ(VariantFromScript(Api(), -1, out), S_OK) << script;
    duk_pop(Api());
  }

  RecordingObject object_;
};

TEST_F(ValueMarshal, IntegersOf32BitsAreVtI4AndOtherNumbersVtR8) {
  const struct {
    const char* script;
    VARTYPE type;
    double number;
  } kCases[] = {
      {"0", VT_I4, 0},
      {"-0", VT_I4, 0},
      {"2147483647", VT_I4, 2147483647.0},
      {"-2147483648", VT_I4, -2147483648.0},
      {"2147483648", VT_R8, 2147483648.0},
      {"-2147483649", VT_R8, -2147483649.0},
      {"0.5", VT_R8, 0.5},
      {"Infinity", VT_R8, HUGE_VAL},
  };
  for (const auto& one : kCases) {
    ScopedVariant value;
    Convert(one.script, &value);
    EXPECT_EQ(value.vt, one.type) << one.script;
    EXPECT_EQ(value.vt == VT_I4 ? value.lVal : value.dblVal, one.number) << one.script;
  }
  ScopedVariant nan;
  Convert("NaN", &nan);
  EXPECT_EQ(nan.vt, VT_R8);
  EXPECT_TRUE(std::isnan(nan.dblVal));
}

TEST_F(ValueMarshal, TextKeepsEveryUnit) {
  ScopedVariant value;
  Convert("'a\\0\\ud800b\\u20ac'", &value);
  ASSERT_EQ(value.vt, VT_BSTR);
  const OLECHAR expected[] = {'a', 0, 0xD800, 'b', 0x20AC};
  EXPECT_EQ(UnitsView(value.bstrVal, SysStringLen(value.bstrVal)), UnitsView(expected, 5));
  PushVariant(Api(), value);
  EXPECT_EQ(duk_get_length(Api(), -1), 5u);
  duk_pop(Api());
}

// What the C library's allocator has given out, in bytes.
size_t MemoryInUse() {
  const struct mallinfo2 all = mallinfo2();
  return all.uordblks + all.hblkhd;
}

TEST(ScopedVariantTest, TextsAndArraysAreFreed) {
  constexpr UINT kLength = 5000;
  const size_t before = MemoryInUse();
  for (int i = 0; i < 1000; ++i) {
    ScopedVariant text, array;
    text.vt = VT_BSTR;
    text.bstrVal = SysAllocStringLen(nullptr, kLength);
    ASSERT_NE(text.bstrVal, nullptr);
    array.vt = VT_ARRAY | VT_UI1;
    array.parray = SafeArrayCreateVector(VT_UI1, 0, kLength);
    ASSERT_NE(array.parray, nullptr);
  }
  EXPECT_LT(MemoryInUse(), before + 100 * kLength);
}

TEST_F(ValueMarshal, ShortAndLongTextsArePushedUnitForUnit) {
  for (const size_t count :
       {size_t{0}, size_t{1}, size_t{511}, size_t{512}, size_t{513}, size_t{5000}}) {
    for (const OLECHAR last : {OLECHAR{'z'}, OLECHAR{0}, OLECHAR{0xE9}, OLECHAR{0xD800}}) {
      Units units(count, OLECHAR{'a'});
      if (count > 0) units.back() = last;
      PushUnits(Api(), units);
      ASSERT_EQ(duk_get_length(Api(), -1), count);
      const std::string bytes = EngineFromUnits(units);
      duk_size_t size = 0;
      const char* pushed = duk_get_lstring(Api(), -1, &size);
      EXPECT_EQ(std::string(pushed, size), bytes) << count;
      duk_pop(Api());
    }
  }
}

TEST_F(ValueMarshal, SymbolsAreTypeMismatchesAndLeaveTheResultEmpty) {
  ASSERT_EQ(duk_peval_string(Api(), "Symbol('s')"), 0);
  ScopedVariant value;
  EXPECT_EQ(VariantFromScript(Api(), -1, &value), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(value.vt, VT_EMPTY);
}

TEST_F(ValueMarshal, ByteArraysKeepTheirLowerBound) {
  ScopedVariant value;
  value.parray = SafeArrayCreateVector(VT_UI1, -3, 2);
  value.vt = VT_ARRAY | VT_UI1;
  PushVariant(Api(), value);
  ScopedVariant back;
  ASSERT_EQ(VariantFromScript(Api(), -1, &back), S_OK);
  ASSERT_EQ(back.vt, VT_ARRAY | VT_UI1);
  LONG lower = 0, upper = 0;
  EXPECT_EQ(SafeArrayGetLBound(back.parray, 1, &lower), S_OK);
  EXPECT_EQ(SafeArrayGetUBound(back.parray, 1, &upper), S_OK);
  EXPECT_EQ(lower, -3);
  EXPECT_EQ(upper, -2);
}

TEST_F(ValueMarshal, DatesSurviveARoundTripAlsoBefore1900) {
  for (const double days : {0.0, 0.25, 1.5, 36526.75, -1.25, -2.0, -109205.5}) {
    EXPECT_DOUBLE_EQ(AutomationDate(ScriptMilliseconds(days)), days);
  }
}

TEST_F(ValueMarshal, NamesOfMembersAreLookedUpOnce) {
  EXPECT_EQ(Run("o.Some"), "undefined");
  EXPECT_EQ(object_.name, Units(OLESTR("Some")));
  EXPECT_EQ(object_.last_id, 17);
  Run("o.Some; o.Some(1); o.Some = 2");
  EXPECT_EQ(object_.lookups, 1);
}

TEST_F(ValueMarshal, ReadsAskForAPropertyAndCallsForAMethodToo) {
  Run("o.A; o.A(); o.A(1, 2); o['A']; var k = 'A'; o[k](3)");
  EXPECT_EQ(object_.all_flags, (std::vector<WORD>{2, 3, 3, 2, 3}));
  EXPECT_EQ(object_.argument_count, 1u);
}

TEST_F(ValueMarshal, ArgumentsArePassedLastFirst) {
  Run("o.A(1, 2, 3)");
  EXPECT_EQ(object_.argument_count, 3u);
  EXPECT_EQ(object_.last_argument.lVal, 3);
  EXPECT_EQ(object_.named_count, 0u);
}

TEST_F(ValueMarshal, AnAutomationObjectIsPassedBesideOtherValuesAndReleased) {
  const ULONG before = object_.references;
  for (const char* use : {"o.A(o)", "o.A(1, o)", "o.A(o, o)", "o.A('x', o, o)",
                          "o.A(new Uint8Array(2), o)", "void (o.A = o)"}) {
    for (int i = 0; i < 2; ++i) {
      EXPECT_EQ(Run(use), "undefined");
      ASSERT_EQ(object_.last_argument.vt, VT_DISPATCH) << use;
      EXPECT_EQ(object_.last_argument.pdispVal, &object_) << use;
      VariantClear(&object_.last_argument);
      EXPECT_EQ(object_.references, before) << use;
    }
  }
}

TEST_F(ValueMarshal, ObjectsArePutByReferenceFirst) {
  Run("o.A = 5");
  EXPECT_EQ(object_.all_flags, (std::vector<WORD>{DISPATCH_PROPERTYPUT}));
  EXPECT_EQ(object_.named_count, 1u);
  object_.all_flags.clear();
  Run("void (o.A = {})");
  EXPECT_EQ(object_.all_flags, (std::vector<WORD>{DISPATCH_PROPERTYPUTREF, DISPATCH_PROPERTYPUT}));
  object_.all_flags.clear();
  object_.refuses_references = false;
  Run("void (o.A = o)");
  EXPECT_EQ(object_.all_flags, (std::vector<WORD>{DISPATCH_PROPERTYPUTREF}));
}

TEST_F(ValueMarshal, FailedLookUpsThrowAndUnknownNamesAreUndefined) {
  object_.lookup_status = E_FAIL;
  EXPECT_EQ(Run("o.A"), Thrown(E_FAIL, "Unspecified error"));
  object_.lookup_status = DISP_E_UNKNOWNNAME;
  EXPECT_EQ(Run("o.A"), "undefined");
  EXPECT_EQ(Run("o.A()"), Thrown(kNoSuchMember, "Object doesn't support this property or method"));
}

TEST_F(ValueMarshal, EveryReferenceIsReleased) {
  EXPECT_EQ(object_.references, 2u);
  Run("var f = o.A; o.A(o); o.A = o; [o, o]; f = null;");
  VariantClear(&object_.last_argument);
  EXPECT_EQ(object_.references, 2u);
  Run("o = null");
  duk_gc(Api(), 0);
  EXPECT_EQ(object_.references, 1u);
}

// A result of each kind that a call leaves.
enum class Left { kText, kBytes, kObject };

class LeftResults : public ValueMarshal, public testing::WithParamInterface<Left> {
 protected:
  // Gives *left a result; the object gets a reference.
  void Leave(VARIANT* left) {
    ScopedVariant result;
    switch (GetParam()) {
      case Left::kText:
        result.vt = VT_BSTR;
        result.bstrVal = SysAllocString(Units(100, u'x').c_str());
        break;
      case Left::kBytes:
        result.vt = VT_ARRAY | VT_UI1;
        result.parray = SafeArrayCreateVector(VT_UI1, 0, 1000);
        break;
      case Left::kObject:
        object_.AddRef();
        result.vt = VT_DISPATCH;
        result.pdispVal = &object_;
        break;
    }
    ASSERT_TRUE(LeaveIfCommon(&result, left));
  }
  // Pushes the text of a result; false without memory.
  bool Push() {
    VARIANT left = {};
    Leave(&left);
    const auto push = [](duk_context* engine, void* value) -> duk_ret_t {
      PushLeft(engine, *static_cast<const VARIANT*>(value));
      return 1;
    };
    return duk_safe_call(Api(), push, &left, 0, 1) == DUK_EXEC_SUCCESS;
  }
  std::string TextOf() {
    duk_put_global_string(Api(), "x");
    return Run("typeof x + (typeof x === 'function' ? '' : x.length)");
  }
};

TEST_P(LeftResults, TheEngineGetsTheValueOrItIsFreed) {
  object_.answer.vt = VT_EMPTY;
  ASSERT_TRUE(Push());
  const std::string usual = TextOf();
  Run("x = null");
  const ULONG held = object_.references;
  ScriptContext& context = engine_->Context();
  const size_t limit = context.memory_limit;
  int failures = 0;
  for (size_t room = 0;; room += 8) {
    ASSERT_LT(room, 4000u);
    // As without memory, when the engine would free as much and go on.
    duk_gc(Api(), DUK_GC_COMPACT);
    context.memory_limit = context.memory_in_use + room;
    const bool is_pushed = Push();
    context.memory_limit = limit;
    if (is_pushed) break;
    ++failures;
    duk_pop(Api());
    context.objects.ReleaseDropped();
    ASSERT_EQ(object_.references, held) << room;
  }
  EXPECT_GT(failures, 0);
  EXPECT_EQ(TextOf(), usual);
  Run("x = null");
  EXPECT_EQ(object_.references, held);
  EXPECT_EQ(context.left_result.vt, VT_EMPTY);
}

INSTANTIATE_TEST_SUITE_P(Kinds, LeftResults,
                         testing::Values(Left::kText, Left::kBytes, Left::kObject));

TEST_F(ValueMarshal, OtherResultsAreNotLeft) {
  ScopedVariant result, left;
  EXPECT_FALSE(LeaveIfCommon(&result, &left));
  result.vt = VT_I4;
  EXPECT_FALSE(LeaveIfCommon(&result, &left));
  result.vt = VT_DISPATCH;  // null
  EXPECT_FALSE(LeaveIfCommon(&result, &left));
  Run("void o.A({ wrapped: true })");
  EXPECT_FALSE(LeaveIfCommon(&object_.last_argument, &left));
  object_.AddRef();
  result.pdispVal = &object_;
  object_.has_dispatch = false;
  EXPECT_FALSE(LeaveIfCommon(&result, &left));
  object_.has_dispatch = true;
  EXPECT_EQ(left.vt, VT_EMPTY);
}

TEST_F(ValueMarshal, TheEndOfTheEngineReleasesWhatTheScriptHolds) {
  {
    ScriptEngine engine;
    Start(&engine);
    object_.AddRef();
    PushDispatch(engine.Api(), &object_);
    duk_put_global_string(engine.Api(), "o");
    ASSERT_EQ(duk_peval_string(engine.Api(), "var list = [o]; list.push(list, o.A);"), 0);
    EXPECT_EQ(object_.references, 3u);
  }
  EXPECT_EQ(object_.references, 2u);
}

TEST_F(ValueMarshal, AScriptObjectCountsReferencesAndHasItsInterfacesOnly) {
  ASSERT_EQ(duk_peval_string(Api(), "({})"), 0);
  IDispatch* const wrapper = WrapScriptObject(Api(), -1);
  ASSERT_NE(wrapper, nullptr);
  void* found = nullptr;
  for (const IID& iid : {IID_IUnknown, IID_IDispatch}) {
    EXPECT_EQ(wrapper->QueryInterface(iid, &found), S_OK);
    EXPECT_EQ(found, wrapper);
    EXPECT_EQ(wrapper->Release(), 1u);
  }
  EXPECT_EQ(wrapper->QueryInterface(IID_IStream, &found), E_NOINTERFACE);
  EXPECT_EQ(found, nullptr);
  EXPECT_EQ(wrapper->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(wrapper->Release(), 0u);
}

HRESULT ReadProperty(IDispatch* object, DISPID id, VARIANT* result) {
  DISPPARAMS none = {};
  return object->Invoke(id, IID_NULL, 0, DISPATCH_PROPERTYGET, &none, result, nullptr, nullptr);
}

TEST_F(ValueMarshal, AMemberOfAScriptObjectKeepsItsId) {
  ASSERT_EQ(duk_peval_string(Api(), "({ first: 1, second: 2 })"), 0);
  IDispatch* const wrapper = WrapScriptObject(Api(), -1);
  ASSERT_NE(wrapper, nullptr);
  OLECHAR first[] = OLESTR("first"), second[] = OLESTR("second");
  for (int i = 0; i < 2; ++i) {
    for (LPOLESTR name : {first, second}) {
      DISPID id = 0;
      ASSERT_EQ(wrapper->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK);
      ScopedVariant result;
      ASSERT_EQ(ReadProperty(wrapper, id, &result), S_OK);
      EXPECT_EQ(result.vt, VT_I4);
      EXPECT_EQ(result.lVal, name == first ? 1 : 2);
    }
  }
  EXPECT_EQ(wrapper->Release(), 0u);
}

TEST_F(ValueMarshal, CallsOfAScriptObjectFailAfterTheEndOfItsEngine) {
  IDispatch* wrapper = nullptr;
  {
    ScriptEngine engine;
    Start(&engine);
    ASSERT_EQ(duk_peval_string(engine.Api(), "({ valueOf: function () { return 4; } })"), 0);
    wrapper = WrapScriptObject(engine.Api(), -1);
    ASSERT_NE(wrapper, nullptr);
    ScopedVariant result;
    EXPECT_EQ(ReadProperty(wrapper, DISPID_VALUE, &result), S_OK);
    EXPECT_EQ(result.vt, VT_I4);
    EXPECT_EQ(result.lVal, 4);
    OLECHAR name[] = OLESTR("none");
    LPOLESTR names[] = {name};
    DISPID id = 0;
    EXPECT_EQ(wrapper->GetIDsOfNames(IID_NULL, names, 1, 0, &id), DISP_E_UNKNOWNNAME);
    EXPECT_EQ(id, DISPID_UNKNOWN);
    EXPECT_EQ(ReadProperty(wrapper, 1, nullptr), DISP_E_MEMBERNOTFOUND);
  }
  ScopedVariant result;
  EXPECT_EQ(ReadProperty(wrapper, DISPID_VALUE, &result), kDisconnected);
  EXPECT_EQ(wrapper->Release(), 0u);
}

}  // namespace
}  // namespace mirolta::host
