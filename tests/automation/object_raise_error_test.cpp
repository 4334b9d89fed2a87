// RaiseError: texts, statuses, sources, and the thread's error object afterwards.
#include "class_description.h"
#include "raise_error.h"
#include "runtime_allocations.h"
#include "test_module.h"

namespace mirolta::test {
namespace {

constexpr CLSID kClass = {0x5EEDC1A5, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};
constexpr GUID kInterface = {0x5EEDC1A6, 1, 2, {3, 4, 5, 6, 7, 8, 9, 10}};

ULONG_PTR AsMessage(const OLECHAR* text) {
  return reinterpret_cast<ULONG_PTR>(text);
}

class ObjectRaiseErrorTest : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(MiroltaRegistryInMemory(TRUE), ERROR_SUCCESS);
    SetErrorInfo(0, nullptr);
  }
  void TearDown() override { EXPECT_EQ(MiroltaRegistryInMemory(FALSE), ERROR_SUCCESS); }
  HRESULT Raise(ULONG_PTR message, HRESULT status = 0) {
    return RaiseError(kClass, message, GUID_NULL, status, module.instance());
  }

  TestModule module;
};

TEST_F(ObjectRaiseErrorTest, EveryMessageHasItsStatusAndText) {
  struct Expected {
    UINT id;
    HRESULT status;
    const OLECHAR* text;
  };
  constexpr Expected kExpected[] = {
      {10101, kNoStreamInterface,
       OLESTR("The object does not support IStream interface nor it is a ToviStream object.")},
      {10102, kNoStream, OLESTR("No stream has been set yet.")},
      {10103, kNotFound, OLESTR("Algorithm not found.")},
      {10104, kNotInitialized, OLESTR("Not initialized.")},
      {10105, kKeyNotSet, OLESTR("Key not set.")},
      {10106, kTooMuchData, OLESTR("Too much data.")},
  };
  for (const Expected& expected : kExpected) {
    EXPECT_EQ(Raise(expected.id), expected.status);
    const TakenError error = TakeError();
    EXPECT_TRUE(error.published);
    EXPECT_EQ(error.description, expected.text);
    EXPECT_TRUE(error.interface_id == GUID_NULL);
    EXPECT_EQ(error.help_context, 0u);
    EXPECT_TRUE(error.help_file.empty());
  }
  OLECHAR name[16] = {};
  EXPECT_EQ(LoadStringW(module.instance(), 100, name, 16), 7);
  EXPECT_EQ(Text(name), OLESTR("Mirolta"));
}

TEST_F(ObjectRaiseErrorTest, AStatusThatIsGivenIsReturned) {
  EXPECT_EQ(Raise(10104, E_FAIL), E_FAIL);
  EXPECT_EQ(TakeError().description, OLESTR("Not initialized."));
}

TEST_F(ObjectRaiseErrorTest, AMissingMessageIsUnknown) {
  EXPECT_EQ(static_cast<ULONG>(Raise(9)), 0x80040009u);
  EXPECT_EQ(TakeError().description, OLESTR("Unknown Error"));
  EXPECT_EQ(static_cast<ULONG>(Raise(65535)), 0x8004FFFFu);
  EXPECT_EQ(TakeError().description, OLESTR("Unknown Error"));
  EXPECT_EQ(RaiseError(kClass, 10104, GUID_NULL, 0, nullptr), kNotInitialized);
  EXPECT_EQ(TakeError().description, OLESTR("Unknown Error"));
}

TEST_F(ObjectRaiseErrorTest, MessagesHaveUpTo1023Characters) {
  // Static: a module is found by the address of its resources.
  static StringResource message = {1, nullptr};
  static const ModuleResources resources = {&message, 1, nullptr, 0, nullptr};
  for (const size_t length : {127u, 128u, 1023u, 1024u, 3000u}) {
    const Text text(length, u'x');
    message.text = text.c_str();
    const HINSTANCE talkative = MiroltaAttachModule(&resources);
    EXPECT_EQ(RaiseError(kClass, 1, GUID_NULL, 0, talkative), MessageStatus(1));
    MiroltaDetachModule(talkative);
    EXPECT_EQ(TakeError().description, text.substr(0, 1023)) << length;
  }
}

TEST_F(ObjectRaiseErrorTest, AReadyTextKeepsItsStatus) {
  EXPECT_EQ(Raise(AsMessage(OLESTR("A text of its own.")), E_ABORT), E_ABORT);
  EXPECT_EQ(TakeError().description, OLESTR("A text of its own."));
  EXPECT_EQ(Raise(AsMessage(OLESTR("A text without status."))), DISP_E_EXCEPTION);
  EXPECT_EQ(TakeError().description, OLESTR("A text without status."));
}

TEST_F(ObjectRaiseErrorTest, TheRegisteredDescriptionIsTheSource) {
  SetClassDescription(kClass, OLESTR("A registered class"));
  Raise(10104);
  const TakenError error = TakeError();
  EXPECT_TRUE(error.has_source);
  EXPECT_EQ(error.source, OLESTR("A registered class"));
}

TEST_F(ObjectRaiseErrorTest, WithoutADescriptionThereIsNoSource) {
  Raise(10104);
  EXPECT_FALSE(TakeError().has_source);
  SetClassDescription(kClass, nullptr);  // a key without a value
  Raise(10104);
  const TakenError error = TakeError();
  EXPECT_FALSE(error.has_source);
  EXPECT_EQ(error.description, OLESTR("Not initialized."));
}

TEST_F(ObjectRaiseErrorTest, ALongDescriptionDoesNoHarm) {
  for (const size_t length : {254u, 255u, 256u, 257u, 2000u}) {
    SetClassDescription(kClass, Text(length, u'x').c_str());
    EXPECT_EQ(Raise(10104), kNotInitialized);
    const TakenError error = TakeError();
    EXPECT_EQ(error.description, OLESTR("Not initialized."));
    if (error.has_source) {
      EXPECT_EQ(error.source, Text(length, u'x'));
    }
  }
}

TEST_F(ObjectRaiseErrorTest, HelpNeedsContextAndFile) {
  RaiseError(kClass, 10104, 7, OLESTR("help.chm"), kInterface, 0, module.instance());
  TakenError error = TakeError();
  EXPECT_EQ(error.help_context, 7u);
  EXPECT_EQ(error.help_file, OLESTR("help.chm"));
  EXPECT_TRUE(error.interface_id == kInterface);
  RaiseError(kClass, 10104, 7, nullptr, kInterface, 0, module.instance());
  error = TakeError();
  EXPECT_EQ(error.help_context, 0u);
  RaiseError(kClass, 10104, 0, OLESTR("help.chm"), kInterface, 0, module.instance());
  error = TakeError();
  EXPECT_TRUE(error.help_file.empty());
}

TEST_F(ObjectRaiseErrorTest, ANewerErrorReplacesTheOlder) {
  Raise(10104);
  Raise(10103);
  EXPECT_EQ(TakeError().description, OLESTR("Algorithm not found."));
  EXPECT_FALSE(TakeError().published);
}

TEST_F(ObjectRaiseErrorTest, WithoutMemoryTheStatusIsReturnedAllTheSame) {
  const LONG failures =
      FailEachAllocation([&] { return Raise(10104); },
                         [](HRESULT status, bool failed) {
                           EXPECT_EQ(status, kNotInitialized);
                           const TakenError error = TakeError();
                           if (!failed) {
                             EXPECT_EQ(error.description, OLESTR("Not initialized."));
                           }
                         });
  EXPECT_GT(failures, 0);
  EXPECT_LT(failures, 50);
}

}  // namespace
}  // namespace mirolta::test
