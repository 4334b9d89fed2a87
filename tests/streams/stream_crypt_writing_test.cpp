// Writing through ToviStreamCrypt: blocks, queues, targets that take less or fail.
#include "stream_crypt_fixture.h"

namespace mirolta::test {
namespace {

TEST_F(StreamCryptTest, WithoutATargetNothingButNoBytesCanBeWritten) {
  for (const bool chosen : {false, true}) {
    SCOPED_TRACE(chosen ? "with an algorithm" : "without an algorithm");
    if (chosen) writing.Choose();
    EXPECT_EQ(Write(Stream(), PatternBytes(1)), Moved{STG_E_CANTSAVE});
    EXPECT_EQ(Write(Stream(), Bytes{}), (Moved{S_OK, 0}));
    EXPECT_EQ(WriteAll(Stream(), Bytes{}), S_OK);
    EXPECT_EQ(writing.Finalize(), STG_E_CANTSAVE);
  }
}

TEST_F(StreamCryptTest, WritingHoldsBackAPartialBlockUntilFinalize) {
  Bind();
  writing.Choose(OLESTR("DES"), PatternBytes(8));
  EXPECT_EQ(Write(Stream(), PatternBytes(5)), (Moved{S_OK, 5}));
  EXPECT_TRUE(target.write_sizes.empty());
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_EQ(target.write_sizes, std::vector<ULONG>{8});
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_EQ(target.write_sizes, std::vector<ULONG>{8});
  // And back.
  writing.Decrypt();
  const Bytes cipher = target.content;
  target.content.clear();
  EXPECT_EQ(WriteAll(Stream(), cipher), S_OK);
  Bytes plain = PatternBytes(5);
  plain.resize(8);
  EXPECT_EQ(target.content, plain);
}

TEST_F(StreamCryptTest, WhatATargetDoesNotTakeStaysQueued) {
  StartWriting();
  target.largest_write = 10;
  EXPECT_EQ(Write(Stream(), PatternBytes(40)), (Moved{S_OK, 40}));
  EXPECT_EQ(Write(Stream(), Part(PatternBytes(48), 40, 1)), (Moved{S_OK, 1}));
  target.largest_write = SIZE_MAX;
  EXPECT_EQ(WriteAll(Stream(), Part(PatternBytes(48), 41, 7)), S_OK);
  EXPECT_EQ(target.write_sizes, (std::vector<ULONG>{32, 22, 28}));
  EXPECT_EQ(target.content, PeerAes(kKey, PatternBytes(48), true));
}

TEST_F(StreamCryptTest, AFailingTargetKeepsTheInputAcceptedAndTheRestQueued) {
  StartWriting();
  target.failing_write = 1;
  target.moved_by_failure = 6;
  target.failure = STG_E_MEDIUMFULL;
  EXPECT_EQ(Write(Stream(), PatternBytes(16)), (Moved{STG_E_MEDIUMFULL, 16}));
  target.failing_write = 2;
  target.moved_by_failure = 0;
  EXPECT_EQ(writing.Finalize(), STG_E_MEDIUMFULL);
  target.write_status = S_FALSE;
  EXPECT_EQ(writing.Finalize(), S_FALSE);
  EXPECT_EQ(target.content, PeerAes(kKey, PatternBytes(16), true));
}

TEST_F(StreamCryptTest, ATargetThatReportsTooMuchTakesNoMoreThanItWasGiven) {
  StartWriting();
  target.excess_report = 1000;
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(40)), S_OK);
  target.excess_report = 0;
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, PatternBytes(40), true));
}

TEST_F(StreamCryptTest, WriteResetDropsWhatIsQueued) {
  StartWriting();
  target.largest_write = 0;
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(20)), S_OK);
  EXPECT_EQ(writing.Reset(), S_OK);
  target.largest_write = SIZE_MAX;
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_TRUE(target.content.empty());
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(16)), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, PatternBytes(16), true));
}

TEST_F(StreamCryptTest, ChangingTheWriteDirectionLeavesTheQueues) {
  StartWriting();
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(5)), S_OK);
  writing.Decrypt();
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_TRUE(target.content.empty());
  writing.Encrypt();
  EXPECT_EQ(WriteAll(Stream(), Part(PatternBytes(16), 5, 11)), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, PatternBytes(16), true));
}

TEST_F(StreamCryptTest, FinalizingAWrittenDecryptionReportsNoPartialBlock) {
  StartWriting();
  writing.Decrypt();
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(17)), S_OK);
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, PatternBytes(16), false));
}

TEST_F(StreamCryptTest, ARefusedPadFailsWriteFinalizeAndKeepsTheBlock) {
  StartWriting();
  EXPECT_EQ(writing.PutPad(-2), S_OK);
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_EQ(WriteAll(Stream(), PatternBytes(1)), S_OK);
  EXPECT_EQ(writing.Finalize(), E_OUTOFMEMORY);
  EXPECT_TRUE(target.content.empty());
  EXPECT_EQ(writing.PutPad(4), S_OK);
  EXPECT_EQ(writing.Finalize(), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, PatternBytes(1), true, 4));
}

TEST_F(StreamCryptTest, OneTransferUpToTheQueueLimitSucceeds) {
  StartWriting();
  const Bytes large = PatternBytes(kLongest);
  EXPECT_EQ(WriteAll(Stream(), large), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, large, true));
}

}  // namespace
}  // namespace mirolta::test
