// Reading through ToviStreamCrypt: blocks, queues, draining.
#include "stream_crypt_fixture.h"

namespace mirolta::test {
namespace {

TEST_F(StreamCryptTest, AFailingReadThroughAnEngineCountsNothing) {
  Bind();
  reading.Choose();
  target.content = PatternBytes(64);
  target.failing_read = 1;
  target.moved_by_failure = 3;
  uint8_t bytes[32];
  EXPECT_EQ(Read(Stream(), bytes, 32), (Moved{kStreamFailure, 0}));
}

TEST_F(StreamCryptTest, AFailingReadLeavesTheBufferAlone) {
  Bind();
  target.content = PatternBytes(64);
  target.failing_read = 1;
  target.moved_by_failure = 3;
  const Bytes before(32, 0x5A);
  Bytes bytes = before;
  EXPECT_EQ(Read(Stream(), bytes.data(), 32), (Moved{kStreamFailure, 0}));
  EXPECT_EQ(bytes, before);
  // Nor does a short read write behind its bytes.
  target.largest_read = 4;
  EXPECT_EQ(Read(Stream(), bytes.data(), 32), (Moved{S_FALSE, 4}));
  EXPECT_EQ(Head(bytes, 4), Part(target.content, 3, 4));
  EXPECT_EQ(Part(bytes, 4, 28), Part(before, 4, 28));
}

// Stale memory must not show.
TEST_F(StreamCryptTest, BytesThatATargetReportsButNeverWroteAreZeros) {
  Bind();
  const Bytes zeros(1024);
  for (const bool with_engine : {false, true}) {
    if (with_engine) {
      reading.Choose();
      reading.Encrypt();
    }
    const auto expected = [&](const Bytes& plain) {
      return with_engine ? PeerAes(kKey, plain, true) : plain;
    };
    target.excess_report = 1024;
    // Freed blocks with other content, for the allocator to reuse.
    for (int i = 0; i < 8; ++i) const std::vector<uint8_t> used(1024, 0xEE);
    EXPECT_EQ(ReadOnce(Stream(), 1024, with_engine ? S_OK : S_FALSE), expected(zeros));
    ScriptedStream sink;
    EXPECT_EQ(Copy(Stream(), &sink, 2048).status, S_OK);
    EXPECT_EQ(sink.content, expected(Bytes(2048)));
    // Nor does content of an earlier piece.
    target.content = PatternBytes(1024);
    target.position = 0;
    sink.content.clear();
    EXPECT_EQ(Copy(Stream(), &sink, 2048).status, S_OK);
    Bytes once = PatternBytes(1024);
    once.resize(2048);
    EXPECT_EQ(sink.content, expected(once));
    target.content.clear();
    target.position = 0;
  }
}

TEST_F(StreamCryptTest, ReadingGivesWholeBlocksAndDrainsAfterFinalize) {
  StartReading(PatternBytes(20));
  const Bytes whole = PeerAes(kKey, target.content, true);
  EXPECT_EQ(ReadOnce(Stream(), 4096, S_OK), Head(whole, 16));
  EXPECT_EQ(ReadOnce(Stream(), 4096, S_FALSE), Bytes{});
  EXPECT_EQ(reading.Finalize(), S_OK);
  const size_t reads = target.read_sizes.size();
  EXPECT_EQ(ReadOnce(Stream(), 4096, S_OK), Part(whole, 16, 16));
  EXPECT_EQ(ReadOnce(Stream(), 4096, S_OK), Bytes{});
  EXPECT_EQ(target.read_sizes.size(), reads);
  // Draining has ended: the stream is asked again.
  target.content.resize(40);
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK).size(), 16u);
  EXPECT_EQ(target.read_sizes.size(), reads + 1);
}

TEST_F(StreamCryptTest, AReadThatCompletesNoBlockGivesNoBytes) {
  StartReading(PeerAes(kKey, PatternBytes(32), false));
  EXPECT_EQ(ReadOnce(Stream(), 15, S_OK), Bytes{});
  EXPECT_EQ(ReadOnce(Stream(), 10, S_OK), Head(PatternBytes(32), 10));
  // What a read had no room for waits for the next.
  EXPECT_EQ(ReadOnce(Stream(), 7, S_OK), Part(PatternBytes(32), 10, 7));
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{15, 10, 7}));
}

TEST_F(StreamCryptTest, AtTheEndOfTheStreamQueuedBytesWaitForFinalize) {
  StartReading(PatternBytes(16));
  const Bytes whole = PeerAes(kKey, target.content, true);
  EXPECT_EQ(ReadOnce(Stream(), 10, S_OK), Bytes{});
  EXPECT_EQ(ReadOnce(Stream(), 10, S_OK), Head(whole, 10));
  EXPECT_EQ(ReadOnce(Stream(), 10, S_FALSE), Bytes{});
  target.short_read_status = S_OK;
  EXPECT_EQ(ReadOnce(Stream(), 10, S_OK), Bytes{});
  EXPECT_EQ(reading.Finalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 4, S_OK), Part(whole, 10, 4));
  EXPECT_EQ(ReadOnce(Stream(), 4, S_OK), Part(whole, 14, 2));
  EXPECT_EQ(ReadOnce(Stream(), 4, S_OK), Bytes{});
}

TEST_F(StreamCryptTest, AReadOfNothingAsksTheStreamForNothing) {
  Bind();
  target.content = PatternBytes(16);
  reading.Choose();
  EXPECT_EQ(ReadOnce(Stream(), 0, S_OK), Bytes{});
  EXPECT_EQ(target.read_sizes, std::vector<ULONG>{0});
  uint8_t byte = 0;
  EXPECT_EQ(Stream()->Read(&byte, 1, nullptr), S_OK);
}

TEST_F(StreamCryptTest, AReadOfNothingEndsDraining) {
  StartReading(PatternBytes(20));
  EXPECT_EQ(ReadOnce(Stream(), 20).size(), 16u);
  EXPECT_EQ(reading.Finalize(), S_OK);
  const size_t reads = target.read_sizes.size();
  EXPECT_EQ(ReadOnce(Stream(), 0, S_OK), Bytes{});
  EXPECT_EQ(target.read_sizes.size(), reads);
  // The last block is still queued; the stream is asked before it, and has no more.
  EXPECT_EQ(ReadOnce(Stream(), 16, S_FALSE), Bytes{});
  EXPECT_EQ(target.read_sizes.size(), reads + 1);
  EXPECT_EQ(reading.Finalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK), Part(PeerAes(kKey, PatternBytes(20), true), 16, 16));
}

// Zero counts: reads are passed on, writes are not.
TEST_F(StreamCryptTest, WithoutAnAlgorithmAReadOfNothingIsPassedOnAndAWriteIsNot) {
  Bind();
  target.content = PatternBytes(16);
  EXPECT_EQ(ReadOnce(Stream(), 0, S_OK), Bytes{});
  EXPECT_EQ(target.read_sizes, std::vector<ULONG>{0});
  for (int chosen = 0; chosen < 2; ++chosen) {
    EXPECT_EQ(Write(Stream(), Bytes{}), (Moved{S_OK, 0}));
    writing.Choose();
  }
  EXPECT_TRUE(target.write_sizes.empty());
}

TEST_F(StreamCryptTest, ChangingTheReadDirectionLeavesTheQueues) {
  StartReading(PatternBytes(16));
  EXPECT_EQ(ReadOnce(Stream(), 5), Bytes{});
  EXPECT_EQ(filter->put_ReadDecrypt(VARIANT_BOOL{2}), S_OK);
  EXPECT_EQ(reading.Finalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 16), Bytes{});
  reading.Encrypt();
  EXPECT_EQ(ReadOnce(Stream(), 16), PeerAes(kKey, PatternBytes(16), true));
}

TEST_F(StreamCryptTest, DrainingGoesOnAfterAFinalizeThatFails) {
  StartReading(PatternBytes(20));
  EXPECT_EQ(reading.Finalize(), S_OK);
  // A copy that fails leaves a partial block behind, and draining as it is.
  ScriptedStream sink;
  sink.failing_write = 1;
  EXPECT_EQ(Copy(Stream(), &sink, 20), Copied{kStreamFailure});
  EXPECT_EQ(reading.PutPad(-2), S_OK);
  EXPECT_EQ(reading.Finalize(), E_OUTOFMEMORY);
  const size_t reads = target.read_sizes.size();
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK), Part(PeerAes(kKey, PatternBytes(20), true), 0, 16));
  EXPECT_EQ(target.read_sizes.size(), reads);
}

TEST_F(StreamCryptTest, FinalizingADecryptionLeavesAPartialBlockBehind) {
  Bind();
  target.content = PeerAes(kKey, PatternBytes(16), true);
  target.content.push_back(1);
  reading.Choose();
  EXPECT_EQ(ReadOnce(Stream(), 100, S_OK), PatternBytes(16));
  EXPECT_EQ(reading.Finalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 100, S_OK), Bytes{});
}

TEST_F(StreamCryptTest, EveryChangeOfReadingEndsDraining) {
  struct Row {
    const char* change;
    std::function<void()> make;
    bool draining;
  };
  const Row rows[] = {
      {"none", [] {}, true},
      {"a read", [this] { ReadOnce(Stream(), 16); }, false},
      {"ReadReset", [this] { EXPECT_EQ(reading.Reset(), S_OK); }, false},
      {"ReadKey", [this] { EXPECT_EQ(reading.SetKey(kKey), S_OK); }, false},
      {"a ReadKey that is refused",
       [this] {
         EXPECT_EQ(reading.SetKey(PatternBytes(5)), E_INVALIDARG);
         reading.Choose();
       },
       false},
      {"ReadDecrypt", [this] { reading.Encrypt(); }, false},
      {"ReadResetKey",
       [this] {
         EXPECT_EQ(reading.ResetKey(), S_OK);
         EXPECT_EQ(reading.SetKey(kKey), S_OK);
       },
       false},
      {"ReadAlgorithm", [this] { EXPECT_EQ(reading.Select(OLESTR("no")), kNotFound); }, false},
      {"the members of the other side",
       [this] {
         writing.Choose();
         EXPECT_EQ(writing.Reset(), S_OK);
         writing.Encrypt();
         EXPECT_EQ(writing.Finalize(), S_OK);
       },
       true}};
  Bind();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.change);
    reading.Choose();
    target.content = PatternBytes(64);
    target.position = 0;
    EXPECT_EQ(reading.Finalize(), S_OK);
    row.make();
    target.read_sizes.clear();
    uint8_t bytes[16];
    Stream()->Read(bytes, 16, nullptr);
    EXPECT_EQ(target.read_sizes.size(), row.draining ? 0u : 1u);
  }
}

TEST_F(StreamCryptTest, ARefusedPadFailsTheFinalizeAndDrainsNothing) {
  StartReading(PatternBytes(20));
  EXPECT_EQ(reading.PutPad(-2), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 20, S_OK).size(), 16u);
  EXPECT_EQ(reading.Finalize(), E_OUTOFMEMORY);
  EXPECT_EQ(ReadOnce(Stream(), 20, S_FALSE), Bytes{});
  EXPECT_EQ(reading.PutPad(0x141), S_OK);
  EXPECT_EQ(reading.Finalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 20, S_OK), Part(PeerAes(kKey, target.content, true, 0x41), 16, 16));
}

}  // namespace
}  // namespace mirolta::test
