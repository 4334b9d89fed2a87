// Eight threads at once on what is shared by objects and by the whole module: first calls, numbers
// from one number, a caller's array, last references, factories, type information. The thread
// sanitizer finds races. What threads do to one object is in shared_object_threads_test.cpp.
#include <algorithm>
#include <map>
#include <random>
#include <vector>

#include "class_table.h"
#include "memory_watch.h"
#include "threads_fixture.h"

namespace mirolta::test {
namespace {

// The first test: first calls choose kernels, fill tables and so on.
TEST_F(ThreadsTest, FirstCallsMayComeFromAllThreadsAtOnce) {
  constexpr struct {
    const char* member;
    const char* words;
  } kSteps[] = {
      {"HashObject.HashData", "d10000 i0"},
      {"HashObject.Value get", ""},
      {"HashObject.InitHash", "t:SHA256"},
      {"HashObject.HashData", "b10000 i0"},
      {"HashObject.BinaryValue get", ""},
      {"SymmetricCryptObject.Encrypt", "b10000 B-1"},
      {"SymmetricCryptObject.Init", "t:DES"},
      {"SymmetricCryptObject.Key put", "b24"},
      {"SymmetricCryptObject.Decrypt", "b10000 B-1"},
      {"PexBigNumber.Value put", "d3000"},
      {"PexBigNumber.Hex get", ""},
      {"PexBigNumber.Inc", "b2000"},
      {"PexBigNumber.Value get", ""},
      {"RSACrypt.CreateKeys", "h40 h41"},
      {"RSACrypt.Encrypt", "h40"},
      {"RSACrypt.DecryptPQ", "h40"},
      {"ToviStreamDigest.ReadValue get", ""},
      {"ToviStreamCrypt.ReadFinalize", ""},
  };
  const auto all = [&] {
    std::string text;
    for (const ClassTableRow* class_row : AllClasses()) {
      const Subject subject(*class_row, State::kReady);
      for (const auto& step : kSteps) {
        if (MemberNamed(step.member).class_row != class_row) continue;
        text += Call(step.member, step.words).On(subject);
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
      std::vector<Thread> threads;
      for (unsigned i = 0; i < kThreads; ++i) {
        threads.emplace_back([&] {
          ++waiting;
          while (!go) LetOthersRun();
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
      while (waiting != kThreads) LetOthersRun();
      const FailOneAllocation fail(0);
      go = true;
      for (Thread& thread : threads) thread.join();
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
