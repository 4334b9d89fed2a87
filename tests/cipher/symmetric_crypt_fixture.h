// A SymmetricCryptObject of the built module, with what its members give in comparable form.
#pragma once

#include <string_view>

#include "class_description.h"
#include "error_slot.h"
#include "fake_object.h"
#include "loaded_module.h"

namespace mirolta::test {

// FIPS 197, appendix C.1.
inline constexpr std::string_view kAesKey = "000102030405060708090a0b0c0d0e0f";
inline constexpr std::string_view kAesPlain = "00112233445566778899aabbccddeeff";
inline constexpr std::string_view kAesCipher = "69c4e0d86a7b0430d8cdb78070b4c55a";
// FIPS 81, table B1: "Now is the time for all ".
inline constexpr std::string_view kDesKey = "0123456789abcdef";
inline constexpr std::string_view kDesPlain = "4e6f772069732074";
inline constexpr std::string_view kDesCipher = "3fa40e8a984d4815";

// What one call gave: its status and its bytes.
struct CryptResult {
  HRESULT status = S_OK;
  bool is_array = false;
  Bytes bytes;
};

class SymmetricCryptTest : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    crypt = Make();
    ASSERT_TRUE(crypt);
  }
  void TearDown() override {
    crypt.Reset();
    EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
    ModuleTest::TearDown();
  }
  OwnedReference<ISymmetricCryptObject> Make() const {
    return module.Create<ISymmetricCryptObject>(CLSID_SymmetricCryptObject,
                                                IID_ISymmetricCryptObject);
  }

  template <size_t kSize>
  HRESULT Init(const OLECHAR (&name)[kSize]) {
    return crypt->Init(TextValue(name));
  }
  HRESULT PutKey(std::string_view hex) { return crypt->put_Key(BytesValue(BytesOfHex(hex))); }
  void StartAes() {
    ASSERT_EQ(Init(OLESTR("AES")), S_OK);
    ASSERT_EQ(PutKey(kAesKey), S_OK);
  }
  void StartDes() {
    ASSERT_EQ(Init(OLESTR("DES")), S_OK);
    ASSERT_EQ(PutKey(kDesKey), S_OK);
  }
  void Start(bool is_aes) { is_aes ? StartAes() : StartDes(); }

  CryptResult Encrypt(const VARIANT& data, VARIANT_BOOL last = VARIANT_TRUE) {
    TestValue result = NumberValue(77);
    const HRESULT status = crypt->Encrypt(data, last, &result);
    return {status, V_VT(&result) == (VT_ARRAY | VT_UI1), BytesOfArray(result)};
  }
  CryptResult Decrypt(const VARIANT& data, VARIANT_BOOL last = VARIANT_TRUE) {
    TestValue result = NumberValue(77);
    const HRESULT status = crypt->Decrypt(data, last, &result);
    return {status, V_VT(&result) == (VT_ARRAY | VT_UI1), BytesOfArray(result)};
  }
  // The bytes; anything but a byte array and S_OK fails the test.
  Bytes Encrypted(const Bytes& data, VARIANT_BOOL last = VARIANT_TRUE) {
    return Good(Encrypt(BytesValue(data), last));
  }
  Bytes Decrypted(const Bytes& data, VARIANT_BOOL last = VARIANT_TRUE) {
    return Good(Decrypt(BytesValue(data), last));
  }
  static Bytes Good(const CryptResult& outcome) {
    EXPECT_EQ(outcome.status, S_OK);
    EXPECT_TRUE(outcome.is_array);
    return outcome.bytes;
  }

  // The key as bytes; a mark if there is none.
  Bytes Key() {
    TestValue key = NumberValue(77);
    EXPECT_EQ(crypt->get_Key(&key), S_OK);
    return V_VT(&key) == VT_EMPTY ? BytesOf("(none)") : BytesOfArray(key);
  }
  LONG PadType() {
    LONG pad_type = 77;
    EXPECT_EQ(crypt->get_PadType(&pad_type), S_OK);
    return pad_type;
  }
  // Every member that needs an engine reports that there is none.
  bool HasEngine() {
    LONG size = 0;
    const HRESULT status = crypt->get_BlockSize(&size);
    EXPECT_TRUE(status == S_OK || status == kNotInitialized);
    return status == S_OK;
  }

  OwnedReference<ISymmetricCryptObject> crypt;
};

}  // namespace mirolta::test
