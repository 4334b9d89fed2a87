// Memory that runs out, at every allocation of every member of every class and of every stream
// operation: the status reports it, nothing leaks, no lock is kept, and the same call succeeds
// afterwards.
#include <algorithm>
#include <functional>
#include <set>
#include <string_view>

#include "allocation_fixture.h"
#include "member_locks.h"
#include "memory_streams.h"
#include "object_probe.h"
#include "system_rules.h"

namespace mirolta::test {
namespace {

// Members that succeed without the memory: the object is left without an engine, or with its former
// key. Callers rely on it.
const std::set<std::string> kSilent = {
    "HashObject.InitHash",
    "SymmetricCryptObject.Init",
    "RSACrypt.CreateKeys",
    "ToviStreamDigest.ReadAlgorithm put",
    "ToviStreamDigest.WriteAlgorithm put",
    "ToviStreamCrypt.ReadAlgorithm put",
    "ToviStreamCrypt.WriteAlgorithm put",
};

// Members that leave the object not as it was when they fail, or when they say nothing of missing
// memory: it is then as after these calls, which need no memory. A member may have several.
struct AsAfter {
  const char* member;
  const char* call;
  INVOKEKIND kind;
  const char* words;
};
constexpr AsAfter kAsAfter[] = {
    // The old engine is gone before the new one is there.
    {"HashObject.InitHash", "InitHash", kMethod, "t:none"},
    {"SymmetricCryptObject.Init", "Init", kMethod, "t:none"},
    {"ToviStreamDigest.ReadAlgorithm put", "ReadAlgorithm", kPut, "t:none"},
    {"ToviStreamDigest.ReadAlgorithm put", "ReadHashEnable", kPut, "B1"},
    {"ToviStreamDigest.WriteAlgorithm put", "WriteAlgorithm", kPut, "t:none"},
    {"ToviStreamDigest.WriteAlgorithm put", "WriteHashEnable", kPut, "B1"},
    {"ToviStreamCrypt.ReadAlgorithm put", "ReadAlgorithm", kPut, "t:none"},
    {"ToviStreamCrypt.WriteAlgorithm put", "WriteAlgorithm", kPut, "t:none"},
    // So is the old key; what was absorbed or queued stays.
    {"HashObject.Key put", "Key", kPut, "m"},
    {"SymmetricCryptObject.Key put", "Key", kPut, "m"},
    {"ToviStreamDigest.ReadKey put", "ReadKey", kPut, "m"},
    {"ToviStreamDigest.WriteKey put", "WriteKey", kPut, "m"},
    {"ToviStreamCrypt.ReadKey put", "ReadKey", kPut, "m"},
    {"ToviStreamCrypt.WriteKey put", "WriteKey", kPut, "m"},
    // The computation is begun anew before its data are read, and ended before its digest is.
    {"HashObject.HashData", "Reset", kMethod, ""},
    {"HashObject.Value get", "HashFinalize", kMethod, ""},
    {"HashObject.BinaryValue get", "HashFinalize", kMethod, ""},
    {"ToviStreamDigest.ReadValue get", "ReadFinalize", kMethod, ""},
    {"ToviStreamDigest.ReadBinaryValue get", "ReadFinalize", kMethod, ""},
    {"ToviStreamDigest.WriteValue get", "WriteFinalize", kMethod, ""},
    {"ToviStreamDigest.WriteBinaryValue get", "WriteFinalize", kMethod, ""},
};

class MemberAllocationTest : public AllocationTest {
 protected:
  // What the call does when memory is not short.
  struct Outcome {
    HRESULT status;
    std::string after;  // the result and what the object reads as then
    // What may be left of the object (see Looked) when memory is short.
    std::set<std::string> possible;
  };

  // One call of a member on a new object, with one allocation failing. `look`: what is left of the
  // object is read, which changes it; else the same call is made again.
  // Returns false if nothing failed any more.
  bool FailOnce(const Member& member, State state, const char* words, bool late, Failing failing,
                long n, bool look, const Outcome& usual) {
    SetErrorInfo(0, nullptr);
    const long blocks = BlocksInUse();
    bool failed = false;
    {
      PlannedChance::Restart();
      const Subject subject(*member.class_row, state);
      if (!subject) {
        ADD_FAILURE();
        return false;
      }
      Arguments arguments(words);
      SetErrorInfo(0, nullptr);

      VARIANT result;
      HRESULT status = S_OK;
      {
        // A late-bound call is put together before memory runs out.
        std::vector<VARIANT> reversed(arguments.Get(), arguments.Get() + arguments.Count());
        std::reverse(reversed.begin(), reversed.end());
        const LockBalance locks;
        const auto call = [&] {
          status = late ? subject.InvokeReversed(*member.row, reversed.data(), arguments.Count(),
                                                 &result)
                        : subject.Call(*member.row, arguments.Get(), &result);
        };
        failed = RunFailing(failing, n, call);
        EXPECT_EQ(locks.Held(), 0);
      }
      if (failed) {
        const bool silent = kSilent.count(member.Name()) != 0;
        EXPECT_TRUE(status == E_OUTOFMEMORY || status == usual.status) << std::hex << status;
        if (status == E_OUTOFMEMORY) {
          EXPECT_EQ(Published(), S_FALSE) << "an error report that is not of this call";
          const std::string shown = Shown(result);
          EXPECT_TRUE(shown == "(empty)" || shown == "(null text)" || shown == "(no object)" ||
                      shown == "i4 0" || (kCopiesNullTexts && late && shown == "text "))
              << shown;
          if (kCopiesNullTexts && late) VariantClear(&result);
        } else {
          // It went well by another way, or the member says nothing of it.
          const std::string shown = Shown(result);
          VariantClear(&result);
          if (!silent) {
            EXPECT_EQ(shown + "\n" + subject.Snapshot(), usual.after);
          }
        }
        if (look) {
          if (status == E_OUTOFMEMORY || silent) {
            const std::string left = Looked(member, subject);
            EXPECT_EQ(usual.possible.count(left), 1u)
                << "left: " << left << "possible: " << *usual.possible.begin();
          }
        }
        if (!look) CallAgain(member, subject, words, late, usual);
      } else {
        EXPECT_EQ(status, usual.status) << std::hex << status;
        VariantClear(&result);
      }
      SetErrorInfo(0, nullptr);
    }
    EXPECT_EQ(BlocksInUse(), blocks) << "memory lost";
    EXPECT_EQ(CurrentModule()->lock_count, locks_at_start);
    return failed;
  }

  static void CallAgain(const Member& member, const Subject& subject, const char* words, bool late,
                        const Outcome& usual) {
    // Objects with a default value and streams have been read: new arguments.
    Arguments again(words);
    VARIANT second;
    PlannedChance::Restart();
    const HRESULT status_after = subject.Call(*member.row, again.Get(), &second);
    // A late-bound call has one success status only.
    EXPECT_TRUE(status_after == usual.status ||
                (late && usual.status == S_OK && SUCCEEDED(status_after)))
        << std::hex << status_after;
    VariantClear(&second);
  }

  static HRESULT Published() {
    OwnedReference<IErrorInfo> info;
    return GetErrorInfo(0, info.Put());
  }

  // What may be left of the object when memory is short.
  static std::set<std::string> Possible(const Member& member, State state, const char* words,
                                        bool late) {
    std::set<std::string> possible;
    const auto after = [&](const std::function<Bytes(const Subject&)>& work) {
      PlannedChance::Restart();
      const Subject subject(*member.class_row, state);
      const Bytes taken = work(subject);
      possible.insert(Looked(member, subject, taken));
    };
    bool changes = false;
    for (const AsAfter& row : kAsAfter) changes = changes || member.Name() == row.member;
    if (changes) {
      after([&](const Subject& subject) {
        for (const AsAfter& row : kAsAfter) {
          if (member.Name() == row.member) subject.Call(row.call, row.kind, row.words);
        }
        return Bytes();
      });
    }
    // A late-bound call may end before it has reached the object.
    if (!changes || late) after([](const Subject&) { return Bytes(); });
    const bool may_have_taken = MembersThatQueue().count(member.Name()) != 0;
    if (may_have_taken || kSilent.count(member.Name()) != 0) {
      after([&](const Subject& subject) {
        const Bytes given = Transformed(member, subject, words);
        return may_have_taken ? given : Bytes();
      });
    }
    return possible;
  }

  Outcome Usual(const Member& member, State state, const char* words, bool late) {
    PlannedChance::Restart();
    const Subject subject(*member.class_row, state);
    Arguments arguments(words);
    VARIANT result;
    const HRESULT status =
        late ? subject.Invoke(*member.row, arguments.Get(), arguments.Count(), &result)
             : subject.Call(*member.row, arguments.Get(), &result);
    const std::string shown = Shown(result);
    VariantClear(&result);
    return {status, shown + "\n" + subject.Snapshot(), Possible(member, state, words, late)};
  }
};

TEST_F(MemberAllocationTest, EveryMemberHasItsArguments) {
  std::set<std::string> rows;
  for (const ArgumentRow& row : ArgumentRows()) EXPECT_TRUE(rows.insert(row.member).second);
  std::set<std::string> members;
  for (const Member& member : AllMembers()) {
    members.insert(member.Name());
    EXPECT_NE(ArgumentsFor(member, false), nullptr) << member.Name();
    if (member.ParameterCount() == 0) continue;
    for (const bool large : {false, true}) {
      const Arguments arguments(ArgumentsFor(member, large));
      EXPECT_EQ(arguments.Count(), member.ParameterCount()) << member.Name();
    }
  }
  for (const std::string& row : rows) EXPECT_EQ(members.count(row), 1u) << row;
  for (const std::string& row : kSilent) EXPECT_EQ(members.count(row), 1u) << row;
  for (const std::string& row : MembersThatQueue()) EXPECT_EQ(members.count(row), 1u) << row;
  for (const AsAfter& row : kAsAfter) EXPECT_EQ(members.count(row.member), 1u) << row.member;
  EXPECT_EQ(AllClasses().size(), 6u);
}

class AllocationOfClassTest : public MemberAllocationTest,
                              public testing::WithParamInterface<int> {};

TEST_P(AllocationOfClassTest, EveryMemberSurvivesEveryAllocationThatFails) {
  const ClassTableRow* const class_row = AllClasses()[static_cast<size_t>(GetParam())];
  for (const Member& member : AllMembers()) {
    if (member.class_row != class_row) continue;
    for (const State state : kStates) {
      for (const bool large : {false, true}) {
        if (large && member.ParameterCount() == 0) continue;
        const char* const words = ArgumentsFor(member, large);
        for (const bool late : {false, true}) {
          // The way of a large argument into a late-bound call is the way of a small one.
          if (large && late) continue;
          const Outcome usual = Usual(member, state, words, late);
          const std::string what = member.Name() + " (" + words + ")" +
                                   (state == State::kFresh ? " fresh" : " ready") +
                                   (late ? " late" : " early");
          for (const bool look : {false, true}) {
            FailEachAllocation(what, [&](Failing failing, long n) {
              return FailOnce(member, state, words, late, failing, n, look, usual);
            });
          }
        }
      }
    }
  }
}

INSTANTIATE_TEST_SUITE_P(Classes, AllocationOfClassTest, testing::Range(0, 6),
                         [](const testing::TestParamInfo<int>& row) {
                           return Plain(AllClasses()[static_cast<size_t>(row.param)]->name);
                         });

// The stream operations of the filters.
class StreamAllocationTest : public AllocationTest {
 protected:
  void SetUp() override {
    AllocationTest::SetUp();
    // Room that the sink takes stays taken: it has had it before.
    ASSERT_EQ(sink_->SetSize(Large(10000)), S_OK);
  }

  HRESULT Call(const StreamOperation& operation, IStream* stream) {
    return operation.call(stream, sink_.Get(), buffer_);
  }

  // One call on a new object's stream, with one allocation failing; -1: without a failure, to set
  // what is usual. Returns false if nothing failed.
  bool FailOnce(const ClassTableRow& class_row, State state, const StreamOperation& operation,
                Failing failing, long n) {
    const long blocks = BlocksInUse();
    bool failed = false;
    {
      const Subject subject(class_row, state);
      OwnedReference<IStream> stream;
      EXPECT_EQ(stream.Query(subject.Unknown(), IID_IStream), S_OK);
      Rewind(sink_.Get());
      HRESULT status = S_OK;
      const LockBalance locks;
      if (n < 0) {
        usual_ = Call(operation, stream.Get());
        usual_position_ = Position(sink_.Get());
      } else {
        failed = RunFailing(failing, n, [&] { status = Call(operation, stream.Get()); });
        // The runtime's own stream says STG_E_MEDIUMFULL where it cannot grow.
        EXPECT_TRUE(status == usual_ ||
                    (failed && (status == E_OUTOFMEMORY || status == STG_E_MEDIUMFULL)))
            << std::hex << status;
        if (failed && status == S_OK) {
          // By another way: the cipher's queues are made again when they are needed.
          EXPECT_EQ(Position(sink_.Get()), usual_position_);
        }
        const std::string_view name = operation.name;
        if (failed && name != "Read" && name != "CopyTo") {
          EXPECT_EQ(Call(operation, stream.Get()), usual_);
        }
      }
      EXPECT_EQ(locks.Held(), 0);
    }
    EXPECT_EQ(BlocksInUse(), blocks);
    return failed;
  }

 private:
  OwnedReference<IStream> sink_ = MemoryStream();
  Bytes buffer_ = PatternBytes(4000);
  HRESULT usual_ = E_FAIL;
  ULONGLONG usual_position_ = 0;
};

TEST_F(StreamAllocationTest, EveryStreamOperationSurvivesEveryAllocationThatFails) {
  for (const ClassTableRow* class_row : StreamClasses()) {
    for (const State state : kStates) {
      for (const StreamOperation& operation : StreamOperations()) {
        FailOnce(*class_row, state, operation, Failing::kNewOnce, -1);
        FailEachAllocation(StreamOperationName(*class_row, operation),
                           [&](Failing failing, long n) {
                             return FailOnce(*class_row, state, operation, failing, n);
                           });
      }
    }
  }
  EXPECT_EQ(StreamClasses().size(), 2u);
}

}  // namespace
}  // namespace mirolta::test
