// A hash object of the test program's own, and what its members give in comparable form.
#pragma once

#include <string_view>

#include "bstr.h"
#include "fake_object.h"
#include "hash_object.h"
#include "test_module.h"
#include "test_values.h"

namespace mirolta::test {

inline constexpr OLECHAR kEmptyMd5[] = OLESTR("D41D8CD98F00B204E9800998ECF8427E");
inline constexpr OLECHAR kAbcMd5[] = OLESTR("900150983CD24FB0D6963F7D28E17F72");

class HashObjectTest : public testing::Test {
 protected:
  HashObjectTest() { SetErrorInfo(0, nullptr); }

  void SetUp() override {
    ASSERT_EQ(CreateHashObject(nullptr, IID_IHashObject, reinterpret_cast<void**>(hash.Put())),
              S_OK);
  }

  HRESULT Init(std::basic_string_view<OLECHAR> name) { return hash->InitHash(Bstr(name).Get()); }
  HRESULT Data(const VARIANT& value, LONG code_page = -1) {
    return hash->HashData(value, code_page);
  }
  HRESULT Data(std::basic_string_view<OLECHAR> text, LONG code_page = -1) {
    return hash->HashData(TextValue(text), code_page);
  }
  HRESULT Update(const VARIANT& value, LONG code_page = -1) {
    return hash->HashUpdate(value, code_page);
  }
  HRESULT Update(std::basic_string_view<OLECHAR> text, LONG code_page = -1) {
    return hash->HashUpdate(TextValue(text), code_page);
  }
  // The digest as text; anything but S_OK fails the test.
  Text Value() {
    OwnedBstr value;
    EXPECT_EQ(hash->get_Value(value.Put()), S_OK);
    return TextOf(value.Get());
  }
  // The digest of one value, in one call and as a piece.
  template <typename Given>
  Text Hashed(const Given& data, LONG code_page = -1) {
    EXPECT_EQ(Data(data, code_page), S_OK);
    return Value();
  }
  template <typename Given>
  Text Absorbed(const Given& data, LONG code_page = -1) {
    EXPECT_EQ(hash->Reset(), S_OK);
    EXPECT_EQ(Update(data, code_page), S_OK);
    return Value();
  }
  Text DigestOf(std::string_view bytes) {
    EXPECT_EQ(Data(BytesValue(BytesOf(bytes))), bytes.empty() ? S_FALSE : S_OK);
    return Value();
  }
  bool HasAlgorithm() {
    LONG size = 0;
    const HRESULT status = hash->get_HashSize(&size);
    SetErrorInfo(0, nullptr);
    return status == S_OK;
  }

  TestModule module;
  OwnedReference<IHashObject> hash;
};

// An object with an algorithm.
class Md5ObjectTest : public HashObjectTest {
 protected:
  void SetUp() override {
    HashObjectTest::SetUp();
    ASSERT_EQ(Init(OLESTR("MD5")), S_OK);
  }
};

}  // namespace mirolta::test
