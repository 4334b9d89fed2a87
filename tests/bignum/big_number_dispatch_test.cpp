// PexBigNumber late-bound, as scripts use it.
#include <optional>

#include "big_number_fixture.h"
#include "late_bound.h"

namespace mirolta::test {
namespace {

class BigNumberDispatchTest : public BigNumberTest {
 protected:
  void SetUp() override {
    BigNumberTest::SetUp();
    late.emplace(number.Get());
  }
  void TearDown() override {
    late.reset();
    BigNumberTest::TearDown();
  }
  // The number of the object that the last call returned.
  std::string ResultNumber() {
    if (late->Type() != VT_DISPATCH || late->result->pdispVal == nullptr) return "(no object)";
    Number made;
    EXPECT_EQ(made.Query(late->result->pdispVal, IID_IPexBigNumber), S_OK);
    return DecOf(made.Get());
  }

  // Expects a failure of the member itself. No failure of this class has a description.
  void ExpectFailure(HRESULT status, HRESULT expected) {
    EXPECT_EQ(status, expected);
    EXPECT_TRUE(late->raised);
    EXPECT_FALSE(late->has_description);
    EXPECT_FALSE(late->has_source);
  }

  std::optional<LateBound> late;
};

TEST_F(BigNumberDispatchTest, MembersHaveTheirIds) {
  constexpr struct {
    const OLECHAR* name;
    DISPID id;
  } kRows[] = {
      {OLESTR("Value"), 0},      {OLESTR("Hex"), 2},     {OLESTR("Text"), 3},
      {OLESTR("Binary"), 4},     {OLESTR("Add"), 5},     {OLESTR("Sub"), 6},
      {OLESTR("Mul"), 7},        {OLESTR("Div"), 8},     {OLESTR("Mod"), 9},
      {OLESTR("Inc"), 10},       {OLESTR("Dec"), 11},    {OLESTR("Cmp"), 12},
      {OLESTR("NewNumber"), 13}, {OLESTR("Random"), 14}, {OLESTR("GCD"), 15},
      {OLESTR("ModExp"), 16},    {OLESTR("ModInv"), 17},
  };
  for (const auto& row : kRows) EXPECT_EQ(late->IdOf(row.name), row.id);
}

TEST_F(BigNumberDispatchTest, ValueIsTheDefaultMember) {
  EXPECT_EQ(late->Put(DISPID{DISPID_VALUE}, {Dec("42")}), S_OK);
  EXPECT_EQ(late->Get(DISPID{DISPID_VALUE}), S_OK);
  EXPECT_EQ(late->ResultText(), OLESTR("42"));
  EXPECT_EQ(late->Put(DISPID{DISPID_VALUE}, {NumberValue(0)}), S_OK);
  ExpectFailure(late->Get(DISPID{DISPID_VALUE}), E_OUTOFMEMORY);
}

TEST_F(BigNumberDispatchTest, ArgumentsLeftOutHaveTheirDefaults) {
  EXPECT_EQ(late->Method(OLESTR("Inc")), S_OK);
  EXPECT_EQ(late->Method(OLESTR("Inc")), S_OK);
  EXPECT_EQ(late->Method(OLESTR("Inc"), {LeftOut()}), S_OK);
  EXPECT_EQ(late->Method(OLESTR("Dec")), S_OK);
  EXPECT_EQ(DecOf(number.Get()), "2");
  EXPECT_EQ(late->Method(OLESTR("NewNumber")), S_OK);
  EXPECT_EQ(ResultNumber(), "0");
  EXPECT_EQ(late->Method(OLESTR("NewNumber"), {Dec("8")}), S_OK);
  EXPECT_EQ(ResultNumber(), "8");
  ExpectFailure(late->Method(OLESTR("NewNumber"), {TestValue(VT_BOOL)}), E_OUTOFMEMORY);
  EXPECT_EQ(late->Method(OLESTR("Random"), {NumberValue(2)}), S_OK);
  EXPECT_LE(HexOf(number.Get()).size(), 4u);
  ExpectFailure(late->Method(OLESTR("Random"), {NumberValue(0)}), E_INVALIDARG);
  EXPECT_EQ(late->Method(OLESTR("Random")), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late->Method(OLESTR("Add")), DISP_E_BADPARAMCOUNT);
  EXPECT_EQ(late->Method(OLESTR("ModExp"), {NumberValue(1)}), DISP_E_BADPARAMCOUNT);
}

TEST_F(BigNumberDispatchTest, TextTakesAnOptionalCodePage) {
  EXPECT_EQ(late->Put(OLESTR("Text"), {TextValue(OLESTR("ab"))}), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "6162");
  EXPECT_EQ(late->Put(OLESTR("Text"), {NumberValue(-2), TextValue(OLESTR("ab"))}), S_OK);
  EXPECT_EQ(HexOf(number.Get()), "61006200");
  EXPECT_EQ(late->Get(OLESTR("Text"), {NumberValue(-2)}), S_OK);
  EXPECT_EQ(late->ResultText(), OLESTR("ab"));
  EXPECT_EQ(late->Get(OLESTR("Text"), {NumberValue(-1)}), S_OK);
  EXPECT_EQ(late->ResultText(), OLESTR("\u6100\u6200"));
  EXPECT_EQ(late->Put(OLESTR("Hex"), {Dec("6364")}), S_OK);
  EXPECT_EQ(late->Get(OLESTR("Text")), S_OK);
  EXPECT_EQ(late->ResultText(), OLESTR("cd"));
}

TEST_F(BigNumberDispatchTest, OperationsReturnObjects) {
  EXPECT_EQ(late->Put(OLESTR("Value"), {Dec("100")}), S_OK);
  EXPECT_EQ(late->Method(OLESTR("Add"), {ObjectValue(number.Get())}), S_OK);
  EXPECT_EQ(ResultNumber(), "200");
  EXPECT_EQ(late->Method(OLESTR("ModExp"), {NumberValue(2), NumberValue(97)}), S_OK);
  EXPECT_EQ(ResultNumber(), "9");
  EXPECT_EQ(late->Method(OLESTR("ModInv"), {NumberValue(97)}), S_OK);
  EXPECT_EQ(ResultNumber(), "65");
  EXPECT_EQ(late->Method(OLESTR("Cmp"), {NumberValue(101)}), S_OK);
  EXPECT_EQ(late->Type(), VT_I4);
  EXPECT_EQ(late->result->lVal, -1);
}

TEST_F(BigNumberDispatchTest, DivisionByZeroHasNoDescription) {
  EXPECT_EQ(late->Put(OLESTR("Value"), {Dec("100")}), S_OK);
  for (const OLECHAR* const name : {OLESTR("Div"), OLESTR("Mod"), OLESTR("ModInv")}) {
    ExpectFailure(late->Method(name, {NumberValue(0)}), DISP_E_DIVBYZERO);
  }
  ExpectFailure(late->Method(OLESTR("ModExp"), {NumberValue(2), NumberValue(0)}), DISP_E_DIVBYZERO);
  EXPECT_EQ(DecOf(number.Get()), "100");
}

}  // namespace
}  // namespace mirolta::test
