// Registration of the module into a registry of the runtime, and its classes found through it.
#include "loaded_module.h"
#include "module/loaded_images.h"
#include "portable/registry_mode.h"

namespace mirolta::test {
namespace {

struct ProgramIdentifier {
  LPCWSTR name;
  const CLSID* id;
  const IID* iid;
};
constexpr ProgramIdentifier kIdentifiers[] = {
    {u"Vardeko.crypt.HashObject", &CLSID_HashObject, &IID_IHashObject},
    {u"Vardeko.crypt.HashObject.1", &CLSID_HashObject, &IID_IHashObject},
    {u"Vardeko.crypt.HashObject.free", &CLSID_HashObjectFree, &IID_IHashObject},
    {u"Vardeko.crypt.Symmetric", &CLSID_SymmetricCryptObject, &IID_ISymmetricCryptObject},
    {u"Vardeko.crypt.Symmetric.free", &CLSID_SymmetricCryptObjectFree, &IID_ISymmetricCryptObject},
    {u"Vardeko.crypt.Number", &CLSID_PexBigNumber, &IID_IPexBigNumber},
    {u"Vardeko.crypt.Number.free", &CLSID_PexBigNumberFree, &IID_IPexBigNumber},
    {u"Vardeko.crypt.RSA", &CLSID_RSACrypt, &IID_IRSACrypt},
    {u"Vardeko.crypt.RSA.free", &CLSID_RSACryptFree, &IID_IRSACrypt},
    {u"Vardeko.crypt.ToviStreamDigest", &CLSID_ToviStreamDigest, &IID_IToviStreamDigest},
    {u"Vardeko.crypt.ToviStreamDigest.free", &CLSID_ToviStreamDigestFree, &IID_IToviStreamDigest},
    {u"Vardeko.crypt.ToviStreamCrypt", &CLSID_ToviStreamCrypt, &IID_IToviStreamCrypt},
    {u"Vardeko.crypt.ToviStreamCrypt.free", &CLSID_ToviStreamCryptFree, &IID_IToviStreamCrypt},
};

// Whether an object's functions are code of the handheld's module.
bool IsOfTheImage(IUnknown* object) {
  const void* table = nullptr;
  std::memcpy(&table, static_cast<void*>(object), sizeof table);
  const loader::HandheldModule* const module = loader::FindHandheldModule(table);
  return module != nullptr && module->File() == MIROLTA_MODULE;
}

class HandheldRegistration : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    for (const ProgramIdentifier& row : kIdentifiers) ASSERT_FALSE(IsRegistered(row));
  }
  void TearDown() override {
    CoFreeUnusedLibrariesEx(0, 0);
    MiroltaRegistryInMemory(FALSE);
    ModuleTest::TearDown();
  }

  static bool IsRegistered(const ProgramIdentifier& row) {
    CLSID found;
    return SUCCEEDED(CLSIDFromProgID(row.name, &found)) && found == *row.id;
  }
};

TEST_F(HandheldRegistration, MakesEveryClassFound) {
  ASSERT_EQ(module.register_server(), S_OK);
  for (const ProgramIdentifier& row : kIdentifiers) {
    SCOPED_TRACE(testing::PrintToString(std::u16string(row.name)));
    EXPECT_TRUE(IsRegistered(row));
    OwnedReference<IDispatch> object;
    ASSERT_EQ(CoCreateInstance(*row.id, nullptr, CLSCTX_INPROC_SERVER, *row.iid,
                               reinterpret_cast<void**>(object.Put())),
              S_OK);
    EXPECT_TRUE(IsOfTheImage(object.Get()));
  }
  ITypeLib* library = nullptr;
  ASSERT_EQ(LoadRegTypeLib(LIBID_MIROLTALib, 1, 0, 0, &library), S_OK);
  EXPECT_EQ(library->GetTypeInfoCount(), 12u);
  library->Release();
}

TEST_F(HandheldRegistration, EndsWithEveryClassGone) {
  ASSERT_EQ(module.register_server(), S_OK);
  ASSERT_EQ(module.register_server(), S_OK);  // again changes nothing
  ASSERT_EQ(module.unregister_server(), S_OK);
  for (const ProgramIdentifier& row : kIdentifiers) {
    EXPECT_FALSE(IsRegistered(row)) << testing::PrintToString(std::u16string(row.name));
    void* object = nullptr;
    EXPECT_EQ(CoCreateInstance(*row.id, nullptr, CLSCTX_INPROC_SERVER, *row.iid, &object),
              REGDB_E_CLASSNOTREG);
  }
  EXPECT_EQ(module.unregister_server(), S_OK);
}

}  // namespace
}  // namespace mirolta::test
