// What both filters forward to their stream: operations without data, seeking, counts; and calls that
// come back to the filter.
#include "stream_sides.h"

namespace mirolta::test {
namespace {

template <typename Dual>
class StreamForwardingTest : public FilterTest<Dual> {
 protected:
  StreamForwardingTest() { this->target.content = PatternBytes(100); }

  // Moves by 0 from the current position: what a filter always answers.
  HRESULT Ask(ULARGE_INTEGER* position) {
    return this->Stream()->Seek(Move(0), STREAM_SEEK_CUR, position);
  }
};
TYPED_TEST_SUITE(StreamForwardingTest, BothFilters);

TYPED_TEST(StreamForwardingTest, SeekingForbiddenStartsAsOneAndIsKeptAsGiven) {
  VARIANT_BOOL value = 0;
  EXPECT_EQ(this->filter->get_SeekingForbidden(&value), S_OK);
  EXPECT_EQ(value, 1);
  for (const VARIANT_BOOL given : {VARIANT_TRUE, VARIANT_BOOL{0}, VARIANT_BOOL{77}}) {
    EXPECT_EQ(this->filter->put_SeekingForbidden(given), S_OK);
    EXPECT_EQ(this->filter->get_SeekingForbidden(&value), S_OK);
    EXPECT_EQ(value, given);
  }
  EXPECT_EQ(this->filter->get_SeekingForbidden(nullptr), E_POINTER);
}

TYPED_TEST(StreamForwardingTest, SeekOnlyReportsThePositionWhileItIsForbidden) {
  this->Bind();
  this->target.position = 42;
  IStream* const stream = this->Stream();
  ULARGE_INTEGER position = Large(kUntouchedTotal);
  EXPECT_EQ(stream->Seek(Move(0), STREAM_SEEK_SET, &position), E_UNEXPECTED);
  EXPECT_EQ(stream->Seek(Move(0), STREAM_SEEK_END, &position), E_UNEXPECTED);
  EXPECT_EQ(stream->Seek(Move(1), STREAM_SEEK_CUR, &position), E_UNEXPECTED);
  EXPECT_EQ(stream->Seek(Move(LONGLONG{1} << 32), STREAM_SEEK_CUR, &position), E_UNEXPECTED);
  EXPECT_EQ(position.QuadPart, kUntouchedTotal);
  EXPECT_TRUE(this->target.passed.empty());
  EXPECT_EQ(this->Ask(&position), S_OK);
  EXPECT_EQ(position.QuadPart, 42u);
  EXPECT_EQ(stream->Seek(Move(0), STREAM_SEEK_CUR, nullptr), S_OK);
  EXPECT_EQ(this->target.passed.size(), 2u);
}

TYPED_TEST(StreamForwardingTest, AnyValueButZeroForbidsSeeking) {
  this->Bind();
  for (const VARIANT_BOOL value : {VARIANT_TRUE, VARIANT_BOOL{1}, VARIANT_BOOL{2}}) {
    EXPECT_EQ(this->filter->put_SeekingForbidden(value), S_OK);
    EXPECT_EQ(this->Stream()->Seek(Move(0), STREAM_SEEK_SET, nullptr), E_UNEXPECTED);
  }
}

TYPED_TEST(StreamForwardingTest, SeekIsForwardedUnchangedOnceItIsAllowed) {
  this->Bind();
  EXPECT_EQ(this->filter->put_SeekingForbidden(VARIANT_FALSE), S_OK);
  this->target.pass_status = STG_E_SEEKERROR;
  EXPECT_EQ(this->Stream()->Seek(Move(9), STREAM_SEEK_END, nullptr), STG_E_SEEKERROR);
  EXPECT_EQ(this->target.passed, std::vector<std::string>{"Seek 9 2 0"});
}

// Calls every operation that only forwards.
template <typename Check>
void PassThrough(IStream* stream, Check check) {
  STATSTG statistics = {};
  check("Seek 0 1 0", stream->Seek(Move(0), STREAM_SEEK_CUR, nullptr));
  check("SetSize 12884901889 0 0", stream->SetSize(Large(0x300000001u)));
  check("Commit 3 0 0", stream->Commit(3));
  check("Revert 0 0 0", stream->Revert());
  check("LockRegion 4294967297 8589934594 3",
        stream->LockRegion(Large(0x100000001u), Large(0x200000002u), 3));
  check("UnlockRegion 4294967300 8589934597 6",
        stream->UnlockRegion(Large(0x100000004u), Large(0x200000005u), 6));
  check("Stat 1 0 0", stream->Stat(&statistics, STATFLAG_NONAME));
}

TYPED_TEST(StreamForwardingTest, OperationsWithoutDataAreForwardedWithTheirStatus) {
  this->Bind();
  for (const HRESULT status : {S_OK, S_FALSE, STG_E_MEDIUMFULL}) {
    this->target.pass_status = status;
    PassThrough(this->Stream(), [&](const char* call, HRESULT result) {
      EXPECT_EQ(result, status) << call;
      ASSERT_FALSE(this->target.passed.empty());
      EXPECT_EQ(this->target.passed.back(), call);
    });
  }
}

TYPED_TEST(StreamForwardingTest, OperationsWithoutDataNeedAStream) {
  PassThrough(this->Stream(),
              [&](const char* call, HRESULT result) { EXPECT_EQ(result, STG_E_REVERTED) << call; });
  // Nor is a seek that would be refused.
  EXPECT_EQ(this->Stream()->Seek(Move(5), STREAM_SEEK_SET, nullptr), STG_E_REVERTED);
}

TYPED_TEST(StreamForwardingTest, StatReportsTheTargetsSize) {
  this->Bind();
  STATSTG statistics = {};
  EXPECT_EQ(this->Stream()->Stat(&statistics, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(statistics.cbSize.QuadPart, 100u);
}

TYPED_TEST(StreamForwardingTest, CloneIsNeverOffered) {
  IStream* out = nullptr;
  EXPECT_EQ(this->Stream()->Clone(&out), E_NOTIMPL);
  EXPECT_EQ(this->Stream()->Clone(nullptr), E_NOTIMPL);
  this->Bind();
  EXPECT_EQ(this->Stream()->Clone(&out), E_NOTIMPL);
  EXPECT_TRUE(this->target.passed.empty());
}

// All ways into a filter's stream operations, which a chain may lead back to.
template <typename Dual>
void ExpectRefusal(const Filter<Dual>& filter) {
  uint8_t bytes[4] = {};
  IStream* const stream = filter.Stream();
  ScriptedStream other;
  EXPECT_EQ(stream->Read(bytes, 4, nullptr), E_UNEXPECTED);
  EXPECT_EQ(stream->Write(bytes, 4, nullptr), E_UNEXPECTED);
  EXPECT_EQ(stream->CopyTo(&other, Large(4), nullptr, nullptr), E_UNEXPECTED);
  PassThrough(stream,
              [](const char* call, HRESULT result) { EXPECT_EQ(result, E_UNEXPECTED) << call; });
  // What needs no stream goes on.
  EXPECT_EQ(stream->Read(nullptr, 4, nullptr), E_POINTER);
  EXPECT_EQ(stream->Write(nullptr, 4, nullptr), E_POINTER);
  EXPECT_EQ(stream->Clone(nullptr), E_NOTIMPL);
  LONG code_page = 0;
  EXPECT_EQ(filter->get_codePage(&code_page), S_OK);
}

TYPED_TEST(StreamForwardingTest, AStreamOperationInsideAnotherIsRefused) {
  this->Bind();
  int calls = 0;
  const auto come_back = [&] {
    ++calls;
    ExpectRefusal(this->filter);
  };
  this->target.on_read = come_back;
  this->target.on_write = come_back;
  this->target.on_pass = come_back;
  IStream* const stream = this->Stream();
  ScriptedStream other;
  uint8_t bytes[4] = {};
  EXPECT_EQ(stream->Read(bytes, 4, nullptr), S_OK);
  EXPECT_EQ(stream->Write(bytes, 4, nullptr), S_OK);
  EXPECT_EQ(stream->CopyTo(&other, Large(4), nullptr, nullptr), S_OK);
  PassThrough(stream, [](const char* call, HRESULT result) { EXPECT_EQ(result, S_OK) << call; });
  EXPECT_EQ(calls, 3 + 7);
  // Each leaves the filter usable for the next.
  this->target.on_read = nullptr;
  EXPECT_EQ(stream->Read(bytes, 4, nullptr), S_OK);
}

TYPED_TEST(StreamForwardingTest, AFilterBoundToItselfRefusesInsteadOfGoingRound) {
  EXPECT_EQ(this->filter->putref_Stream(this->Stream()), S_OK);
  uint8_t bytes[4] = {};
  EXPECT_EQ(Read(this->Stream(), bytes, 4), (Moved{E_UNEXPECTED, 0}));
  EXPECT_EQ(this->Stream()->Write(bytes, 4, nullptr), E_UNEXPECTED);
  EXPECT_EQ(this->Stream()->Commit(0), E_UNEXPECTED);
  this->Bind();
}

TYPED_TEST(StreamForwardingTest, ARingOfTwoFiltersRefusesInsteadOfGoingRound) {
  Filter<TypeParam> other(this->Stream());
  EXPECT_EQ(this->filter->putref_Stream(other.Stream()), S_OK);
  uint8_t bytes[4] = {};
  EXPECT_EQ(this->Stream()->Read(bytes, 4, nullptr), E_UNEXPECTED);
  EXPECT_EQ(other.Stream()->Write(bytes, 4, nullptr), E_UNEXPECTED);
  EXPECT_EQ(other.Stream()->Revert(), E_UNEXPECTED);
  this->Bind();
}

TYPED_TEST(StreamForwardingTest, CountsOfATargetThatReportsTooMuchAreCutToTheRequest) {
  this->Bind();
  this->target.excess_report = 1000;
  uint8_t bytes[8] = {};
  EXPECT_EQ(Read(this->Stream(), bytes, 8), (Moved{S_OK, 8}));
  ScriptedStream sink;
  EXPECT_EQ(Copy(this->Stream(), &sink, 8), (Copied{S_OK, 8, 8}));
}

TEST(StreamDigestForwardingTest, ADigestTrustsNoCountOfWrittenBytesAboveTheRequest) {
  ScriptedStream target;
  target.excess_report = 1000;
  const DigestFilter filter(&target);
  Writing(filter).Choose(OLESTR("MD5"));
  EXPECT_EQ(Write(filter.Stream(), BytesOf("abc")), (Moved{S_OK, 3}));
  EXPECT_EQ(Writing(filter).Value(), PeerText(OLESTR("MD5"), BytesOf("abc")));
}

}  // namespace
}  // namespace mirolta::test
