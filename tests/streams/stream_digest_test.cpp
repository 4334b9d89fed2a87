// ToviStreamDigest by early-bound calls: its members and its data-carrying stream operations.
#include "stream_test_kit.h"

namespace mirolta::stream_test {
namespace {

constexpr HRESULT kBareNumber = 10104;
// A success that no part of a filter returns by itself.
constexpr HRESULT kOtherSuccess = 0x00030200;

struct Algorithm {
  const OLECHAR* name;
  const char* peer;
};
constexpr Algorithm kAlgorithms[] = {
    {OLESTR("MD5"), "MD5"}, {OLESTR("SHA1"), "SHA1"}, {OLESTR("SHA256"), "SHA256"}};

// The members of one direction, so that every test runs on both and looks at the other.
struct Direction {
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*get_algorithm)(BSTR*);
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*put_algorithm)(BSTR);
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*get_key)(VARIANT*);
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*put_key)(VARIANT);
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*value)(BSTR*);
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*binary)(VARIANT*);
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*reset)();
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*reset_key)();
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*finalize)();
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*get_enable)(VARIANT_BOOL*);
  HRESULT (STDMETHODCALLTYPE IToviStreamDigest::*put_enable)(VARIANT_BOOL);
};
using D = IToviStreamDigest;
constexpr Direction kReading = {
    &D::get_ReadAlgorithm, &D::put_ReadAlgorithm,   &D::get_ReadKey,       &D::put_ReadKey,
    &D::get_ReadValue,     &D::get_ReadBinaryValue, &D::ReadReset,         &D::ReadResetKey,
    &D::ReadFinalize,      &D::get_ReadHashEnable,  &D::put_ReadHashEnable};
constexpr Direction kWriting = {
    &D::get_WriteAlgorithm, &D::put_WriteAlgorithm,   &D::get_WriteKey,       &D::put_WriteKey,
    &D::get_WriteValue,     &D::get_WriteBinaryValue, &D::WriteReset,         &D::WriteResetKey,
    &D::WriteFinalize,      &D::get_WriteHashEnable,  &D::put_WriteHashEnable};

class StreamDigestTest : public testing::Test {
 protected:
  void Choose(const Direction& side, const OLECHAR* name) {
    EXPECT_EQ((filter.operator->()->*side.put_algorithm)(Text(name).Get()), S_OK);
  }
  std::string Value(const Direction& side) {
    OwnedBstr text;
    EXPECT_EQ((filter.operator->()->*side.value)(text.Put()), S_OK);
    return Narrow(text.Get());
  }
  std::string Name(const Direction& side) {
    OwnedBstr text;
    EXPECT_EQ((filter.operator->()->*side.get_algorithm)(text.Put()), S_OK);
    EXPECT_NE(text.Get(), nullptr);
    return Narrow(text.Get());
  }
  VARIANT_BOOL Enabled(const Direction& side) {
    VARIANT_BOOL value = 99;
    EXPECT_EQ((filter.operator->()->*side.get_enable)(&value), S_OK);
    return value;
  }
  HRESULT SetKey(const Direction& side, const Bytes& key) {
    OwnedVariant value;
    *value.Put() = ByteArray(key);
    return (filter.operator->()->*side.put_key)(value.Value());
  }
  // Sends bytes through the direction.
  void Pass(const Direction& side, const Bytes& bytes) {
    if (&side == &kWriting) {
      EXPECT_EQ(WriteAll(filter.Stream(), bytes), S_OK);
    } else {
      target.content = bytes;
      target.position = 0;
      EXPECT_EQ(ReadOnce(filter.Stream(), static_cast<ULONG>(bytes.size())), bytes);
    }
  }
  void Bind() { EXPECT_EQ(filter->putref_Stream(&target), S_OK); }
  const Direction& Other(const Direction& side) { return &side == &kReading ? kWriting : kReading; }

  ScriptedStream target;
  DigestFilter filter;
};

const Direction* const kDirections[] = {&kReading, &kWriting};

TEST_F(StreamDigestTest, WithoutAnAlgorithmMembersAreNotInitialized) {
  for (const Direction* side : kDirections) {
    IToviStreamDigest* const f = filter.operator->();
    EXPECT_EQ(Name(*side), "");
    OwnedVariant key;
    EXPECT_EQ((f->*side->get_key)(key.Put()), kNotInitialized);
    EXPECT_EQ(SetKey(*side, FromText("key")), kNotInitialized);
    EXPECT_EQ((f->*side->reset)(), kNotInitialized);
    EXPECT_EQ((f->*side->reset_key)(), kNotInitialized);
    EXPECT_EQ((f->*side->finalize)(), kNotInitialized);
    EXPECT_EQ(Enabled(*side), 0);
  }
}

TEST_F(StreamDigestTest, WithoutAnAlgorithmTheReadersReturnTheBareNumber) {
  for (const Direction* side : kDirections) {
    IToviStreamDigest* const f = filter.operator->();
    const OwnedBstr sentinel = Text(OLESTR("sentinel"));
    BSTR text = sentinel.Get();
    EXPECT_EQ((f->*side->value)(&text), kBareNumber);
    EXPECT_EQ(text, sentinel.Get());
    VARIANT value;
    V_VT(&value) = VT_I4;
    V_I4(&value) = 31;
    EXPECT_EQ((f->*side->binary)(&value), kBareNumber);
    EXPECT_EQ(V_VT(&value), VT_I4);
    EXPECT_EQ(V_I4(&value), 31);
    EXPECT_EQ((f->*side->value)(nullptr), kBareNumber);
  }
}

TEST_F(StreamDigestTest, NullResultPointersAreRefused) {
  for (const Direction* side : kDirections) {
    IToviStreamDigest* const f = filter.operator->();
    EXPECT_EQ((f->*side->binary)(nullptr), E_POINTER);
    EXPECT_EQ((f->*side->get_algorithm)(nullptr), E_POINTER);
    EXPECT_EQ((f->*side->get_key)(nullptr), E_POINTER);
    EXPECT_EQ((f->*side->get_enable)(nullptr), E_POINTER);
    Choose(*side, OLESTR("MD5"));
    EXPECT_EQ((f->*side->value)(nullptr), E_POINTER);
  }
}

TEST_F(StreamDigestTest, ChoosingAnAlgorithmNamesItAndSwitchesItsDirectionOn) {
  for (const Direction* side : kDirections) {
    const VARIANT_BOOL other = Enabled(Other(*side));
    for (const Algorithm& algorithm : kAlgorithms) {
      EXPECT_EQ((filter.operator->()->*side->put_enable)(0), S_OK);
      Choose(*side, algorithm.name);
      EXPECT_EQ(Name(*side), algorithm.peer);
      EXPECT_EQ(Enabled(*side), 1);
      EXPECT_EQ(Value(*side), PeerDigest(algorithm.peer, {}));
    }
    EXPECT_EQ(Enabled(Other(*side)), other);
  }
}

TEST_F(StreamDigestTest, AnUnknownAlgorithmRemovesTheEngineAndLeavesTheSwitch) {
  for (const Direction* side : kDirections) {
    for (const OLECHAR* name : {OLESTR("sha256"), OLESTR("SHA-256"), OLESTR(""), OLESTR("AES")}) {
      for (const VARIANT_BOOL enabled : {VARIANT_BOOL{0}, VARIANT_TRUE}) {
        Choose(*side, OLESTR("SHA256"));
        EXPECT_EQ((filter.operator->()->*side->put_enable)(enabled), S_OK);
        EXPECT_EQ((filter.operator->()->*side->put_algorithm)(Text(name).Get()),
                  kAlgorithmNotFound);
        EXPECT_EQ(Name(*side), "");
        EXPECT_EQ(Enabled(*side), enabled);
        BSTR text = nullptr;
        EXPECT_EQ((filter.operator->()->*side->value)(&text), kBareNumber);
      }
    }
    // The whole text counts, also what follows a zero character.
    Choose(*side, OLESTR("SHA256"));
    EXPECT_EQ((filter.operator->()->*side->put_algorithm)(
                  OwnedBstr(SysAllocStringLen(OLESTR("SHA256\0"), 7)).Get()),
              kAlgorithmNotFound);
    EXPECT_EQ(Name(*side), "");
    EXPECT_EQ((filter.operator->()->*side->put_algorithm)(nullptr), kAlgorithmNotFound);
  }
}

TEST_F(StreamDigestTest, EnableIsKeptAsGiven) {
  for (const Direction* side : kDirections) {
    for (const VARIANT_BOOL given : {VARIANT_TRUE, VARIANT_BOOL{0}, VARIANT_BOOL{1234}}) {
      EXPECT_EQ((filter.operator->()->*side->put_enable)(given), S_OK);
      EXPECT_EQ(Enabled(*side), given);
    }
  }
}

TEST_F(StreamDigestTest, BytesThatPassAreDigestedInTheirDirectionOnly) {
  Bind();
  for (const Direction* side : kDirections) {
    for (const Algorithm& algorithm : kAlgorithms) {
      Choose(kReading, algorithm.name);
      Choose(kWriting, algorithm.name);
      const Bytes first = Pattern(200, 1);
      Bytes all = first;
      Pass(*side, first);
      const Bytes second = Pattern(77, 2);
      Pass(*side, second);
      all.insert(all.end(), second.begin(), second.end());
      EXPECT_EQ(Value(*side), PeerDigest(algorithm.peer, all));
      EXPECT_EQ(Value(Other(*side)), PeerDigest(algorithm.peer, {}));
      OwnedVariant binary;
      EXPECT_EQ((filter.operator->()->*side->binary)(binary.Put()), S_OK);
      EXPECT_EQ(Hex(FromArray(binary.Value())), PeerDigest(algorithm.peer, all));
    }
  }
}

TEST_F(StreamDigestTest, AFinalDigestStaysUntilItsDirectionStartsOver) {
  Bind();
  const Bytes bytes = FromText("abc");
  for (const Direction* side : kDirections) {
    Choose(*side, OLESTR("SHA256"));
    Pass(*side, bytes);
    EXPECT_EQ((filter.operator->()->*side->finalize)(), S_OK);
    const std::string digest = PeerDigest("SHA256", bytes);
    EXPECT_EQ(Value(*side), digest);
    Pass(*side, FromText("more"));
    EXPECT_EQ(Value(*side), digest);
    EXPECT_EQ((filter.operator->()->*side->finalize)(), S_OK);
    EXPECT_NE(Value(*side), digest);
    EXPECT_EQ((filter.operator->()->*side->reset)(), S_OK);
    Pass(*side, bytes);
    EXPECT_EQ(Value(*side), digest);
  }
}

TEST_F(StreamDigestTest, KeysMakeHmacAndBelongToTheirDirection) {
  Bind();
  for (const Direction* side : kDirections) {
    IToviStreamDigest* const f = filter.operator->();
    Choose(*side, OLESTR("MD5"));
    OwnedVariant key;
    EXPECT_EQ((f->*side->get_key)(key.Put()), S_OK);
    EXPECT_EQ(key.Type(), VT_EMPTY);
    Pass(*side, FromText("dropped by the key"));
    EXPECT_EQ(SetKey(*side, FromText("Jefe")), S_OK);
    EXPECT_EQ((f->*side->get_key)(key.Put()), S_OK);
    EXPECT_EQ(FromArray(key.Value()), FromText("Jefe"));
    Pass(*side, FromText("what do ya want for nothing?"));
    EXPECT_EQ(Value(*side), "750C783E6AB0B503EAA86E310A5DB738");
    EXPECT_EQ((f->*side->reset)(), S_OK);
    Pass(*side, FromText("what do ya want for nothing?"));
    EXPECT_EQ(Value(*side), "750C783E6AB0B503EAA86E310A5DB738");
    EXPECT_EQ((f->*side->reset_key)(), S_OK);
    Pass(*side, FromText("abc"));
    EXPECT_EQ(Value(*side), PeerDigest("MD5", FromText("abc")));
  }
}

TEST_F(StreamDigestTest, TextKeysGoThroughTheCodePage) {
  const OwnedBstr text = Text(OLESTR("k\u00E9y"));
  VARIANT value;
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = text.Get();
  struct Row {
    LONG code_page;
    Bytes key;
  };
  for (const Direction* side : kDirections) {
    IToviStreamDigest* const f = filter.operator->();
    Choose(*side, OLESTR("SHA1"));
    for (const Row& row : {Row{-1, {'k', 0, 0xE9, 0, 'y', 0}}, Row{-2, {'k', 0, 0xE9, 0, 'y', 0}},
                           Row{1252, {'k', 0xE9, 'y'}}, Row{65001, {'k', 0xC3, 0xA9, 'y'}}}) {
      EXPECT_EQ(filter->put_codePage(row.code_page), S_OK);
      EXPECT_EQ((f->*side->put_key)(value), S_OK);
      OwnedVariant key;
      EXPECT_EQ((f->*side->get_key)(key.Put()), S_OK);
      EXPECT_EQ(FromArray(key.Value()), row.key) << row.code_page;
    }
  }
}

TEST_F(StreamDigestTest, AKeyThatIsAnObjectMayCallBack) {
  for (const Direction* side : kDirections) {
    Choose(*side, OLESTR("MD5"));
    TextObject plain(OLESTR("Jefe"), [] {});
    EXPECT_EQ((filter.operator->()->*side->put_key)(plain.Value()), S_OK);
    OwnedVariant key;
    EXPECT_EQ((filter.operator->()->*side->get_key)(key.Put()), S_OK);
    EXPECT_EQ(FromArray(key.Value()), FromText("Jefe"));
    // The engine that the key was for is gone when it is read.
    TextObject removing(OLESTR("Jefe"), [&] {
      EXPECT_EQ((filter.operator->()->*side->put_algorithm)(nullptr), kAlgorithmNotFound);
    });
    EXPECT_EQ((filter.operator->()->*side->put_key)(removing.Value()), kNotInitialized);
  }
}

TEST_F(StreamDigestTest, TransfersOfNothingArePassedOn) {
  Bind();
  target.content = Pattern(8);
  target.write_status = kOtherSuccess;
  for (const bool chosen : {false, true}) {
    if (chosen) {
      Choose(kReading, OLESTR("MD5"));
      Choose(kWriting, OLESTR("MD5"));
    }
    target.read_sizes.clear();
    target.write_sizes.clear();
    EXPECT_EQ(ReadOnce(filter.Stream(), 0, S_OK), Bytes{});
    EXPECT_EQ(target.read_sizes, std::vector<ULONG>{0});
    ULONG count = kUntouched;
    EXPECT_EQ(WriteAll(filter.Stream(), {}, &count), kOtherSuccess);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(target.write_sizes, std::vector<ULONG>{0});
  }
}

TEST_F(StreamDigestTest, TheStreamsOwnSuccessCodesAreReturnedUnlessDigested) {
  Bind();
  target.content = Pattern(8);
  target.short_read_status = target.write_status = kOtherSuccess;
  EXPECT_EQ(ReadOnce(filter.Stream(), 10, kOtherSuccess), target.content);
  EXPECT_EQ(WriteAll(filter.Stream(), Pattern(3)), kOtherSuccess);
  Choose(kReading, OLESTR("MD5"));
  Choose(kWriting, OLESTR("MD5"));
  target.content = Pattern(8);
  target.position = 0;
  EXPECT_EQ(ReadOnce(filter.Stream(), 10, S_OK), target.content);
  EXPECT_EQ(ReadOnce(filter.Stream(), 10, kOtherSuccess), Bytes{});
  EXPECT_EQ(WriteAll(filter.Stream(), Pattern(3)), S_OK);
  // A copy is a success.
  ScriptedStream sink;
  sink.write_status = kOtherSuccess;
  target.content = Pattern(2048);
  target.position = 0;
  target.largest_read = 500;
  ULARGE_INTEGER written = Large(kUntouchedTotal);
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(5000), nullptr, &written), S_OK);
  EXPECT_EQ(written.QuadPart, 2048u);
}

// Any value but 0 is true.
TEST_F(StreamDigestTest, OtherTruthValuesSwitchOnToo) {
  Bind();
  for (const Direction* side : kDirections) {
    for (const VARIANT_BOOL truth : {VARIANT_BOOL{2}, VARIANT_BOOL{256}, VARIANT_BOOL{-32768}}) {
      Choose(*side, OLESTR("MD5"));
      EXPECT_EQ((filter.operator->()->*side->put_enable)(truth), S_OK);
      Pass(*side, FromText("abc"));
      EXPECT_EQ(Value(*side), PeerDigest("MD5", FromText("abc"))) << truth;
    }
  }
}

// Bytes that a stream reports and never wrote are digested as the zeros that are copied.
TEST_F(StreamDigestTest, CopyToTakesZerosForBytesThatWereNeverWritten) {
  Bind();
  Choose(kReading, OLESTR("SHA256"));
  target.content = Pattern(1024);
  target.excess_report = 1024;
  ScriptedStream sink;
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(2048), nullptr, nullptr), S_OK);
  Bytes expected = Pattern(1024);
  expected.resize(2048);
  EXPECT_EQ(sink.content, expected);
  EXPECT_EQ(Value(kReading), PeerDigest("SHA256", expected));
}

TEST_F(StreamDigestTest, NullBuffersAreRefusedEvenForNothing) {
  ULONG count = kUntouched;
  for (int bound = 0; bound < 2; ++bound) {
    EXPECT_EQ(filter.Stream()->Read(nullptr, 0, &count), E_POINTER);
    EXPECT_EQ(filter.Stream()->Write(nullptr, 0, &count), E_POINTER);
    EXPECT_EQ(count, kUntouched);
    Bind();
  }
  EXPECT_TRUE(target.read_sizes.empty());
}

TEST_F(StreamDigestTest, ReadWithoutATargetIsAtTheEnd) {
  Choose(kReading, OLESTR("MD5"));
  uint8_t byte = 7;
  ULONG got = kUntouched;
  EXPECT_EQ(filter.Stream()->Read(&byte, 1, &got), S_FALSE);
  EXPECT_EQ(got, 0u);
  got = kUntouched;
  EXPECT_EQ(filter.Stream()->Read(&byte, 0, &got), S_OK);
  EXPECT_EQ(got, 0u);
  EXPECT_EQ(filter.Stream()->Read(&byte, 1, nullptr), S_FALSE);
  EXPECT_EQ(filter.Stream()->Read(&byte, 0, nullptr), S_OK);
  EXPECT_EQ(byte, 7);
}

TEST_F(StreamDigestTest, ADigestedShortReadIsASuccess) {
  Bind();
  Choose(kReading, OLESTR("SHA1"));
  target.content = FromText("hello");
  EXPECT_EQ(ReadOnce(filter.Stream(), 100, S_OK), FromText("hello"));
  EXPECT_EQ(target.read_sizes, std::vector<ULONG>{100});
  // The end itself is the target's to report.
  EXPECT_EQ(ReadOnce(filter.Stream(), 100, S_FALSE), Bytes{});
  EXPECT_EQ(Value(kReading), PeerDigest("SHA1", FromText("hello")));
}

TEST_F(StreamDigestTest, AShortReadThatIsNotDigestedKeepsTheTargetsStatus) {
  Bind();
  Choose(kReading, OLESTR("SHA1"));
  EXPECT_EQ(filter->put_ReadHashEnable(VARIANT_FALSE), S_OK);
  target.content = FromText("hello");
  EXPECT_EQ(ReadOnce(filter.Stream(), 100, S_FALSE), FromText("hello"));
  EXPECT_EQ(Value(kReading), PeerDigest("SHA1", {}));
  EXPECT_EQ(filter->put_ReadAlgorithm(Text(OLESTR("none")).Get()), kAlgorithmNotFound);
  EXPECT_EQ(filter->put_ReadHashEnable(VARIANT_TRUE), S_OK);
  target.position = 0;
  EXPECT_EQ(ReadOnce(filter.Stream(), 100, S_FALSE), FromText("hello"));
}

TEST_F(StreamDigestTest, AFailingReadReportsItsBytesButDigestsNone) {
  Bind();
  Choose(kReading, OLESTR("SHA256"));
  target.content = Pattern(50);
  target.failing_read = 2;
  target.moved_by_failure = 3;
  EXPECT_EQ(ReadOnce(filter.Stream(), 10), Slice(target.content, 0, 10));
  uint8_t bytes[10];
  ULONG got = kUntouched;
  EXPECT_EQ(filter.Stream()->Read(bytes, 10, &got), kStreamFailure);
  EXPECT_EQ(got, 3u);
  EXPECT_EQ(filter.Stream()->Read(bytes, 10, nullptr), S_OK);
  Bytes digested = Slice(target.content, 0, 10);
  const Bytes last = Slice(target.content, 13, 10);
  digested.insert(digested.end(), last.begin(), last.end());
  EXPECT_EQ(Value(kReading), PeerDigest("SHA256", digested));
}

TEST_F(StreamDigestTest, WriteWithoutATargetDigestsAlone) {
  Choose(kWriting, OLESTR("SHA1"));
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("abc")), S_OK);
  EXPECT_EQ(Value(kWriting), "A9993E364706816ABA3E25717850C26C9CD0D89D");
}

TEST_F(StreamDigestTest, WriteWithoutATargetSetsOnlyACounterThatWasNotZero) {
  Choose(kWriting, OLESTR("MD5"));
  ULONG count = 0;
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("abc"), &count), S_OK);
  EXPECT_EQ(count, 0u);
  count = kUntouched;
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("de"), &count), S_OK);
  EXPECT_EQ(count, 2u);
  // Nothing to digest is no failure, and counts.
  EXPECT_EQ(WriteAll(filter.Stream(), {}, &count), S_OK);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(Value(kWriting), PeerDigest("MD5", FromText("abcde")));
}

TEST_F(StreamDigestTest, WriteWithoutTargetAndDigestDoesNothing) {
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("abc"), &count), S_OK);
  EXPECT_EQ(count, kUntouched);
  Choose(kWriting, OLESTR("MD5"));
  EXPECT_EQ(filter->put_WriteHashEnable(VARIANT_FALSE), S_OK);
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("abc"), &count), S_OK);
  EXPECT_EQ(count, kUntouched);
  EXPECT_EQ(Value(kWriting), PeerDigest("MD5", {}));
}

TEST_F(StreamDigestTest, APartialWriteDigestsWhatWasWritten) {
  Bind();
  Choose(kWriting, OLESTR("SHA256"));
  target.largest_write = 4;
  target.write_status = S_FALSE;
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("abcdefgh"), &count), S_OK);
  EXPECT_EQ(count, 4u);
  EXPECT_EQ(target.content, FromText("abcd"));
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("xy")), S_OK);
  EXPECT_EQ(Value(kWriting), PeerDigest("SHA256", FromText("abcdxy")));
}

TEST_F(StreamDigestTest, AWriteOfNoBytesKeepsTheTargetsStatus) {
  Bind();
  Choose(kWriting, OLESTR("MD5"));
  target.largest_write = 0;
  target.write_status = kOtherSuccess;
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("abc"), &count), kOtherSuccess);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(Value(kWriting), PeerDigest("MD5", {}));
}

TEST_F(StreamDigestTest, AFailingWriteReportsItsBytesButDigestsNone) {
  Bind();
  Choose(kWriting, OLESTR("MD5"));
  target.failing_write = 1;
  target.moved_by_failure = 2;
  target.failure = STG_E_MEDIUMFULL;
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("abc"), &count), STG_E_MEDIUMFULL);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(Value(kWriting), PeerDigest("MD5", {}));
}

TEST_F(StreamDigestTest, WritesPassUndigestedWhenSwitchedOff) {
  Bind();
  Choose(kWriting, OLESTR("MD5"));
  EXPECT_EQ(filter->put_WriteHashEnable(VARIANT_FALSE), S_OK);
  target.write_status = S_FALSE;
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(filter.Stream(), FromText("abc"), &count), S_FALSE);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(target.content, FromText("abc"));
  EXPECT_EQ(Value(kWriting), PeerDigest("MD5", {}));
}

TEST_F(StreamDigestTest, CopyToWorksInPiecesAndDigestsAsReading) {
  Bind();
  target.content = Pattern(5000);
  Choose(kReading, OLESTR("SHA256"));
  Choose(kWriting, OLESTR("SHA256"));
  ScriptedStream sink;
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  ULARGE_INTEGER written = Large(kUntouchedTotal);
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(3000), &read, &written), S_OK);
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{1024, 1024, 952}));
  EXPECT_EQ(sink.write_sizes, (std::vector<ULONG>{1024, 1024, 952}));
  EXPECT_EQ(read.QuadPart, 3000u);
  EXPECT_EQ(written.QuadPart, 3000u);
  const Bytes copied = Slice(target.content, 0, 3000);
  EXPECT_EQ(sink.content, copied);
  EXPECT_EQ(Value(kReading), PeerDigest("SHA256", copied));
  EXPECT_EQ(Value(kWriting), PeerDigest("SHA256", {}));
}

TEST_F(StreamDigestTest, CopyToEndsWithTheTarget) {
  Bind();
  target.content = Pattern(1500);
  ScriptedStream sink;
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  // More than 32 bits: the whole stream.
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(0x100000000u), &read, nullptr), S_OK);
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{1024, 1024, 1024}));
  EXPECT_EQ(read.QuadPart, 1500u);
  EXPECT_EQ(sink.content, target.content);
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(~ULONGLONG{0}), nullptr, &read), S_OK);
  EXPECT_EQ(read.QuadPart, 0u);
}

TEST_F(StreamDigestTest, CopyToOfNothingAsksForNothing) {
  Bind();
  ScriptedStream sink;
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  ULARGE_INTEGER written = Large(kUntouchedTotal);
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(0), &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 0u);
  EXPECT_EQ(written.QuadPart, 0u);
  EXPECT_TRUE(target.read_sizes.empty());
}

TEST_F(StreamDigestTest, CopyToNeedsATargetThenADestination) {
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  EXPECT_EQ(filter.Stream()->CopyTo(nullptr, Large(1), &read, &read), STG_E_REVERTED);
  Bind();
  EXPECT_EQ(filter.Stream()->CopyTo(nullptr, Large(1), &read, &read), STG_E_INVALIDPOINTER);
  EXPECT_EQ(read.QuadPart, kUntouchedTotal);
}

TEST_F(StreamDigestTest, CopyToOfShortReadsCountsWhatWasRead) {
  Bind();
  target.content = Pattern(3000);
  target.largest_read = 700;
  Choose(kReading, OLESTR("MD5"));
  ScriptedStream sink;
  ULARGE_INTEGER read = Large(0);
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(2000), &read, nullptr), S_OK);
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{1024, 1024, 600}));
  EXPECT_EQ(read.QuadPart, 2000u);
  EXPECT_EQ(sink.content, Slice(target.content, 0, 2000));
  EXPECT_EQ(Value(kReading), PeerDigest("MD5", sink.content));
}

TEST_F(StreamDigestTest, CopyToThatFailsToReadReportsNoTotals) {
  Bind();
  target.content = Pattern(3000);
  target.failing_read = 2;
  target.moved_by_failure = 5;
  Choose(kReading, OLESTR("MD5"));
  ScriptedStream sink;
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  ULARGE_INTEGER written = Large(kUntouchedTotal);
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(3000), &read, &written), kStreamFailure);
  EXPECT_EQ(read.QuadPart, kUntouchedTotal);
  EXPECT_EQ(written.QuadPart, kUntouchedTotal);
  EXPECT_EQ(sink.content.size(), 1024u);
  EXPECT_EQ(Value(kReading), PeerDigest("MD5", Slice(target.content, 0, 1024)));
}

TEST_F(StreamDigestTest, CopyToThatFailsToWriteHasDigestedThePiece) {
  Bind();
  target.content = Pattern(3000);
  Choose(kReading, OLESTR("MD5"));
  ScriptedStream sink;
  sink.failing_write = 2;
  sink.failure = STG_E_MEDIUMFULL;
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(3000), &read, nullptr), STG_E_MEDIUMFULL);
  EXPECT_EQ(read.QuadPart, kUntouchedTotal);
  EXPECT_EQ(Value(kReading), PeerDigest("MD5", Slice(target.content, 0, 2048)));
}

TEST_F(StreamDigestTest, CopyToDropsTheRestOfAPartialWriteAndGoesOn) {
  Bind();
  target.content = Pattern(3000);
  Choose(kReading, OLESTR("MD5"));
  ScriptedStream sink;
  sink.largest_write = 1000;
  ULARGE_INTEGER read = Large(0);
  ULARGE_INTEGER written = Large(0);
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(3000), &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 3000u);
  EXPECT_EQ(written.QuadPart, 2952u);
  Bytes expected = Slice(target.content, 0, 1000);
  for (const size_t from : {size_t{1024}, size_t{2048}}) {
    const Bytes part = Slice(target.content, from, from == 2048 ? 952 : 1000);
    expected.insert(expected.end(), part.begin(), part.end());
  }
  EXPECT_EQ(sink.content, expected);
  EXPECT_EQ(Value(kReading), PeerDigest("MD5", target.content));
}

TEST_F(StreamDigestTest, CopyToEndsWhenNothingIsWritten) {
  Bind();
  target.content = Pattern(3000);
  Choose(kReading, OLESTR("MD5"));
  ScriptedStream sink;
  sink.largest_write = 0;
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  ULARGE_INTEGER written = Large(kUntouchedTotal);
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(3000), &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 1024u);
  EXPECT_EQ(written.QuadPart, 0u);
  EXPECT_EQ(Value(kReading), PeerDigest("MD5", Slice(target.content, 0, 1024)));
}

TEST_F(StreamDigestTest, CopyToWithoutDigestStillCopies) {
  Bind();
  target.content = Pattern(1100);
  ScriptedStream sink;
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(1100), nullptr, nullptr), S_OK);
  EXPECT_EQ(sink.content, target.content);
  Choose(kReading, OLESTR("MD5"));
  EXPECT_EQ(filter->put_ReadHashEnable(VARIANT_FALSE), S_OK);
  target.position = 0;
  EXPECT_EQ(filter.Stream()->CopyTo(&sink, Large(1100), nullptr, nullptr), S_OK);
  EXPECT_EQ(Value(kReading), PeerDigest("MD5", {}));
}

TEST_F(StreamDigestTest, CopyToItselfIsRefusedByTheInnerWrite) {
  Bind();
  target.content = Pattern(10);
  EXPECT_EQ(filter.Stream()->CopyTo(filter.Stream(), Large(10), nullptr, nullptr), E_UNEXPECTED);
  EXPECT_EQ(target.content.size(), 10u);
}

TEST_F(StreamDigestTest, ATargetMayChangeTheAlgorithmFromInside) {
  Bind();
  Choose(kReading, OLESTR("MD5"));
  target.content = FromText("abcdef");
  target.on_read = [&] { Choose(kReading, OLESTR("SHA1")); };
  EXPECT_EQ(ReadOnce(filter.Stream(), 6), FromText("abcdef"));
  EXPECT_EQ(Value(kReading), PeerDigest("SHA1", FromText("abcdef")));
}

}  // namespace
}  // namespace mirolta::stream_test
