// The texts of the tables as users of type information find them, and the types that the tables say
// values have.
#include <string>
#include <string_view>
#include <vector>

#include "late_bound.h"
#include "loaded_module.h"
#include "type_library_table.h"

namespace mirolta::test {
namespace {

std::string Plain(const Text& text) {
  return std::string(text.begin(), text.end());
}

// The help text of a member, or of the whole with MEMBERID_NIL.
template <typename Described>
Text HelpOf(Described* described, INT id = -1) {
  OwnedBstr help;
  EXPECT_EQ(described->GetDocumentation(id, nullptr, help.Put(), nullptr, nullptr), S_OK);
  return TextOf(help.Get());
}

const InterfaceTable& InterfaceRow(unsigned i) {
  return *kTypeLibraryTable.interfaces[i];
}

TEST(HelpTexts, AreSentencesWithoutAFullStop) {
  std::vector<Text> texts = {kTypeLibraryTable.help};
  for (unsigned i = 0; i < kTypeLibraryTable.class_count; ++i) {
    texts.emplace_back(kTypeLibraryTable.classes[i].help);
  }
  for (unsigned i = 0; i < kTypeLibraryTable.interface_count; ++i) {
    texts.emplace_back(InterfaceRow(i).help);
    for (unsigned k = 0; k < InterfaceRow(i).member_count; ++k) {
      texts.emplace_back(InterfaceRow(i).members[k].help);
    }
  }
  for (const Text& text : texts) {
    ASSERT_GT(text.size(), 5u) << Plain(text);
    EXPECT_TRUE((text[0] >= 'A' && text[0] <= 'Z') || text[0] == '-') << Plain(text);
    EXPECT_NE(text.back(), OLECHAR{'.'}) << Plain(text);
  }
}

// Type information has one text for an id.
TEST(HelpTexts, AreOneForTheFormsOfAProperty) {
  for (unsigned i = 0; i < kTypeLibraryTable.interface_count; ++i) {
    const InterfaceTable& table = InterfaceRow(i);
    for (unsigned k = 1; k < table.member_count; ++k) {
      const MemberRow& member = table.members[k];
      if (member.id != table.members[k - 1].id) continue;
      EXPECT_EQ(Plain(member.help), Plain(table.members[k - 1].help)) << Plain(member.name);
    }
  }
}

TEST(HelpTexts, AreThoseOfTheTablesInTheTypeLibrary) {
  OwnedReference<ITypeLib> library;
  ASSERT_EQ(LoadTypeLib(ModuleFile().c_str(), library.Put()), S_OK);
  EXPECT_EQ(HelpOf(library.Get()), kTypeLibraryTable.help);
  for (unsigned i = 0; i < kTypeLibraryTable.class_count; ++i) {
    const ClassTableRow& row = kTypeLibraryTable.classes[i];
    OwnedReference<ITypeInfo> info;
    ASSERT_EQ(library->GetTypeInfoOfGuid(*row.id, info.Put()), S_OK);
    EXPECT_EQ(HelpOf(info.Get()), row.help) << Plain(row.name);
  }
  for (unsigned i = 0; i < kTypeLibraryTable.interface_count; ++i) {
    const InterfaceTable& table = InterfaceRow(i);
    OwnedReference<ITypeInfo> info;
    ASSERT_EQ(library->GetTypeInfoOfGuid(*table.iid, info.Put()), S_OK);
    EXPECT_EQ(HelpOf(info.Get()), table.help) << Plain(table.name);
    for (unsigned k = 0; k < table.member_count; ++k) {
      const MemberRow& member = table.members[k];
      EXPECT_EQ(HelpOf(info.Get(), member.id), member.help) << Plain(member.name);
    }
  }
}

class ObjectHelpTest : public ModuleTest, public testing::WithParamInterface<ClassCase> {
 protected:
  void SetUp() override {
    ModuleTest::SetUp();
    object = module.Create<IDispatch>(*GetParam().both, IID_IDispatch);
    ASSERT_TRUE(object);
    for (unsigned i = 0; i < kTypeLibraryTable.interface_count; ++i) {
      if (*InterfaceRow(i).iid == *GetParam().iid) table = kTypeLibraryTable.interfaces[i];
    }
    ASSERT_NE(table, nullptr);
  }
  void TearDown() override {
    object.Reset();
    ModuleTest::TearDown();
  }

  OwnedReference<IDispatch> object;
  const InterfaceTable* table = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Classes, ObjectHelpTest, testing::ValuesIn(kClassCases),
                         [](const testing::TestParamInfo<ClassCase>& one) {
                           return std::string(one.param.name);
                         });

TEST_P(ObjectHelpTest, ObjectsDescribeTheirMembersByTheTables) {
  OwnedReference<ITypeInfo> info;
  ASSERT_EQ(object->GetTypeInfo(0, LOCALE_USER_DEFAULT, info.Put()), S_OK);
  EXPECT_EQ(HelpOf(info.Get()), table->help);
  for (unsigned k = 0; k < table->member_count; ++k) {
    const MemberRow& member = table->members[k];
    EXPECT_EQ(HelpOf(info.Get(), member.id), member.help) << Plain(member.name);
  }
}

// What an object needs before its values can be read, each member as far as the class has it.
void MakeReady(LateBound& late) {
  struct Step {
    const OLECHAR* name;
    WORD kind;
    const OLECHAR* value;
  };
  constexpr Step kSteps[] = {
      {OLESTR("InitHash"), DISPATCH_METHOD, OLESTR("MD5")},
      {OLESTR("Init"), DISPATCH_METHOD, OLESTR("DES")},
      {OLESTR("ReadAlgorithm"), DISPATCH_PROPERTYPUT, nullptr},
      {OLESTR("WriteAlgorithm"), DISPATCH_PROPERTYPUT, nullptr},
      {OLESTR("CreateRandKeys"), DISPATCH_METHOD, nullptr},
      {OLESTR("Hex"), DISPATCH_PROPERTYPUT, OLESTR("1234")},
      {OLESTR("Key"), DISPATCH_PROPERTYPUT, OLESTR("8 bytes.")},
      {OLESTR("ReadKey"), DISPATCH_PROPERTYPUT, OLESTR("8 bytes.")},
      {OLESTR("WriteKey"), DISPATCH_PROPERTYPUT, OLESTR("8 bytes.")},
  };
  const bool digests = late.IdOf(OLESTR("ReadValue")) != DISPID_UNKNOWN;
  for (const Step& step : kSteps) {
    const DISPID id = late.IdOf(step.name);
    if (id == DISPID_UNKNOWN) continue;
    const OLECHAR* const algorithm = digests ? OLESTR("SHA1") : OLESTR("DES");
    const TestValue value =
        TextValue(std::basic_string_view(step.value != nullptr ? step.value : algorithm));
    const bool is_put = step.kind == DISPATCH_PROPERTYPUT;
    const bool takes_none = Text(step.name) == OLESTR("CreateRandKeys");
    EXPECT_EQ(takes_none ? late.Method(id)
              : is_put   ? late.Put(id, {value})
                         : late.Method(id, {value}),
              S_OK)
        << Plain(step.name);
  }
}

TEST_P(ObjectHelpTest, ValuesHaveTheTypesOfTheTables) {
  LateBound late(object.Get());
  MakeReady(late);
  for (unsigned k = 0; k < table->member_count; ++k) {
    const MemberRow& member = table->members[k];
    if (member.result.type != VT_VARIANT) continue;
    ASSERT_NE(member.result.content, VT_EMPTY) << Plain(member.name);
    const TestValue data = TextValue(OLESTR("abcdef"));
    const HRESULT status =
        member.kind == kMethod ? late.Method(member.id, {data}) : late.Get(member.id);
    EXPECT_EQ(status, S_OK) << Plain(member.name);
    EXPECT_EQ(late.Type(), member.result.content) << Plain(member.name);
  }
}

}  // namespace
}  // namespace mirolta::test
