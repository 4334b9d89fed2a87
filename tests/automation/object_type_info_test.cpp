// The type information of a class when the module's own file has none: the registered library is
// loaded, and a later call tries again.
#include <deque>

#include "portable/registry_mode.h"
#include "runtime_allocations.h"
#include "test_module.h"
#include "type_info_holder.h"

namespace mirolta::test {
namespace {

class ObjectTypeInfoTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS); }
  void TearDown() override { EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS); }

  // Registers the type library of the built module, whose interfaces are the same.
  static void RegisterLibrary() {
    OLECHAR file[1024] = {};
    MultiByteToWideChar(CP_UTF8, 0, MIROLTA_MODULE, -1, file, 1024);
    OwnedReference<ITypeLib> library;
    ASSERT_EQ(LoadTypeLib(file, library.Put()), S_OK);
    ASSERT_EQ(RegisterTypeLib(library.Get(), file, nullptr), S_OK);
  }
  DISPID IdOf(const OLECHAR* name) {
    LPOLESTR wanted = const_cast<LPOLESTR>(name);
    DISPID id = 4711;
    EXPECT_EQ(holder.GetIDsOfNames(&wanted, 1, 0, &id), S_OK);
    return id;
  }

  TypeInfoHolder holder{IID_IHashObject};
  std::deque<TypeInfoHolder> more_holders;
  TestModule module;  // ends first: it empties the holders
};

TEST_F(ObjectTypeInfoTest, WithoutALibraryTheFailureIsReturned) {
  OwnedReference<ITypeInfo> info;
  EXPECT_EQ(holder.Get(0, info.Put()), TYPE_E_LIBNOTREGISTERED);
  EXPECT_FALSE(info);
  LPOLESTR name = const_cast<LPOLESTR>(OLESTR("Value"));
  DISPID id = 4711;
  EXPECT_EQ(holder.GetIDsOfNames(&name, 1, 0, &id), TYPE_E_LIBNOTREGISTERED);
  EXPECT_EQ(id, 4711);
  DISPPARAMS none = {};
  EXPECT_EQ(holder.Invoke(this, 0, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            TYPE_E_LIBNOTREGISTERED);
}

TEST_F(ObjectTypeInfoTest, ALaterCallTriesAgain) {
  OwnedReference<ITypeInfo> info;
  ASSERT_EQ(holder.Get(0, info.Put()), TYPE_E_LIBNOTREGISTERED);
  RegisterLibrary();
  ASSERT_EQ(holder.Get(0, info.Put()), S_OK);
  OwnedReference<ITypeInfo> again;
  ASSERT_EQ(holder.Get(0, again.Put()), S_OK);
  EXPECT_EQ(again.Get(), info.Get());
  EXPECT_EQ(IdOf(OLESTR("HashData")), 4);
  EXPECT_EQ(IdOf(OLESTR("HASHDATA")), 4);
}

TEST_F(ObjectTypeInfoTest, AnInterfaceThatIsNotThereStaysEmpty) {
  RegisterLibrary();
  TypeInfoHolder other(IID_IStream);
  OwnedReference<ITypeInfo> info;
  EXPECT_EQ(other.Get(0, info.Put()), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_FALSE(info);
}

TEST_F(ObjectTypeInfoTest, EveryAllocationMayFailAndTheNextCallSucceeds) {
  RegisterLibrary();
  int failures = 0;
  OwnedReference<ITypeInfo> info;
  FailEachAllocation([&] { return more_holders.emplace_back(IID_IHashObject).Get(0, info.Put()); },
                     [&](HRESULT status, bool failed) {
                       EXPECT_EQ(static_cast<bool>(info), SUCCEEDED(status));
                       EXPECT_TRUE(failed || status == S_OK);
                       failures += FAILED(status) ? 1 : 0;
                       LPOLESTR name = const_cast<LPOLESTR>(OLESTR("ResetKey"));
                       DISPID id = 4711;
                       EXPECT_EQ(more_holders.back().GetIDsOfNames(&name, 1, 0, &id), S_OK);
                       EXPECT_EQ(id, 11);
                     });
  EXPECT_GT(failures, 5);
}

}  // namespace
}  // namespace mirolta::test
