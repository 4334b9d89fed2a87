// Memory that runs out in the module's entry points, class factories and type information, and
// during registration.
#include <functional>

#include "allocation_fixture.h"

namespace mirolta::test {
namespace {

class EntryPointTest : public AllocationTest {
 protected:
  // Fails each allocation of a call on a module just loaded; the same call then succeeds.
  void FailEach(const std::string& name, const std::function<HRESULT()>& call,
                const std::function<void()>& prepare = nullptr, long all_up_to = kAllUpTo) {
    // What the runtime makes once and keeps.
    if (prepare) prepare();
    EXPECT_EQ(call(), S_OK);
    int failures = 0;
    const auto attempt = [&](Failing failing, long n) {
      ReloadModule();
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
        ++failures;
        // A type library that could not be loaded says only so.
        EXPECT_TRUE(status == E_OUTOFMEMORY || status == S_OK || status == TYPE_E_CANTLOADLIBRARY)
            << std::hex << status;
        EXPECT_EQ(call(), S_OK);
      } else {
        EXPECT_EQ(status, S_OK) << std::hex << status;
      }
      ReloadModule();
      if (prepare) prepare();
      EXPECT_EQ(BlocksInUse(), blocks);
      EXPECT_EQ(CurrentModule()->lock_count, 0);
      return failed;
    };
    FailEachAllocation(name, attempt, all_up_to);
    EXPECT_GE(failures, 1) << name;
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
  // Every call of the system's registry is one to another process.
  constexpr long kAll = kPortableRuntime ? kAllUpTo : kFirst;
  FailEach("DllRegisterServer", DllRegisterServer, forget, kAll);
  const auto registered = [&] {
    forget();
    ASSERT_EQ(DllRegisterServer(), S_OK);
  };
  FailEach("DllUnregisterServer", DllUnregisterServer, registered, kAll);
}

}  // namespace
}  // namespace mirolta::test
