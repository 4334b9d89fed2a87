// What the host keeps of members: with their type information, or with their object.
#include "objects/member_table.h"

#include <gtest/gtest.h>

#include <deque>
#include <string>

#include "command_line/member_descriptions.h"
#include "host_fixture.h"
#include "objects/dispatch_object.h"
#include "source/member_uses.h"
#include "stub_dispatch.h"

namespace mirolta::host {
namespace {

constexpr DISPID kMethod = 1;
constexpr DISPID kProperty = 2;

// Type information that describes a method and a property by their ids only.
class StubTypeInfo final : public ITypeInfo {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE GetTypeAttr(TYPEATTR** out) override {
    attributes_.cFuncs = kFunctions;
    *out = &attributes_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetFuncDesc(UINT index, FUNCDESC** out) override {
    if (index >= kFunctions) return TYPE_E_ELEMENTNOTFOUND;
    ++taken;
    function_.memid = index == 0 ? kMethod : kProperty;
    function_.invkind = index == 0 ? INVOKE_FUNC : INVOKE_PROPERTYGET;
    *out = &function_;
    return S_OK;
  }
  void STDMETHODCALLTYPE ReleaseTypeAttr(TYPEATTR*) override {}
  void STDMETHODCALLTYPE ReleaseFuncDesc(FUNCDESC* function) override {
    EXPECT_EQ(function, &function_);
    ++released;
  }
  void STDMETHODCALLTYPE ReleaseVarDesc(VARDESC*) override {}

#define NOT_USED(name, ...)                              \
  HRESULT STDMETHODCALLTYPE name(__VA_ARGS__) override { \
    return E_NOTIMPL;                                    \
  }
  NOT_USED(GetTypeComp, ITypeComp**)
  NOT_USED(GetVarDesc, UINT, VARDESC**)
  NOT_USED(GetNames, MEMBERID, BSTR*, UINT, UINT*)
  NOT_USED(GetRefTypeOfImplType, UINT, HREFTYPE*)
  NOT_USED(GetImplTypeFlags, UINT, INT*)
  NOT_USED(GetIDsOfNames, LPOLESTR*, UINT, MEMBERID*)
  NOT_USED(Invoke, PVOID, MEMBERID, WORD, DISPPARAMS*, VARIANT*, EXCEPINFO*, UINT*)
  NOT_USED(GetDocumentation, MEMBERID, BSTR*, BSTR*, DWORD*, BSTR*)
  NOT_USED(GetDllEntry, MEMBERID, INVOKEKIND, BSTR*, BSTR*, WORD*)
  NOT_USED(GetRefTypeInfo, HREFTYPE, ITypeInfo**)
  NOT_USED(AddressOfMember, MEMBERID, INVOKEKIND, PVOID*)
  NOT_USED(CreateInstance, IUnknown*, REFIID, PVOID*)
  NOT_USED(GetMops, MEMBERID, BSTR*)
  NOT_USED(GetContainingTypeLib, ITypeLib**, UINT*)
#undef NOT_USED

  ULONG references = 1;
  // Descriptions of functions.
  int taken = 0, released = 0;

 private:
  static constexpr WORD kFunctions = 2;
  TYPEATTR attributes_{};
  FUNCDESC function_{};
};

// An object with two described members and one, extra, that has another id in each object. Members
// return their id.
class DescribedObject final : public test::StubDispatch<> {
 public:
  DescribedObject(StubTypeInfo* info, DISPID extra) : info_(info), extra_(extra) {}

  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** out) override {
    info_->AddRef();
    *out = info_;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT, LCID,
                                          DISPID* ids) override {
    ++lookups;
    const std::basic_string<OLECHAR> name = names[0];
    if (name == OLESTR("method")) ids[0] = kMethod;
    if (name == OLESTR("property")) ids[0] = kProperty;
    if (name == OLESTR("extra")) ids[0] = extra_;
    return ids[0] != DISPID_UNKNOWN ? S_OK : DISP_E_UNKNOWNNAME;
  }
  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS*,
                                   VARIANT* result, EXCEPINFO*, UINT*) override {
    if (id == kMethod && (flags & DISPATCH_METHOD) == 0) return DISP_E_MEMBERNOTFOUND;
    result->vt = VT_I4;
    result->lVal = id;
    return S_OK;
  }

  int lookups = 0;

 private:
  StubTypeInfo* info_;
  DISPID extra_;
};

class MemberTableTest : public EngineTest {
 protected:
  void Put(const char* name, IDispatch* object) {
    object->AddRef();
    PushDispatch(Api(), object);
    duk_put_global_string(Api(), name);
  }
  // Runs a script of which the host knows the text.
  std::string RunKnown(const char* script) {
    CallSites& call_sites = engine_->Context().call_sites;
    call_sites.NoteScript(Api(), FindMemberUses(script));
    if (duk_pcompile_string(Api(), DUK_COMPILE_EVAL, script) == 0) duk_pcall(Api(), 0);
    EXPECT_TRUE(call_sites.KnowsAllCode());
    return PopText();
  }

  StubTypeInfo info_;
  DescribedObject one_{&info_, 10};
  DescribedObject two_{&info_, 20};
};

TEST_F(MemberTableTest, ObjectsOfATypeShareTheLookUpOfDescribedMembersOnly) {
  Put("one", &one_);
  Put("two", &two_);
  EXPECT_EQ(RunKnown("for (var i = 0, all = ''; i < 3; i++) {"
                     "  all += [one.method(), two.method(), one.property, two.property, one.extra,"
                     "          two.extra];"
                     "  all += ';'"
                     "} all"),
            "1,1,2,2,10,20;1,1,2,2,10,20;1,1,2,2,10,20;");
  EXPECT_EQ(one_.lookups, 3);
  EXPECT_EQ(two_.lookups, 1);
  EXPECT_EQ(engine_->Context().described.shared.size(), 1u);
}

TEST_F(MemberTableTest, TypeInformationIsHeldUntilTheEngineEnds) {
  Put("one", &one_);
  EXPECT_EQ(RunKnown("one.method()"), "1");
  EXPECT_EQ(RunKnown("one = null"), "null");
  engine_->Context().objects.ReleaseDropped();
  EXPECT_EQ(one_.references, 1u);
  EXPECT_EQ(info_.references, 2u);
  engine_.reset();
  EXPECT_EQ(info_.references, 1u);
}

TEST_F(MemberTableTest, ObjectsWorkBeyondTheMostTables) {
  std::deque<StubTypeInfo> infos(300);
  DescribedTables& described = engine_->Context().described;
  int tables = 0;
  for (StubTypeInfo& info : infos) tables += described.Of(&info) != nullptr ? 1 : 0;
  EXPECT_EQ(tables, 256);
  EXPECT_NE(described.Of(&infos[0]), nullptr);
  Put("one", &one_);
  EXPECT_EQ(RunKnown("one.method() + one.method() + one.property + one.extra"), "14");
  EXPECT_EQ(one_.lookups, 3);
  engine_.reset();
  for (const StubTypeInfo& info : infos) EXPECT_EQ(info.references, 1u);
}

TEST_F(MemberTableTest, MethodsWorkBeyondTheMostSharedFunctions) {
  engine_->Context().described.shared.resize(32767);
  Put("one", &one_);
  EXPECT_EQ(RunKnown("one.method() + one.method()"), "2");
  EXPECT_EQ(engine_->Context().described.shared.size(), 32768u);
  Put("two", &two_);
  EXPECT_EQ(RunKnown("two['method']() + two.method() + two.extra()"), "22");
  EXPECT_EQ(engine_->Context().described.shared.size(), 32768u);
}

TEST(MemberDescriptions, ReleaseEachDescriptionOfAFunction) {
  StubTypeInfo info;
  EXPECT_EQ(DescribeTypeMembers(&info).size(), 2u);
  EXPECT_EQ(info.taken, 2);
  EXPECT_EQ(info.released, 2);
}

}  // namespace
}  // namespace mirolta::host
