// SymmetricCryptObject when the array for its result cannot be written. This program replaces the
// platform's operation: it calls the runtime's until a test makes it fail.
#include "platform_fault.h"
#include "symmetric_crypt_fixture.h"

namespace {
mirolta::test::PlatformFault data_access;
constexpr HRESULT kStruck = STG_E_ACCESSDENIED;
}  // namespace

extern "C" HRESULT SafeArrayAccessData(SAFEARRAY* array, void** data) {
  static auto* const runtime =
      mirolta::test::RuntimeOperation(&SafeArrayAccessData, "SafeArrayAccessData");
  return data_access.Strikes() ? kStruck : runtime(array, data);
}

namespace mirolta::test {
namespace {

using SymmetricCryptFailuresTest = SymmetricCryptTest;

// The input's array is read first, the result's written afterwards: once directly, or once more
// from the queue.
TEST_F(SymmetricCryptFailuresTest, OutputStaysQueuedUntilAnArrayCanBeWritten) {
  StartAes();
  const TestValue plain = BytesValue(BytesOfHex(kAesPlain));
  const TestValue cipher = BytesValue(BytesOfHex(kAesCipher));
  for (const bool encrypts : {true, false}) {
    TestValue result = NumberValue(77);
    data_access.Arm(1);
    EXPECT_EQ(encrypts ? crypt->Encrypt(plain, VARIANT_FALSE, &result)
                       : crypt->Decrypt(cipher, VARIANT_FALSE, &result),
              kStruck);
    EXPECT_TRUE(data_access.HasStruck());
    EXPECT_EQ(V_VT(&result), VT_EMPTY);
    const Bytes waiting = encrypts ? Encrypted({}, VARIANT_FALSE) : Decrypted({}, VARIANT_FALSE);
    EXPECT_EQ(waiting, BytesOfHex(encrypts ? kAesCipher : kAesPlain));
    EXPECT_EQ(encrypts ? Encrypted({}, VARIANT_FALSE) : Decrypted({}, VARIANT_FALSE), Bytes());
  }
}

TEST_F(SymmetricCryptFailuresTest, DataThatCannotBeReadChangesNothing) {
  StartAes();
  const TestValue plain = BytesValue(BytesOfHex(kAesPlain));
  TestValue result;
  data_access.Arm();
  EXPECT_EQ(crypt->Encrypt(plain, VARIANT_FALSE, &result), kStruck);
  EXPECT_TRUE(data_access.HasStruck());
  EXPECT_EQ(Encrypted({}, VARIANT_FALSE), Bytes());
  EXPECT_EQ(Encrypted(BytesOfHex(kAesPlain)), BytesOfHex(kAesCipher));
}

}  // namespace
}  // namespace mirolta::test
