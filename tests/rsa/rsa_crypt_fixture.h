// An RSACrypt of the loaded module, and its numbers in comparable form.
#pragma once

#include <cstdio>
#include <string>

#include "class_description.h"
#include "error_slot.h"
#include "loaded_module.h"
#include "portable/test_hooks.h"

namespace mirolta::test {

using Get = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT*);
using Put = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT);
using Transform = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT, VARIANT*);

struct Field {
  const char* name;
  Get get;
  Put put;
};
inline constexpr Field kFields[] = {
    {"Modulus", &IRSACrypt::get_Modulus, &IRSACrypt::put_Modulus},
    {"PublicExp", &IRSACrypt::get_PublicExp, &IRSACrypt::put_PublicExp},
    {"SecretExp", &IRSACrypt::get_SecretExp, &IRSACrypt::put_SecretExp},
    {"P", &IRSACrypt::get_P, &IRSACrypt::put_P},
    {"Q", &IRSACrypt::get_Q, &IRSACrypt::put_Q},
};

struct TransformRow {
  const char* name;
  Transform transform;
  unsigned needed;  // a bit for each of kFields that must be set
};
inline constexpr TransformRow kTransforms[] = {{"Encrypt", &IRSACrypt::Encrypt, 0b00011},
                                               {"Decrypt", &IRSACrypt::Decrypt, 0b00011},
                                               {"DecryptPQ", &IRSACrypt::DecryptPQ, 0b11110}};

inline const Text kClass = OLESTR("Vardeko RSACrypt Class");

inline TestValue HexText(const std::string& digits) {
  TestValue value(VT_BSTR);
  const Text wide(digits.begin(), digits.end());
  value->bstrVal = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
  return value;
}

class RsaCryptTest : public ModuleTest {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    SetClassDescription(CLSID_RSACrypt, kClass.c_str());
    rsa = module.Create<IRSACrypt>(CLSID_RSACrypt, IID_IRSACrypt);
    ASSERT_TRUE(rsa);
  }
  void TearDown() override {
    rsa.Reset();
    SetErrorInfo(0, nullptr);
    EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS);
    ModuleTest::TearDown();
  }

  HRESULT PutInto(const Field& field, const VARIANT& value) {
    return (rsa.Get()->*field.put)(value);
  }
  // The bytes of a field as hexadecimal digits.
  std::string FieldOf(Get get) {
    TestValue value;
    EXPECT_EQ((rsa.Get()->*get)(&value), S_OK);
    EXPECT_EQ(V_VT(&value), VT_ARRAY | VT_UI1);
    return HexOf(BytesOfArray(value));
  }
  std::string KeyText() {
    std::string text;
    for (const Field& field : kFields) text += FieldOf(field.get) + " ";
    return text;
  }
  void Load(const std::string& n, const std::string& e, const std::string& d, const std::string& p,
            const std::string& q) {
    const std::string* const numbers[] = {&n, &e, &d, &p, &q};
    for (size_t i = 0; i < 5; ++i) ASSERT_EQ(PutInto(kFields[i], HexText(*numbers[i])), S_OK);
  }
  // p = 53, q = 61, n = 3233, e = 17, d = 2753
  void LoadSmallKey() { Load("ca1", "11", "ac1", "35", "3d"); }

  // What a transformation gives, or its status.
  std::string Run(Transform transform, const VARIANT& data) {
    TestValue out;
    const HRESULT status = (rsa.Get()->*transform)(data, &out);
    if (status == S_OK) {
      EXPECT_EQ(V_VT(&out), VT_ARRAY | VT_UI1);
      return HexOf(BytesOfArray(out));
    }
    EXPECT_EQ(V_VT(&out), VT_EMPTY);
    char text[16];
    std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(status));
    return text;
  }
  // Encrypts, and expects both decryptions to give the message.
  void ExpectRoundTrip(const std::string& message) {
    const std::string encrypted = Run(&IRSACrypt::Encrypt, HexText(message));
    EXPECT_EQ(Run(&IRSACrypt::Decrypt, HexText(encrypted)), message);
    EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, HexText(encrypted)), message);
  }
  LONG BlockSize() {
    LONG size = 7;
    EXPECT_EQ(rsa->get_BlockSize(&size), S_OK);
    return size;
  }

  OwnedReference<IRSACrypt> rsa;
};

}  // namespace mirolta::test
