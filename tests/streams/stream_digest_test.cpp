// ToviStreamDigest by early-bound calls: its members, reading and writing.
#include "stream_sides.h"

namespace mirolta::test {
namespace {

constexpr const OLECHAR* kAlgorithms[] = {OLESTR("MD5"), OLESTR("SHA1"), OLESTR("SHA256")};

class StreamDigestTest : public FilterTest<IToviStreamDigest> {
 protected:
  const DigestSide& Other(const DigestSide& side) { return side.Writes() ? reading : writing; }
  // Sends bytes through the side.
  void Pass(const DigestSide& side, const Bytes& bytes) {
    if (side.Writes()) {
      EXPECT_EQ(WriteAll(Stream(), bytes), S_OK);
    } else {
      target.content = bytes;
      target.position = 0;
      EXPECT_EQ(ReadOnce(Stream(), static_cast<ULONG>(bytes.size())), bytes);
    }
  }
};

TEST_F(StreamDigestTest, WithoutAnAlgorithmResetsAndFinalizeAreNotInitialized) {
  EachSide([](const DigestSide& side) {
    EXPECT_EQ(side.Reset(), kNotInitialized);
    EXPECT_EQ(side.ResetKey(), kNotInitialized);
    EXPECT_EQ(side.Finalize(), kNotInitialized);
    EXPECT_EQ(side.Enabled(), 0);
  });
}

TEST_F(StreamDigestTest, WithoutAnAlgorithmDigestsReturnTheBareNumberAndLeaveTheResult) {
  EachSide([&](const DigestSide& side) {
    const OwnedBstr sentinel = Bstr(OLESTR("sentinel"));
    BSTR text = sentinel.Get();
    EXPECT_EQ(side.GetValue(&text), kBareNotInitializedStatus);
    EXPECT_EQ(text, sentinel.Get());
    VARIANT value;
    V_VT(&value) = VT_I4;
    V_I4(&value) = 31;
    EXPECT_EQ(side.GetBinaryValue(&value), kBareNotInitializedStatus);
    EXPECT_EQ(V_VT(&value), VT_I4);
    EXPECT_EQ(V_I4(&value), 31);
    EXPECT_EQ(side.GetValue(nullptr), kBareNotInitializedStatus);
  });
}

TEST_F(StreamDigestTest, DigestsAndSwitchRefuseNullResultPointers) {
  EachSide([](const DigestSide& side) {
    EXPECT_EQ(side.GetBinaryValue(nullptr), E_POINTER);
    EXPECT_EQ(side.GetEnabled(nullptr), E_POINTER);
    side.Choose(OLESTR("MD5"));
    EXPECT_EQ(side.GetValue(nullptr), E_POINTER);
  });
}

TEST_F(StreamDigestTest, ChoosingAnAlgorithmNamesItAndSwitchesItsSideOn) {
  EachSide([&](const DigestSide& side) {
    const VARIANT_BOOL other = Other(side).Enabled();
    for (const OLECHAR* algorithm : kAlgorithms) {
      EXPECT_EQ(side.Enable(0), S_OK);
      side.Choose(algorithm);
      EXPECT_EQ(side.Algorithm(), algorithm);
      EXPECT_EQ(side.Enabled(), 1);
      EXPECT_EQ(side.Value(), PeerText(algorithm, {}));
    }
    EXPECT_EQ(Other(side).Enabled(), other);
  });
}

TEST_F(StreamDigestTest, AnUnknownAlgorithmLeavesNoDigestAndTheSwitchAsItIs) {
  EachSide([](const DigestSide& side) {
    for (const VARIANT_BOOL enabled : {VARIANT_BOOL{0}, VARIANT_TRUE}) {
      side.Choose(OLESTR("SHA256"));
      EXPECT_EQ(side.Enable(enabled), S_OK);
      EXPECT_EQ(side.Select(OLESTR("sha256")), kNotFound);
      EXPECT_EQ(side.Enabled(), enabled);
      BSTR text = nullptr;
      EXPECT_EQ(side.GetValue(&text), kBareNotInitializedStatus);
    }
  });
}

TEST_F(StreamDigestTest, TheSwitchIsKeptAsGiven) {
  EachSide([&](const DigestSide& side) {
    for (const VARIANT_BOOL given : {VARIANT_TRUE, VARIANT_BOOL{0}, VARIANT_BOOL{1234}}) {
      EXPECT_EQ(side.Enable(given), S_OK);
      EXPECT_EQ(side.Enabled(), given);
    }
  });
}

TEST_F(StreamDigestTest, BytesThatPassAreDigestedOnTheirSideOnly) {
  Bind();
  EachSide([&](const DigestSide& side) {
    for (const OLECHAR* algorithm : kAlgorithms) {
      reading.Choose(algorithm);
      writing.Choose(algorithm);
      const Bytes first = PatternBytes(200, 1);
      Pass(side, first);
      const Bytes second = PatternBytes(77, 2);
      Pass(side, second);
      const Bytes all = first + second;
      EXPECT_EQ(side.Value(), PeerText(algorithm, all));
      EXPECT_EQ(Other(side).Value(), PeerText(algorithm, {}));
      OwnedVariant binary;
      EXPECT_EQ(side.GetBinaryValue(binary.Put()), S_OK);
      EXPECT_EQ(ReturnedBytes(binary.Value()), PeerDigest(algorithm, all));
    }
  });
}

TEST_F(StreamDigestTest, AFinalDigestStaysUntilItsSideStartsOver) {
  Bind();
  const Bytes bytes = BytesOf("abc");
  EachSide([&](const DigestSide& side) {
    side.Choose(OLESTR("SHA256"));
    Pass(side, bytes);
    EXPECT_EQ(side.Finalize(), S_OK);
    const Text digest = PeerText(OLESTR("SHA256"), bytes);
    EXPECT_EQ(side.Value(), digest);
    Pass(side, BytesOf("more"));
    EXPECT_EQ(side.Value(), digest);
    EXPECT_EQ(side.Finalize(), S_OK);
    EXPECT_NE(side.Value(), digest);
    EXPECT_EQ(side.Reset(), S_OK);
    Pass(side, bytes);
    EXPECT_EQ(side.Value(), digest);
  });
}

TEST_F(StreamDigestTest, AKeyMakesItsSideAnHmac) {
  Bind();
  EachSide([&](const DigestSide& side) {
    side.Choose(OLESTR("MD5"));
    EXPECT_EQ(side.Key(), kNoKey);
    Pass(side, BytesOf("dropped by the key"));
    EXPECT_EQ(side.SetKey(BytesOf("Jefe")), S_OK);
    EXPECT_EQ(side.Key(), BytesOf("Jefe"));
    Pass(side, BytesOf("what do ya want for nothing?"));
    EXPECT_EQ(side.Value(), OLESTR("750C783E6AB0B503EAA86E310A5DB738"));
    EXPECT_EQ(side.Reset(), S_OK);
    Pass(side, BytesOf("what do ya want for nothing?"));
    EXPECT_EQ(side.Value(), OLESTR("750C783E6AB0B503EAA86E310A5DB738"));
    EXPECT_EQ(side.ResetKey(), S_OK);
    Pass(side, BytesOf("abc"));
    EXPECT_EQ(side.Value(), PeerText(OLESTR("MD5"), BytesOf("abc")));
  });
}

TEST_F(StreamDigestTest, TransfersOfNoBytesArePassedOn) {
  Bind();
  target.content = PatternBytes(8);
  target.write_status = kOtherSuccess;
  for (const bool chosen : {false, true}) {
    if (chosen) {
      reading.Choose(OLESTR("MD5"));
      writing.Choose(OLESTR("MD5"));
    }
    target.read_sizes.clear();
    target.write_sizes.clear();
    EXPECT_EQ(ReadOnce(Stream(), 0, S_OK), Bytes{});
    EXPECT_EQ(target.read_sizes, std::vector<ULONG>{0});
    EXPECT_EQ(Write(Stream(), Bytes{}), (Moved{kOtherSuccess, 0}));
    EXPECT_EQ(target.write_sizes, std::vector<ULONG>{0});
  }
}

TEST_F(StreamDigestTest, TransfersThatAreDigestedAreSuccesses) {
  Bind();
  target.content = PatternBytes(8);
  target.short_read_status = target.write_status = kOtherSuccess;
  reading.Choose(OLESTR("MD5"));
  writing.Choose(OLESTR("MD5"));
  EXPECT_EQ(ReadOnce(Stream(), 10, S_OK), target.content);
  EXPECT_EQ(ReadOnce(Stream(), 10, kOtherSuccess), Bytes{});
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(3)), S_OK);
}

TEST_F(StreamDigestTest, EveryTruthValueButZeroSwitchesOn) {
  Bind();
  EachSide([&](const DigestSide& side) {
    for (const VARIANT_BOOL truth : {VARIANT_BOOL{2}, VARIANT_BOOL{256}, VARIANT_BOOL{-32768}}) {
      side.Choose(OLESTR("MD5"));
      EXPECT_EQ(side.Enable(truth), S_OK);
      Pass(side, BytesOf("abc"));
      EXPECT_EQ(side.Value(), PeerText(OLESTR("MD5"), BytesOf("abc"))) << truth;
    }
  });
}

TEST_F(StreamDigestTest, ADigestedShortReadIsASuccess) {
  Bind();
  reading.Choose(OLESTR("SHA1"));
  target.content = BytesOf("hello");
  EXPECT_EQ(ReadOnce(Stream(), 100, S_OK), BytesOf("hello"));
  EXPECT_EQ(target.read_sizes, std::vector<ULONG>{100});
  // The end itself is the target's to report.
  EXPECT_EQ(ReadOnce(Stream(), 100, S_FALSE), Bytes{});
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("SHA1"), BytesOf("hello")));
}

TEST_F(StreamDigestTest, AShortReadThatIsNotDigestedKeepsTheTargetsStatus) {
  Bind();
  reading.Choose(OLESTR("SHA1"));
  EXPECT_EQ(reading.Enable(VARIANT_FALSE), S_OK);
  target.content = BytesOf("hello");
  EXPECT_EQ(ReadOnce(Stream(), 100, S_FALSE), BytesOf("hello"));
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("SHA1"), {}));
  EXPECT_EQ(reading.Select(OLESTR("none")), kNotFound);
  EXPECT_EQ(reading.Enable(VARIANT_TRUE), S_OK);
  target.position = 0;
  EXPECT_EQ(ReadOnce(Stream(), 100, S_FALSE), BytesOf("hello"));
}

TEST_F(StreamDigestTest, AFailingReadReportsItsBytesButDigestsNone) {
  Bind();
  reading.Choose(OLESTR("SHA256"));
  target.content = PatternBytes(50);
  target.failing_read = 2;
  target.moved_by_failure = 3;
  EXPECT_EQ(ReadOnce(Stream(), 10), Head(target.content, 10));
  uint8_t bytes[10];
  EXPECT_EQ(Read(Stream(), bytes, 10), (Moved{kStreamFailure, 3}));
  EXPECT_EQ(Stream()->Read(bytes, 10, nullptr), S_OK);
  const Bytes digested = Head(target.content, 10) + Part(target.content, 13, 10);
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("SHA256"), digested));
}

TEST_F(StreamDigestTest, WriteWithoutATargetDigestsAlone) {
  writing.Choose(OLESTR("SHA1"));
  EXPECT_EQ(WriteAll(Stream(), BytesOf("abc")), S_OK);
  EXPECT_EQ(writing.Value(), OLESTR("A9993E364706816ABA3E25717850C26C9CD0D89D"));
}

TEST_F(StreamDigestTest, WriteWithoutATargetSetsOnlyACounterThatWasNotZero) {
  writing.Choose(OLESTR("MD5"));
  ULONG count = 0;
  EXPECT_EQ(WriteAll(Stream(), BytesOf("abc"), &count), S_OK);
  EXPECT_EQ(count, 0u);
  count = 1;
  EXPECT_EQ(WriteAll(Stream(), BytesOf("de"), &count), S_OK);
  EXPECT_EQ(count, 2u);
  // Nothing to digest is no failure, and counts.
  EXPECT_EQ(Write(Stream(), Bytes{}), (Moved{S_OK, 0}));
  EXPECT_EQ(writing.Value(), PeerText(OLESTR("MD5"), BytesOf("abcde")));
}

TEST_F(StreamDigestTest, WriteWithoutTargetAndDigestDoesNothing) {
  EXPECT_EQ(Write(Stream(), BytesOf("abc")), Moved{S_OK});
  writing.Choose(OLESTR("MD5"));
  EXPECT_EQ(writing.Enable(VARIANT_FALSE), S_OK);
  EXPECT_EQ(Write(Stream(), BytesOf("abc")), Moved{S_OK});
  EXPECT_EQ(writing.Value(), PeerText(OLESTR("MD5"), {}));
}

TEST_F(StreamDigestTest, APartialWriteDigestsWhatWasWritten) {
  Bind();
  writing.Choose(OLESTR("SHA256"));
  target.largest_write = 4;
  target.write_status = S_FALSE;
  EXPECT_EQ(Write(Stream(), BytesOf("abcdefgh")), (Moved{S_OK, 4}));
  EXPECT_EQ(target.content, BytesOf("abcd"));
  EXPECT_EQ(WriteAll(Stream(), BytesOf("xy")), S_OK);
  EXPECT_EQ(writing.Value(), PeerText(OLESTR("SHA256"), BytesOf("abcdxy")));
}

TEST_F(StreamDigestTest, AWriteOfNoBytesKeepsTheTargetsStatus) {
  Bind();
  writing.Choose(OLESTR("MD5"));
  target.largest_write = 0;
  target.write_status = kOtherSuccess;
  EXPECT_EQ(Write(Stream(), BytesOf("abc")), (Moved{kOtherSuccess, 0}));
  EXPECT_EQ(writing.Value(), PeerText(OLESTR("MD5"), {}));
}

TEST_F(StreamDigestTest, AFailingWriteReportsItsBytesButDigestsNone) {
  Bind();
  writing.Choose(OLESTR("MD5"));
  target.failing_write = 1;
  target.moved_by_failure = 2;
  target.failure = STG_E_MEDIUMFULL;
  EXPECT_EQ(Write(Stream(), BytesOf("abc")), (Moved{STG_E_MEDIUMFULL, 2}));
  EXPECT_EQ(writing.Value(), PeerText(OLESTR("MD5"), {}));
}

TEST_F(StreamDigestTest, WritesPassUndigestedWhenSwitchedOff) {
  Bind();
  writing.Choose(OLESTR("MD5"));
  EXPECT_EQ(writing.Enable(VARIANT_FALSE), S_OK);
  target.write_status = S_FALSE;
  EXPECT_EQ(Write(Stream(), BytesOf("abc")), (Moved{S_FALSE, 3}));
  EXPECT_EQ(target.content, BytesOf("abc"));
  EXPECT_EQ(writing.Value(), PeerText(OLESTR("MD5"), {}));
}

TEST_F(StreamDigestTest, ATargetMayChangeTheAlgorithmFromInside) {
  Bind();
  reading.Choose(OLESTR("MD5"));
  target.content = BytesOf("abcdef");
  target.on_read = [&] { reading.Choose(OLESTR("SHA1")); };
  EXPECT_EQ(ReadOnce(Stream(), 6), BytesOf("abcdef"));
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("SHA1"), BytesOf("abcdef")));
}

}  // namespace
}  // namespace mirolta::test
