// CopyTo of both filters.
#include <type_traits>

#include "stream_crypt_fixture.h"

namespace mirolta::test {
namespace {

// What copies have in common: a digest sees the bytes that were read, a cipher without an algorithm
// leaves them as they are.
template <typename Dual>
class StreamCopyTest : public FilterTest<Dual> {
 protected:
  static constexpr bool kDigests = std::is_same_v<Dual, IToviStreamDigest>;

  // Runs without an algorithm and with one, each time from the content's first byte on.
  template <typename Run>
  void EachState(const Bytes& content, Run run) {
    this->Bind();
    if constexpr (!kDigests) this->reading.Encrypt();
    for (const bool chosen : {false, true}) {
      SCOPED_TRACE(chosen ? "with an algorithm" : "without an algorithm");
      if (chosen) this->reading.Choose();
      has_algorithm_ = chosen;
      this->target.content = content;
      this->target.position = 0;
      this->target.read_sizes.clear();
      run();
    }
  }
  bool KeepsBytes() const { return kDigests || !has_algorithm_; }
  void ExpectDigested(const Bytes& bytes) const {
    if constexpr (kDigests) {
      if (has_algorithm_) {
        EXPECT_EQ(this->reading.Value(), PeerText(OLESTR("SHA256"), bytes));
      }
    }
  }

 private:
  bool has_algorithm_ = false;
};
TYPED_TEST_SUITE(StreamCopyTest, BothFilters);

TYPED_TEST(StreamCopyTest, SuccessCodesOfTheStreamsDoNotMatter) {
  this->target.largest_read = 500;
  this->target.short_read_status = kOtherSuccess;
  this->EachState(PatternBytes(2048), [&] {
    ScriptedStream sink;
    sink.write_status = kOtherSuccess;
    EXPECT_EQ(Copy(this->Stream(), &sink, 5000), (Copied{S_OK, 2048, 2048}));
  });
}

TYPED_TEST(StreamCopyTest, TotalsAreOptional) {
  this->EachState(PatternBytes(32), [&] {
    ScriptedStream sink;
    EXPECT_EQ(this->Stream()->CopyTo(&sink, Large(32), nullptr, nullptr), S_OK);
    EXPECT_EQ(sink.content.size(), 32u);
  });
}

TYPED_TEST(StreamCopyTest, BytesAreReadInPieces) {
  const Bytes content = PatternBytes(5000);
  this->EachState(content, [&] {
    ScriptedStream sink;
    EXPECT_EQ(Copy(this->Stream(), &sink, 3000), (Copied{S_OK, 3000, 3000}));
    EXPECT_EQ(this->target.read_sizes, (std::vector<ULONG>{1024, 1024, 952}));
    this->ExpectDigested(Head(content, 3000));
    if (!this->KeepsBytes()) return;
    EXPECT_EQ(sink.write_sizes, (std::vector<ULONG>{1024, 1024, 952}));
    EXPECT_EQ(sink.content, Head(content, 3000));
  });
}

TYPED_TEST(StreamCopyTest, ACopyEndsWithTheTarget) {
  const Bytes content = PatternBytes(1500);
  this->EachState(content, [&] {
    ScriptedStream sink;
    // More than 32 bits: the whole stream.
    EXPECT_EQ(Copy(this->Stream(), &sink, 0x100000000u), (Copied{S_OK, 1500, 1500}));
    EXPECT_EQ(this->target.read_sizes, (std::vector<ULONG>{1024, 1024, 1024}));
    this->ExpectDigested(content);
    if (this->KeepsBytes()) {
      EXPECT_EQ(sink.content, content);
    }
    EXPECT_EQ(Copy(this->Stream(), &sink, ~ULONGLONG{0}), (Copied{S_OK, 0, 0}));
  });
}

TYPED_TEST(StreamCopyTest, ACopyOfNoBytesAsksForNone) {
  this->EachState({}, [&] {
    ScriptedStream sink;
    EXPECT_EQ(Copy(this->Stream(), &sink, 0), (Copied{S_OK, 0, 0}));
    EXPECT_TRUE(this->target.read_sizes.empty());
  });
}

TYPED_TEST(StreamCopyTest, ACopyOfShortReadsCountsWhatWasRead) {
  const Bytes content = PatternBytes(3000);
  this->target.largest_read = 700;
  this->EachState(content, [&] {
    ScriptedStream sink;
    EXPECT_EQ(Copy(this->Stream(), &sink, 2000), (Copied{S_OK, 2000, 2000}));
    EXPECT_EQ(this->target.read_sizes, (std::vector<ULONG>{1024, 1024, 600}));
    this->ExpectDigested(Head(content, 2000));
    if (this->KeepsBytes()) {
      EXPECT_EQ(sink.content, Head(content, 2000));
    }
  });
}

TYPED_TEST(StreamCopyTest, ACopyWhoseReadFailsReportsNoTotals) {
  const Bytes content = PatternBytes(3000);
  this->target.failing_read = 2;
  this->target.moved_by_failure = 5;
  this->EachState(content, [&] {
    ScriptedStream sink;
    EXPECT_EQ(Copy(this->Stream(), &sink, 3000), Copied{kStreamFailure});
    EXPECT_EQ(sink.content.size(), 1024u);
    this->ExpectDigested(Head(content, 1024));
  });
}

// The piece was digested before.
TYPED_TEST(StreamCopyTest, ACopyWhoseWriteFailsReportsNoTotals) {
  const Bytes content = PatternBytes(3000);
  this->EachState(content, [&] {
    ScriptedStream sink;
    sink.failing_write = 2;
    sink.failure = STG_E_MEDIUMFULL;
    EXPECT_EQ(Copy(this->Stream(), &sink, 3000), Copied{STG_E_MEDIUMFULL});
    this->ExpectDigested(Head(content, 2048));
    EXPECT_EQ(Copy(this->Stream(), nullptr, 3000), Copied{STG_E_INVALIDPOINTER});
  });
}

TYPED_TEST(StreamCopyTest, ACopyOfUnchangedBytesDropsTheRestOfAPartialWriteAndGoesOn) {
  const Bytes content = PatternBytes(3000);
  this->EachState(content, [&] {
    if (!this->KeepsBytes()) return;
    ScriptedStream sink;
    sink.largest_write = 1000;
    EXPECT_EQ(Copy(this->Stream(), &sink, ~ULONGLONG{0}), (Copied{S_OK, 3000, 2952}));
    EXPECT_EQ(sink.content,
              Head(content, 1000) + Part(content, 1024, 1000) + Part(content, 2048, 952));
    this->ExpectDigested(content);
  });
}

TYPED_TEST(StreamCopyTest, ACopyOfUnchangedBytesEndsWhenNothingIsWritten) {
  const Bytes content = PatternBytes(3000);
  this->EachState(content, [&] {
    if (!this->KeepsBytes()) return;
    ScriptedStream sink;
    sink.largest_write = 0;
    EXPECT_EQ(Copy(this->Stream(), &sink, 3000), (Copied{S_OK, 1024, 0}));
    this->ExpectDigested(Head(content, 1024));
  });
}

TYPED_TEST(StreamCopyTest, ACopyToTheFilterItselfIsRefusedByTheInnerWrite) {
  this->EachState(PatternBytes(10), [&] {
    EXPECT_EQ(Copy(this->Stream(), this->Stream(), 10), Copied{E_UNEXPECTED});
    EXPECT_EQ(this->target.content.size(), 10u);
  });
}

using StreamDigestCopyTest = FilterTest<IToviStreamDigest>;

TEST_F(StreamDigestCopyTest, ACopyDigestsZerosForBytesThatTheTargetReportsButNeverWrote) {
  Bind();
  reading.Choose();
  target.content = PatternBytes(1024);
  target.excess_report = 1024;
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 2048).status, S_OK);
  Bytes expected = PatternBytes(1024);
  expected.resize(2048);
  EXPECT_EQ(sink.content, expected);
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("SHA256"), expected));
}

TEST_F(StreamDigestCopyTest, ACopyIsNotDigestedAsWriting) {
  Bind();
  target.content = PatternBytes(3000);
  reading.Choose();
  writing.Choose();
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 3000).status, S_OK);
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("SHA256"), target.content));
  EXPECT_EQ(writing.Value(), PeerText(OLESTR("SHA256"), {}));
}

TEST_F(StreamDigestCopyTest, ACopyWithItsDigestSwitchedOffStillCopies) {
  Bind();
  target.content = PatternBytes(1100);
  reading.Choose();
  EXPECT_EQ(reading.Enable(VARIANT_FALSE), S_OK);
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 1100).status, S_OK);
  EXPECT_EQ(sink.content, target.content);
  EXPECT_EQ(reading.Value(), PeerText(OLESTR("SHA256"), {}));
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

TEST_F(StreamCryptTest, ACopyWhoseLastBlockFailsReportsNoTotals) {
  StartReading(PatternBytes(20));
  ScriptedStream sink;
  sink.failing_write = 2;
  EXPECT_EQ(Copy(Stream(), &sink, 20), Copied{kStreamFailure});
  target.position = 0;
  EXPECT_EQ(reading.PutPad(-5), S_OK);
  EXPECT_EQ(Copy(Stream(), &sink, 20), Copied{E_OUTOFMEMORY});
}

}  // namespace
}  // namespace mirolta::test
