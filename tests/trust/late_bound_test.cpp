// Late-bound calls of every member, against the early-bound ones, whose results the tests of the
// classes know. The ids, kinds, parameters and defaults themselves are in type_library_cases.h.
#include "late_bound.h"

#include <algorithm>
#include <string>
#include <vector>

#include "error_slot.h"
#include "member_calls.h"
#include "system_rules.h"
#include "trust_test.h"

namespace mirolta::test {
namespace {

// What a call gives, and the object after it.
struct Given {
  HRESULT status = E_FAIL;
  std::string result;
  std::string after;
  Text source;  // of the report of a failure
  Text description;
};

// A number object by its bytes, other values as Shown has them.
std::string ShownWhole(const VARIANT& value) {
  OwnedReference<IPexBigNumber> number;
  if (V_VT(&value) != VT_DISPATCH || value.pdispVal == nullptr ||
      number.Query(value.pdispVal, IID_IPexBigNumber) != S_OK) {
    return Shown(value);
  }
  TestValue bytes;
  EXPECT_EQ(number->get_Binary(&bytes), S_OK);
  return "number " + Shown(bytes);
}

VARIANT Missing() {
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = VT_ERROR;
  value.scode = DISP_E_PARAMNOTFOUND;
  return value;
}

// The value of a parameter whose argument is left out.
VARIANT DefaultOf(const ParameterRow& parameter) {
  if (parameter.presence == Presence::kOptional) return Missing();
  VARIANT value;
  VariantInit(&value);
  V_VT(&value) = parameter.type.type;
  if (parameter.type.type == VT_BOOL) {
    value.boolVal = static_cast<VARIANT_BOOL>(parameter.default_value);
  } else {
    EXPECT_EQ(parameter.type.type, VT_I4);
    value.lVal = parameter.default_value;
  }
  return value;
}

class LateBoundTest : public TrustTest {
 protected:
  using Values = std::vector<VARIANT>;

  void SetUp() override {
    TrustTest::SetUp();
    ASSERT_EQ(DllRegisterServer(), S_OK);  // the sources of errors
  }

  static Given Make(const Member& member, State state, Values arguments, bool late) {
    PlannedChance::Restart();
    const Subject subject(*member.class_row, state);
    SetErrorInfo(0, nullptr);
    Given given;
    VARIANT result;
    LateReport report;
    if (late) {
      std::reverse(arguments.begin(), arguments.end());
      given.status = subject.InvokeReversed(
          *member.row, arguments.data(), static_cast<unsigned>(arguments.size()), &result, &report);
      EXPECT_EQ(report.raised, FAILED(given.status));
    } else {
      given.status = subject.Call(*member.row, arguments.data(), &result);
    }
    const TakenError error = TakeError();
    EXPECT_FALSE(late && error.published) << "the report is the caller's";
    given.source = late ? report.source : error.source;
    given.description = late ? report.description : error.description;
    given.result = ShownWhole(result);
    given.after = subject.Snapshot();
    VariantClear(&result);
    return given;
  }
  static Given Early(const Member& member, State state, const Values& arguments) {
    return Make(member, state, arguments, false);
  }
  static Given Late(const Member& member, State state, const Values& arguments) {
    return Make(member, state, arguments, true);
  }
  // A late-bound call knows one success only.
  static void ExpectSame(const Given& late, const Given& early) {
    EXPECT_EQ(late.status, SUCCEEDED(early.status) ? S_OK : early.status)
        << std::hex << late.status;
    if (SUCCEEDED(early.status)) {
      const bool is_null = kCopiesNullTexts && early.result == "(null text)";
      EXPECT_EQ(late.result, is_null ? "text " : early.result);
    }
    EXPECT_EQ(late.after, early.after);
    EXPECT_EQ(late.source, early.source);
    EXPECT_EQ(late.description, early.description);
  }

  static Values ValuesOf(Arguments& arguments) {
    return Values(arguments.Get(), arguments.Get() + arguments.Count());
  }

  PlannedChance chance;
};

TEST_F(LateBoundTest, EveryMemberGivesWhatItGivesEarlyBound) {
  int reported = 0;
  for (const Member& member : AllMembers()) {
    for (const State state : kStates) {
      for (const bool large : {false, true}) {
        SCOPED_TRACE(member.Name() + (state == State::kFresh ? " fresh" : " ready") +
                     (large ? " large" : ""));
        // Streams are read: each call has arguments of its own.
        Arguments first(ArgumentsFor(member, large));
        Arguments second(ArgumentsFor(member, large));
        const Given early = Early(member, state, ValuesOf(first));
        ExpectSame(Late(member, state, ValuesOf(second)), early);
        reported += early.description.empty() ? 0 : 1;
      }
    }
  }
  EXPECT_GT(reported, 0);
}

// All that may be left out from one parameter on, by fewer arguments and by the value that stands for
// one left out.
TEST_F(LateBoundTest, ArgumentsLeftOutHaveTheirDefaults) {
  int left_out = 0;
  for (const Member& member : AllMembers()) {
    const ParameterRow* const parameters = member.row->parameters.rows;
    for (unsigned from = 0; from < member.ParameterCount(); ++from) {
      if (parameters[from].presence == Presence::kRequired) continue;
      ++left_out;
      for (const State state : kStates) {
        SCOPED_TRACE(member.Name() + " without " + Plain(parameters[from].name));
        Arguments arguments(ArgumentsFor(member, false));
        Values early, fewer, missing;
        for (unsigned i = 0; i < member.ParameterCount(); ++i) {
          const bool omitted = i >= from && parameters[i].presence != Presence::kRequired;
          early.push_back(omitted ? DefaultOf(parameters[i]) : arguments.Get()[i]);
          missing.push_back(omitted ? Missing() : arguments.Get()[i]);
          if (!omitted) fewer.push_back(arguments.Get()[i]);
        }
        const Given given = Early(member, state, early);
        ExpectSame(Late(member, state, fewer), given);
        ExpectSame(Late(member, state, missing), given);
      }
    }
  }
  EXPECT_EQ(left_out, 14);
}

// Numbers and switches as text, and text by reference.
TEST_F(LateBoundTest, ArgumentsOfOtherTypesAreConverted) {
  int converted = 0;
  for (const Member& member : AllMembers()) {
    for (const State state : kStates) {
      SCOPED_TRACE(member.Name());
      if (member.row->kind == kPutRef) continue;  // its stream can be read once
      Arguments arguments(ArgumentsFor(member, false));
      const Values early = ValuesOf(arguments);
      Values late = early;
      std::vector<TestValue> texts(late.size());
      for (size_t i = 0; i < late.size(); ++i) {
        const VARTYPE type = member.row->parameters.rows[i].type.type;
        if (type == VT_I4 || type == VT_BOOL) {
          ASSERT_EQ(VariantChangeType(&texts[i], &late[i], 0, VT_BSTR), S_OK);
          late[i] = texts[i];
          ++converted;
        } else if (type == VT_BSTR) {
          late[i] = ReferenceTo(VT_BSTR, &arguments.Get()[i].bstrVal);
          ++converted;
        }
      }
      ExpectSame(Late(member, state, late), Early(member, state, early));
    }
  }
  EXPECT_GT(converted, 50);
}

TEST_F(LateBoundTest, TooFewAndTooManyArgumentsAreRefused) {
  if (!kPortableRuntime) GTEST_SKIP() << "the system counts them in its own way";
  for (const Member& member : AllMembers()) {
    SCOPED_TRACE(member.Name());
    const Subject subject(*member.class_row, State::kReady);
    const std::string before = subject.Snapshot();
    Arguments arguments(ArgumentsFor(member, false));
    Values values = ValuesOf(arguments);
    values.push_back(Missing());
    unsigned required = 0;
    for (unsigned i = 0; i < member.ParameterCount(); ++i) {
      required += member.row->parameters.rows[i].presence == Presence::kRequired ? 1 : 0;
    }
    VARIANT result;
    EXPECT_EQ(subject.Invoke(*member.row, values.data(), member.ParameterCount() + 1, &result),
              DISP_E_BADPARAMCOUNT);
    if (required != 0 && member.row->kind == kMethod) {
      EXPECT_EQ(subject.Invoke(*member.row, values.data(), required - 1, &result),
                DISP_E_BADPARAMCOUNT);
    }
    EXPECT_EQ(subject.Snapshot(), before);
  }
}

TEST_F(LateBoundTest, NamesAreFoundInAnyCaseAndCalledAsTheirKindOnly) {
  int refused = 0;
  for (const Member& member : AllMembers()) {
    SCOPED_TRACE(member.Name());
    const Subject subject(*member.class_row, State::kReady);
    const LateBound late(subject.Dispatch());
    Text name = member.row->name;
    EXPECT_EQ(late.IdOf(name.c_str()), member.row->id);
    EXPECT_EQ(late.IdOf((name + OLESTR("s")).c_str()), DISPID_UNKNOWN);
    for (OLECHAR& c : name) {
      if (c >= 'a' && c <= 'z') c = static_cast<OLECHAR>(c - 'a' + 'A');
    }
    EXPECT_EQ(late.IdOf(name.c_str()), member.row->id);
    const auto has = [&](INVOKEKIND kind) {
      return FindMember(*member.class_row, Plain(member.row->name), kind) != nullptr;
    };
    for (const INVOKEKIND kind : {kMethod, kGet, kPut}) {
      // A put of an object is the other kind of put where the property has only that.
      if (has(kind) || (kind == kPut && has(kPutRef))) continue;
      MemberRow other = *member.row;
      other.kind = kind;
      Arguments arguments(kind == kPut ? "m" : ArgumentsFor(member, false));
      VARIANT result;
      const HRESULT status = subject.Invoke(other, arguments.Get(), arguments.Count(), &result);
      // The system's type information may count the arguments of a put first.
      if (kPortableRuntime || kind != kPut || status != DISP_E_BADPARAMCOUNT) {
        EXPECT_EQ(status, DISP_E_MEMBERNOTFOUND) << "kind " << kind;
      }
      ++refused;
    }
  }
  EXPECT_GT(refused, 0);
}

}  // namespace
}  // namespace mirolta::test
