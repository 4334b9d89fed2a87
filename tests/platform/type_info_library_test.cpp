// Type libraries: the list of types, names, and that nothing points back to the tables.
#include <cstring>
#include <memory>
#include <vector>

#include "runtime_allocations.h"
#include "type_info_sample.h"

namespace mirolta::test {
namespace {

using TypeInfoLibraryTest = SampleLibraryTest;

TEST_F(TypeInfoLibraryTest, ListsInterfacesThenClasses) {
  ASSERT_EQ(library->GetTypeInfoCount(), 3u);
  const TYPEKIND kinds[] = {TKIND_DISPATCH, TKIND_DISPATCH, TKIND_COCLASS};
  const GUID guids[] = {kEmptyInterface, kSampleInterface, kSampleClass};
  const Text names[] = {OLESTR("IEmpty"), OLESTR("ISample"), OLESTR("Sample")};
  for (UINT i = 0; i < 3; ++i) {
    TYPEKIND kind = TKIND_ENUM;
    EXPECT_EQ(library->GetTypeInfoType(i, &kind), S_OK);
    EXPECT_EQ(kind, kinds[i]);
    ITypeInfo* type = nullptr;
    ASSERT_EQ(library->GetTypeInfo(i, &type), S_OK);
    TYPEATTR* attributes = nullptr;
    ASSERT_EQ(type->GetTypeAttr(&attributes), S_OK);
    EXPECT_TRUE(attributes->guid == guids[i]);
    EXPECT_EQ(attributes->typekind, kinds[i]);
    EXPECT_EQ(attributes->wMajorVerNum, 3);
    EXPECT_EQ(attributes->wMinorVerNum, 7);
    type->ReleaseTypeAttr(attributes);
    BSTR name = nullptr;
    EXPECT_EQ(library->GetDocumentation(static_cast<INT>(i), &name, nullptr, nullptr, nullptr),
              S_OK);
    EXPECT_EQ(TakeText(name), names[i]);
    type->Release();
  }
}

TEST_F(TypeInfoLibraryTest, TypesBeyondTheLastAreNotFound) {
  ITypeInfo* type = info;
  TYPEKIND kind = TKIND_ENUM;
  BSTR name = nullptr;
  EXPECT_EQ(library->GetTypeInfo(3, &type), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(type, nullptr);
  EXPECT_EQ(library->GetTypeInfoType(3, &kind), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(library->GetDocumentation(3, &name, nullptr, nullptr, nullptr), TYPE_E_ELEMENTNOTFOUND);
  type = info;
  EXPECT_EQ(library->GetTypeInfoOfGuid(kSampleLibrary, &type), TYPE_E_ELEMENTNOTFOUND);
  EXPECT_EQ(type, nullptr);
}

TEST_F(TypeInfoLibraryTest, NullPlacesAreRefused) {
  BOOL found = FALSE;
  USHORT count = 1;
  MEMBERID id = 0;
  LPOLESTR name = const_cast<LPOLESTR>(OLESTR("Echo"));
  EXPECT_EQ(library->GetTypeInfo(0, nullptr), E_INVALIDARG);
  EXPECT_EQ(library->GetTypeInfoType(0, nullptr), E_INVALIDARG);
  EXPECT_EQ(library->GetTypeInfoOfGuid(kSampleInterface, nullptr), E_INVALIDARG);
  EXPECT_EQ(library->GetLibAttr(nullptr), E_INVALIDARG);
  EXPECT_EQ(library->IsName(nullptr, 0, &found), E_INVALIDARG);
  EXPECT_EQ(library->IsName(name, 0, nullptr), E_INVALIDARG);
  EXPECT_EQ(library->FindName(name, 0, nullptr, &id, &count), E_INVALIDARG);
  EXPECT_EQ(library->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  EXPECT_EQ(MiroltaTypeLibFromTable(nullptr, &library), E_INVALIDARG);
  EXPECT_EQ(MiroltaTypeLibFromTable(&kSampleLibraryTable, nullptr), E_INVALIDARG);
}

TEST_F(TypeInfoLibraryTest, TellsItsAttributesAndTexts) {
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
  EXPECT_TRUE(attributes->guid == kSampleLibrary);
  EXPECT_EQ(attributes->lcid, 0u);
  EXPECT_EQ(attributes->syskind, sizeof(void*) == 8 ? SYS_WIN64 : SYS_WIN32);
  EXPECT_EQ(attributes->wMajorVerNum, 3);
  EXPECT_EQ(attributes->wMinorVerNum, 7);
  library->ReleaseTLibAttr(attributes);

  BSTR name = nullptr;
  BSTR help = nullptr;
  BSTR help_file = SysAllocString(OLESTR("unset"));
  BSTR kept = help_file;
  DWORD context = 9;
  ASSERT_EQ(library->GetDocumentation(-1, &name, &help, &context, &help_file), S_OK);
  EXPECT_EQ(TakeText(name), OLESTR("SampleLib"));
  EXPECT_EQ(TakeText(help), OLESTR("Sample Library"));
  EXPECT_EQ(context, 0u);
  EXPECT_EQ(help_file, nullptr);
  SysFreeString(kept);
  EXPECT_EQ(library->GetDocumentation(-1, nullptr, nullptr, nullptr, nullptr), S_OK);
}

TEST_F(TypeInfoLibraryTest, KnowsItsNames) {
  for (const OLECHAR* name :
       {OLESTR("ISample"), OLESTR("echo"), OLESTR("SAMPLE"), OLESTR("Count"), OLESTR("IEmpty")}) {
    BOOL found = FALSE;
    EXPECT_EQ(library->IsName(const_cast<LPOLESTR>(name), 0, &found), S_OK);
    EXPECT_TRUE(found);
  }
  for (const OLECHAR* name : {OLESTR("Ech"), OLESTR("Echoes"), OLESTR("")}) {
    BOOL found = TRUE;
    EXPECT_EQ(library->IsName(const_cast<LPOLESTR>(name), 0, &found), S_OK);
    EXPECT_FALSE(found);
  }
}

TEST_F(TypeInfoLibraryTest, FindsWhereANameStands) {
  ITypeInfo* found[4] = {};
  MEMBERID ids[4] = {};
  USHORT count = 4;
  ASSERT_EQ(library->FindName(const_cast<LPOLESTR>(OLESTR("count")), 0, found, ids, &count), S_OK);
  ASSERT_EQ(count, 1);  // get and put are one name
  EXPECT_EQ(ids[0], 1);
  BSTR name = nullptr;
  EXPECT_EQ(found[0]->GetDocumentation(-1, &name, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(TakeText(name), OLESTR("ISample"));
  found[0]->Release();

  count = 4;
  ASSERT_EQ(library->FindName(const_cast<LPOLESTR>(OLESTR("nothing")), 0, found, ids, &count),
            S_OK);
  EXPECT_EQ(count, 0);
  count = 0;
  ASSERT_EQ(library->FindName(const_cast<LPOLESTR>(OLESTR("Count")), 0, found, ids, &count), S_OK);
  EXPECT_EQ(count, 0);
}

TEST_F(TypeInfoLibraryTest, AnswersForItsOwnInterfacesOnly) {
  void* out = nullptr;
  ASSERT_EQ(library->QueryInterface(IID_ITypeLib, &out), S_OK);
  EXPECT_EQ(out, library);
  EXPECT_EQ(library->Release(), 1u);
  ASSERT_EQ(library->QueryInterface(IID_IUnknown, &out), S_OK);
  EXPECT_EQ(out, library);
  library->Release();
  EXPECT_EQ(library->QueryInterface(IID_IDispatch, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  ASSERT_EQ(info->QueryInterface(IID_ITypeInfo, &out), S_OK);
  EXPECT_EQ(out, info);
  EXPECT_EQ(info->Release(), 1u);
  EXPECT_EQ(info->QueryInterface(IID_ITypeLib, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(info->QueryInterface(IID_IUnknown, nullptr), E_POINTER);
  ITypeComp* comp = nullptr;
  EXPECT_EQ(library->GetTypeComp(&comp), E_NOTIMPL);
}

TEST_F(TypeInfoLibraryTest, TypesOutliveTheirLibrary) {
  library->Release();
  library = nullptr;
  BSTR name = nullptr;
  ASSERT_EQ(info->GetDocumentation(2, &name, nullptr, nullptr, nullptr), S_OK);
  EXPECT_EQ(TakeText(name), OLESTR("Echo"));
  UINT index = 99;
  ASSERT_EQ(info->GetContainingTypeLib(&library, &index), S_OK);
  EXPECT_EQ(index, 1u);
  EXPECT_EQ(library->GetTypeInfoCount(), 3u);
  EXPECT_EQ(info->GetContainingTypeLib(nullptr, nullptr), S_OK);
}

// Tables in memory of their own, overwritten once the library is made, as a module's are when it is
// unloaded.
struct VanishingTables {
  OLECHAR text[16] = OLESTR("Ephemeral");
  OLECHAR parameter[16] = OLESTR("lPassing");
  IID iid = kSampleInterface;
  CLSID clsid = kSampleClass;
  GUID libid = kSampleLibrary;
  MemberRow member = kSampleMembers[9];
  InterfaceTable table = {};
  const InterfaceTable* list[1] = {};
  ClassTableRow row = {};
  TypeLibraryTable whole = {};

  VanishingTables() {
    member.name = member.help = text;
    member.parameters.rows[0].name = parameter;
    member.parameters.rows[0].type.interface_name = parameter;
    table = {&iid, text, text, &member, 1};
    list[0] = &table;
    row = {&clsid, text, text, &table};
    whole = {&libid, text, text, 1, 0, list, 1, &row, 1};
  }
};

TEST(TypeInfoCopyTest, NothingPointsBackToTheTables) {
  auto tables = std::make_unique<VanishingTables>();
  ITypeLib* library = nullptr;
  ASSERT_EQ(MiroltaTypeLibFromTable(&tables->whole, &library), S_OK);
  std::memset(static_cast<void*>(tables.get()), 0xEE, sizeof *tables);
  tables.reset();

  for (const GUID& guid : {kSampleInterface, kSampleClass}) {
    ITypeInfo* type = nullptr;
    ASSERT_EQ(library->GetTypeInfoOfGuid(guid, &type), S_OK);
    BSTR name = nullptr;
    BSTR help = nullptr;
    ASSERT_EQ(type->GetDocumentation(-1, &name, &help, nullptr, nullptr), S_OK);
    EXPECT_EQ(TakeText(name), OLESTR("Ephemeral"));
    EXPECT_EQ(TakeText(help), OLESTR("Ephemeral"));
    type->Release();
  }
  TLIBATTR* attributes = nullptr;
  ASSERT_EQ(library->GetLibAttr(&attributes), S_OK);
  EXPECT_TRUE(attributes->guid == kSampleLibrary);
  library->ReleaseTLibAttr(attributes);

  ITypeInfo* type = nullptr;
  ASSERT_EQ(library->GetTypeInfo(1, &type), S_OK);
  HREFTYPE reference = 99;
  ASSERT_EQ(type->GetRefTypeOfImplType(0, &reference), S_OK);
  EXPECT_EQ(reference, 0u);
  type->Release();
  ASSERT_EQ(library->GetTypeInfo(0, &type), S_OK);
  BSTR names[2] = {};
  UINT count = 0;
  ASSERT_EQ(type->GetNames(6, names, 2, &count), S_OK);
  ASSERT_EQ(count, 2u);
  EXPECT_EQ(TakeText(names[0]), OLESTR("Ephemeral"));
  EXPECT_EQ(TakeText(names[1]), OLESTR("lPassing"));
  type->Release();
  library->Release();
}

// Fails each allocation of `work`, of which there are some.
template <typename Work>
void FailEveryAllocation(Work work) {
  EXPECT_GT(FailEachAllocation(work), 0);
}

TEST_F(TypeInfoLibraryTest, EveryAllocationMayFail) {
  FailEveryAllocation([] {
    ITypeLib* made = nullptr;
    const HRESULT status = MiroltaTypeLibFromTable(&kSampleLibraryTable, &made);
    EXPECT_EQ(made != nullptr, status == S_OK);
    if (made != nullptr) made->Release();
    return status;
  });
  FailEveryAllocation([&] {
    ITypeInfo* type = nullptr;
    const HRESULT status = library->GetTypeInfo(1, &type);
    EXPECT_EQ(type != nullptr, status == S_OK);
    if (type != nullptr) type->Release();
    return status;
  });
  FailEveryAllocation([&] {
    TLIBATTR* attributes = nullptr;
    const HRESULT status = library->GetLibAttr(&attributes);
    if (attributes != nullptr) library->ReleaseTLibAttr(attributes);
    return status;
  });
  FailEveryAllocation([&] {
    BSTR name = nullptr;
    BSTR help = nullptr;
    const HRESULT status = library->GetDocumentation(-1, &name, &help, nullptr, nullptr);
    if (FAILED(status)) {
      EXPECT_EQ(name, nullptr);
      EXPECT_EQ(help, nullptr);
    }
    SysFreeString(name);
    SysFreeString(help);
    return status;
  });
  FailEveryAllocation([&] {
    ITypeLib* made = nullptr;
    const HRESULT status = info->GetContainingTypeLib(&made, nullptr);
    if (made != nullptr) made->Release();
    return status;
  });
  FailEveryAllocation([&] {
    ITypeInfo* found[1] = {};
    MEMBERID id = 0;
    USHORT count = 1;
    LPOLESTR name = const_cast<LPOLESTR>(OLESTR("Echo"));
    const HRESULT status = library->FindName(name, 0, found, &id, &count);
    EXPECT_EQ(count, status == S_OK ? 1 : 0);
    if (count == 1) found[0]->Release();
    return status;
  });
}

TEST_F(TypeInfoLibraryTest, EveryAllocationOfATypeMayFail) {
  FailEveryAllocation([&] {
    BSTR names[4] = {};
    UINT count = 0;
    const HRESULT status = info->GetNames(2, names, 4, &count);
    EXPECT_EQ(count, status == S_OK ? 4u : 0u);
    for (UINT i = 0; i < count; ++i) SysFreeString(names[i]);
    return status;
  });
  FailEveryAllocation([&] {
    FUNCDESC* function = nullptr;
    const HRESULT status = info->GetFuncDesc(3, &function);
    if (function != nullptr) info->ReleaseFuncDesc(function);
    return status;
  });
  FailEveryAllocation([&] {
    TYPEATTR* attributes = nullptr;
    const HRESULT status = info->GetTypeAttr(&attributes);
    if (attributes != nullptr) info->ReleaseTypeAttr(attributes);
    return status;
  });
  FailEveryAllocation([&] {
    BSTR name = nullptr;
    BSTR help = nullptr;
    const HRESULT status = info->GetDocumentation(2, &name, &help, nullptr, nullptr);
    if (FAILED(status)) {
      EXPECT_EQ(name, nullptr);
      EXPECT_EQ(help, nullptr);
    }
    SysFreeString(name);
    SysFreeString(help);
    return status;
  });
}

}  // namespace
}  // namespace mirolta::test
