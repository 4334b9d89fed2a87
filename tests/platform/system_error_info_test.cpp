#include <thread>

#include "mirolta/error_info.h"
#include "portable/test_hooks.h"
#include "system_support.h"

namespace mirolta {
namespace {

IErrorInfo* MakeError(const char16_t* description) {
  ICreateErrorInfo* made = nullptr;
  EXPECT_EQ(CreateErrorInfo(&made), S_OK);
  std::u16string text = description;
  EXPECT_EQ(made->SetDescription(text.data()), S_OK);
  void* info = nullptr;
  EXPECT_EQ(made->QueryInterface(IID_IErrorInfo, &info), S_OK);
  made->Release();
  return static_cast<IErrorInfo*>(info);
}

std::string DescriptionOf(IErrorInfo* info) {
  BSTR text = nullptr;
  EXPECT_EQ(info->GetDescription(&text), S_OK);
  const std::string description = text == nullptr ? "(null)" : Narrow(text);
  SysFreeString(text);
  return description;
}

TEST(ErrorInfo, HoldsWhatItIsGiven) {
  ICreateErrorInfo* made = nullptr;
  ASSERT_EQ(CreateErrorInfo(&made), S_OK);
  std::u16string source = u"Source";
  std::u16string help = u"file.chm";
  EXPECT_EQ(made->SetGUID(IID_IDispatch), S_OK);
  EXPECT_EQ(made->SetSource(source.data()), S_OK);
  EXPECT_EQ(made->SetHelpFile(help.data()), S_OK);
  EXPECT_EQ(made->SetHelpContext(77), S_OK);
  void* out = nullptr;
  ASSERT_EQ(made->QueryInterface(IID_IErrorInfo, &out), S_OK);
  IErrorInfo* info = static_cast<IErrorInfo*>(out);
  GUID guid = {};
  DWORD context = 0;
  BSTR text = nullptr;
  EXPECT_EQ(info->GetGUID(&guid), S_OK);
  EXPECT_EQ(guid, IID_IDispatch);
  EXPECT_EQ(info->GetHelpContext(&context), S_OK);
  EXPECT_EQ(context, 77u);
  EXPECT_EQ(info->GetSource(&text), S_OK);
  EXPECT_EQ(Narrow(text), "Source");
  SysFreeString(text);
  EXPECT_EQ(info->GetHelpFile(&text), S_OK);
  EXPECT_EQ(Narrow(text), "file.chm");
  SysFreeString(text);
  EXPECT_EQ(info->GetDescription(&text), S_OK);
  EXPECT_EQ(text, nullptr);  // never set
  EXPECT_EQ(info->GetSource(nullptr), E_INVALIDARG);
  EXPECT_EQ(info->GetHelpContext(nullptr), E_INVALIDARG);
  EXPECT_EQ(info->GetGUID(nullptr), E_INVALIDARG);

  EXPECT_EQ(made->SetSource(nullptr), S_OK);
  EXPECT_EQ(info->GetSource(&text), S_OK);
  EXPECT_EQ(text, nullptr);

  void* same = nullptr;
  ASSERT_EQ(info->QueryInterface(IID_IUnknown, &same), S_OK);
  EXPECT_EQ(same, static_cast<IUnknown*>(made));
  EXPECT_EQ(made->Release(), 2u);
  EXPECT_EQ(info->QueryInterface(IID_IDispatch, &same), E_NOINTERFACE);
  EXPECT_EQ(same, nullptr);
  EXPECT_EQ(made->Release(), 1u);
  EXPECT_EQ(info->Release(), 0u);
}

TEST(ErrorInfo, GettingEmptiesTheSlot) {
  IErrorInfo* info = MakeError(u"first");
  EXPECT_EQ(SetErrorInfo(0, info), S_OK);
  EXPECT_EQ(info->Release(), 1u);  // the slot's reference
  IErrorInfo* got = nullptr;
  ASSERT_EQ(GetErrorInfo(0, &got), S_OK);
  EXPECT_EQ(got, info);
  EXPECT_EQ(got->Release(), 0u);
  EXPECT_EQ(GetErrorInfo(0, &got), S_FALSE);
  EXPECT_EQ(got, nullptr);
  EXPECT_EQ(GetErrorInfo(1, &got), E_INVALIDARG);
  EXPECT_EQ(SetErrorInfo(1, nullptr), E_INVALIDARG);
}

TEST(ErrorInfo, EachThreadHasItsOwn) {
  IErrorInfo* mine = MakeError(u"mine");
  SetErrorInfo(0, mine);
  std::thread([] {
    IErrorInfo* got = nullptr;
    EXPECT_EQ(GetErrorInfo(0, &got), S_FALSE);
    IErrorInfo* other = MakeError(u"other");
    SetErrorInfo(0, other);
    other->Release();  // the thread's end releases the slot's reference; a leak would show
  }).join();
  IErrorInfo* got = nullptr;
  ASSERT_EQ(GetErrorInfo(0, &got), S_OK);
  EXPECT_EQ(DescriptionOf(got), "mine");
  got->Release();
  EXPECT_EQ(mine->Release(), 0u);
}

TEST(ErrorInfo, SettingReplacesAndNullClears) {
  IErrorInfo* first = MakeError(u"first");
  IErrorInfo* second = MakeError(u"second");
  SetErrorInfo(0, first);
  SetErrorInfo(0, second);
  EXPECT_EQ(first->Release(), 0u);
  SetErrorInfo(0, nullptr);
  EXPECT_EQ(second->Release(), 0u);
  IErrorInfo* got = nullptr;
  EXPECT_EQ(GetErrorInfo(0, &got), S_FALSE);
}

TEST(ErrorInfo, ReportsShortMemory) {
  MiroltaFailAllocationAfter(0);
  ICreateErrorInfo* made = nullptr;
  EXPECT_EQ(CreateErrorInfo(&made), E_OUTOFMEMORY);
  EXPECT_EQ(made, nullptr);
  MiroltaFailAllocationAfter(-1);

  ASSERT_EQ(CreateErrorInfo(&made), S_OK);
  std::u16string kept = u"kept";
  std::u16string lost = u"lost";
  EXPECT_EQ(made->SetDescription(kept.data()), S_OK);
  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(made->SetDescription(lost.data()), E_OUTOFMEMORY);
  MiroltaFailAllocationAfter(-1);
  void* info = nullptr;
  ASSERT_EQ(made->QueryInterface(IID_IErrorInfo, &info), S_OK);
  EXPECT_EQ(DescriptionOf(static_cast<IErrorInfo*>(info)), "kept");
  made->Release();
  made->Release();
}

}  // namespace
}  // namespace mirolta
