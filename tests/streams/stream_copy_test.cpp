// CopyTo of both filters.
#include "stream_crypt_fixture.h"

namespace mirolta::test {
namespace {

template <typename Dual>
class StreamCopyTest : public FilterTest<Dual> {};
using Duals = testing::Types<IToviStreamDigest, IToviStreamCrypt>;
TYPED_TEST_SUITE(StreamCopyTest, Duals);

TYPED_TEST(StreamCopyTest, SuccessCodesOfTheStreamsDoNotMatter) {
  this->Bind();
  for (const OLECHAR* algorithm : {OLESTR("none"), OLESTR("SHA1"), OLESTR("AES")}) {
    SCOPED_TRACE(testing::PrintToString(Text(algorithm)));
    if (SUCCEEDED(this->reading.Select(algorithm))) this->reading.SetKey(kKey);
    ScriptedStream sink;
    sink.write_status = kOtherSuccess;
    this->target.content = PatternBytes(2048);
    this->target.position = 0;
    this->target.largest_read = 500;
    this->target.short_read_status = kOtherSuccess;
    EXPECT_EQ(Copy(this->Stream(), &sink, 5000), (Copied{S_OK, 2048, 2048}));
  }
}

TYPED_TEST(StreamCopyTest, TotalsAreOptional) {
  this->Bind();
  for (const OLECHAR* algorithm : {OLESTR("none"), OLESTR("SHA1"), OLESTR("AES")}) {
    SCOPED_TRACE(testing::PrintToString(Text(algorithm)));
    if (SUCCEEDED(this->reading.Select(algorithm))) this->reading.SetKey(kKey);
    this->target.content = PatternBytes(32);
    this->target.position = 0;
    ScriptedStream sink;
    EXPECT_EQ(this->Stream()->CopyTo(&sink, Large(32), nullptr, nullptr), S_OK);
    EXPECT_EQ(sink.content.size(), 32u);
  }
}

using StreamDigestCopyTest = FilterTest<IToviStreamDigest>;

TEST_F(StreamDigestCopyTest, ACopyDigestsZerosForBytesThatTheTargetReportsButNeverWrote) {
  Bind();
  reading.Choose(OLESTR("SHA256"));
  target.content = PatternBytes(1024);
  target.excess_report = 1024;
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 2048).status, S_OK);
  Bytes expected = PatternBytes(1024);
  expected.resize(2048);
  EXPECT_EQ(sink.content, expected);
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("SHA256"), expected));
}

TEST_F(StreamDigestCopyTest, ACopyReadsInPiecesAndDigestsAsReading) {
  Bind();
  target.content = PatternBytes(5000);
  reading.Choose(OLESTR("SHA256"));
  writing.Choose(OLESTR("SHA256"));
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 3000), (Copied{S_OK, 3000, 3000}));
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{1024, 1024, 952}));
  EXPECT_EQ(sink.write_sizes, (std::vector<ULONG>{1024, 1024, 952}));
  const Bytes copied = Head(target.content, 3000);
  EXPECT_EQ(sink.content, copied);
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("SHA256"), copied));
  EXPECT_EQ(writing.Value(), PeerText(OLESTR("SHA256"), {}));
}

TEST_F(StreamDigestCopyTest, ACopyEndsWithTheTarget) {
  Bind();
  target.content = PatternBytes(1500);
  ScriptedStream sink;
  // More than 32 bits: the whole stream.
  EXPECT_EQ(Copy(Stream(), &sink, 0x100000000u), (Copied{S_OK, 1500, 1500}));
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{1024, 1024, 1024}));
  EXPECT_EQ(sink.content, target.content);
  EXPECT_EQ(Copy(Stream(), &sink, ~ULONGLONG{0}), (Copied{S_OK, 0, 0}));
}

TEST_F(StreamDigestCopyTest, ACopyOfNoBytesAsksForNone) {
  Bind();
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 0), (Copied{S_OK, 0, 0}));
  EXPECT_TRUE(target.read_sizes.empty());
}

TEST_F(StreamDigestCopyTest, ACopyOfShortReadsCountsWhatWasRead) {
  Bind();
  target.content = PatternBytes(3000);
  target.largest_read = 700;
  reading.Choose(OLESTR("MD5"));
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 2000), (Copied{S_OK, 2000, 2000}));
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{1024, 1024, 600}));
  EXPECT_EQ(sink.content, Head(target.content, 2000));
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("MD5"), sink.content));
}

TEST_F(StreamDigestCopyTest, ACopyWhoseReadFailsReportsNoTotals) {
  Bind();
  target.content = PatternBytes(3000);
  target.failing_read = 2;
  target.moved_by_failure = 5;
  reading.Choose(OLESTR("MD5"));
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 3000), Copied{kStreamFailure});
  EXPECT_EQ(sink.content.size(), 1024u);
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("MD5"), Head(target.content, 1024)));
}

TEST_F(StreamDigestCopyTest, ACopyWhoseWriteFailsHasDigestedThePiece) {
  Bind();
  target.content = PatternBytes(3000);
  reading.Choose(OLESTR("MD5"));
  ScriptedStream sink;
  sink.failing_write = 2;
  sink.failure = STG_E_MEDIUMFULL;
  EXPECT_EQ(Copy(Stream(), &sink, 3000), Copied{STG_E_MEDIUMFULL});
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("MD5"), Head(target.content, 2048)));
}

TEST_F(StreamDigestCopyTest, ACopyDropsTheRestOfAPartialWriteAndGoesOn) {
  Bind();
  target.content = PatternBytes(3000);
  reading.Choose(OLESTR("MD5"));
  ScriptedStream sink;
  sink.largest_write = 1000;
  EXPECT_EQ(Copy(Stream(), &sink, 3000), (Copied{S_OK, 3000, 2952}));
  EXPECT_EQ(sink.content, Head(target.content, 1000) + Part(target.content, 1024, 1000) +
                              Part(target.content, 2048, 952));
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("MD5"), target.content));
}

TEST_F(StreamDigestCopyTest, ACopyEndsWhenNothingIsWritten) {
  Bind();
  target.content = PatternBytes(3000);
  reading.Choose(OLESTR("MD5"));
  ScriptedStream sink;
  sink.largest_write = 0;
  EXPECT_EQ(Copy(Stream(), &sink, 3000), (Copied{S_OK, 1024, 0}));
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("MD5"), Head(target.content, 1024)));
}

TEST_F(StreamDigestCopyTest, ACopyWithoutADigestStillCopies) {
  Bind();
  target.content = PatternBytes(1100);
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 1100).status, S_OK);
  EXPECT_EQ(sink.content, target.content);
  reading.Choose(OLESTR("MD5"));
  EXPECT_EQ(reading.Enable(VARIANT_FALSE), S_OK);
  target.position = 0;
  EXPECT_EQ(Copy(Stream(), &sink, 1100).status, S_OK);
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("MD5"), {}));
}

TEST_F(StreamDigestCopyTest, ACopyToTheFilterItselfIsRefusedByTheInnerWrite) {
  Bind();
  target.content = PatternBytes(10);
  EXPECT_EQ(Copy(Stream(), Stream(), 10), Copied{E_UNEXPECTED});
  EXPECT_EQ(target.content.size(), 10u);
}

TEST_F(StreamCryptTest, ACopyFinalizesAndCountsTheInput) {
  StartReading(PatternBytes(3001));
  EXPECT_EQ(reading.PutPad(7), S_OK);
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 3001), (Copied{S_OK, 3001, 3001}));
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{1024, 1024, 953}));
  EXPECT_EQ(sink.write_sizes, (std::vector<ULONG>{1024, 1024, 944, 16}));
  EXPECT_EQ(sink.content, PeerAes(kKey, target.content, true, 7));
  // It does not drain: the next read asks the stream.
  target.content.resize(3017);
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK).size(), 16u);
}

TEST_F(StreamCryptTest, ACopyLeavesDrainingAsItIs) {
  Bind();
  target.content = PatternBytes(64);
  reading.Choose();
  EXPECT_EQ(reading.Finalize(), S_OK);
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 32).status, S_OK);
  EXPECT_EQ(sink.content, PeerAes(kKey, PatternBytes(32), false));
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK), Bytes{});
  EXPECT_EQ(target.position, 32u);
}

TEST_F(StreamCryptTest, ACopyDropsWhatReadingHeldBack) {
  StartReading(PatternBytes(40));
  EXPECT_EQ(ReadOnce(Stream(), 20).size(), 16u);
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 100).status, S_OK);
  EXPECT_EQ(sink.content, PeerAes(kKey, Part(target.content, 20, 20), true));
}

TEST_F(StreamCryptTest, ACopyOfNoBytesResetsAndFinalizes) {
  StartReading(PatternBytes(40));
  EXPECT_EQ(ReadOnce(Stream(), 20).size(), 16u);
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 0), (Copied{S_OK, 0, 0}));
  EXPECT_TRUE(sink.content.empty());
  EXPECT_EQ(reading.Finalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 20), Bytes{});
}

TEST_F(StreamCryptTest, ACopySendsAgainWhatTheDestinationDidNotTake) {
  Bind();
  target.content = PatternBytes(2100);
  reading.Choose();
  ScriptedStream sink;
  sink.largest_write = 1000;
  EXPECT_EQ(Copy(Stream(), &sink, 5000), (Copied{S_OK, 2100, 2100}));
  // Writing nothing does not end the copy either, with an engine.
  EXPECT_EQ(sink.write_sizes, (std::vector<ULONG>{1024, 1048, 96}));
  EXPECT_EQ(sink.content, PeerAes(kKey, Head(target.content, 2096), false));
  target.position = 0;
  sink.largest_write = 0;
  sink.write_sizes.clear();
  EXPECT_EQ(Copy(Stream(), &sink, 5000), (Copied{S_OK, 2100, 2100}));
  EXPECT_EQ(sink.write_sizes, (std::vector<ULONG>{1024, 2048, 2096, 2096}));
}

TEST_F(StreamCryptTest, ACopyWithoutAnAlgorithmCountsWhatTheDestinationTook) {
  Bind();
  target.content = PatternBytes(3000);
  ScriptedStream sink;
  sink.largest_write = 1000;
  EXPECT_EQ(Copy(Stream(), &sink, ~ULONGLONG{0}), (Copied{S_OK, 3000, 2952}));
  target.position = 0;
  sink.largest_write = 0;
  EXPECT_EQ(Copy(Stream(), &sink, 3000), (Copied{S_OK, 1024, 0}));
}

TEST_F(StreamCryptTest, ACopyThatFailsReportsNoTotals) {
  Bind();
  reading.Encrypt();
  for (int chosen = 0; chosen < 2; ++chosen) {
    target.content = PatternBytes(3000);
    target.position = 0;
    target.read_sizes.clear();
    target.failing_read = 2;
    ScriptedStream sink;
    EXPECT_EQ(Copy(Stream(), &sink, 3000), Copied{kStreamFailure});
    EXPECT_EQ(sink.content.size(), 1024u);
    target.failing_read = 0;
    target.position = 0;
    ScriptedStream full;
    full.failing_write = 2;
    full.failure = STG_E_MEDIUMFULL;
    EXPECT_EQ(Copy(Stream(), &full, 3000), Copied{STG_E_MEDIUMFULL});
    EXPECT_EQ(Copy(Stream(), nullptr, 3000), Copied{STG_E_INVALIDPOINTER});
    reading.Choose();
  }
  // The last block's own failures.
  target.content = PatternBytes(20);
  target.position = 0;
  ScriptedStream sink;
  sink.failing_write = 2;
  EXPECT_EQ(Copy(Stream(), &sink, 20), Copied{kStreamFailure});
  target.position = 0;
  EXPECT_EQ(reading.PutPad(-5), S_OK);
  EXPECT_EQ(Copy(Stream(), &sink, 20), Copied{E_OUTOFMEMORY});
}

}  // namespace
}  // namespace mirolta::test
