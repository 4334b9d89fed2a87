// Eight threads at once on everything that is shared: objects of every class that locks, factories,
// type information. The statuses and results that are possible are in member_locks.cpp; the thread
// sanitizer finds races.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string_view>

#include "all_at_once.h"
#include "class_table.h"
#include "member_locks.h"
#include "memory_streams.h"
#include "memory_watch.h"
#include "module_state.h"
#include "portable/registry_mode.h"

MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllGetClassObject(REFCLSID clsid, REFIID iid, LPVOID* out);
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllCanUnloadNow();
MIROLTA_ENTRY HRESULT STDAPICALLTYPE DllRegisterServer();

namespace mirolta::test {
namespace {

constexpr unsigned kThreads = 8;
#ifdef MIROLTA_SLOW_BUILD
constexpr int kCalls = 250;
#else
constexpr int kCalls = 2000;
#endif

// The result as one line, freed.
std::string Taken(VARIANT* result) {
  std::string shown = Shown(*result);
  VariantClear(result);
  return shown;
}

std::string ResultOf(const Subject& subject, const char* member, const char* words,
                     HRESULT* status = nullptr) {
  Arguments arguments(words);
  VARIANT result;
  const HRESULT done = subject.Call(*MemberNamed(member).row, arguments.Get(), &result);
  if (status != nullptr) *status = done;
  return Taken(&result);
}

class ThreadsTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(setenv("MIROLTA_REGISTRY", "/nonexistent/registry", 1), 0);
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    ASSERT_EQ(DllRegisterServer(), S_OK);
    locks_at_start_ = CurrentModule()->lock_count;
  }
  void TearDown() override {
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(CurrentModule()->lock_count, locks_at_start_);
    MiroltaRegistryInMemory(FALSE);
  }

 private:
  LONG locks_at_start_ = 0;
};

// The first test: first calls choose kernels, fill tables and so on.
TEST_F(ThreadsTest, FirstCallsMayComeFromAllThreadsAtOnce) {
  struct Step {
    const char* class_name;
    const char* member;
    const char* words;
  };
  constexpr Step kSteps[] = {
      {"HashObject", "HashObject.HashData", "d10000 i0"},
      {"HashObject", "HashObject.Value get", ""},
      {"HashObject", "HashObject.InitHash", "t:SHA256"},
      {"HashObject", "HashObject.HashData", "b10000 i0"},
      {"HashObject", "HashObject.BinaryValue get", ""},
      {"SymmetricCryptObject", "SymmetricCryptObject.Encrypt", "b10000 B-1"},
      {"SymmetricCryptObject", "SymmetricCryptObject.Init", "t:DES"},
      {"SymmetricCryptObject", "SymmetricCryptObject.Key put", "b24"},
      {"SymmetricCryptObject", "SymmetricCryptObject.Decrypt", "b10000 B-1"},
      {"PexBigNumber", "PexBigNumber.Value put", "d3000"},
      {"PexBigNumber", "PexBigNumber.Hex get", ""},
      {"PexBigNumber", "PexBigNumber.Inc", "b2000"},
      {"PexBigNumber", "PexBigNumber.Value get", ""},
      {"RSACrypt", "RSACrypt.CreateKeys", "h40 h41"},
      {"RSACrypt", "RSACrypt.Encrypt", "h40"},
      {"RSACrypt", "RSACrypt.DecryptPQ", "h40"},
      {"ToviStreamDigest", "ToviStreamDigest.ReadValue get", ""},
      {"ToviStreamCrypt", "ToviStreamCrypt.ReadFinalize", ""},
  };
  const auto all = [&] {
    std::string text;
    for (const ClassTableRow* class_row : AllClasses()) {
      const Subject subject(*class_row, State::kReady);
      for (const Step& step : kSteps) {
        if (Plain(class_row->name) == step.class_name) {
          text += ResultOf(subject, step.member, step.words) + "\n";
        }
      }
    }
    return text;
  };
  std::string found[kThreads];
  AllAtOnce(kThreads, [&](unsigned i) { found[i] = all(); });
  const std::string expected = all();
  EXPECT_GT(expected.size(), 1000u);
  for (const std::string& one : found) EXPECT_EQ(one, expected);
}

// Any member, any stream operation, in any order, early and late bound, all on one object.

// A row of the lock table, read before the threads start: reading it makes and shares texts.
struct Expected {
  std::vector<HRESULT> statuses;
  std::vector<LONG> results;
};

Expected ExpectedOf(const std::string& name) {
  Expected expected;
  const LockRow* const row = LockRowOf(name);
  EXPECT_NE(row, nullptr) << name;
  if (row == nullptr) return expected;
  for (const std::string& word : Words(row->statuses)) expected.statuses.push_back(StatusOf(word));
  for (const std::string& word : Words(row->results)) expected.results.push_back(std::stoi(word));
  return expected;
}

// The number, or how long the text or array is.
LONG MeasureOf(const VARIANT& value) {
  switch (V_VT(&value)) {
    case VT_I4:
      return value.lVal;
    case VT_BOOL:
      return value.boolVal;
    case VT_BSTR:
      return static_cast<LONG>(SysStringLen(value.bstrVal));
    case VT_ARRAY | VT_UI1:
      return static_cast<LONG>(value.parray->rgsabound[0].cElements);
    default:
      return 0;
  }
}

template <typename Value>
bool Has(const std::vector<Value>& values, Value value) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

// One thing a thread can do. Arguments are shared: callers may give the same array to many calls.
struct Deed {
  std::string name;
  const MemberRow* row;
  const StreamOperation* operation;
  std::unique_ptr<Arguments> arguments;
  Expected expected;
};

class SharedObjectTest : public ThreadsTest, public testing::WithParamInterface<const char*> {
 protected:
  void Do(const Subject& subject, const Deed& deed, bool late, IStream* stream, IStream* sink,
          Bytes& buffer) {
    VARIANT result;
    VariantInit(&result);
    HRESULT status = S_OK;
    if (deed.operation != nullptr) {
      status = deed.operation->call(stream, sink, buffer);
    } else if (late) {
      status = subject.Invoke(*deed.row, deed.arguments->Get(), deed.arguments->Count(), &result);
    } else {
      status = subject.Call(*deed.row, deed.arguments->Get(), &result);
    }
    if (!Has(deed.expected.statuses, status)) {
      ADD_FAILURE() << deed.name << (late ? " late " : " ") << std::hex << status;
    } else if (status == S_OK && !deed.expected.results.empty() &&
               !Has(deed.expected.results, MeasureOf(result))) {
      ADD_FAILURE() << deed.name << ": " << Shown(result);
    }
    VariantClear(&result);
  }

  // What is left of the object when all have gone does what a new one does.
  static std::string Used(const Subject& subject) {
    struct Step {
      const char* member;
      const char* words;
    };
    constexpr Step kSteps[] = {
        {"HashObject.InitHash", "t:SHA1"},
        {"HashObject.codePage put", "i0"},
        {"HashObject.Key put", "b40"},
        {"HashObject.HashUpdate", "b70 i-1"},
        {"SymmetricCryptObject.Init", "t:AES"},
        {"SymmetricCryptObject.codePage put", "i0"},
        {"SymmetricCryptObject.Key put", "b32"},
        {"SymmetricCryptObject.Encrypt", "d99 B-1"},
        {"SymmetricCryptObject.Decrypt", "b33 B0"},
        {"RSACrypt.CreateKeys", "h30 h31"},
        {"RSACrypt.Encrypt", "h50"},
        {"RSACrypt.Decrypt", "h50"},
        {"RSACrypt.DecryptPQ", "h50"},
        {"ToviStreamDigest.Stream putref", "S3000"},
        {"ToviStreamDigest.codePage put", "i0"},
        {"ToviStreamDigest.SeekingForbidden put", "B-1"},
        {"ToviStreamDigest.ReadAlgorithm put", "t:MD5"},
        {"ToviStreamDigest.WriteAlgorithm put", "t:SHA256"},
        {"ToviStreamCrypt.Stream putref", "S3000"},
        {"ToviStreamCrypt.codePage put", "i0"},
        {"ToviStreamCrypt.SeekingForbidden put", "B-1"},
        {"ToviStreamCrypt.ReadAlgorithm put", "t:DES"},
        {"ToviStreamCrypt.WriteAlgorithm put", "t:AES"},
        {"ToviStreamCrypt.ReadKey put", "b24"},
        {"ToviStreamCrypt.WriteKey put", "b16"},
        {"ToviStreamCrypt.ReadDecrypt put", "B-1"},
        {"ToviStreamCrypt.WriteDecrypt put", "B0"},
    };
    std::string text;
    for (const Step& step : kSteps) {
      const Member& member = MemberNamed(step.member);
      if (member.ClassName() != GetParam()) continue;
      HRESULT status = E_FAIL;
      text += step.member + (" " + ResultOf(subject, step.member, step.words, &status)) + "\n";
      EXPECT_EQ(status, S_OK) << step.member;
    }
    OwnedReference<IStream> stream;
    if (stream.Query(subject.Unknown(), IID_IStream) == S_OK) {
      uint8_t bytes[96] = {};
      ULONG count = 0;
      EXPECT_EQ(stream->Read(bytes, sizeof bytes, &count), S_OK);
      EXPECT_EQ(count, sizeof bytes);
      for (const uint8_t byte : bytes) text += std::to_string(byte) + " ";
      EXPECT_EQ(stream->Write(bytes, sizeof bytes, &count), S_OK);
    }
    return text + subject.Snapshot();
  }
};

TEST_P(SharedObjectTest, MembersOfOneObjectMayBeCalledInAnyOrder) {
  const ClassTableRow& class_row = ClassNamed(GetParam());
  const Subject subject(class_row, State::kReady);
  OwnedReference<IStream> stream;
  stream.Query(subject.Unknown(), IID_IStream);
  // Large keys take seconds, and each random one waits for the clock.
  const bool small_only = std::string(GetParam()) == "RSACrypt";
  const int calls = small_only ? kCalls / 4 : kCalls;
  std::vector<Deed> deeds;
  for (const Member& member : AllMembers()) {
    if (member.class_row != &class_row) continue;
    for (const bool large : {false, true}) {
      if (large && (small_only || member.ParameterCount() == 0)) continue;
      // Ordinary calls three times as often.
      for (int i = 0; i < (large ? 1 : 3); ++i) {
        deeds.push_back({member.Name(), member.row, nullptr,
                         std::make_unique<Arguments>(ArgumentsFor(member, large)),
                         ExpectedOf(member.Name())});
      }
    }
  }
  for (const StreamOperation& operation : StreamOperations()) {
    if (!stream) break;
    const std::string name = StreamOperationName(class_row, operation);
    for (int i = 0; i < 3; ++i) {
      deeds.push_back({name, nullptr, &operation, nullptr, ExpectedOf(name)});
    }
  }
  ASSERT_FALSE(HasFailure());
  const LockBalance locks;
  AllAtOnce(kThreads, [&](unsigned thread) {
    std::mt19937 chance(thread);
    const OwnedReference<IStream> sink = MemoryStream();
    Bytes buffer = StreamBuffer();
    for (int i = 0; i < calls; ++i) {
      const Deed& deed = deeds[chance() % deeds.size()];
      Do(subject, deed, chance() % 2 != 0, stream.Get(), sink.Get(), buffer);
    }
    SetErrorInfo(0, nullptr);
  });
  EXPECT_GT(locks.Entered(), calls);
  EXPECT_EQ(locks.Held(), 0);
  const Subject fresh(class_row, State::kFresh);
  EXPECT_EQ(Used(subject), Used(fresh));
}

INSTANTIATE_TEST_SUITE_P(Classes, SharedObjectTest,
                         testing::Values("HashObject", "SymmetricCryptObject", "RSACrypt",
                                         "ToviStreamDigest", "ToviStreamCrypt"),
                         [](const testing::TestParamInfo<const char*>& row) {
                           return std::string(row.param);
                         });

TEST_F(ThreadsTest, EveryClassThatLocksIsAmongThem) {
  std::set<std::string> locking;
  for (const LockRow& row : LockRows()) {
    if (row.locking != Locking::kObject) continue;
    const std::string name = row.name;
    locking.insert(name.substr(0, name.find_first_of(".:")));
  }
  EXPECT_EQ(locking, (std::set<std::string>{"HashObject", "SymmetricCryptObject", "RSACrypt",
                                            "ToviStreamDigest", "ToviStreamCrypt"}));
}

// Calls whose results are few: whatever the order, one of them is found and nothing else.

// One call with its arguments, which all threads share.
struct Call {
  const MemberRow* row;
  std::string name;
  std::unique_ptr<Arguments> arguments;

  Call(const char* member, const char* words)
      : row(MemberNamed(member).row),
        name(std::string(member) + "(" + words + ") "),
        arguments(std::make_unique<Arguments>(words)) {}

  // Status and result of the call.
  std::string On(const Subject& subject) const {
    VARIANT result;
    const HRESULT status = subject.Call(*row, arguments->Get(), &result);
    char code[16];
    std::snprintf(code, sizeof code, "%08X ", static_cast<unsigned>(status));
    return name + code + Taken(&result);
  }
};

struct CallRow {
  const char* member;
  const char* words;
  bool changes;  // if not, its result is compared
};
constexpr CallRow kHashCalls[] = {
    {"HashObject.InitHash", "t:MD5", true},
    {"HashObject.InitHash", "t:SHA1", true},
    {"HashObject.InitHash", "t:SHA256", true},
    {"HashObject.Key put", "b30", true},
    {"HashObject.Key put", "b100", true},
    {"HashObject.ResetKey", "", true},
    {"HashObject.Reset", "", true},
    {"HashObject.HashData", "b40 i0", true},
    {"HashObject.HashData", "b3000 i0", true},
    {"HashObject.Value get", "", false},
    {"HashObject.BinaryValue get", "", false},
    {"HashObject.HashSize get", "", false},
    {"HashObject.Key get", "", false},
};
constexpr CallRow kCipherCalls[] = {
    {"SymmetricCryptObject.Init", "t:AES", true},
    {"SymmetricCryptObject.Init", "t:DES", true},
    {"SymmetricCryptObject.Key put", "b16", true},
    {"SymmetricCryptObject.Key put", "b24", true},
    {"SymmetricCryptObject.ResetKey", "", true},
    {"SymmetricCryptObject.Reset", "i0", true},
    {"SymmetricCryptObject.PadType put", "i0", true},
    {"SymmetricCryptObject.PadType put", "i77", true},
    {"SymmetricCryptObject.Encrypt", "b48 B-1", false},
    {"SymmetricCryptObject.Encrypt", "b45 B-1", false},
    {"SymmetricCryptObject.Decrypt", "b48 B-1", false},
    {"SymmetricCryptObject.Key get", "", false},
    {"SymmetricCryptObject.BlockSize get", "", false},
};
constexpr CallRow kRsaCalls[] = {
    {"RSACrypt.CreateKeys", "d3 d4", true}, {"RSACrypt.CreateKeys", "d6 d5", true},
    {"RSACrypt.Reset", "", true},           {"RSACrypt.Modulus get", "", false},
    {"RSACrypt.SecretExp get", "", false},  {"RSACrypt.Encrypt", "h3", false},
    {"RSACrypt.Decrypt", "h3", false},      {"RSACrypt.DecryptPQ", "h3", false},
    {"RSACrypt.BlockSize get", "", false},
};

class WholeCallsTest : public ThreadsTest {
 protected:
  template <size_t kCount>
  void Run(const CallRow (&rows)[kCount]) {
    std::vector<Call> changes, reads;
    for (const CallRow& row : rows) {
      (row.changes ? changes : reads).emplace_back(row.member, row.words);
    }
    const std::string_view member = rows[0].member;
    const ClassTableRow& class_row = ClassNamed(member.substr(0, member.find('.')));
    // What any order of changes leads to.
    std::set<std::string> possible;
    {
      std::mt19937 chance(1);
      const Subject subject(class_row, State::kReady);
      changes[0].On(subject);
      for (int i = 0; i < 1000; ++i) {
        changes[chance() % changes.size()].On(subject);
        for (const Call& read : reads) possible.insert(read.On(subject));
      }
      SetErrorInfo(0, nullptr);
    }
    EXPECT_GT(possible.size(), 10u);
    const Subject shared(class_row, State::kReady);
    changes[0].On(shared);
    std::vector<std::string> found[kThreads];
    AllAtOnce(kThreads, [&](unsigned thread) {
      std::mt19937 chance(thread + 10);
      for (int i = 0; i < kCalls; ++i) {
        const bool change = chance() % 3 == 0;
        const std::vector<Call>& calls = change ? changes : reads;
        std::string one = calls[chance() % calls.size()].On(shared);
        if (!change) found[thread].push_back(std::move(one));
      }
      SetErrorInfo(0, nullptr);
    });
    for (const std::vector<std::string>& all : found) {
      for (const std::string& one : all) EXPECT_EQ(possible.count(one), 1u) << one;
    }
  }
};

TEST_F(WholeCallsTest, DigestsAreThoseOfWholeData) {
  Run(kHashCalls);
}
TEST_F(WholeCallsTest, CiphertextsAreThoseOfWholeData) {
  Run(kCipherCalls);
}
TEST_F(WholeCallsTest, NumbersAreThoseOfOneKey) {
  Run(kRsaCalls);
}

// Numbers made from one number are their owners' alone: nothing between them needs a lock.
TEST_F(ThreadsTest, NumbersThatComeFromOneNumberShareNothing) {
  const ClassTableRow& number = ClassNamed("PexBigNumber");
  const auto all_members = [&](IDispatch* object) {
    std::string text;
    for (const Member& member : AllMembers()) {
      // A random number is another one each time.
      if (member.class_row != &number || member.Name() == "PexBigNumber.Random") continue;
      Arguments arguments(ArgumentsFor(member, false));
      VARIANT result;
      VariantInit(&result);
      const HRESULT status = member.row->call(object, arguments.Get(), &result);
      if (member.row->result.type != VT_EMPTY && member.row->result.type != VT_VARIANT) {
        V_VT(&result) = member.row->result.type;
      }
      text += member.Name() + std::to_string(status);
      if (V_VT(&result) == VT_DISPATCH && result.pdispVal != nullptr) {
        TestValue bytes;
        static_cast<IPexBigNumber*>(result.pdispVal)->get_Binary(&bytes);
        text += Shown(bytes);
      }
      text += Taken(&result) + "\n";
    }
    return text;
  };
  const Subject source(number, State::kReady);
  IPexBigNumber* const from = static_cast<IPexBigNumber*>(source.Dispatch());
  std::vector<OwnedReference<IPexBigNumber>> numbers(kThreads + 1);
  for (OwnedReference<IPexBigNumber>& one : numbers) {
    ASSERT_EQ(from->Add(NumberValue(0), one.Put()), S_OK);
  }
  std::vector<std::string> found(kThreads);
  AllAtOnce(kThreads, [&](unsigned i) {
    for (int round = 0; round < 3; ++round) found[i] = all_members(numbers[i].Get());
    Arguments size("i40 B-1 B-1");
    VARIANT nothing;
    EXPECT_EQ(MemberNamed("PexBigNumber.Random").row->call(numbers[i].Get(), size.Get(), &nothing),
              S_OK);
    numbers[i].Reset();
  });
  std::string expected;
  for (int round = 0; round < 3; ++round) expected = all_members(numbers[kThreads].Get());
  for (const std::string& one : found) EXPECT_EQ(one, expected);
}

// A caller's array is read without copying, by several objects at once.
TEST_F(ThreadsTest, OneArrayMayBeGivenToManyObjects) {
  const Arguments data("b3000 i0");
  for (const char* const name :
       {"HashObject.HashData", "SymmetricCryptObject.Encrypt", "PexBigNumber.Binary put"}) {
    const Member& member = MemberNamed(name);
    std::string found[kThreads];
    AllAtOnce(kThreads, [&](unsigned thread) {
      const Subject subject(*member.class_row, State::kReady);
      for (int i = 0; i < 20; ++i) {
        Arguments same("m i0");
        same.Get()[0] = data.Get()[0];
        VARIANT result;
        EXPECT_EQ(subject.Call(*member.row, same.Get(), &result), S_OK);
        VariantClear(&result);
        VariantInit(&same.Get()[0]);
      }
      found[thread] = subject.Snapshot();
    });
    for (const std::string& one : found) EXPECT_EQ(one, found[0]);
  }
}

// References taken and dropped anywhere: the last one ends the object, once.
TEST_F(ThreadsTest, TheLastReferenceMayGoInAnyThread) {
  for (const ClassTableRow* class_row : AllClasses()) {
    for (int round = 0; round < 20; ++round) {
      const LONG count = CurrentModule()->lock_count;
      IUnknown* object = nullptr;
      {
        const Subject subject(*class_row, State::kReady);
        object = subject.Unknown();
        for (unsigned i = 0; i < kThreads; ++i) object->AddRef();
      }
      EXPECT_EQ(CurrentModule()->lock_count, count + 1);
      AllAtOnce(kThreads, [&](unsigned) {
        for (int i = 0; i < 5; ++i) {
          OwnedReference<IDispatch> again;
          EXPECT_EQ(again.Query(object, IID_IDispatch), S_OK);
        }
        object->Release();
      });
      EXPECT_EQ(CurrentModule()->lock_count, count);
    }
  }
}

// The module's entry points, from the first call after loading on.
TEST_F(ThreadsTest, FactoriesOfAllClassesServeManyThreads) {
  for (int round = 0; round < 10; ++round) {
    ReloadModule();
    std::vector<IUnknown*> factories[kThreads];
    AllAtOnce(kThreads, [&](unsigned thread) {
      std::mt19937 chance(thread);
      for (ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
        OwnedReference<IClassFactory> factory;
        EXPECT_EQ(
            DllGetClassObject(*row->id, IID_IClassFactory, reinterpret_cast<void**>(factory.Put())),
            S_OK);
        factories[thread].push_back(factory.Get());
        EXPECT_EQ(factory->LockServer(TRUE), S_OK);
        OwnedReference<IUnknown> object;
        EXPECT_EQ(
            factory->CreateInstance(nullptr, IID_IUnknown, reinterpret_cast<void**>(object.Put())),
            S_OK);
        if (chance() % 2 == 0) object.Reset();
        void* none = nullptr;
        EXPECT_EQ(factory->CreateInstance(nullptr, IID_IClassFactory, &none), E_NOINTERFACE);
        EXPECT_EQ(factory->CreateInstance(factory.Get(), IID_IDispatch, &none),
                  CLASS_E_NOAGGREGATION);
        OwnedReference<IUnknown> inner;
        EXPECT_EQ(factory->CreateInstance(factory.Get(), IID_IUnknown,
                                          reinterpret_cast<void**>(inner.Put())),
                  S_OK);
        EXPECT_EQ(DllCanUnloadNow(), S_FALSE);
        EXPECT_EQ(factory->LockServer(FALSE), S_OK);
      }
      void* none = nullptr;
      EXPECT_EQ(DllGetClassObject(IID_IUnknown, IID_IClassFactory, &none),
                CLASS_E_CLASSNOTAVAILABLE);
    });
    for (const std::vector<IUnknown*>& one : factories) EXPECT_EQ(one, factories[0]);
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
    EXPECT_EQ(CurrentModule()->lock_count, 0);
  }
}

// One thread's call finds no memory for the factory; those of the others find or make it.
TEST_F(ThreadsTest, AFactoryThatOneThreadCouldNotMakeIsMadeByAnother) {
  const CLSID& id = *ClassTable()->id;
  int failures = 0;
  for (int round = 0; round < 50; ++round) {
    ReloadModule();
    std::atomic<int> missing{0};
    {
      // Threads allocate when they start: they run before allocations fail.
      std::atomic<unsigned> waiting{0};
      std::atomic<bool> go{false};
      std::vector<std::thread> threads;
      for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
          ++waiting;
          while (!go) std::this_thread::yield();
          IUnknown* factory = nullptr;
          const HRESULT status =
              DllGetClassObject(id, IID_IUnknown, reinterpret_cast<void**>(&factory));
          if (factory == nullptr) {
            if (status == E_OUTOFMEMORY) ++missing;
          } else {
            factory->Release();
          }
        });
      }
      while (waiting != kThreads) std::this_thread::yield();
      const FailOneAllocation fail(0);
      go = true;
      for (std::thread& thread : threads) thread.join();
      EXPECT_EQ(missing, AllocationHasFailed() ? 1 : 0);
      failures += missing;
    }
    EXPECT_EQ(DllCanUnloadNow(), S_OK);
  }
  EXPECT_EQ(failures, 50);
}

// The first late-bound calls of all classes load one type information each.
TEST_F(ThreadsTest, TypeInformationIsLoadedOnce) {
  for (int round = 0; round < 10; ++round) {
    ReloadModule();
    std::map<const ClassTableRow*, ITypeInfo*> found[kThreads];
    AllAtOnce(kThreads, [&](unsigned thread) {
      std::vector<const ClassTableRow*> order = AllClasses();
      std::shuffle(order.begin(), order.end(), std::mt19937(thread));
      for (const ClassTableRow* class_row : order) {
        const Subject subject(*class_row, State::kFresh);
        const InterfaceTable& table = *class_row->default_interface;
        const MemberRow& row = table.members[thread % table.member_count];
        switch (thread % 3) {
          case 0:
            break;
          case 1: {
            LPOLESTR name = const_cast<LPOLESTR>(row.name);
            DISPID id = -1;
            EXPECT_EQ(subject.Dispatch()->GetIDsOfNames(IID_NULL, &name, 1, 0, &id), S_OK);
            EXPECT_EQ(id, row.id);
            break;
          }
          default: {
            DISPPARAMS none = {};
            EXPECT_EQ(subject.Dispatch()->Invoke(12345, IID_NULL, 0, DISPATCH_METHOD, &none,
                                                 nullptr, nullptr, nullptr),
                      DISP_E_MEMBERNOTFOUND);
            break;
          }
        }
        EXPECT_EQ(subject.Dispatch()->GetTypeInfo(0, 0, &found[thread][class_row]), S_OK);
      }
    });
    for (auto& one : found) {
      EXPECT_EQ(one, found[0]);
      for (const auto& [class_row, info] : one) info->Release();
    }
  }
}

// The runtime's own type libraries: every load gives a whole one, and each may go at any time.
TEST_F(ThreadsTest, TypeLibrariesAreLoadedAndReadByMany) {
  OLECHAR file[MAX_PATH + 1];
  ASSERT_TRUE(ModuleFileName(file));
  OwnedReference<ITypeLib> shared;
  ASSERT_EQ(LoadTypeLib(file, shared.Put()), S_OK);
  AllAtOnce(kThreads, [&](unsigned thread) {
    for (int i = 0; i < 20; ++i) {
      OwnedReference<ITypeLib> own;
      const HRESULT status =
          thread % 2 == 0 ? LoadTypeLib(file, own.Put())
                          : LoadRegTypeLib(CurrentModule()->type_library, 1, 0, 0, own.Put());
      EXPECT_EQ(status, S_OK);
      for (ITypeLib* library : {shared.Get(), own.Get()}) {
        for (const ClassTableRow* class_row : AllClasses()) {
          const InterfaceTable& table = *class_row->default_interface;
          OwnedReference<ITypeInfo> info;
          EXPECT_EQ(library->GetTypeInfoOfGuid(*table.iid, info.Put()), S_OK);
          TYPEATTR* attributes = nullptr;
          EXPECT_EQ(info->GetTypeAttr(&attributes), S_OK);
          info->ReleaseTypeAttr(attributes);
          FUNCDESC* function = nullptr;
          EXPECT_EQ(info->GetFuncDesc(0, &function), S_OK);
          info->ReleaseFuncDesc(function);
          OwnedBstr name;
          EXPECT_EQ(
              info->GetDocumentation(table.members[0].id, name.Put(), nullptr, nullptr, nullptr),
              S_OK);
          EXPECT_EQ(Text(name.Get()), Text(table.members[0].name));
        }
      }
    }
  });
}

}  // namespace
}  // namespace mirolta::test
