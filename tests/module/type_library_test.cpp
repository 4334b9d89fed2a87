// The module's type library, walked member by member against the public header, and the slot that
// each late-bound call reaches.
#include <utility>

#include "loaded_module.h"
#include "type_library_cases.h"

namespace mirolta::test {
namespace {

class TypeLibraryTest : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(LoadTypeLib(ModuleFile().c_str(), library.Put()), S_OK); }

  OwnedReference<ITypeLib> library;
};

TEST_F(TypeLibraryTest, HasItsNameVersionAndIdentifier) {
  OwnedBstr name;
  OwnedBstr help;
  ASSERT_EQ(library->GetDocumentation(-1, name.Put(), help.Put(), nullptr, nullptr), S_OK);
  EXPECT_EQ(Text(name.Get()), OLESTR("MIROLTALib"));
  EXPECT_EQ(Text(help.Get()), OLESTR("Mirolta 1.0 Type Library"));
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
  EXPECT_TRUE(attributes->guid == LIBID_MIROLTALib);
  EXPECT_EQ(attributes->wMajorVerNum, 1);
  EXPECT_EQ(attributes->wMinorVerNum, 0);
  library->ReleaseTLibAttr(attributes);
}

TEST_F(TypeLibraryTest, HoldsSixInterfacesAndSixClasses) {
  UINT interfaces = 0;
  UINT classes = 0;
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    TYPEKIND kind = TKIND_ENUM;
    ASSERT_EQ(library->GetTypeInfoType(i, &kind), S_OK);
    interfaces += kind == TKIND_DISPATCH ? 1 : 0;
    classes += kind == TKIND_COCLASS ? 1 : 0;
  }
  EXPECT_EQ(interfaces, 6u);
  EXPECT_EQ(classes, 6u);
  EXPECT_EQ(library->GetTypeInfoCount(), 12u);
}

TEST_F(TypeLibraryTest, AFileWithoutALibraryIsRefused) {
  OwnedReference<ITypeLib> other;
  EXPECT_EQ(LoadTypeLib(OLESTR("/nowhere/at/all.so"), other.Put()), TYPE_E_CANTLOADLIBRARY);
  EXPECT_EQ(LoadTypeLib(OLESTR("libc.so.6"), other.Put()), TYPE_E_CANTLOADLIBRARY);
  EXPECT_FALSE(other);
  EXPECT_EQ(LoadTypeLib(nullptr, other.Put()), E_INVALIDARG);
  EXPECT_EQ(LoadTypeLib(ModuleFile().c_str(), nullptr), E_INVALIDARG);
}

class TypeLibraryInterfaceTest : public TypeLibraryTest,
                                 public testing::WithParamInterface<InterfaceCase> {
 protected:
  void SetUp() override {
    TypeLibraryTest::SetUp();
    ASSERT_TRUE(library);
    ASSERT_EQ(library->GetTypeInfoOfGuid(*GetParam().iid, info.Put()), S_OK);
  }

  OwnedReference<ITypeInfo> info;
};

INSTANTIATE_TEST_SUITE_P(Interfaces, TypeLibraryInterfaceTest, testing::ValuesIn(kInterfaceCases),
                         [](const testing::TestParamInfo<InterfaceCase>& one) {
                           const Text name = one.param.name;
                           return std::string(name.begin(), name.end());
                         });

TEST_P(TypeLibraryInterfaceTest, HasItsNameAndSize) {
  OwnedBstr name;
  ASSERT_EQ(info->GetDocumentation(-1, name.Put(), nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(Text(name.Get()), GetParam().name);
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->typekind, TKIND_DISPATCH);
  EXPECT_EQ(attributes->cFuncs, GetParam().member_count);
  EXPECT_NE(attributes->wTypeFlags & TYPEFLAG_FDUAL, 0);
  EXPECT_EQ(attributes->wMajorVerNum, 1);
  EXPECT_EQ(attributes->wMinorVerNum, 0);
  info->ReleaseTypeAttr(attributes);
}

TEST_P(TypeLibraryInterfaceTest, IsTheDefaultOfItsClass) {
  OwnedReference<ITypeInfo> of_class;
  ASSERT_EQ(library->GetTypeInfoOfGuid(*GetParam().class_id, of_class.Put()), S_OK);
  OwnedBstr name;
  ASSERT_EQ(of_class->GetDocumentation(-1, name.Put(), nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(Text(name.Get()), GetParam().class_name);
  HREFTYPE reference = 0;
  ASSERT_EQ(of_class->GetRefTypeOfImplType(0, &reference), S_OK);
  OwnedReference<ITypeInfo> face;
  ASSERT_EQ(of_class->GetRefTypeInfo(reference, face.Put()), S_OK);
  ASSERT_EQ(face->GetDocumentation(-1, name.Put(), nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(Text(name.Get()), GetParam().name);
}

TEST_P(TypeLibraryInterfaceTest, HasTheMembersOfThePublicHeader) {
  for (unsigned i = 0; i < GetParam().member_count; ++i) {
    const MemberCase& member = GetParam().members[i];
    SCOPED_TRACE(member.Label());
    EXPECT_EQ(member.slot, 7 + i) << "in the public header";
    FUNCDESC* function = nullptr;
    ASSERT_EQ(info->GetFuncDesc(i, &function), S_OK);
    EXPECT_EQ(function->memid, member.id);
    EXPECT_EQ(function->invkind, member.kind);
    EXPECT_EQ(function->oVft, static_cast<SHORT>(member.slot * sizeof(void*)));
    EXPECT_EQ(function->elemdescFunc.tdesc.vt, member.result);
    ASSERT_EQ(function->cParams, member.ParameterCount());
    for (SHORT k = 0; k < function->cParams; ++k) {
      const ParameterCase& parameter = member.parameters[k];
      const ELEMDESC& element = function->lprgelemdescParam[k];
      EXPECT_EQ(element.tdesc.vt, parameter.type);
      EXPECT_EQ(element.paramdesc.wParamFlags, PARAMFLAG_FIN | parameter.flags);
      if (parameter.flags != kPreset) continue;
      ASSERT_NE(element.paramdesc.pparamdescex, nullptr);
      const VARIANT& preset = element.paramdesc.pparamdescex->varDefaultValue;
      EXPECT_EQ(preset.vt, parameter.type);
      EXPECT_EQ(parameter.type == VT_BOOL ? preset.boolVal : preset.lVal, parameter.preset);
    }
    info->ReleaseFuncDesc(function);
  }
}

TEST_P(TypeLibraryInterfaceTest, NamesItsMembersAndParameters) {
  for (unsigned i = 0; i < GetParam().member_count; ++i) {
    const MemberCase& member = GetParam().members[i];
    SCOPED_TRACE(member.Label());
    if (i > 0 && member.id == GetParam().members[i - 1].id) continue;  // a property's second form
    BSTR names[5] = {};
    UINT count = 0;
    ASSERT_EQ(info->GetNames(member.id, names, 5, &count), S_OK);
    ASSERT_EQ(count, 1u + static_cast<UINT>(member.ParameterCount()));
    EXPECT_EQ(Text(names[0]), member.name);
    for (UINT k = 1; k < count; ++k) EXPECT_EQ(Text(names[k]), member.parameters[k - 1].name);
    for (UINT k = 0; k < count; ++k) SysFreeString(names[k]);

    OwnedBstr help;
    ASSERT_EQ(info->GetDocumentation(member.id, nullptr, help.Put(), nullptr, nullptr), S_OK);
    EXPECT_GT(SysStringLen(help.Get()), 0u);
    LPOLESTR name = const_cast<LPOLESTR>(member.name);
    MEMBERID id = -1;
    EXPECT_EQ(info->GetIDsOfNames(&name, 1, &id), S_OK);
    EXPECT_EQ(id, member.id);
  }
}

// An object with a virtual table only, whose entries return their own slot. The real methods take
// more parameters, which the caller passes and removes.
constexpr size_t kRecordedSlots = 48;
constexpr HRESULT kFirstRecorded = static_cast<HRESULT>(0x8004A000);

template <size_t kSlot>
HRESULT STDMETHODCALLTYPE Recorded(void*) {
  return kFirstRecorded + static_cast<HRESULT>(kSlot);
}

struct RecordingObject {
  using Entry = HRESULT(STDMETHODCALLTYPE*)(void*);
  const Entry* table;
};

template <size_t... kSlots>
const RecordingObject::Entry* RecordingTable(std::index_sequence<kSlots...>) {
  static const RecordingObject::Entry table[] = {&Recorded<kSlots>...};
  return table;
}

TEST_P(TypeLibraryInterfaceTest, LateBoundCallsReachTheirSlots) {
  // Type information is data; calls need the module loaded.
  const LoadedModule module;
  ASSERT_NE(module.handle(), nullptr);
  OwnedReference<ITypeLib> fresh;
  ASSERT_EQ(LoadTypeLib(ModuleFile().c_str(), fresh.Put()), S_OK);
  ASSERT_EQ(fresh->GetTypeInfoOfGuid(*GetParam().iid, info.Put()), S_OK);
  RecordingObject object = {RecordingTable(std::make_index_sequence<kRecordedSlots>())};
  for (unsigned i = 0; i < GetParam().member_count; ++i) {
    const MemberCase& member = GetParam().members[i];
    SCOPED_TRACE(member.Label());
    VARIANT arguments[3];
    const UINT count = static_cast<UINT>(member.ParameterCount());
    for (UINT k = 0; k < count; ++k) {
      VARIANT& argument = arguments[count - 1 - k];
      VariantInit(&argument);
      V_VT(&argument) =
          member.parameters[k].type == VT_VARIANT ? VARTYPE{VT_I4} : member.parameters[k].type;
    }
    DISPID put = DISPID_PROPERTYPUT;
    const bool puts = (member.kind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0;
    DISPPARAMS params = {arguments, &put, count, puts ? 1u : 0u};
    EXCEPINFO exception = {};
    EXPECT_EQ(info->Invoke(&object, member.id, static_cast<WORD>(member.kind), &params, nullptr,
                           &exception, nullptr),
              DISP_E_EXCEPTION);
    EXPECT_EQ(exception.scode, kFirstRecorded + static_cast<HRESULT>(member.slot));
  }
}

}  // namespace
}  // namespace mirolta::test
