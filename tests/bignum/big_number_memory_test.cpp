// PexBigNumber when memory is short: no result, no leak, and the number as before.
#include <functional>
#include <string>
#include <vector>

#include "big_number_object.h"
#include "memory_watch.h"
#include "test_module.h"
#include "test_values.h"

namespace mirolta::test {
namespace {

class BigNumberMemoryTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(
        CreatePexBigNumber(nullptr, IID_IPexBigNumber, reinterpret_cast<void**>(number.Put())),
        S_OK);
    ASSERT_EQ(number->put_Binary(BytesValue(bytes)), S_OK);
  }
  bool IsAsBefore() {
    TestValue value;
    return number->get_Binary(&value) == S_OK && BytesOfArray(value) == bytes;
  }
  // Runs a call with ever more allocations granted until it succeeds. Every failure before leaves
  // the number, no result and no memory taken. Returns the number of failures.
  int FailAtEach(const std::function<HRESULT(IPexBigNumber**)>& call) {
    for (int allowed = 0;; ++allowed) {
      IPexBigNumber* result = number.Get();
      const long live = LiveAllocations();
      HRESULT status = S_OK;
      {
        const FailAllocationsAfter fail(allowed);
        status = call(&result);
      }
      if (status == S_OK) {
        if (result != number.Get()) result->Release();
        return allowed;
      }
      EXPECT_EQ(status, E_OUTOFMEMORY);
      EXPECT_TRUE(result == nullptr || result == number.Get());
      EXPECT_EQ(LiveAllocations(), live) << allowed;
      EXPECT_TRUE(IsAsBefore()) << allowed;
      if (HasFailure()) return -1;
    }
  }

  TestModule module;
  OwnedReference<IPexBigNumber> number;
  const Bytes bytes = Bytes(60, 0x9D);
};

TEST_F(BigNumberMemoryTest, WithoutMemoryOperationsLeaveTheNumber) {
  using Binary = HRESULT (STDMETHODCALLTYPE IPexBigNumber::*)(VARIANT, IPexBigNumber**);
  const TestValue operand = BytesValue(Bytes(40, 0x71));
  for (const Binary member : {&IPexBigNumber::Add, &IPexBigNumber::Sub, &IPexBigNumber::Mul,
                              &IPexBigNumber::Div, &IPexBigNumber::Mod, &IPexBigNumber::GCD,
                              &IPexBigNumber::ModInv, &IPexBigNumber::NewNumber}) {
    EXPECT_GE(
        FailAtEach([&](IPexBigNumber** out) { return (number.Get()->*member)(operand, out); }), 3);
  }
  EXPECT_GE(FailAtEach([&](IPexBigNumber** out) { return number->ModExp(operand, operand, out); }),
            6);
}

TEST_F(BigNumberMemoryTest, WithoutMemoryChangesLeaveTheNumber) {
  const TestValue longer = BytesValue(Bytes(100, 0x71));
  EXPECT_GE(FailAtEach([&](IPexBigNumber**) { return number->Inc(longer); }), 2);
  ASSERT_EQ(number->put_Binary(BytesValue(bytes)), S_OK);
  EXPECT_GE(FailAtEach([&](IPexBigNumber**) { return number->Dec(longer); }), 2);
  ASSERT_EQ(number->put_Binary(BytesValue(Bytes(60, 0x9D))), S_OK);
  EXPECT_GE(FailAtEach([&](IPexBigNumber**) { return number->Random(500, 0, 0); }), 2);
  const OwnedBstr text(SysAllocStringLen(nullptr, 2000));
  for (UINT i = 0; i < 2000; ++i) text.Get()[i] = '7';
  TestValue digits(VT_BSTR);
  digits->bstrVal = SysAllocStringLen(text.Get(), 2000);
  using Put = HRESULT (STDMETHODCALLTYPE IPexBigNumber::*)(VARIANT);
  for (const Put put : {&IPexBigNumber::put_Value, &IPexBigNumber::put_Hex}) {
    SetUp();
    EXPECT_GE(FailAtEach([&](IPexBigNumber**) { return (number.Get()->*put)(digits); }), 1);
  }
  for (const LONG code_page : {0, -1, -2}) {
    SetUp();
    EXPECT_GE(FailAtEach([&](IPexBigNumber**) { return number->put_Text(code_page, text.Get()); }),
              2);
  }
}

TEST_F(BigNumberMemoryTest, WithoutMemoryThereIsNoObject) {
  IPexBigNumber* made = nullptr;
  HRESULT status = S_OK;
  {
    const FailAllocationsAfter fail(0);
    status = CreatePexBigNumber(nullptr, IID_IPexBigNumber, reinterpret_cast<void**>(&made));
  }
  EXPECT_EQ(status, E_OUTOFMEMORY);
  EXPECT_EQ(made, nullptr);
}

}  // namespace
}  // namespace mirolta::test
