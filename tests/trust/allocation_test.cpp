// Memory that runs out, at every allocation of every member of every class and of every entry
// point: the status reports it, nothing leaks, no lock is kept, and the same call succeeds
// afterwards.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <iostream>
#include <map>
#include <set>

#include "class_table.h"
#include "member_calls.h"
#include "memory_watch.h"
#include "module_state.h"
#include "portable/module_resources.h"
#include "portable/registry_mode.h"
#include "portable/test_hooks.h"
#include "trust_heap.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE instance, DWORD reason, LPVOID reserved);
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* out);
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllRegisterServer();
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllUnregisterServer();

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

// Members that may have consumed their data when they fail: the output is still queued.
const std::set<std::string> kMayHaveTaken = {"SymmetricCryptObject.Encrypt",
                                             "SymmetricCryptObject.Decrypt"};

// Who refuses: operator new from the n-th allocation on, operator new the n-th time only, or the
// runtime the n-th time only.
enum class Failing { kNewFromThere, kNewOnce, kRuntimeOnce };
constexpr Failing kFailings[] = {Failing::kNewFromThere, Failing::kNewOnce, Failing::kRuntimeOnce};

// Runs a call with its n-th allocation failing; true if there was such an allocation.
template <typename Work>
bool RunFailing(Failing failing, long n, Work call) {
  switch (failing) {
    case Failing::kNewFromThere: {
      const FailAllocationsAfter fail(n);
      call();
      return AllocationHasFailed();
    }
    case Failing::kNewOnce: {
      const FailOneAllocation fail(n);
      call();
      return AllocationHasFailed();
    }
    default:
      MiroltaFailAllocationAfter(static_cast<LONG>(n));
      call();
      const bool failed = MiroltaAllocationHasFailed();
      MiroltaFailAllocationAfter(-1);
      return failed;
  }
}

// Every allocation up to this one fails, then fewer and fewer: the generation of keys must end.
#ifdef MIROLTA_SLOW_BUILD
constexpr long kAllUpTo = 100;
#else
constexpr long kAllUpTo = 1000;
#endif
long After(long n) {
  return n < kAllUpTo ? n + 1 : n + n / 4;
}

class AllocationTest : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    // No registry file but one that is not there.
    ASSERT_EQ(setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1), 0);
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    ASSERT_EQ(DllRegisterServer(), S_OK);
  }
  static void TearDownTestSuite() {
    MiroltaRegistryInMemory(FALSE);
    std::cout << points << " allocations were made to fail\n";
  }
  void SetUp() override {
    // What is made once and kept: factories, type information, error slot.
    for (const ClassTableRow* class_row : AllClasses()) {
      const Subject subject(*class_row, State::kReady);
      OwnedReference<ITypeInfo> info;
      ASSERT_EQ(subject.Dispatch()->GetTypeInfo(0, 0, info.Put()), S_OK);
    }
    SetErrorInfo(0, nullptr);
    locks_at_start = CurrentModule()->lock_count;
  }
  void TearDown() override {
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(CurrentModule()->lock_count, locks_at_start);
  }

  // What the call does when memory is not short.
  struct Outcome {
    HRESULT status;
    std::string after;  // the result and what the object reads as then
    // What may be left of the object (see Looked) when memory is short.
    std::set<std::string> possible;
  };

  // One call of a member on a new object, with one allocation failing. `look`: what is left of the
  // object is looked at, which changes it; else the same call is made again.
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
        const LockBalance locks;
        const auto call = [&] {
          status = late ? InvokeReversed(subject, *member.row, reversed, &result)
                        : subject.Call(*member.row, arguments.Get(), &result);
        };
        failed = RunFailing(failing, n, call);
        EXPECT_EQ(locks.Held(), 0);
      }
      if (failed) {
        ++points;
        const bool silent = kSilent.count(member.Name()) != 0;
        EXPECT_TRUE(status == E_OUTOFMEMORY || status == usual.status) << std::hex << status;
        if (status == E_OUTOFMEMORY) {
          EXPECT_EQ(Published(), S_FALSE) << "an error report that is not of this call";
          const std::string shown = Shown(result);
          EXPECT_TRUE(shown == "(empty)" || shown == "(null text)" || shown == "(no object)" ||
                      shown == "i4 0")
              << shown;
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

  static ULONGLONG Position(IStream* stream) {
    LARGE_INTEGER none;
    none.QuadPart = 0;
    ULARGE_INTEGER position;
    position.QuadPart = 0;
    EXPECT_EQ(stream->Seek(none, STREAM_SEEK_CUR, &position), S_OK);
    return position.QuadPart;
  }

  static HRESULT Published() {
    OwnedReference<IErrorInfo> info;
    return GetErrorInfo(0, info.Put());
  }

  static HRESULT InvokeReversed(const Subject& subject, const MemberRow& row,
                                std::vector<VARIANT>& arguments, VARIANT* result) {
    for (size_t i = 0, j = arguments.size(); i + 1 < j; ++i)
      std::swap(arguments[i], arguments[--j]);
    DISPID put = DISPID_PROPERTYPUT;
    const bool puts = row.kind == kPut || row.kind == kPutRef;
    DISPPARAMS params = {arguments.data(), puts ? &put : nullptr,
                         static_cast<UINT>(arguments.size()), puts ? 1u : 0u};
    EXCEPINFO exception = {};
    VariantInit(result);
    const HRESULT status = subject.Dispatch()->Invoke(
        row.id, IID_NULL, LOCALE_USER_DEFAULT, static_cast<WORD>(row.kind), &params,
        row.result.type != VT_EMPTY ? result : nullptr, &exception, nullptr);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrHelpFile);
    return status == DISP_E_EXCEPTION ? exception.scode : status;
  }

  static std::string HexOf(const Bytes& bytes) {
    std::string text;
    char two[4];
    for (const uint8_t byte : bytes) {
      std::snprintf(two, sizeof two, "%02X", byte);
      text += two;
    }
    return text;
  }

  // The bytes that a cipher's member gives.
  static Bytes Transformed(const Member& member, const Subject& subject, const char* words) {
    Arguments arguments(words);
    VARIANT result;
    subject.Call(*member.row, arguments.Get(), &result);
    const bool given = V_VT(&result) == (VT_ARRAY | VT_UI1);
    Bytes bytes = given ? BytesOfArray(result) : Bytes();
    VariantClear(&result);
    return bytes;
  }

  // All of a filter's target.
  static std::string TargetOf(IStream* filter, const Subject& subject) {
    IUnknown* bound = nullptr;
    OwnedReference<IToviStreamDigest> digest;
    OwnedReference<IToviStreamCrypt> crypt;
    if (digest.Query(filter, IID_IToviStreamDigest) == S_OK) digest->get_Stream(&bound);
    if (crypt.Query(filter, IID_IToviStreamCrypt) == S_OK) crypt->get_Stream(&bound);
    if (bound == nullptr) return "none";
    OwnedReference<IStream> target;
    EXPECT_EQ(target.Query(bound, IID_IStream), S_OK);
    bound->Release();
    const std::string position = std::to_string(Position(target.Get()));
    LARGE_INTEGER start;
    start.QuadPart = 0;
    EXPECT_EQ(target->Seek(start, STREAM_SEEK_SET, nullptr), S_OK);
    Bytes content(4000);
    ULONG count = 0;
    target->Read(content.data(), static_cast<ULONG>(content.size()), &count);
    content.resize(count);
    subject.Call("Stream", kPutRef, "S0");
    return "at " + position + " " + HexOf(content);
  }

  // All that can be learnt of an object by using it, what is open or queued in it included. A
  // cipher's output that the member has given away already, `taken`, counts as if it were queued.
  static std::string Looked(const Member& member, const Subject& subject, const Bytes& taken = {}) {
    std::string text;
    if (member.ClassName() == "HashObject") {
      // More data go on with an open digest, and change nothing of one that is finished.
      subject.Call("HashUpdate", kMethod, "b5 i-1");
    } else if (member.ClassName() == "SymmetricCryptObject") {
      for (const Member& one : AllMembers()) {
        if (kMayHaveTaken.count(one.Name()) == 0) continue;
        Bytes bytes = one.Name() == member.Name() ? taken : Bytes();
        const Bytes queued = Transformed(one, subject, "b0 B-1");
        bytes.insert(bytes.end(), queued.begin(), queued.end());
        text += one.Name() + " " + HexOf(bytes) + "\n";
      }
    }
    OwnedReference<IStream> stream;
    if (stream.Query(subject.Unknown(), IID_IStream) != S_OK) return text + subject.Snapshot();
    // Before the snapshot, which finishes digests.
    uint8_t bytes[64] = {};
    ULONG count = 0;
    text += "read " + std::to_string(stream->Read(bytes, 21, &count));
    text += " " + HexOf(Bytes(bytes, bytes + count));
    count = 1;
    text += " write " + std::to_string(stream->Write(bytes, 21, &count)) + "\n";
    text += subject.Snapshot();
    text += "end " + std::to_string(subject.Call("WriteFinalize", kMethod, ""));
    return text + " target " + TargetOf(stream.Get(), subject) + "\n";
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
    const bool may_have_taken = kMayHaveTaken.count(member.Name()) != 0;
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

  static inline long points = 0;
  PlannedChance chance;
  LONG locks_at_start = 0;
};

TEST_F(AllocationTest, EveryMemberHasItsArguments) {
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
  for (const std::string& row : kMayHaveTaken) EXPECT_EQ(members.count(row), 1u) << row;
  for (const AsAfter& row : kAsAfter) EXPECT_EQ(members.count(row.member), 1u) << row.member;
  EXPECT_EQ(AllClasses().size(), 6u);
}

class AllocationOfClassTest : public AllocationTest, public testing::WithParamInterface<int> {};

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
          for (const Failing failing : kFailings) {
            for (const bool look : {false, true}) {
              for (long n = 0;; n = After(n)) {
                const bool failed = FailOnce(member, state, words, late, failing, n, look, usual);
                if (HasFailure()) {
                  FAIL() << member.Name() << " (" << words << ") state " << static_cast<int>(state)
                         << " late " << late << " failing " << static_cast<int>(failing)
                         << " allocation " << n;
                }
                if (!failed) break;
              }
            }
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
TEST_F(AllocationTest, EveryStreamOperationSurvivesEveryAllocationThatFails) {
  uint8_t bytes[4000] = {1, 2, 3};
  OwnedReference<IStream> destination;
  ASSERT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, destination.Put()), S_OK);
  using Operation = std::function<HRESULT(IStream*)>;
  const auto large = [](ULONGLONG value) {
    ULARGE_INTEGER number;
    number.QuadPart = value;
    return number;
  };
  const std::map<std::string, Operation> operations = {
      {"Read",
       [&](IStream* stream) {
         ULONG count = 0;
         return stream->Read(bytes, sizeof bytes, &count);
       }},
      {"Write",
       [&](IStream* stream) {
         ULONG count = 1;
         return stream->Write(bytes, sizeof bytes, &count);
       }},
      {"CopyTo",
       [&](IStream* stream) {
         // Room that the destination takes stays taken: it has had it before.
         LARGE_INTEGER start;
         start.QuadPart = 0;
         destination->Seek(start, STREAM_SEEK_SET, nullptr);
         return stream->CopyTo(destination.Get(), large(5000), nullptr, nullptr);
       }},
      {"Seek",
       [&](IStream* stream) {
         LARGE_INTEGER none;
         none.QuadPart = 0;
         ULARGE_INTEGER position;
         return stream->Seek(none, STREAM_SEEK_CUR, &position);
       }},
      {"SetSize", [&](IStream* stream) { return stream->SetSize(large(100000)); }},
      {"Commit", [&](IStream* stream) { return stream->Commit(0); }},
      {"Revert", [&](IStream* stream) { return stream->Revert(); }},
      {"LockRegion", [&](IStream* stream) { return stream->LockRegion(large(0), large(1), 0); }},
      {"UnlockRegion",
       [&](IStream* stream) { return stream->UnlockRegion(large(0), large(1), 0); }},
      {"Stat",
       [&](IStream* stream) {
         STATSTG statistics = {};
         const HRESULT status = stream->Stat(&statistics, STATFLAG_DEFAULT);
         CoTaskMemFree(statistics.pwcsName);
         return status;
       }},
      {"Clone",
       [&](IStream* stream) {
         IStream* clone = nullptr;
         return stream->Clone(&clone);
       }},
  };
  destination->SetSize(large(10000));
  for (const ClassTableRow* class_row : AllClasses()) {
    for (const State state : kStates) {
      for (const auto& row : operations) {
        const std::string& name = row.first;
        const Operation& operation = row.second;
        for (const Failing failing : kFailings) {
          HRESULT usual = E_FAIL;
          ULONGLONG usual_position = 0;
          for (long n = -1;; n = After(n)) {
            const long blocks = BlocksInUse();
            bool failed = n < 0;
            {
              const Subject subject(*class_row, state);
              OwnedReference<IStream> stream;
              if (stream.Query(subject.Unknown(), IID_IStream) != S_OK) break;
              HRESULT status = S_OK;
              const LockBalance locks;
              if (n < 0) {
                usual = operation(stream.Get());
                usual_position = Position(destination.Get());
              } else {
                failed = RunFailing(failing, n, [&] { status = operation(stream.Get()); });
                points += failed ? 1 : 0;
                // The runtime's own stream says STG_E_MEDIUMFULL where it cannot grow.
                EXPECT_TRUE(status == usual ||
                            (failed && (status == E_OUTOFMEMORY || status == STG_E_MEDIUMFULL)))
                    << std::hex << status;
                if (failed && status == S_OK) {
                  // By another way: the cipher's queues are made again when they are needed.
                  EXPECT_EQ(Position(destination.Get()), usual_position);
                }
                if (failed && name != "Read" && name != "CopyTo") {
                  EXPECT_EQ(operation(stream.Get()), usual);
                }
              }
              EXPECT_EQ(locks.Held(), 0);
            }
            EXPECT_EQ(BlocksInUse(), blocks);
            if (HasFailure()) {
              FAIL() << Plain(class_row->name) << " " << name << " allocation " << n << " failing "
                     << static_cast<int>(failing);
            }
            if (!failed) break;
          }
        }
      }
    }
  }
}

class EntryPointTest : public AllocationTest {
 protected:
  // Loads the module anew: without factories and type information.
  static void Reload() {
    SetErrorInfo(0, nullptr);
    const HINSTANCE instance = CurrentModule()->instance;
    DllMain(instance, DLL_PROCESS_DETACH, nullptr);
    DllMain(instance, DLL_PROCESS_ATTACH, nullptr);
  }

  // Fails each allocation of a call on a module just loaded; the same call then goes well.
  void FailEach(const std::string& name, const std::function<HRESULT()>& call,
                const std::function<void()>& prepare = nullptr) {
    int most_failures = 0;
    // What the runtime makes once and keeps.
    if (prepare) prepare();
    EXPECT_EQ(call(), S_OK);
    for (const Failing failing : kFailings) {
      int failures = 0;
      for (long n = 0;; n = After(n)) {
        Reload();
        if (prepare) prepare();
        const long blocks = BlocksInUse();
        HRESULT status = S_OK;
        bool failed = false;
        {
          const LockBalance locks;
          failed = RunFailing(failing, n, [&] { status = call(); });
          EXPECT_EQ(locks.Held(), 0);
        }
        if (failed) {
          ++points;
          ++failures;
          // A type library that could not be loaded says only so.
          EXPECT_TRUE(status == E_OUTOFMEMORY || status == S_OK || status == TYPE_E_CANTLOADLIBRARY)
              << std::hex << status;
          EXPECT_EQ(call(), S_OK);
        } else {
          EXPECT_EQ(status, S_OK) << std::hex << status;
        }
        Reload();
        if (prepare) prepare();
        EXPECT_EQ(BlocksInUse(), blocks);
        EXPECT_EQ(CurrentModule()->lock_count, 0);
        if (HasFailure()) FAIL() << name << " allocation " << n << " " << static_cast<int>(failing);
        if (!failed) break;
      }
      most_failures = std::max(most_failures, failures);
    }
    EXPECT_GE(most_failures, 1) << name;
  }
};

TEST_F(EntryPointTest, ClassObjectsSurviveEveryAllocationThatFails) {
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    FailEach("DllGetClassObject", [&] {
      IUnknown* factory = nullptr;
      const HRESULT status =
          DllGetClassObject(*row->id, IID_IClassFactory, reinterpret_cast<void**>(&factory));
      EXPECT_EQ(SUCCEEDED(status), factory != nullptr);
      if (factory != nullptr) factory->Release();
      return status;
    });
    FailEach("CreateInstance", [&] {
      OwnedReference<IClassFactory> factory;
      HRESULT status =
          DllGetClassObject(*row->id, IID_IClassFactory, reinterpret_cast<void**>(factory.Put()));
      if (FAILED(status)) return status;
      IUnknown* object = nullptr;
      status = factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(&object));
      EXPECT_EQ(SUCCEEDED(status), object != nullptr);
      if (object != nullptr) object->Release();
      return status;
    });
  }
}

TEST_F(EntryPointTest, TypeInformationIsLoadedByALaterCall) {
  for (const ClassTableRow* class_row : AllClasses()) {
    const auto with_object = [&](auto use) {
      return [class_row, use] {
        OwnedReference<IClassFactory> factory;
        OwnedReference<IDispatch> object;
        HRESULT status = DllGetClassObject(*class_row->id, IID_IClassFactory,
                                           reinterpret_cast<void**>(factory.Put()));
        if (SUCCEEDED(status)) {
          status = factory->CreateInstance(nullptr, IID_IDispatch,
                                           reinterpret_cast<void**>(object.Put()));
        }
        return FAILED(status) ? status : use(object.Get());
      };
    };
    FailEach("GetTypeInfo", with_object([](IDispatch* object) {
               ITypeInfo* info = nullptr;
               const HRESULT status = object->GetTypeInfo(0, 0, &info);
               EXPECT_EQ(SUCCEEDED(status), info != nullptr);
               if (info != nullptr) info->Release();
               return status;
             }));
    const OLECHAR* const name = class_row->default_interface->members[0].name;
    FailEach("GetIDsOfNames", with_object([name](IDispatch* object) {
               LPOLESTR asked = const_cast<LPOLESTR>(name);
               DISPID id = -1;
               return object->GetIDsOfNames(IID_NULL, &asked, 1, 0, &id);
             }));
  }
}

// What is registered is left of earlier failures or not there at all, and then it is all there.
TEST_F(EntryPointTest, RegistrationCanBeTriedAgain) {
  const auto forget = [] {
    MiroltaRegistryInMemory(FALSE);
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
  };
  FailEach("DllRegisterServer", DllRegisterServer, forget);
  const auto registered = [&] {
    forget();
    ASSERT_EQ(DllRegisterServer(), S_OK);
  };
  FailEach("DllUnregisterServer", DllUnregisterServer, registered);
}

}  // namespace
}  // namespace mirolta::test
