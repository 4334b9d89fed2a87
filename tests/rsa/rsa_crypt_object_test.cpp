// RSACrypt through its interface.
#include <cstdio>
#include <functional>

#include "calling_object.h"
#include "class_description.h"
#include "error_slot.h"
#include "fake_object.h"
#include "loaded_module.h"
#include "portable/test_hooks.h"

namespace mirolta::test {
namespace {

using Get = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT*);
using Put = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT);
using Transform = HRESULT (STDMETHODCALLTYPE IRSACrypt::*)(VARIANT, VARIANT*);

struct Field {
  const char* name;
  Get get;
  Put put;
};
constexpr Field kFields[] = {
    {"Modulus", &IRSACrypt::get_Modulus, &IRSACrypt::put_Modulus},
    {"PublicExp", &IRSACrypt::get_PublicExp, &IRSACrypt::put_PublicExp},
    {"SecretExp", &IRSACrypt::get_SecretExp, &IRSACrypt::put_SecretExp},
    {"P", &IRSACrypt::get_P, &IRSACrypt::put_P},
    {"Q", &IRSACrypt::get_Q, &IRSACrypt::put_Q},
};
constexpr Transform kTransforms[] = {&IRSACrypt::Encrypt, &IRSACrypt::Decrypt,
                                     &IRSACrypt::DecryptPQ};

const Text kClass = OLESTR("Vardeko RSACrypt Class");

TestValue HexText(const std::string& digits) {
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
    for (size_t i = 0; i < 5; ++i) {
      const Put put = kFields[i].put;
      ASSERT_EQ((rsa.Get()->*put)(HexText(*numbers[i])), S_OK);
    }
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
  OwnedReference<IRSACrypt> rsa;
};

TEST_F(RsaCryptTest, ANewObjectHasNoKey) {
  EXPECT_EQ(KeyText(), "     ");
  LONG size = 7;
  EXPECT_EQ(rsa->get_BlockSize(&size), S_OK);
  EXPECT_EQ(size, 0);
}

TEST_F(RsaCryptTest, NumbersAreKeptAsGiven) {
  Load("0102", "3", "00ff", "aaa", "123456789abcdef01");
  EXPECT_EQ(KeyText(), "0102 03 ff 0aaa 0123456789abcdef01 ");
  for (const Field& field : kFields) {
    EXPECT_EQ((rsa.Get()->*field.put)(BytesValue({0, 9, 8})), S_OK);
    EXPECT_EQ(FieldOf(field.get), "0908") << field.name;
    EXPECT_EQ((rsa.Get()->*field.put)(NumberValue(65537)), S_OK);
    EXPECT_EQ(FieldOf(field.get), "010001") << field.name;
    EXPECT_EQ((rsa.Get()->*field.put)(HexText("x1-F z")), S_OK);
    EXPECT_EQ(FieldOf(field.get), "1f") << field.name;
    EXPECT_EQ((rsa.Get()->*field.put)(TestValue(VT_NULL)), S_OK);
    EXPECT_EQ(FieldOf(field.get), "") << field.name;
  }
}

TEST_F(RsaCryptTest, NumbersThatDoNotConvertLeaveTheOldOnes) {
  Load("1", "2", "3", "4", "5");
  for (const Field& field : kFields) {
    EXPECT_EQ((rsa.Get()->*field.put)(TestValue(VT_BOOL)), DISP_E_TYPEMISMATCH) << field.name;
    EXPECT_EQ((rsa.Get()->*field.put)(NumberValue(-1)), DISP_E_OVERFLOW) << field.name;
    LONG number = 1;
    EXPECT_EQ((rsa.Get()->*field.put)(ReferenceTo(VT_I4, &number)), DISP_E_TYPEMISMATCH)
        << field.name;
    EXPECT_EQ((rsa.Get()->*field.put)(ObjectValue(nullptr)), E_FAIL) << field.name;
  }
  EXPECT_EQ(KeyText(), "01 02 03 04 05 ");
  ExpectNoError();
}

TEST_F(RsaCryptTest, NullOutPointersAreReportedFirst) {
  for (const Field& field : kFields) EXPECT_EQ((rsa.Get()->*field.get)(nullptr), E_POINTER);
  for (const Transform transform : kTransforms) {
    EXPECT_EQ((rsa.Get()->*transform)(TestValue(VT_BOOL), nullptr), E_POINTER);
  }
  EXPECT_EQ(rsa->get_BlockSize(nullptr), E_POINTER);
  ExpectNoError();
}

TEST_F(RsaCryptTest, CreateKeysStartsFromGivenNumbers) {
  // 1000000 and 2000000 in hexadecimal; the larger one first.
  ASSERT_EQ(rsa->CreateKeys(HexText("1e8480"), NumberValue(1000000)), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_P), "0f4243");
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Q), "1e8483");
  EXPECT_EQ(FieldOf(&IRSACrypt::get_PublicExp), "010001");
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus), "01d1a9d37449");  // 1000003 * 2000003
  const std::string message = "123456789a";
  const std::string encrypted = Run(&IRSACrypt::Encrypt, HexText(message));
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, HexText(encrypted)), message);
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, HexText(encrypted)), message);
}

TEST_F(RsaCryptTest, CreateKeysKeepsAPublicExponent) {
  ASSERT_EQ(rsa->put_PublicExp(HexText("4")), S_OK);
  ASSERT_EQ(rsa->CreateKeys(NumberValue(1000000), NumberValue(2000000)), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_PublicExp), "05");
}

TEST_F(RsaCryptTest, CreateKeysRefusesNumbersThatDoNotConvertOnly) {
  Load("1", "2", "3", "4", "5");
  EXPECT_EQ(rsa->CreateKeys(TestValue(VT_BOOL), NumberValue(-1)), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(rsa->CreateKeys(NumberValue(-1), TestValue(VT_BOOL)), DISP_E_OVERFLOW);
  EXPECT_EQ(rsa->CreateKeys(NumberValue(1), TestValue(VT_BOOL)), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(KeyText(), "01 02 03 04 05 ");
  ExpectNoError();
  EXPECT_EQ(rsa->CreateKeys(TestValue(), TestValue(VT_NULL)), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_P), "04cd");
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Q), "04cd");
}

TEST_F(RsaCryptTest, CreateRandKeysMakesNewKeysOfTheGivenSize) {
  ASSERT_EQ(rsa->CreateRandKeys(32, VARIANT_TRUE), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus).size(), 64u);
  LONG size = 0;
  EXPECT_EQ(rsa->get_BlockSize(&size), S_OK);
  EXPECT_EQ(size, 31);
  const std::string old = KeyText();
  ASSERT_EQ(rsa->CreateRandKeys(32, 0), S_OK);
  EXPECT_NE(KeyText(), old);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus).size(), 66u);
  EXPECT_EQ(rsa->get_BlockSize(&size), S_OK);
  EXPECT_EQ(size, 32);
  ASSERT_EQ(rsa->CreateRandKeys(33, 1), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus).size(), 64u);
  const std::string message(60, '7');
  const std::string encrypted = Run(&IRSACrypt::Encrypt, HexText(message));
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, HexText(encrypted)), message);
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, HexText(encrypted)), message);
}

TEST_F(RsaCryptTest, CreateRandKeysRefusesSizesWithoutAByte) {
  Load("1", "2", "3", "4", "5");
  for (const LONG size : {0, -1, -2147483647 - 1}) {
    EXPECT_EQ(rsa->CreateRandKeys(size, 0), E_INVALIDARG);
    EXPECT_EQ(rsa->CreateRandKeys(size, VARIANT_TRUE), E_INVALIDARG);
  }
  EXPECT_EQ(rsa->CreateRandKeys(1, VARIANT_TRUE), E_INVALIDARG);
  ExpectNoError();
  EXPECT_EQ(KeyText(), "01 02 03 04 05 ");
  EXPECT_EQ(rsa->CreateRandKeys(1, 0), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_P), "04cd");
}

TEST_F(RsaCryptTest, ResetClearsTheKey) {
  Load("1", "2", "3", "4", "5");
  EXPECT_EQ(rsa->Reset(), S_OK);
  EXPECT_EQ(KeyText(), "     ");
  // A Q that nobody has read yet goes as well.
  ASSERT_EQ(rsa->put_Q(NumberValue(5)), S_OK);
  EXPECT_EQ(rsa->Reset(), S_OK);
  EXPECT_EQ(KeyText(), "     ");
}

TEST_F(RsaCryptTest, AKeyReadFromOneObjectWorksInAnother) {
  ASSERT_EQ(rsa->CreateRandKeys(16, VARIANT_TRUE), S_OK);
  const std::string encrypted = Run(&IRSACrypt::Encrypt, HexText("1234"));
  const OwnedReference<IRSACrypt> other =
      module.Create<IRSACrypt>(CLSID_RSACryptFree, IID_IRSACrypt);
  for (const Field& field : kFields) {
    TestValue value;
    ASSERT_EQ((rsa.Get()->*field.get)(&value), S_OK);
    ASSERT_EQ((other.Get()->*field.put)(value), S_OK);
  }
  for (const Transform transform : {&IRSACrypt::Decrypt, &IRSACrypt::DecryptPQ}) {
    TestValue out;
    ASSERT_EQ((other.Get()->*transform)(HexText(encrypted), &out), S_OK);
    EXPECT_EQ(BytesOfArray(out), (Bytes{0x12, 0x34}));
  }
}

// Which numbers must be set: the others may all be zero.
TEST_F(RsaCryptTest, MissingNumbersOfTheKeyAreReportedBeforeTheData) {
  constexpr struct {
    const char* name;
    Transform transform;
    unsigned needed;  // a bit for each of n, e, d, p, q
  } kCases[] = {{"Encrypt", &IRSACrypt::Encrypt, 0b00011},
                {"Decrypt", &IRSACrypt::Decrypt, 0b00011},
                {"DecryptPQ", &IRSACrypt::DecryptPQ, 0b11110}};
  const char* const numbers[] = {"ca1", "11", "ac1", "35", "3d"};
  for (const auto& one : kCases) {
    SCOPED_TRACE(one.name);
    for (unsigned set = 0; set < 32; ++set) {
      ASSERT_EQ(rsa->Reset(), S_OK);
      for (unsigned i = 0; i < 5; ++i) {
        const Put put = kFields[i].put;
        if ((set >> i & 1) != 0) {
          ASSERT_EQ((rsa.Get()->*put)(HexText(numbers[i])), S_OK);
        }
      }
      const std::string result = Run(one.transform, NumberValue(5));
      if ((set & one.needed) == one.needed) {
        EXPECT_EQ(result.size(), result == "01" ? 2u : 4u) << set;
        ExpectNoError();
      } else {
        EXPECT_EQ(result, "80042779") << set;
        ExpectError(OLESTR("Key not set."), kClass);
      }
      // The key comes before the data.
      const std::string bad = Run(one.transform, TestValue(VT_BOOL));
      EXPECT_EQ(bad, (set & one.needed) == one.needed ? "80020005" : "80042779");
      SetErrorInfo(0, nullptr);
    }
  }
}

TEST_F(RsaCryptTest, EncryptRefusesDataNotBelowTheModulus) {
  LoadSmallKey();
  EXPECT_EQ(Run(&IRSACrypt::Encrypt, HexText("ca0")), "0ca0");  // (-1)^17
  ExpectNoError();
  const std::string key = KeyText();
  for (const char* const data : {"ca1", "ca2", "ffffffffffffffffffff"}) {
    EXPECT_EQ(Run(&IRSACrypt::Encrypt, HexText(data)), "8004277A");
    ExpectError(OLESTR("Too much data."), kClass);
  }
  EXPECT_EQ(KeyText(), key);
}

TEST_F(RsaCryptTest, DecryptReducesLargerData) {
  LoadSmallKey();
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, HexText("ca1")), "");
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, HexText("ca1")), "");
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, HexText("ca2")), "01");
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, HexText("ca2")), "01");
  ExpectNoError();
}

TEST_F(RsaCryptTest, ZeroTransformsToZero) {
  LoadSmallKey();
  for (const Transform transform : kTransforms) {
    EXPECT_EQ(Run(transform, NumberValue(0)), "");
    EXPECT_EQ(Run(transform, TestValue()), "");
    EXPECT_EQ(Run(transform, BytesValue({})), "");
    EXPECT_EQ(Run(transform, HexText("")), "");
  }
}

TEST_F(RsaCryptTest, ANumberThatHoldsZeroIsZero) {
  const auto zero = module.Create<IPexBigNumber>(CLSID_PexBigNumber, IID_IPexBigNumber);
  ASSERT_TRUE(zero);
  for (const TestValue& value : {ObjectValue(zero.Get()), UnknownValue(zero.Get())}) {
    LoadSmallKey();
    for (const Transform transform : kTransforms) EXPECT_EQ(Run(transform, value), "");
    for (const Field& field : kFields) {
      EXPECT_EQ((rsa.Get()->*field.put)(value), S_OK) << field.name;
      TestValue bytes;
      EXPECT_EQ((rsa.Get()->*field.get)(&bytes), S_OK);
      EXPECT_EQ(BytesOfArray(bytes), Bytes()) << field.name;
    }
    EXPECT_EQ(rsa->CreateKeys(value, NumberValue(5000)), S_OK);
    TestValue first_prime;
    EXPECT_EQ(rsa->get_P(&first_prime), S_OK);
    EXPECT_EQ(HexOf(BytesOfArray(first_prime)), "04cd");
  }
  ExpectNoError();
}

TEST_F(RsaCryptTest, SecretExponentZeroDecryptsToOne) {
  LoadSmallKey();
  ASSERT_EQ(rsa->put_SecretExp(NumberValue(0)), S_OK);
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, NumberValue(5)), "01");
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, NumberValue(5)), "80042779");
}

TEST_F(RsaCryptTest, PrimesOfOneAreRefusedWithoutADescription) {
  LoadSmallKey();
  for (const Put put : {&IRSACrypt::put_P, &IRSACrypt::put_Q}) {
    LoadSmallKey();
    ASSERT_EQ((rsa.Get()->*put)(NumberValue(1)), S_OK);
    const std::string key = KeyText();
    EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, NumberValue(5)), "80070057");
    ExpectNoError();
    EXPECT_EQ(KeyText(), key);
  }
}

TEST_F(RsaCryptTest, DataThatDoesNotConvertIsRefusedWithoutADescription) {
  LoadSmallKey();
  const std::string key = KeyText();
  for (const Transform transform : kTransforms) {
    EXPECT_EQ(Run(transform, TestValue(VT_BOOL)), "80020005");
    EXPECT_EQ(Run(transform, NumberValue(-5)), "8002000A");
    EXPECT_EQ(Run(transform, ObjectValue(nullptr)), "80004005");
  }
  ExpectNoError();
  EXPECT_EQ(KeyText(), key);
}

TEST_F(RsaCryptTest, ObjectsAreTheirDefaultValues) {
  LoadSmallKey();
  FakeObject text(HexText("41"));
  EXPECT_EQ(Run(&IRSACrypt::Encrypt, ObjectValue(&text)), "0ae6");  // 65^17 mod 3233 = 2790
  // A number's default member is decimal text, here read as hexadecimal.
  const OwnedReference<IPexBigNumber> number =
      module.Create<IPexBigNumber>(CLSID_PexBigNumber, IID_IPexBigNumber);
  ASSERT_EQ(number->put_Value(NumberValue(41)), S_OK);
  EXPECT_EQ(Run(&IRSACrypt::Encrypt, ObjectValue(number.Get())), "0ae6");
  ASSERT_EQ(rsa->put_Modulus(ObjectValue(number.Get())), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Modulus), "41");
}

TEST_F(RsaCryptTest, ACallFromInsideMayDropTheKey) {
  CallingObject resets([&] { EXPECT_EQ(rsa->Reset(), S_OK); }, OLESTR("5"));
  LoadSmallKey();
  // Nothing is below a modulus of zero.
  EXPECT_EQ(Run(&IRSACrypt::Encrypt, ObjectValue(&resets)), "8004277A");
  SetErrorInfo(0, nullptr);
  LoadSmallKey();
  EXPECT_EQ(Run(&IRSACrypt::Decrypt, ObjectValue(&resets)), "80070057");
  LoadSmallKey();
  EXPECT_EQ(Run(&IRSACrypt::DecryptPQ, ObjectValue(&resets)), "80070057");
  LoadSmallKey();
  ASSERT_EQ(rsa->put_P(ObjectValue(&resets)), S_OK);
  EXPECT_EQ(KeyText(), "   05  ");
  LoadSmallKey();
  CallingObject puts([&] { EXPECT_EQ(rsa->put_Q(NumberValue(7)), S_OK); }, OLESTR("5"));
  ASSERT_EQ(rsa->put_Q(ObjectValue(&puts)), S_OK);
  EXPECT_EQ(FieldOf(&IRSACrypt::get_Q), "05");
}

TEST_F(RsaCryptTest, WithoutMemoryThereIsNoResult) {
  LoadSmallKey();
  const std::string key = KeyText();
  const TestValue data = NumberValue(5);
  const auto fails = [&](const std::function<HRESULT(VARIANT*)>& call) {
    VARIANT out;
    VariantInit(&out);
    MiroltaFailAllocationAfter(0);
    EXPECT_EQ(call(&out), E_OUTOFMEMORY);
    EXPECT_TRUE(MiroltaAllocationHasFailed());
    MiroltaFailAllocationAfter(-1);
    EXPECT_EQ(V_VT(&out), VT_EMPTY);
  };
  for (const Transform transform : kTransforms) {
    fails([&](VARIANT* out) { return (rsa.Get()->*transform)(data, out); });
  }
  for (const Field& field : kFields) {
    fails([&](VARIANT* out) { return (rsa.Get()->*field.get)(out); });
  }
  ExpectNoError();
  EXPECT_EQ(KeyText(), key);
}

TEST_F(RsaCryptTest, SupportsErrorInformationForItsInterfaceOnly) {
  OwnedReference<ISupportErrorInfo> support;
  ASSERT_EQ(support.Query(rsa.Get(), IID_ISupportErrorInfo), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IRSACrypt), S_OK);
  EXPECT_EQ(support->InterfaceSupportsErrorInfo(IID_IPexBigNumber), S_FALSE);
}

}  // namespace
}  // namespace mirolta::test
