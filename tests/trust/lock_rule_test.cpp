// Who takes which lock: every member and stream operation of every class against the table, by a
// probe in the locks themselves. A member with the object's lock enters it once and does all of its
// work between entering and leaving; the others enter none.
#include <functional>
#include <map>
#include <set>

#include "member_locks.h"
#include "memory_streams.h"
#include "portable/test_hooks.h"
#include "trust_test.h"

namespace mirolta::test {
namespace {

// What the probe saw of one call.
struct Seen {
  int entered = 0;
  int left = 0;
  CRITICAL_SECTION* section = nullptr;
  std::string at_entry;
  std::string at_leaving;
};
Seen seen;
const Subject* watched = nullptr;  // null: no object is watched

// Reading the object enters its lock again, which is then not counted.
std::string StateOf(const Subject& subject) {
  const Subject* const before = watched;
  watched = nullptr;
  std::string state = subject.Snapshot();
  watched = before;
  return state;
}

constexpr MiroltaLockProbe kProbe = {[](CRITICAL_SECTION* section) {
                                       if (watched == nullptr) return;
                                       if (++seen.entered > 1) return;
                                       seen.section = section;
                                       seen.at_entry = StateOf(*watched);
                                     },
                                     [](CRITICAL_SECTION*) {
                                       if (watched == nullptr) return;
                                       ++seen.left;
                                       seen.at_leaving = StateOf(*watched);
                                     }};

class LockRuleTest : public TrustTest {
 protected:
  void SetUp() override {
    TrustTest::SetUp();
    // What late-bound calls load once has locks of its own.
    for (const ClassTableRow* class_row : AllClasses()) {
      const Subject subject(*class_row, State::kFresh);
      OwnedReference<ITypeInfo> info;
      ASSERT_EQ(subject.Dispatch()->GetTypeInfo(0, 0, info.Put()), S_OK);
    }
    MiroltaSetLockProbe(&kProbe);
  }
  void TearDown() override {
    MiroltaSetLockProbe(nullptr);
    TrustTest::TearDown();
  }

  // The system's random numbers may have a lock.
  const PlannedChance chance;

  // Makes one call on the object and holds what the probe saw against the rule.
  void Check(const ClassTableRow& class_row, const Subject& subject, const std::string& name,
             const std::function<void()>& call) {
    SCOPED_TRACE(name);
    const LockRow* const row = LockRowOf(name);
    ASSERT_NE(row, nullptr) << "no row in member_locks.cpp";
    const std::string before = StateOf(subject);
    seen = {};
    watched = &subject;
    call();
    watched = nullptr;
    ++calls_;
    EXPECT_EQ(seen.left, seen.entered);
    EXPECT_EQ(seen.entered, row->locking == Locking::kObject ? 1 : 0);
    if (seen.entered == 0) return;
    EXPECT_EQ(seen.at_entry, before) << "changed before the lock was entered";
    EXPECT_EQ(seen.at_leaving, StateOf(subject)) << "changed after the lock was left";
    // The lock has the same offset in all objects of a class.
    const auto place =
        reinterpret_cast<uintptr_t>(seen.section) - reinterpret_cast<uintptr_t>(subject.Dispatch());
    EXPECT_EQ(places_.emplace(&class_row, place).first->second, place) << "another lock";
  }

  std::map<const ClassTableRow*, uintptr_t> places_;
  long calls_ = 0;
};

TEST_F(LockRuleTest, EveryMemberAndOperationHasOneRow) {
  std::set<std::string> names;
  for (const Member& member : AllMembers()) names.insert(member.Name());
  for (const ClassTableRow* class_row : StreamClasses()) {
    for (const StreamOperation& operation : StreamOperations()) {
      names.insert(StreamOperationName(*class_row, operation));
    }
  }
  std::set<std::string> rows;
  for (const LockRow& row : LockRows()) EXPECT_TRUE(rows.insert(row.name).second) << row.name;
  EXPECT_EQ(rows, names);
}

// In both states, early and late bound, with good arguments and with bad ones: whatever the call
// returns.
TEST_F(LockRuleTest, EveryMemberTakesTheLockOnceOrNeverAsListed) {
  for (const Member& member : AllMembers()) {
    for (const State state : kStates) {
      for (const bool late : {false, true}) {
        for (const bool bad : {false, true}) {
          const Subject subject(*member.class_row, state);
          // A second object of the class in the same memory would hide a lock that is not its own.
          const Subject other(*member.class_row, state);
          Arguments arguments(ArgumentsFor(member, false));
          for (unsigned i = 0; bad && i < arguments.Count(); ++i) {
            const VARTYPE type = member.row->parameters.rows[i].type.type;
            if (type != VT_VARIANT && type != VT_BSTR) continue;
            VariantClear(&arguments.Get()[i]);
            V_VT(&arguments.Get()[i]) = type == VT_BSTR ? VT_BSTR : VT_NULL;
            arguments.Get()[i].bstrVal = nullptr;
          }
          VARIANT result;
          for (const Subject* one : {&subject, &other}) {
            Check(*member.class_row, *one, member.Name(), [&] {
              if (late) {
                one->Invoke(*member.row, arguments.Get(), arguments.Count(), &result);
              } else {
                one->Call(*member.row, arguments.Get(), &result);
              }
            });
            VariantClear(&result);
          }
        }
      }
    }
  }
  EXPECT_EQ(calls_, static_cast<long>(AllMembers().size()) * 16);
}

TEST_F(LockRuleTest, EveryStreamOperationTakesTheLockAsListed) {
  for (const ClassTableRow* class_row : StreamClasses()) {
    for (const State state : kStates) {
      for (const StreamOperation& operation : StreamOperations()) {
        const Subject subject(*class_row, state);
        OwnedReference<IStream> stream;
        ASSERT_EQ(stream.Query(subject.Unknown(), IID_IStream), S_OK);
        const OwnedReference<IStream> sink = MemoryStream();
        Bytes buffer = StreamBuffer();
        Check(*class_row, subject, StreamOperationName(*class_row, operation),
              [&] { operation.call(stream.Get(), sink.Get(), buffer); });
      }
    }
  }
  EXPECT_EQ(calls_, 2 * 2 * static_cast<long>(StreamOperations().size()));
}

// Two objects of a class have a lock each, and so do objects of its ".free" kin.
TEST_F(LockRuleTest, TheLockTakenIsTheObjectsOwn) {
  for (const Member& member : AllMembers()) {
    if (LockRowOf(member.Name())->locking != Locking::kObject) continue;
    const Subject one(*member.class_row, State::kReady);
    const Subject two(*member.class_row, State::kReady);
    std::set<CRITICAL_SECTION*> sections;
    for (const Subject* subject : {&one, &two, &one}) {
      Arguments arguments(ArgumentsFor(member, false));
      VARIANT result;
      seen = {};
      watched = subject;
      subject->Call(*member.row, arguments.Get(), &result);
      watched = nullptr;
      VariantClear(&result);
      sections.insert(seen.section);
    }
    EXPECT_EQ(sections.size(), 2u) << member.Name();
  }
}

// Null pointers in the place of buffers and objects are seen before the lock; so are those for
// results (see the hostile inputs).
TEST_F(LockRuleTest, MissingPlacesAreSeenBeforeTheLock) {
  int looked_at = 0;
  const auto locks_of = [](const Subject& subject, const std::function<void()>& call) {
    seen = {};
    watched = &subject;
    call();
    watched = nullptr;
    return seen.entered;
  };
  for (const ClassTableRow* class_row : StreamClasses()) {
    for (const State state : kStates) {
      const Subject subject(*class_row, state);
      OwnedReference<IStream> stream;
      ASSERT_EQ(stream.Query(subject.Unknown(), IID_IStream), S_OK);
      EXPECT_EQ(locks_of(subject,
                         [&] {
                           EXPECT_EQ(stream->Read(nullptr, 16, nullptr), E_POINTER);
                           EXPECT_EQ(stream->Write(nullptr, 16, nullptr), E_POINTER);
                         }),
                0);
      VARIANT nothing;
      VariantInit(&nothing);
      V_VT(&nothing) = VT_UNKNOWN;
      nothing.punkVal = nullptr;
      for (const Member& member : AllMembers()) {
        if (member.class_row != class_row || member.row->kind != kPutRef) continue;
        VARIANT result;
        EXPECT_EQ(
            locks_of(subject,
                     [&] { EXPECT_EQ(subject.Call(*member.row, &nothing, &result), E_POINTER); }),
            0)
            << member.Name();
        ++looked_at;
      }
    }
  }
  EXPECT_EQ(looked_at, 4);
}

TEST_F(LockRuleTest, CountingQueryingAndLookingUpTakeNoLock) {
  for (const ClassTableRow* class_row : AllClasses()) {
    const Subject subject(*class_row, State::kReady);
    IDispatch* const object = subject.Dispatch();
    seen = {};
    watched = &subject;
    OwnedReference<ISupportErrorInfo> errors;
    EXPECT_EQ(errors.Query(object, IID_ISupportErrorInfo), S_OK);
    EXPECT_EQ(errors->InterfaceSupportsErrorInfo(*class_row->default_interface->iid), S_OK);
    object->AddRef();
    object->Release();
    UINT count = 0;
    EXPECT_EQ(object->GetTypeInfoCount(&count), S_OK);
    OwnedReference<ITypeInfo> info;
    EXPECT_EQ(object->GetTypeInfo(0, 0, info.Put()), S_OK);
    LPOLESTR name = const_cast<LPOLESTR>(class_row->default_interface->members[0].name);
    DISPID id = -1;
    EXPECT_EQ(object->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK);
    watched = nullptr;
    EXPECT_EQ(seen.entered, 0) << Plain(class_row->name);
  }
}

}  // namespace
}  // namespace mirolta::test
