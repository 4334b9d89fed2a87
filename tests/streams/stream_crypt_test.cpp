// ToviStreamCrypt by early-bound calls: its members, and what reading and writing have in common.
#include "calling_object.h"
#include "stream_crypt_fixture.h"

namespace mirolta::test {
namespace {

TEST_F(StreamCryptTest, ANewFilterDecryptsWhatIsReadAndEncryptsWhatIsWritten) {
  EXPECT_EQ(reading.Decrypts(), 1);
  EXPECT_EQ(writing.Decrypts(), 0);
  EachSide([&](const CryptSide& side) {
    EXPECT_EQ(side.Algorithm(), OLESTR(""));
    EXPECT_EQ(side.Pad(), 0);
  });
}

TEST_F(StreamCryptTest, WithoutAnAlgorithmThereIsNoPadAndResetsSucceed) {
  EachSide([](const CryptSide& side) {
    EXPECT_EQ(side.PutPad(4), kNotInitialized);
    EXPECT_EQ(side.Pad(), 0);
    EXPECT_EQ(side.Reset(), S_OK);
    EXPECT_EQ(side.ResetKey(), S_OK);
  });
  EXPECT_EQ(reading.Finalize(), S_OK);
}

TEST_F(StreamCryptTest, DirectionAndPadRefuseNullResultPointers) {
  EachSide([](const CryptSide& side) {
    for (const bool chosen : {false, true}) {
      if (chosen) side.Choose();
      EXPECT_EQ(side.GetDecrypts(nullptr), E_POINTER);
      EXPECT_EQ(side.GetPad(nullptr), E_POINTER);
    }
  });
}

TEST_F(StreamCryptTest, AnAlgorithmStartsWithoutKeyAndPad) {
  EachSide([](const CryptSide& side) {
    for (const OLECHAR* name : {OLESTR("AES"), OLESTR("DES")}) {
      side.Choose(name);
      EXPECT_EQ(side.PutPad(65), S_OK);
      EXPECT_EQ(side.Pad(), 65);
      EXPECT_EQ(side.Select(name), S_OK);
      EXPECT_EQ(side.Algorithm(), name);
      EXPECT_EQ(side.Pad(), 0);
      EXPECT_EQ(side.Key(), kNoKey);
    }
  });
}

TEST_F(StreamCryptTest, AnUnknownAlgorithmLeavesNoPad) {
  EachSide([](const CryptSide& side) {
    side.Choose();
    EXPECT_EQ(side.PutPad(65), S_OK);
    EXPECT_EQ(side.Select(OLESTR("aes")), kNotFound);
    EXPECT_EQ(side.Pad(), 0);
    EXPECT_EQ(side.PutPad(4), kNotInitialized);
  });
}

TEST_F(StreamCryptTest, AKeyOfAWrongLengthIsRefusedAndLeavesNone) {
  struct Row {
    const OLECHAR* algorithm;
    std::vector<ULONG> lengths;
  };
  EachSide([](const CryptSide& side) {
    for (const Row& row : {Row{OLESTR("AES"), {16, 24, 32}}, Row{OLESTR("DES"), {8, 16, 24}}}) {
      for (ULONG length = 0; length <= 40; ++length) {
        SCOPED_TRACE(testing::PrintToString(Text(row.algorithm)) + " with " +
                     std::to_string(length) + " bytes");
        side.Choose(row.algorithm, PatternBytes(row.lengths.back()));
        const bool fits = std::count(row.lengths.begin(), row.lengths.end(), length) != 0;
        EXPECT_EQ(side.SetKey(PatternBytes(length)), fits ? S_OK : E_INVALIDARG);
        EXPECT_EQ(side.Key(), fits ? std::optional(PatternBytes(length)) : kNoKey);
      }
    }
  });
}

TEST_F(StreamCryptTest, TheOldKeyGoesBeforeTheNewOneIsRead) {
  EachSide([this](const CryptSide& side) {
    side.Choose(OLESTR("DES"), PatternBytes(8));
    EXPECT_EQ(filter->put_codePage(1252), S_OK);
    int calls = 0;
    CallingObject object(
        [&] {
          ++calls;
          EXPECT_EQ(side.Key(), kNoKey);
          EXPECT_EQ(filter->put_codePage(-1), S_OK);
        },
        OLESTR("eightchr"));
    EXPECT_EQ(side.PutKey(ObjectValue(&object)), S_OK);
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(side.Key(), BytesOf("eightchr"));
  });
}

TEST_F(StreamCryptTest, DirectionsAndPadsAreKeptAsGiven) {
  EachSide([&](const CryptSide& side) {
    for (const VARIANT_BOOL given : {VARIANT_TRUE, VARIANT_BOOL{0}, VARIANT_BOOL{321}}) {
      EXPECT_EQ(side.PutDecrypt(given), S_OK);
      EXPECT_EQ(side.Decrypts(), given);
    }
    side.Choose();
    for (const LONG given : {-1, -2, 0x141, 0x7FFFFFFF}) {
      EXPECT_EQ(side.PutPad(given), S_OK);
      EXPECT_EQ(side.Pad(), given);
    }
    // The pad outlives keys and resets.
    EXPECT_EQ(side.SetKey(PatternBytes(24)), S_OK);
    EXPECT_EQ(side.Reset(), S_OK);
    EXPECT_EQ(side.ResetKey(), S_OK);
    EXPECT_EQ(side.Pad(), 0x7FFFFFFF);
  });
}

TEST_F(StreamCryptTest, WithoutAnAlgorithmFinalizeWritesNothing) {
  Bind();
  EXPECT_EQ(WriteAll(Stream(), BytesOf("xyz")), S_OK);
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_EQ(target.content, BytesOf("xyz"));
}

TEST_F(StreamCryptTest, TheStreamsOwnSuccessCodesAreReturned) {
  Bind();
  target.short_read_status = target.write_status = kOtherSuccess;
  // Nothing read is the stream's status, something read is a success.
  reading.Choose();
  target.content = PatternBytes(16);
  EXPECT_EQ(ReadOnce(Stream(), 30, S_OK).size(), 16u);
  EXPECT_EQ(ReadOnce(Stream(), 30, kOtherSuccess), Bytes{});
  // A write is the stream's, unless nothing came out to be written.
  writing.Choose();
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(5)), S_OK);
  EXPECT_EQ(Write(Stream(), PatternBytes(16)), (Moved{kOtherSuccess, 16}));
  EXPECT_EQ(writing.Finalize(), kOtherSuccess);
}

TEST_F(StreamCryptTest, EveryTruthValueButZeroDecrypts) {
  Bind();
  for (const VARIANT_BOOL truth : {VARIANT_BOOL{2}, VARIANT_BOOL{256}, VARIANT_BOOL{-32768}}) {
    reading.Choose();
    writing.Choose();
    EXPECT_EQ(reading.PutDecrypt(truth), S_OK);
    EXPECT_EQ(writing.PutDecrypt(truth), S_OK);
    target.content = PeerAes(kKey, PatternBytes(16), true);
    target.position = 0;
    EXPECT_EQ(ReadOnce(Stream(), 16), PatternBytes(16)) << truth;
    target.content.clear();
    EXPECT_EQ(WriteAll(Stream(), PeerAes(kKey, PatternBytes(16), true)), S_OK);
    EXPECT_EQ(target.content, PatternBytes(16)) << truth;
  }
}

TEST_F(StreamCryptTest, AMissingTargetIsReportedBeforeAMissingKey) {
  EachSide([](const CryptSide& side) { EXPECT_EQ(side.Select(OLESTR("AES")), S_OK); });
  uint8_t bytes[16] = {};
  EXPECT_EQ(Read(Stream(), bytes, 16), (Moved{S_FALSE, 0}));
  EXPECT_EQ(Read(Stream(), bytes, 0), (Moved{S_OK, 0}));
  EXPECT_EQ(Write(Stream(), PatternBytes(16)), Moved{STG_E_CANTSAVE});
  EXPECT_EQ(writing.Finalize(), STG_E_CANTSAVE);
  ScriptedStream sink;
  EXPECT_EQ(Copy(Stream(), &sink, 1), Copied{STG_E_REVERTED});
}

TEST_F(StreamCryptTest, WithoutAKeyNothingMoves) {
  struct Row {
    const char* state;
    void (*make)(const CryptSide& side);
  };
  const Row rows[] = {
      {"a new algorithm",
       [](const CryptSide& side) { EXPECT_EQ(side.Select(OLESTR("AES")), S_OK); }},
      {"a key of a wrong length",
       [](const CryptSide& side) { EXPECT_EQ(side.SetKey(PatternBytes(9)), E_INVALIDARG); }},
      {"a key that was dropped", [](const CryptSide& side) {
         EXPECT_EQ(side.SetKey(kKey), S_OK);
         EXPECT_EQ(side.ResetKey(), S_OK);
       }}};
  Bind();
  target.content = PatternBytes(64);
  for (const Row& row : rows) {
    SCOPED_TRACE(row.state);
    EachSide(row.make);
    uint8_t bytes[32] = {};
    EXPECT_EQ(Read(Stream(), bytes, 32), (Moved{E_UNEXPECTED, 0}));
    EXPECT_EQ(Write(Stream(), PatternBytes(32)), Moved{E_UNEXPECTED});
    ScriptedStream sink;
    EXPECT_EQ(Copy(Stream(), &sink, 32), Copied{E_UNEXPECTED});
    EXPECT_TRUE(sink.write_sizes.empty());
    EXPECT_TRUE(target.read_sizes.empty());
    EXPECT_EQ(target.content, PatternBytes(64));
    // What asks for no transfer is not refused.
    EXPECT_EQ(WriteAll(Stream(), Bytes{}), S_OK);
    EXPECT_EQ(Copy(Stream(), nullptr, 32), Copied{STG_E_INVALIDPOINTER});
    EXPECT_EQ(reading.Finalize(), S_OK);
    EXPECT_EQ(writing.Finalize(), S_OK);
    EXPECT_EQ(Read(Stream(), bytes, 32).status, E_UNEXPECTED);
  }
}

TEST_F(StreamCryptTest, AKeyThatCannotBeConvertedLeavesTheQueues) {
  StartWriting();
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(5)), S_OK);
  EXPECT_EQ(writing.SetImpossibleKey(), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(writing.Finalize(), E_UNEXPECTED);
  EXPECT_EQ(writing.Finalize(), E_UNEXPECTED);
  EXPECT_TRUE(target.write_sizes.empty());

  // Only output is queued here, no partial block.
  target.content = PatternBytes(16);
  reading.Choose();
  reading.Encrypt();
  EXPECT_EQ(ReadOnce(Stream(), 10), Bytes{});
  EXPECT_EQ(ReadOnce(Stream(), 10).size(), 10u);
  EXPECT_EQ(reading.SetImpossibleKey(), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(reading.Finalize(), E_UNEXPECTED);
}

TEST_F(StreamCryptTest, OneTransferAboveTheQueueLimitFails) {
  Bind();
  reading.Choose();
  writing.Choose();
  const Bytes large = PatternBytes(kTooLong);
  EXPECT_EQ(Write(Stream(), large), Moved{E_OUTOFMEMORY});
  EXPECT_TRUE(target.content.empty());
  EXPECT_EQ(writing.Reset(), S_OK);
  EXPECT_EQ(WriteAll(Stream(), large), E_OUTOFMEMORY);

  target.content = large;
  std::vector<uint8_t> bytes(kTooLong);
  EXPECT_EQ(Read(Stream(), bytes.data(), kTooLong), (Moved{E_OUTOFMEMORY, 0}));
  // The bytes that were taken are lost.
  EXPECT_EQ(target.position, kTooLong);
  EXPECT_EQ(ReadOnce(Stream(), 16, S_FALSE), Bytes{});
  // A large request succeeds if the stream has little.
  target.position = kTooLong - 16;
  EXPECT_EQ(ReadOnce(Stream(), kTooLong, S_OK),
            PeerAes(kKey, Part(large, kTooLong - 16, 16), false));
}

// The bound stream is given queued bytes, which it must not be able to free.
TEST_F(StreamCryptTest, EnginesDoNotChangeInsideAStreamOperation) {
  Bind();
  reading.Choose();
  writing.Choose();
  int calls = 0;
  const auto meddle = [&] {
    ++calls;
    for (const CryptSide& side : {reading, writing}) {
      EXPECT_EQ(side.Select(OLESTR("DES")), E_UNEXPECTED);
      EXPECT_EQ(side.SetKey(kKey), E_UNEXPECTED);
      EXPECT_EQ(side.Reset(), E_UNEXPECTED);
      EXPECT_EQ(side.ResetKey(), E_UNEXPECTED);
      EXPECT_EQ(side.PutDecrypt(VARIANT_TRUE), E_UNEXPECTED);
      EXPECT_EQ(side.Finalize(), E_UNEXPECTED);
      EXPECT_EQ(side.Algorithm(), OLESTR("AES"));
    }
  };
  target.on_read = meddle;
  target.on_write = meddle;
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(20)), S_OK);
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, PatternBytes(20), true));
  EXPECT_EQ(ReadOnce(Stream(), 32), PeerAes(kKey, PeerAes(kKey, PatternBytes(20), true), false));
  ScriptedStream sink;
  sink.on_write = meddle;
  target.position = 0;
  EXPECT_EQ(Copy(Stream(), &sink, 16).status, S_OK);
  EXPECT_EQ(calls, 2 + 1 + 2);
}

}  // namespace
}  // namespace mirolta::test
