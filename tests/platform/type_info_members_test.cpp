// Type information of an interface, its members and a class.
#include <initializer_list>
#include <vector>

#include "type_info_sample.h"

namespace mirolta::test {
namespace {

class TypeInfoMembersTest : public SampleLibraryTest {
 protected:
  HRESULT Ids(std::vector<const OLECHAR*> names) {
    ids.assign(names.size() + 1, kUnwritten);
    return info->GetIDsOfNames(const_cast<LPOLESTR*>(names.data()), static_cast<UINT>(names.size()),
                               ids.data());
  }
  std::vector<Text> Names(MEMBERID id, UINT capacity) {
    std::vector<BSTR> names(capacity + 1, nullptr);
    UINT count = 99;
    EXPECT_EQ(info->GetNames(id, names.data(), capacity, &count), S_OK);
    EXPECT_LE(count, capacity);
    std::vector<Text> texts;
    for (UINT i = 0; i < count && i < capacity; ++i) texts.push_back(TakeText(names[i]));
    return texts;
  }

  static constexpr MEMBERID kUnwritten = 4711;
  std::vector<MEMBERID> ids;
};

TEST_F(TypeInfoMembersTest, DescribesADualInterface) {
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(info->GetTypeAttr(&attributes), S_OK);
  EXPECT_TRUE(attributes->guid == kSampleInterface);
  EXPECT_EQ(attributes->typekind, TKIND_DISPATCH);
  EXPECT_EQ(attributes->cFuncs, sizeof(kSampleMembers) / sizeof(kSampleMembers[0]));
  EXPECT_EQ(attributes->cVars, 0);
  EXPECT_EQ(attributes->cImplTypes, 1);
  EXPECT_EQ(attributes->cbSizeVft, 7 * sizeof(void*));
  // The view of a dual interface that late-bound callers get does not repeat the flag of automation
  // types.
  EXPECT_EQ(attributes->wTypeFlags, TYPEFLAG_FDISPATCHABLE | TYPEFLAG_FDUAL);
  EXPECT_EQ(attributes->memidConstructor, DISPID_UNKNOWN);
  EXPECT_EQ(attributes->memidDestructor, DISPID_UNKNOWN);
  info->ReleaseTypeAttr(attributes);
  EXPECT_EQ(info->GetTypeAttr(nullptr), E_INVALIDARG);
}

TEST_F(TypeInfoMembersTest, DescribesEveryMember) {
  constexpr UINT kCount = sizeof(kSampleMembers) / sizeof(kSampleMembers[0]);
  for (UINT i = 0; i < kCount; ++i) {
    const MemberRow& row = kSampleMembers[i];
    FUNCDESC* function = nullptr;
    ASSERT_EQ(info->GetFuncDesc(i, &function), S_OK);
    EXPECT_EQ(function->memid, row.id);
    EXPECT_EQ(function->invkind, row.kind);
    EXPECT_EQ(function->funckind, FUNC_DISPATCH);
    EXPECT_EQ(function->callconv, CC_STDCALL);
    EXPECT_EQ(function->oVft, static_cast<SHORT>((7 + i) * sizeof(void*)));
    EXPECT_EQ(function->cParams, static_cast<SHORT>(row.parameters.Count()));
    SHORT optional = 0;
    for (unsigned k = 0; k < row.parameters.Count(); ++k) {
      optional = static_cast<SHORT>(
          optional + (row.parameters.rows[k].presence != Presence::kRequired ? 1 : 0));
    }
    EXPECT_EQ(function->cParamsOpt, optional);
    info->ReleaseFuncDesc(function);
  }
  FUNCDESC* function = nullptr;
  EXPECT_EQ(info->GetFuncDesc(kCount, &function), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(function, nullptr);
  EXPECT_EQ(info->GetFuncDesc(0, nullptr), E_INVALIDARG);
}

TEST_F(TypeInfoMembersTest, DescribesParametersAndDefaults) {
  FUNCDESC* function = nullptr;
  ASSERT_EQ(info->GetFuncDesc(3, &function), S_OK);  // Echo
  ASSERT_EQ(function->cParams, 3);
  const ELEMDESC* parameters = function->lprgelemdescParam;
  EXPECT_EQ(parameters[0].tdesc.vt, VT_VARIANT);
  EXPECT_EQ(parameters[0].paramdesc.wParamFlags, PARAMFLAG_FIN);
  EXPECT_EQ(parameters[0].paramdesc.pparamdescex, nullptr);
  const USHORT preset = PARAMFLAG_FIN | PARAMFLAG_FOPT | PARAMFLAG_FHASDEFAULT;
  EXPECT_EQ(parameters[1].tdesc.vt, VT_I4);
  EXPECT_EQ(parameters[1].paramdesc.wParamFlags, preset);
  ASSERT_NE(parameters[1].paramdesc.pparamdescex, nullptr);
  EXPECT_EQ(parameters[1].paramdesc.pparamdescex->cBytes, sizeof(PARAMDESCEX));
  EXPECT_EQ(parameters[1].paramdesc.pparamdescex->varDefaultValue.vt, VT_I4);
  EXPECT_EQ(parameters[1].paramdesc.pparamdescex->varDefaultValue.lVal, -1);
  EXPECT_EQ(parameters[2].tdesc.vt, VT_BOOL);
  EXPECT_EQ(parameters[2].paramdesc.wParamFlags, preset);
  EXPECT_EQ(parameters[2].paramdesc.pparamdescex->varDefaultValue.vt, VT_BOOL);
  EXPECT_EQ(parameters[2].paramdesc.pparamdescex->varDefaultValue.boolVal, VARIANT_TRUE);
  EXPECT_EQ(function->elemdescFunc.tdesc.vt, VT_VARIANT);
  info->ReleaseFuncDesc(function);

  ASSERT_EQ(info->GetFuncDesc(4, &function), S_OK);  // Take
  EXPECT_EQ(function->lprgelemdescParam[0].paramdesc.wParamFlags, PARAMFLAG_FIN | PARAMFLAG_FOPT);
  EXPECT_EQ(function->lprgelemdescParam[0].paramdesc.pparamdescex, nullptr);
  EXPECT_EQ(function->elemdescFunc.tdesc.vt, VT_VOID);
  info->ReleaseFuncDesc(function);
}

TEST_F(TypeInfoMembersTest, AnInterfaceOfTheLibraryIsAPointerToItsType) {
  FUNCDESC* function = nullptr;
  ASSERT_EQ(info->GetFuncDesc(11, &function), S_OK);  // Self
  ASSERT_EQ(function->elemdescFunc.tdesc.vt, VT_PTR);
  ASSERT_NE(function->elemdescFunc.tdesc.lptdesc, nullptr);
  EXPECT_EQ(function->elemdescFunc.tdesc.lptdesc->vt, VT_USERDEFINED);
  ITypeInfo* type = nullptr;
  ASSERT_EQ(info->GetRefTypeInfo(function->elemdescFunc.tdesc.lptdesc->hreftype, &type), S_OK);
  BSTR name = nullptr;
  ASSERT_EQ(type->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(TakeText(name), OLESTR("ISample"));
  type->Release();
  info->ReleaseFuncDesc(function);

  ASSERT_EQ(info->GetFuncDesc(7, &function), S_OK);  // Object
  EXPECT_EQ(function->elemdescFunc.tdesc.vt, VT_UNKNOWN);
  info->ReleaseFuncDesc(function);
}

TEST_F(TypeInfoMembersTest, NamesAMemberAndItsParameters) {
  EXPECT_EQ(Names(2, 4), (std::vector<Text>{OLESTR("Echo"), OLESTR("vData"), OLESTR("lNumber"),
                                            OLESTR("bFlag")}));
  EXPECT_EQ(Names(2, 2), (std::vector<Text>{OLESTR("Echo"), OLESTR("vData")}));
  EXPECT_EQ(Names(2, 1), (std::vector<Text>{OLESTR("Echo")}));
  EXPECT_EQ(Names(2, 0), std::vector<Text>{});
  EXPECT_EQ(Names(1, 4), (std::vector<Text>{OLESTR("Count")}));
  EXPECT_EQ(Names(4, 4), (std::vector<Text>{OLESTR("Item"), OLESTR("lIndex")}));

  BSTR name = nullptr;
  UINT count = 99;
  EXPECT_EQ(info->GetNames(7, &name, 1, &count), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(info->GetNames(2, nullptr, 1, &count), E_INVALIDARG);
  EXPECT_EQ(info->GetNames(2, &name, 1, nullptr), E_INVALIDARG);
}

// Properties that can only be written: what is put has no name.
constexpr MemberRow kWrittenMembers[] = {kSampleMembers[2], kSampleMembers[6], kSampleMembers[8]};
constexpr InterfaceTable kWrittenTable = {&kSampleInterface, OLESTR("IWritten"), nullptr,
                                          kWrittenMembers, 3};
constexpr const InterfaceTable* kWrittenInterfaces[] = {&kWrittenTable};
constexpr TypeLibraryTable kWrittenLibrary = {
    &kSampleLibrary, OLESTR("Written"), nullptr, 1, 0, kWrittenInterfaces, 1, nullptr, 0};

TEST_F(TypeInfoMembersTest, NamesNoValueThatIsPut) {
  ITypeLib* written = nullptr;
  ASSERT_EQ(MiroltaTypeLibFromTable(&kWrittenLibrary, &written), S_OK);
  info->Release();
  info = nullptr;
  ASSERT_EQ(written->GetTypeInfoOfGuid(kSampleInterface, &info), S_OK);
  written->Release();
  EXPECT_EQ(Names(1, 4), (std::vector<Text>{OLESTR("Count")}));
  EXPECT_EQ(Names(4, 4), (std::vector<Text>{OLESTR("Item"), OLESTR("lIndex")}));
  EXPECT_EQ(Names(5, 4), (std::vector<Text>{OLESTR("Object")}));
}

TEST_F(TypeInfoMembersTest, FindsIdsByNameWithoutRegardToCase) {
  for (const MemberRow& row : kSampleMembers) {
    EXPECT_EQ(Ids({row.name}), S_OK);
    EXPECT_EQ(ids[0], row.id);
    Text lower(row.name);
    Text upper(row.name);
    for (OLECHAR& c : lower) c = c >= u'A' && c <= u'Z' ? static_cast<OLECHAR>(c + 32) : c;
    for (OLECHAR& c : upper) c = c >= u'a' && c <= u'z' ? static_cast<OLECHAR>(c - 32) : c;
    EXPECT_EQ(Ids({lower.c_str()}), S_OK);
    EXPECT_EQ(ids[0], row.id);
    EXPECT_EQ(Ids({upper.c_str()}), S_OK);
    EXPECT_EQ(ids[0], row.id);
  }
}

TEST_F(TypeInfoMembersTest, FindsParametersAfterTheMember) {
  EXPECT_EQ(Ids({OLESTR("Echo"), OLESTR("bFlag"), OLESTR("VDATA")}), S_OK);
  EXPECT_EQ(ids, (std::vector<MEMBERID>{2, 2, 0, kUnwritten}));
}

TEST_F(TypeInfoMembersTest, UnknownNamesGetNoId) {
  EXPECT_EQ(Ids({OLESTR("Ech")}), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids, (std::vector<MEMBERID>{DISPID_UNKNOWN, kUnwritten}));
  EXPECT_EQ(Ids({OLESTR("Echo"), OLESTR("nothing"), OLESTR("lNumber")}), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids, (std::vector<MEMBERID>{2, DISPID_UNKNOWN, 1, kUnwritten}));
  EXPECT_EQ(Ids({OLESTR("nothing"), OLESTR("lNumber")}), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(ids, (std::vector<MEMBERID>{DISPID_UNKNOWN, DISPID_UNKNOWN, kUnwritten}));
  EXPECT_EQ(Ids({nullptr}), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(Ids({OLESTR("Echo"), nullptr}), DISP_E_UNKNOWNNAME);
  EXPECT_EQ(Ids({}), E_INVALIDARG);
  EXPECT_EQ(info->GetIDsOfNames(nullptr, 1, ids.data()), E_INVALIDARG);
}

TEST_F(TypeInfoMembersTest, DocumentsMembers) {
  BSTR name = nullptr;
  BSTR help = nullptr;
  DWORD context = 5;
  ASSERT_EQ(info->GetDocumentation(1, &name, &help, &context, nullptr), S_OK);
  EXPECT_EQ(TakeText(name), OLESTR("Count"));
  EXPECT_EQ(TakeText(help), OLESTR("The count"));
  EXPECT_EQ(context, 0u);
  ASSERT_EQ(info->GetDocumentation(3, &name, &help, nullptr, nullptr), S_OK);
  EXPECT_EQ(TakeText(name), OLESTR("Take"));
  EXPECT_EQ(help, nullptr);
  EXPECT_EQ(info->GetDocumentation(7, &name, &help, nullptr, nullptr), TYPE_E_ELEMENTNOTFOUND);
}

TEST_F(TypeInfoMembersTest, AnInterfaceRestsOnIDispatch) {
  HREFTYPE reference = 0;
  ASSERT_EQ(info->GetRefTypeOfImplType(0, &reference), S_OK);
  EXPECT_EQ(info->GetRefTypeOfImplType(1, &reference), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(info->GetRefTypeOfImplType(0, nullptr), E_INVALIDARG);
  INT flags = 99;
  EXPECT_EQ(info->GetImplTypeFlags(0, &flags), S_OK);
  EXPECT_EQ(flags, 0);
  EXPECT_EQ(info->GetImplTypeFlags(1, &flags), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(info->GetImplTypeFlags(0, nullptr), E_INVALIDARG);

  ITypeInfo* root = nullptr;
  ASSERT_EQ(info->GetRefTypeInfo(reference, &root), S_OK);
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(root->GetTypeAttr(&attributes), S_OK);
  EXPECT_TRUE(attributes->guid == IID_IDispatch);
  EXPECT_EQ(attributes->cFuncs, 0);
  EXPECT_EQ(attributes->cImplTypes, 0);
  EXPECT_EQ(attributes->cbSizeVft, 7 * sizeof(void*));
  root->ReleaseTypeAttr(attributes);
  BSTR name = nullptr;
  ASSERT_EQ(root->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(TakeText(name), OLESTR("IDispatch"));
  FUNCDESC* function = nullptr;
  EXPECT_EQ(root->GetFuncDesc(0, &function), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(root->GetRefTypeOfImplType(0, &reference), TYPE_E_ELEMENTNOTFOUND);
  INT root_flags = 99;
  EXPECT_EQ(root->GetImplTypeFlags(0, &root_flags), TYPE_E_ELEMENTNOTFOUND);
  MEMBERID id = 0;
  LPOLESTR wanted = const_cast<LPOLESTR>(OLESTR("Invoke"));
  EXPECT_EQ(root->GetIDsOfNames(&wanted, 1, &id), DISP_E_UNKNOWNNAME);
  DISPPARAMS none = {};
  EXPECT_EQ(root->Invoke(this, 0, DISPATCH_METHOD, &none, nullptr, nullptr, nullptr),
            DISP_E_MEMBERNOTFOUND);
  root->Release();

  EXPECT_EQ(info->GetRefTypeInfo(3, &root), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(root, nullptr);
  EXPECT_EQ(info->GetRefTypeInfo(0, nullptr), E_INVALIDARG);
}

TEST_F(TypeInfoMembersTest, AClassHasItsDefaultInterface) {
  ITypeInfo* type = nullptr;
  ASSERT_EQ(library->GetTypeInfoOfGuid(kSampleClass, &type), S_OK);
  TYPEATTR* attributes = nullptr;
  ASSERT_EQ(type->GetTypeAttr(&attributes), S_OK);
  EXPECT_EQ(attributes->typekind, TKIND_COCLASS);
  EXPECT_EQ(attributes->wTypeFlags, TYPEFLAG_FCANCREATE);
  EXPECT_EQ(attributes->cImplTypes, 1);
  EXPECT_EQ(attributes->cFuncs, 0);
  type->ReleaseTypeAttr(attributes);
  INT flags = 0;
  EXPECT_EQ(type->GetImplTypeFlags(0, &flags), S_OK);
  EXPECT_EQ(flags, IMPLTYPEFLAG_FDEFAULT);
  HREFTYPE reference = 99;
  ASSERT_EQ(type->GetRefTypeOfImplType(0, &reference), S_OK);
  ITypeInfo* face = nullptr;
  ASSERT_EQ(type->GetRefTypeInfo(reference, &face), S_OK);
  BSTR name = nullptr;
  ASSERT_EQ(face->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(TakeText(name), OLESTR("ISample"));
  face->Release();
  FUNCDESC* function = nullptr;
  EXPECT_EQ(type->GetFuncDesc(0, &function), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(type->GetDocumentation(0, nullptr, nullptr, nullptr, nullptr), TYPE_E_ELEMENTNOTFOUND);
  type->Release();
}

TEST_F(TypeInfoMembersTest, HasNoVariablesEntriesOrCompiler) {
  void* out = this;
  EXPECT_EQ(info->CreateInstance(nullptr, IID_IUnknown, &out), E_INVALIDARG);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(info->CreateInstance(nullptr, IID_IUnknown, nullptr), E_POINTER);
  VARDESC* variable = nullptr;
  EXPECT_EQ(info->GetVarDesc(0, &variable), TYPE_E_ELEMENTNOTFOUND);
  BSTR text = nullptr;
  WORD ordinal = 9;
  EXPECT_EQ(info->GetDllEntry(0, INVOKE_FUNC, &text, nullptr, &ordinal), E_NOTIMPL);
  EXPECT_EQ(ordinal, 0);
  EXPECT_EQ(info->AddressOfMember(0, INVOKE_FUNC, &out), E_NOTIMPL);
  EXPECT_EQ(info->GetMops(0, &text), S_OK);
  EXPECT_EQ(text, nullptr);
  ITypeComp* comp = nullptr;
  EXPECT_EQ(info->GetTypeComp(&comp), E_NOTIMPL);
}

}  // namespace
}  // namespace mirolta::test
