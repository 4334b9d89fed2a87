// What both filters have in common: algorithms, keys, and transfers without a target.
#include "calling_object.h"
#include "fake_object.h"
#include "stream_sides.h"

namespace mirolta::test {
namespace {

// What a filter calls its algorithms.
template <typename Dual>
struct Names;
template <>
struct Names<IToviStreamDigest> {
  static constexpr const OLECHAR* kKnown = OLESTR("SHA256");
  static constexpr const OLECHAR* kTextKeyed = OLESTR("SHA1");
  static constexpr const OLECHAR* kUnknown[] = {OLESTR("sha256"), OLESTR("SHA-256"), OLESTR(""),
                                                OLESTR("AES")};
};
template <>
struct Names<IToviStreamCrypt> {
  static constexpr const OLECHAR* kKnown = OLESTR("AES");
  static constexpr const OLECHAR* kTextKeyed = OLESTR("DES");
  static constexpr const OLECHAR* kUnknown[] = {OLESTR("aes"), OLESTR("3DES"), OLESTR(""),
                                                OLESTR("AES ")};
};

template <typename Dual>
class StreamMembersTest : public FilterTest<Dual> {};
TYPED_TEST_SUITE(StreamMembersTest, BothFilters);

TYPED_TEST(StreamMembersTest, AlgorithmAndKeyRefuseNullResultPointers) {
  this->EachSide([](const auto& side) {
    for (const bool chosen : {false, true}) {
      if (chosen) side.Choose(Names<TypeParam>::kKnown);
      EXPECT_EQ(side.GetAlgorithm(nullptr), E_POINTER);
      EXPECT_EQ(side.GetKey(nullptr), E_POINTER);
    }
  });
}

TYPED_TEST(StreamMembersTest, AnUnknownAlgorithmIsNotFoundAndLeavesNone) {
  this->EachSide([](const auto& side) {
    const auto expect_none = [&side](BSTR name) {
      side.Choose(Names<TypeParam>::kKnown);
      EXPECT_EQ(side.PutAlgorithm(name), kNotFound);
      EXPECT_EQ(side.Algorithm(), OLESTR(""));
      EXPECT_EQ(side.SetKey(kKey), kNotInitialized);
    };
    for (const OLECHAR* name : Names<TypeParam>::kUnknown) {
      SCOPED_TRACE(testing::PrintToString(Text(name)));
      expect_none(Bstr(name).Get());
    }
    {
      SCOPED_TRACE("the whole text counts, also from a zero character on");
      expect_none(Bstr(Text(Names<TypeParam>::kKnown) + OLECHAR{0}).Get());
    }
    SCOPED_TRACE("null");
    expect_none(nullptr);
  });
}

TYPED_TEST(StreamMembersTest, WithoutAnAlgorithmThereIsNoKey) {
  this->EachSide([](const auto& side) {
    EXPECT_EQ(side.Algorithm(), OLESTR(""));
    OwnedVariant key;
    EXPECT_EQ(side.GetKey(key.Put()), kNotInitialized);
    EXPECT_EQ(side.SetKey(kKey), kNotInitialized);
  });
}

// Lengths that a DES key may have, too: 8 and 16 bytes.
TYPED_TEST(StreamMembersTest, TextKeysAreEncodedByTheCodePage) {
  struct Row {
    LONG code_page;
    Bytes character;
  };
  const TestValue text = TextValue(OLESTR("\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9\u00E9"));
  this->EachSide([&](const auto& side) {
    EXPECT_EQ(side.Select(Names<TypeParam>::kTextKeyed), S_OK);
    for (const Row& row :
         {Row{-1, {0xE9, 0}}, Row{-2, {0xE9, 0}}, Row{1252, {0xE9}}, Row{65001, {0xC3, 0xA9}}}) {
      SCOPED_TRACE(row.code_page);
      EXPECT_EQ(this->filter->put_codePage(row.code_page), S_OK);
      EXPECT_EQ(side.PutKey(text), S_OK);
      Bytes expected;
      for (int i = 0; i < 8; ++i) expected = expected + row.character;
      EXPECT_EQ(side.Key(), expected);
    }
  });
}

TYPED_TEST(StreamMembersTest, TheDefaultValueOfAnObjectIsAKey) {
  this->EachSide([](const auto& side) {
    EXPECT_EQ(side.Select(Names<TypeParam>::kTextKeyed), S_OK);
    FakeObject key(TextValue(OLESTR("eightchr")));
    EXPECT_EQ(side.PutKey(ObjectValue(&key)), S_OK);
    EXPECT_EQ(side.Key(), BytesOf("eightchr"));
  });
}

TYPED_TEST(StreamMembersTest, AKeyThatRemovesItsAlgorithmWhileItIsReadIsRefused) {
  this->EachSide([](const auto& side) {
    EXPECT_EQ(side.Select(Names<TypeParam>::kTextKeyed), S_OK);
    CallingObject key([&] { EXPECT_EQ(side.PutAlgorithm(nullptr), kNotFound); },
                      OLESTR("eightchr"));
    EXPECT_EQ(side.PutKey(ObjectValue(&key)), kNotInitialized);
  });
}

TYPED_TEST(StreamMembersTest, NullBuffersAreRefusedEvenForNoBytes) {
  for (const bool bound : {false, true}) {
    if (bound) this->Bind();
    EXPECT_EQ(Read(this->Stream(), nullptr, 0), Moved{E_POINTER});
    ULONG count = kUntouched;
    EXPECT_EQ(this->Stream()->Write(nullptr, 0, &count), E_POINTER);
    EXPECT_EQ(count, kUntouched);
  }
  EXPECT_TRUE(this->target.read_sizes.empty());
  EXPECT_TRUE(this->target.write_sizes.empty());
}

TYPED_TEST(StreamMembersTest, WithoutATargetReadingIsAtItsEnd) {
  for (const bool chosen : {false, true}) {
    SCOPED_TRACE(chosen ? "with an algorithm" : "without an algorithm");
    if (chosen) this->reading.Choose(Names<TypeParam>::kKnown);
    uint8_t byte = 7;
    EXPECT_EQ(Read(this->Stream(), &byte, 1), (Moved{S_FALSE, 0}));
    EXPECT_EQ(Read(this->Stream(), &byte, 0), (Moved{S_OK, 0}));
    EXPECT_EQ(this->Stream()->Read(&byte, 1, nullptr), S_FALSE);
    EXPECT_EQ(this->Stream()->Read(&byte, 0, nullptr), S_OK);
    EXPECT_EQ(byte, 7);
  }
}

TYPED_TEST(StreamMembersTest, WithoutAnAlgorithmBytesAndSuccessCodesPassUnchanged) {
  this->Bind();
  ScriptedStream& bound = this->target;
  for (const HRESULT status : {S_FALSE, kOtherSuccess}) {
    bound.content = BytesOf("plain");
    bound.position = 0;
    bound.short_read_status = bound.write_status = status;
    EXPECT_EQ(ReadOnce(this->Stream(), 3, S_OK), BytesOf("pla"));
    EXPECT_EQ(ReadOnce(this->Stream(), 30, status), BytesOf("in"));
    EXPECT_EQ(ReadOnce(this->Stream(), 30, status), Bytes{});
    bound.largest_write = 2;
    EXPECT_EQ(Write(this->Stream(), BytesOf("xyz")), (Moved{status, 2}));
    EXPECT_EQ(WriteAll(this->Stream(), BytesOf("z")), status);
    EXPECT_EQ(bound.content, BytesOf("plainxyz"));
  }
}

TYPED_TEST(StreamMembersTest, WithoutAnAlgorithmAFailingWriteReportsItsCount) {
  this->Bind();
  this->target.failing_write = 1;
  this->target.moved_by_failure = 3;
  this->target.failure = STG_E_MEDIUMFULL;
  EXPECT_EQ(Write(this->Stream(), PatternBytes(8)), (Moved{STG_E_MEDIUMFULL, 3}));
}

TYPED_TEST(StreamMembersTest, CopyToNeedsATargetThenADestination) {
  ScriptedStream sink;
  for (const bool chosen : {false, true}) {
    SCOPED_TRACE(chosen ? "with an algorithm" : "without an algorithm");
    Filter<TypeParam> unbound;
    const typename SideOf<TypeParam>::Type side(unbound, false);
    if (chosen) side.Choose(Names<TypeParam>::kKnown);
    EXPECT_EQ(Copy(unbound.Stream(), &sink, 1), Copied{STG_E_REVERTED});
    EXPECT_EQ(Copy(unbound.Stream(), nullptr, 1), Copied{STG_E_REVERTED});
    EXPECT_EQ(unbound->putref_Stream(&this->target), S_OK);
    EXPECT_EQ(Copy(unbound.Stream(), nullptr, 1), Copied{STG_E_INVALIDPOINTER});
  }
}

}  // namespace
}  // namespace mirolta::test
