// Members that read a caller's object which calls back into the same object: the engine may be gone
// when the value arrives.
#include "bstr.h"
#include "calling_object.h"
#include "loaded_module.h"

namespace mirolta::test {
namespace {

using ReentrancyTest = ModuleTest;

TEST_F(ReentrancyTest, ACipherMayLoseItsEngineWhileItReadsItsInput) {
  OwnedReference<ISymmetricCryptObject> cipher =
      module.Create<ISymmetricCryptObject>(CLSID_SymmetricCryptObject, IID_ISymmetricCryptObject);
  ASSERT_TRUE(cipher);
  const TestValue key = BytesValue(Bytes(16, 1));
  CallingObject removes([&] { EXPECT_LT(cipher->Init(TextValue(OLESTR("none"))), 0); });
  CallingObject renews([&] { EXPECT_EQ(cipher->Init(TextValue(OLESTR("DES"))), S_OK); });
  TestValue result;

  ASSERT_EQ(cipher->Init(TextValue(OLESTR("AES"))), S_OK);
  EXPECT_EQ(cipher->put_Key(ObjectValue(&removes)), kNotInitialized);
  ASSERT_EQ(cipher->Init(TextValue(OLESTR("AES"))), S_OK);
  EXPECT_EQ(cipher->put_Key(ObjectValue(&renews)), E_INVALIDARG);  // three bytes for DES
  ASSERT_EQ(cipher->Init(TextValue(OLESTR("AES"))), S_OK);
  ASSERT_EQ(cipher->put_Key(key), S_OK);
  EXPECT_EQ(cipher->Encrypt(ObjectValue(&removes), VARIANT_TRUE, &result), kNotInitialized);
  ASSERT_EQ(cipher->Init(TextValue(OLESTR("AES"))), S_OK);
  ASSERT_EQ(cipher->put_Key(key), S_OK);
  EXPECT_EQ(cipher->Decrypt(ObjectValue(&renews), VARIANT_TRUE, &result), kNotInitialized);
}

// Both directions of a filter.
template <typename Dual>
void ExpectKeysRefused(const OwnedReference<Dual>& filter, const OLECHAR* algorithm) {
  ASSERT_TRUE(filter);
  CallingObject removes([&] {
    EXPECT_LT(filter->put_ReadAlgorithm(Bstr(OLESTR("none")).Get()), 0);
    EXPECT_LT(filter->put_WriteAlgorithm(Bstr(OLESTR("none")).Get()), 0);
  });
  ASSERT_EQ(filter->put_ReadAlgorithm(Bstr(algorithm).Get()), S_OK);
  EXPECT_EQ(filter->put_ReadKey(ObjectValue(&removes)), kNotInitialized);
  ASSERT_EQ(filter->put_WriteAlgorithm(Bstr(algorithm).Get()), S_OK);
  EXPECT_EQ(filter->put_WriteKey(ObjectValue(&removes)), kNotInitialized);
}

TEST_F(ReentrancyTest, ADigestFilterMayLoseItsEngineWhileItReadsAKey) {
  ExpectKeysRefused(module.Create<IToviStreamDigest>(CLSID_ToviStreamDigest, IID_IToviStreamDigest),
                    OLESTR("MD5"));
}

TEST_F(ReentrancyTest, ACipherFilterMayLoseItsEngineWhileItReadsAKey) {
  ExpectKeysRefused(module.Create<IToviStreamCrypt>(CLSID_ToviStreamCrypt, IID_IToviStreamCrypt),
                    OLESTR("AES"));
}

}  // namespace
}  // namespace mirolta::test
