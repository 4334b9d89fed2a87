// The frame of the host's own automation classes, on a class made for it.
#include "classes/host_object.h"

#include <gtest/gtest.h>

#include <new>
#include <stdexcept>
#include <string>

#include "classes/file_object.h"
#include "engine/host_errors.h"

namespace mirolta::host {
namespace {

int living_samples = 0;

class Sample final : public HostObject {
 public:
  Sample() { ++living_samples; }
  const HostClass& Class() const override;

  void Join(HostCall& call) {
    Units text = call.Text(0, OLESTR("nothing"));
    text += OLECHAR{'/'};
    text += UnitsFromSystem(std::to_string(call.Integer(1, -1)));
    text += call.Truth(2, true) ? OLESTR("/yes") : OLESTR("/no");
    call.ReturnText(text);
  }
  void GetValue(HostCall& call) { call.ReturnNumber(value_ + (call.Has(0) ? call.Number(0) : 0)); }
  void PutValue(HostCall& call) {
    value_ = HostCall::NumberOf(call.Value()) * (call.Has(0) ? call.Number(0) : 1);
  }
  void GetCount(HostCall& call) const { call.ReturnInteger(7); }
  [[noreturn]] void Refuse(HostCall& call) {
    call.ReturnText(OLESTR("half a result"));
    switch (call.Integer(0)) {
      case 0:
        Fail(kInvalidCall);
      case 1:
        Fail(MIROLTA_STATUS(0x800A0035u), "caf\xC3\xA9");
      case 2:
        throw std::bad_alloc();
      default:
        throw std::length_error("too long");
    }
  }
  void Values(HostCall& call) {
    ValueList values;
    ScopedVariant value;
    for (int32_t i = 0; i < 3; ++i) {
      value.vt = VT_I4;
      value.lVal = 10 * i;
      values.Add(value);
    }
    call.ReturnUnknown(NewEnumerator(std::move(values)));
  }
  void Self(HostCall& call) {
    AddRef();
    call.ReturnObject(this);
  }
  // As a script that drops the last reference during a call.
  void Leave(HostCall& call) {
    Release();
    call.ReturnInteger(living_samples);
  }

 private:
  ~Sample() override { --living_samples; }
  double value_ = 1.5;
};

constexpr HostMember kMembers[] = {
    {"Value", DISPID_VALUE, MemberKind::kProperty, 0, 1, CallMember<&Sample::GetValue>,
     CallMember<&Sample::PutValue>, "([n As Long]) As Double", "A number."},
    {"Join", 1, MemberKind::kMethod, 0, 3, CallMember<&Sample::Join>, nullptr,
     "([a As String], [b As String], [c As String]) As String", "Joins."},
    {"Count", 2, MemberKind::kProperty, 0, 0, CallMember<&Sample::GetCount>, nullptr, " As Long",
     "Seven."},
    {"Refuse", 3, MemberKind::kMethod, 1, 1, CallMember<&Sample::Refuse>, nullptr, "(n As Long)",
     "Fails."},
    {"Self", 4, MemberKind::kMethod, 0, 0, CallMember<&Sample::Self>, nullptr, "() As Sample.Class",
     "Itself."},
    {"Own", 6, MemberKind::kProperty, 0, 0, CallMember<&Sample::Self>, nullptr, " As Sample.Class",
     "Itself."},
    {"Leave", 5, MemberKind::kMethod, 0, 0, CallMember<&Sample::Leave>, nullptr, "() As Long",
     "Ends."},
    {"_NewEnum", DISPID_NEWENUM, MemberKind::kProperty, 0, 0, CallMember<&Sample::Values>, nullptr,
     " As Long", "The values."},
};
static_assert(IsWellFormed(kMembers));
constexpr HostMember kTwins[] = {kMembers[1], kMembers[1]};
static_assert(!IsWellFormed(kTwins));

// What Join, which takes none to three arguments, may not say.
constexpr bool JoinCanSay(const char* signature) {
  HostMember row = kMembers[1];
  row.signature = signature;
  return HasItsSignature(row);
}
static_assert(JoinCanSay("([a As String], [b As Byte()], [c As Variant()])"));
static_assert(!JoinCanSay("(a As String, [b As String], [c As String])"));
static_assert(!JoinCanSay("([a As String], [b As String])"));
static_assert(!JoinCanSay("([a As String], [b As String], [c As String], ...)"));
static_assert(!JoinCanSay(" As String"));
static_assert(!JoinCanSay("([a], [b], [c])"));
static_assert(!JoinCanSay("([a As String], [b As String], [c As String]) String"));
static_assert(!JoinCanSay("([a As String], [b As String], [c As String"));

constexpr HostClass kSample = {"Sample.Class", "A sample.", kMembers};

const HostClass& Sample::Class() const {
  return kSample;
}

constexpr WORD kCall = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

class HostObjectTest : public testing::Test {
 protected:
  void SetUp() override { object_.Attach(new Sample); }
  void TearDown() override {
    arguments_.clear();
    VariantClear(&result_);
    FreeException();
    object_.Reset();
    EXPECT_EQ(living_samples, 0);
  }
  void FreeException() {
    SysFreeString(exception_.bstrSource);
    SysFreeString(exception_.bstrDescription);
    exception_ = {};
  }

  // Arguments are added in the order of a call.
  void Add(int32_t number) {
    VARIANT value = {};
    value.vt = VT_I4;
    value.lVal = number;
    arguments_.insert(arguments_.begin(), value);
  }
  HRESULT Invoke(DISPID id, WORD flags, bool wants_result = true) {
    DISPPARAMS params = {};
    params.rgvarg = arguments_.data();
    params.cArgs = static_cast<UINT>(arguments_.size());
    DISPID put = DISPID_PROPERTYPUT;
    if ((flags & DISPATCH_PROPERTYPUT) != 0) {
      params.rgdispidNamedArgs = &put;
      params.cNamedArgs = 1;
    }
    VariantClear(&result_);
    FreeException();
    const HRESULT status = object_->Invoke(id, IID_NULL, 0, flags, &params,
                                           wants_result ? &result_ : nullptr, &exception_, nullptr);
    arguments_.clear();
    return status;
  }
  DISPID IdOf(UnitsView name) {
    Units text(name);
    LPOLESTR names = text.data();
    DISPID id = 77;
    const HRESULT status = object_->GetIDsOfNames(IID_NULL, &names, 1, 0, &id);
    EXPECT_EQ(status, id == DISPID_UNKNOWN ? DISP_E_UNKNOWNNAME : S_OK);
    return id;
  }
  static std::string TextOf(BSTR text) { return SystemFromUnits({text, SysStringLen(text)}); }

  OwnedReference<IDispatch> object_;
  std::vector<VARIANT> arguments_;
  ScopedVariant result_;
  EXCEPINFO exception_{};
};

TEST_F(HostObjectTest, NamesAreFoundInAnyLetterCase) {
  EXPECT_EQ(IdOf(OLESTR("Join")), 1);
  EXPECT_EQ(IdOf(OLESTR("jOIN")), 1);
  EXPECT_EQ(IdOf(OLESTR("_newenum")), DISPID_NEWENUM);
  EXPECT_EQ(IdOf(OLESTR("Joi")), DISPID_UNKNOWN);
  EXPECT_EQ(IdOf(OLESTR("Joins")), DISPID_UNKNOWN);
  EXPECT_EQ(IdOf(OLESTR("")), DISPID_UNKNOWN);
}

TEST_F(HostObjectTest, NamesOfArgumentsAreUnknown) {
  Units texts[] = {OLESTR("Join"), OLESTR("a")};
  LPOLESTR names[] = {texts[0].data(), texts[1].data()};
  DISPID ids[] = {0, 0};
  EXPECT_EQ(object_->GetIDsOfNames(IID_NULL, names, 2, 0, ids), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids[0], 1);
  EXPECT_EQ(ids[1], DISPID_UNKNOWN);
}

TEST_F(HostObjectTest, ArgumentsThatAreNotGivenHaveDefaults) {
  ASSERT_EQ(Invoke(1, kCall), S_OK);
  EXPECT_EQ(TextOf(result_.bstrVal), "nothing/-1/yes");
  Add(12);
  VARIANT missing = {};
  missing.vt = VT_ERROR;
  missing.scode = DISP_E_PARAMNOTFOUND;
  arguments_.insert(arguments_.begin(), missing);
  Add(0);
  ASSERT_EQ(Invoke(1, kCall), S_OK);
  EXPECT_EQ(TextOf(result_.bstrVal), "12/-1/no");
}

TEST_F(HostObjectTest, APropertyIsReadAndWrittenWithItsArguments) {
  ASSERT_EQ(Invoke(DISPID_VALUE, DISPATCH_PROPERTYGET), S_OK);
  EXPECT_EQ(result_.dblVal, 1.5);
  Add(3);  // the argument
  Add(5);  // the value, which stands first in the array
  ASSERT_EQ(Invoke(DISPID_VALUE, DISPATCH_PROPERTYPUT), S_OK);
  Add(1);
  ASSERT_EQ(Invoke(DISPID_VALUE, kCall), S_OK);
  EXPECT_EQ(result_.dblVal, 16);
}

TEST_F(HostObjectTest, WhatAMemberIsNotForIsRefused) {
  EXPECT_EQ(Invoke(1, DISPATCH_PROPERTYGET), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(Invoke(2, DISPATCH_METHOD), DISP_E_MEMBERNOTFOUND);
  Add(1);
  EXPECT_EQ(Invoke(2, DISPATCH_PROPERTYPUT), DISP_E_MEMBERNOTFOUND);
  EXPECT_EQ(Invoke(99, kCall), DISP_E_MEMBERNOTFOUND);
}

TEST_F(HostObjectTest, ArgumentsOfAPropertyWithoutAreForItsValue) {
  Add(4);
  ASSERT_EQ(Invoke(6, kCall), S_OK);
  EXPECT_EQ(result_.dblVal, 5.5);
}

TEST_F(HostObjectTest, TheNumberOfArgumentsIsChecked) {
  EXPECT_EQ(Invoke(3, kCall), DISP_E_BADPARAMCOUNT);
  Add(1);
  EXPECT_EQ(Invoke(2, kCall), DISP_E_BADPARAMCOUNT);
  Add(1), Add(2), Add(3);
  EXPECT_EQ(Invoke(DISPID_VALUE, DISPATCH_PROPERTYPUT), DISP_E_BADPARAMCOUNT);
}

TEST_F(HostObjectTest, ArgumentsThatCannotBeConvertedAreATypeMismatch) {
  ScopedVariant text;
  text.vt = VT_BSTR;
  text.bstrVal = SysAllocString(OLESTR("no number"));
  arguments_.push_back(text);
  EXPECT_EQ(Invoke(DISPID_VALUE, kCall), DISP_E_EXCEPTION);
  EXPECT_EQ(exception_.scode, DISP_E_TYPEMISMATCH);
}

TEST_F(HostObjectTest, AFailureHasNumberTextAndSourceAndNoResult) {
  Add(0);
  EXPECT_EQ(Invoke(3, kCall), DISP_E_EXCEPTION);
  EXPECT_EQ(exception_.scode, kInvalidCall);
  EXPECT_EQ(TextOf(exception_.bstrDescription), "Invalid procedure call or argument");
  EXPECT_EQ(TextOf(exception_.bstrSource), "Sample.Class");
  EXPECT_EQ(result_.vt, VT_EMPTY);
  Add(1);
  EXPECT_EQ(Invoke(3, kCall), DISP_E_EXCEPTION);
  EXPECT_EQ(static_cast<uint32_t>(exception_.scode), 0x800A0035u);
  EXPECT_EQ(TextOf(exception_.bstrDescription), "caf\xC3\xA9");
}

TEST_F(HostObjectTest, ExhaustedMemoryIsAStatus) {
  for (const int32_t kind : {2, 3}) {
    Add(kind);
    EXPECT_EQ(Invoke(3, kCall), E_OUTOFMEMORY);
    EXPECT_EQ(result_.vt, VT_EMPTY);
  }
}

TEST_F(HostObjectTest, AResultThatNobodyWantsIsFreed) {
  EXPECT_EQ(Invoke(4, kCall, false), S_OK);
  EXPECT_EQ(Invoke(1, kCall, false), S_OK);
}

TEST_F(HostObjectTest, TheObjectLivesUntilItsCallEnds) {
  IDispatch* const object = object_.Detach();
  DISPPARAMS none = {};
  EXPECT_EQ(object->Invoke(5, IID_NULL, 0, kCall, &none, &result_, nullptr, nullptr), S_OK);
  EXPECT_EQ(result_.lVal, 1);
  EXPECT_EQ(living_samples, 0);
  object_.Attach(new Sample);
}

TEST_F(HostObjectTest, HostObjectsAreToldFromOthers) {
  EXPECT_EQ(&HostObjectOf(object_.Get())->Class(), &kSample);
  OwnedReference<IUnknown> values;
  values.Attach(NewEnumerator(ValueList()));
  EXPECT_EQ(HostObjectOf(values.Get()), nullptr);
  EXPECT_EQ(HostObjectOf(nullptr), nullptr);
}

TEST_F(HostObjectTest, AClassMayHaveADefaultMember) {
  EXPECT_TRUE(HasDefaultMember(kSample));
  EXPECT_FALSE(HasDefaultMember({"Plain", "Another.", std::span(kMembers).subspan(1)}));
}

TEST_F(HostObjectTest, AnEnumeratorGivesTheValuesInOrder) {
  ASSERT_EQ(Invoke(DISPID_NEWENUM, DISPATCH_PROPERTYGET), S_OK);
  OwnedReference<IEnumVARIANT> values;
  ASSERT_EQ(values.Query(result_.punkVal, IID_IEnumVARIANT), S_OK);
  VARIANT got[4] = {};
  ULONG count = 0;
  EXPECT_EQ(values->Next(2, got, &count), S_OK);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(got[1].lVal, 10);
  OwnedReference<IEnumVARIANT> copy;
  ASSERT_EQ(values->Clone(copy.Put()), S_OK);
  EXPECT_EQ(values->Next(4, got, &count), S_FALSE);
  EXPECT_EQ(count, 1u);
  EXPECT_EQ(got[0].lVal, 20);
  EXPECT_EQ(values->Next(1, got, nullptr), S_FALSE);
  EXPECT_EQ(copy->Next(1, got, nullptr), S_OK);
  EXPECT_EQ(got[0].lVal, 20);
  EXPECT_EQ(values->Reset(), S_OK);
  EXPECT_EQ(values->Skip(3), S_OK);
  EXPECT_EQ(values->Skip(1), S_FALSE);
  EXPECT_EQ(values->Next(2, nullptr, &count), E_POINTER);
  EXPECT_EQ(values->Next(2, got, nullptr), E_POINTER);
  EXPECT_EQ(values->Clone(nullptr), E_POINTER);
}

// Callers may keep them.
TEST(FileObjectIds, FollowThoseOfEveryNode) {
  auto* const file = new FileObject("/f");
  const struct {
    const OLECHAR* name;
    DISPID id;
  } kIds[] = {{OLESTR("Path"), DISPID_VALUE}, {OLESTR("OpenAsTextStream"), 20}};
  for (const auto& one : kIds) {
    auto name = const_cast<LPOLESTR>(one.name);
    DISPID id = DISPID_UNKNOWN;
    EXPECT_EQ(file->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK);
    EXPECT_EQ(id, one.id);
  }
  file->Release();
}

}  // namespace
}  // namespace mirolta::host
