// ToviStreamCrypt by early-bound calls: its members and its data-carrying stream operations.
#include "stream_test_kit.h"

namespace mirolta::stream_test {
namespace {

using C = IToviStreamCrypt;
struct Direction {
  HRESULT (STDMETHODCALLTYPE C::*get_algorithm)(BSTR*);
  HRESULT (STDMETHODCALLTYPE C::*put_algorithm)(BSTR);
  HRESULT (STDMETHODCALLTYPE C::*get_key)(VARIANT*);
  HRESULT (STDMETHODCALLTYPE C::*put_key)(VARIANT);
  HRESULT (STDMETHODCALLTYPE C::*reset)();
  HRESULT (STDMETHODCALLTYPE C::*reset_key)();
  HRESULT (STDMETHODCALLTYPE C::*finalize)();
  HRESULT (STDMETHODCALLTYPE C::*get_decrypt)(VARIANT_BOOL*);
  HRESULT (STDMETHODCALLTYPE C::*put_decrypt)(VARIANT_BOOL);
  HRESULT (STDMETHODCALLTYPE C::*get_pad)(LONG*);
  HRESULT (STDMETHODCALLTYPE C::*put_pad)(LONG);
};
constexpr Direction kReading = {&C::get_ReadAlgorithm, &C::put_ReadAlgorithm, &C::get_ReadKey,
                                &C::put_ReadKey,       &C::ReadReset,         &C::ReadResetKey,
                                &C::ReadFinalize,      &C::get_ReadDecrypt,   &C::put_ReadDecrypt,
                                &C::get_ReadPadType,   &C::put_ReadPadType};
constexpr Direction kWriting = {
    &C::get_WriteAlgorithm, &C::put_WriteAlgorithm, &C::get_WriteKey,    &C::put_WriteKey,
    &C::WriteReset,         &C::WriteResetKey,      &C::WriteFinalize,   &C::get_WriteDecrypt,
    &C::put_WriteDecrypt,   &C::get_WritePadType,   &C::put_WritePadType};
const Direction* const kDirections[] = {&kReading, &kWriting};

const Bytes kKey = Pattern(16, 99);
// A success that no part of a filter returns by itself.
constexpr HRESULT kOtherSuccess = 0x00030200;
// Above what an engine's queue holds at once.
constexpr ULONG kTooMuch = 1048832 + 1;

class StreamCryptTest : public testing::Test {
 protected:
  IToviStreamCrypt* F() { return filter.operator->(); }
  void Bind() { EXPECT_EQ(filter->putref_Stream(&target), S_OK); }
  HRESULT SetKey(const Direction& side, const Bytes& key) {
    OwnedVariant value;
    *value.Put() = ByteArray(key);
    return (F()->*side.put_key)(value.Value());
  }
  // A key that has no text either: an array of numbers.
  HRESULT SetImpossibleKey(const Direction& side) {
    VARIANT value;
    VariantInit(&value);
    V_VT(&value) = VT_ARRAY | VT_I4;
    SAFEARRAYBOUND bound = {1, 0};
    V_ARRAY(&value) = SafeArrayCreate(VT_I4, 1, &bound);
    const HRESULT status = (F()->*side.put_key)(value);
    SafeArrayDestroy(V_ARRAY(&value));
    return status;
  }
  void Choose(const Direction& side, const OLECHAR* name = OLESTR("AES"), const Bytes& key = kKey) {
    EXPECT_EQ((F()->*side.put_algorithm)(Text(name).Get()), S_OK);
    EXPECT_EQ(SetKey(side, key), S_OK);
  }
  std::string Name(const Direction& side) {
    OwnedBstr text;
    EXPECT_EQ((F()->*side.get_algorithm)(text.Put()), S_OK);
    EXPECT_NE(text.Get(), nullptr);
    return Narrow(text.Get());
  }
  LONG Pad(const Direction& side) {
    LONG value = -77;
    EXPECT_EQ((F()->*side.get_pad)(&value), S_OK);
    return value;
  }
  VARIANT_BOOL Decrypts(const Direction& side) {
    VARIANT_BOOL value = 99;
    EXPECT_EQ((F()->*side.get_decrypt)(&value), S_OK);
    return value;
  }
  void Encrypting() { EXPECT_EQ(filter->put_ReadDecrypt(VARIANT_FALSE), S_OK); }
  IStream* Stream() { return filter.Stream(); }

  ScriptedStream target;
  CryptFilter filter;
};

TEST_F(StreamCryptTest, ANewFilterDecryptsWhatIsReadAndEncryptsWhatIsWritten) {
  EXPECT_EQ(Decrypts(kReading), 1);
  EXPECT_EQ(Decrypts(kWriting), 0);
  for (const Direction* side : kDirections) {
    EXPECT_EQ(Name(*side), "");
    EXPECT_EQ(Pad(*side), 0);
  }
}

TEST_F(StreamCryptTest, WithoutAnAlgorithm) {
  for (const Direction* side : kDirections) {
    OwnedVariant key;
    EXPECT_EQ((F()->*side->get_key)(key.Put()), kNotInitialized);
    EXPECT_EQ(SetKey(*side, kKey), kNotInitialized);
    EXPECT_EQ((F()->*side->put_pad)(4), kNotInitialized);
    EXPECT_EQ(Pad(*side), 0);
    EXPECT_EQ((F()->*side->reset)(), S_OK);
    EXPECT_EQ((F()->*side->reset_key)(), S_OK);
  }
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
}

TEST_F(StreamCryptTest, NullResultPointersAreRefused) {
  for (int chosen = 0; chosen < 2; ++chosen) {
    for (const Direction* side : kDirections) {
      EXPECT_EQ((F()->*side->get_algorithm)(nullptr), E_POINTER);
      EXPECT_EQ((F()->*side->get_key)(nullptr), E_POINTER);
      EXPECT_EQ((F()->*side->get_decrypt)(nullptr), E_POINTER);
      EXPECT_EQ((F()->*side->get_pad)(nullptr), E_POINTER);
      Choose(*side);
    }
  }
}

TEST_F(StreamCryptTest, AnAlgorithmStartsWithoutKeyAndPad) {
  for (const Direction* side : kDirections) {
    for (const OLECHAR* name : {OLESTR("AES"), OLESTR("DES")}) {
      Choose(*side, name);
      EXPECT_EQ((F()->*side->put_pad)(65), S_OK);
      EXPECT_EQ(Pad(*side), 65);
      EXPECT_EQ((F()->*side->put_algorithm)(Text(name).Get()), S_OK);
      EXPECT_EQ(Name(*side), name[0] == 'A' ? "AES" : "DES");
      EXPECT_EQ(Pad(*side), 0);
      OwnedVariant key;
      EXPECT_EQ((F()->*side->get_key)(key.Put()), S_OK);
      EXPECT_EQ(key.Type(), VT_EMPTY);
    }
  }
}

TEST_F(StreamCryptTest, AnUnknownAlgorithmLeavesNone) {
  for (const Direction* side : kDirections) {
    for (const OLECHAR* name : {OLESTR("aes"), OLESTR("3DES"), OLESTR(""), OLESTR("AES ")}) {
      Choose(*side);
      EXPECT_EQ((F()->*side->put_pad)(65), S_OK);
      EXPECT_EQ((F()->*side->put_algorithm)(Text(name).Get()), kAlgorithmNotFound);
      EXPECT_EQ(Name(*side), "");
      EXPECT_EQ(Pad(*side), 0);
      EXPECT_EQ((F()->*side->put_pad)(4), kNotInitialized);
      EXPECT_EQ(SetKey(*side, kKey), kNotInitialized);
    }
    // The whole text counts, also what follows a zero character.
    Choose(*side);
    EXPECT_EQ((F()->*side->put_algorithm)(OwnedBstr(SysAllocStringLen(OLESTR("AES\0x"), 5)).Get()),
              kAlgorithmNotFound);
    EXPECT_EQ(Name(*side), "");
    EXPECT_EQ((F()->*side->put_algorithm)(nullptr), kAlgorithmNotFound);
  }
}

TEST_F(StreamCryptTest, KeysOfWrongLengthLeaveNone) {
  for (const Direction* side : kDirections) {
    for (const OLECHAR* name : {OLESTR("AES"), OLESTR("DES")}) {
      const bool aes = name[0] == 'A';
      for (ULONG length = 0; length <= 40; ++length) {
        Choose(*side, name, Pattern(aes ? 32 : 24));
        const bool fits = aes ? length == 16 || length == 24 || length == 32
                              : length == 8 || length == 16 || length == 24;
        EXPECT_EQ(SetKey(*side, Pattern(length)), fits ? S_OK : E_INVALIDARG) << length;
        OwnedVariant key;
        EXPECT_EQ((F()->*side->get_key)(key.Put()), S_OK);
        if (fits) {
          EXPECT_EQ(FromArray(key.Value()), Pattern(length));
        } else {
          EXPECT_EQ(key.Type(), VT_EMPTY);
        }
      }
    }
  }
}

TEST_F(StreamCryptTest, TextKeysGoThroughTheCodePage) {
  const OwnedBstr text = Text(OLESTR("eightchr"));
  VARIANT value;
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = text.Get();
  for (const Direction* side : kDirections) {
    EXPECT_EQ((F()->*side->put_algorithm)(Text(OLESTR("DES")).Get()), S_OK);
    OwnedVariant key;
    EXPECT_EQ(filter->put_codePage(1252), S_OK);
    EXPECT_EQ((F()->*side->put_key)(value), S_OK);
    EXPECT_EQ((F()->*side->get_key)(key.Put()), S_OK);
    EXPECT_EQ(FromArray(key.Value()), FromText("eightchr"));
    EXPECT_EQ(filter->put_codePage(-2), S_OK);
    EXPECT_EQ((F()->*side->put_key)(value), S_OK);
    EXPECT_EQ((F()->*side->get_key)(key.Put()), S_OK);
    EXPECT_EQ(FromArray(key.Value()).size(), 16u);
    EXPECT_EQ(FromArray(key.Value())[0], 'e');
  }
}

TEST_F(StreamCryptTest, AKeyThatIsAnObjectMayCallBack) {
  for (const Direction* side : kDirections) {
    Choose(*side, OLESTR("DES"), Pattern(8));
    TextObject plain(OLESTR("eightchr"), [] {});
    EXPECT_EQ((F()->*side->put_key)(plain.Value()), S_OK);
    OwnedVariant key;
    EXPECT_EQ((F()->*side->get_key)(key.Put()), S_OK);
    EXPECT_EQ(FromArray(key.Value()), FromText("eightchr"));
    // The engine that the key was for is gone when it is read.
    TextObject removing(OLESTR("eightchr"), [&] {
      EXPECT_EQ((F()->*side->put_algorithm)(nullptr), kAlgorithmNotFound);
    });
    EXPECT_EQ((F()->*side->put_key)(removing.Value()), kNotInitialized);
  }
}

TEST_F(StreamCryptTest, TheOldKeyGoesBeforeTheNewOneIsRead) {
  for (const Direction* side : kDirections) {
    Choose(*side, OLESTR("DES"), Pattern(8));
    EXPECT_EQ(filter->put_codePage(1252), S_OK);
    int calls = 0;
    TextObject object(OLESTR("eightchr"), [&] {
      ++calls;
      OwnedVariant key;
      EXPECT_EQ((F()->*side->get_key)(key.Put()), S_OK);
      EXPECT_EQ(key.Type(), VT_EMPTY);
      EXPECT_EQ(filter->put_codePage(-1), S_OK);
    });
    EXPECT_EQ((F()->*side->put_key)(object.Value()), S_OK);
    EXPECT_EQ(calls, 1);
    OwnedVariant key;
    EXPECT_EQ((F()->*side->get_key)(key.Put()), S_OK);
    EXPECT_EQ(FromArray(key.Value()), FromText("eightchr"));
  }
}

TEST_F(StreamCryptTest, DirectionsAndPadsAreKeptAsGiven) {
  for (const Direction* side : kDirections) {
    for (const VARIANT_BOOL given : {VARIANT_TRUE, VARIANT_BOOL{0}, VARIANT_BOOL{321}}) {
      EXPECT_EQ((F()->*side->put_decrypt)(given), S_OK);
      EXPECT_EQ(Decrypts(*side), given);
    }
    Choose(*side);
    for (const LONG given : {-1, -2, 0x141, 0x7FFFFFFF}) {
      EXPECT_EQ((F()->*side->put_pad)(given), S_OK);
      EXPECT_EQ(Pad(*side), given);
    }
    // The pad outlives keys and resets.
    EXPECT_EQ(SetKey(*side, Pattern(24)), S_OK);
    EXPECT_EQ((F()->*side->reset)(), S_OK);
    EXPECT_EQ((F()->*side->reset_key)(), S_OK);
    EXPECT_EQ(Pad(*side), 0x7FFFFFFF);
  }
}

TEST_F(StreamCryptTest, NullBuffersAreRefusedEvenForNothing) {
  ULONG count = kUntouched;
  for (int bound = 0; bound < 2; ++bound) {
    EXPECT_EQ(Stream()->Read(nullptr, 0, &count), E_POINTER);
    EXPECT_EQ(Stream()->Write(nullptr, 0, &count), E_POINTER);
    EXPECT_EQ(count, kUntouched);
    Bind();
  }
}

TEST_F(StreamCryptTest, WithoutATarget) {
  for (int chosen = 0; chosen < 2; ++chosen) {
    uint8_t byte = 7;
    ULONG count = kUntouched;
    EXPECT_EQ(Stream()->Read(&byte, 1, &count), S_FALSE);
    EXPECT_EQ(count, 0u);
    count = kUntouched;
    EXPECT_EQ(Stream()->Read(&byte, 0, &count), S_OK);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(Stream()->Read(&byte, 1, nullptr), S_FALSE);
    count = kUntouched;
    EXPECT_EQ(Stream()->Write(&byte, 1, &count), STG_E_CANTSAVE);
    EXPECT_EQ(count, kUntouched);
    EXPECT_EQ(Stream()->Write(&byte, 0, &count), S_OK);
    EXPECT_EQ(count, 0u);
    EXPECT_EQ(Stream()->Write(&byte, 0, nullptr), S_OK);
    EXPECT_EQ(filter->WriteFinalize(), STG_E_CANTSAVE);
    EXPECT_EQ(Stream()->CopyTo(nullptr, Large(1), nullptr, nullptr), STG_E_REVERTED);
    EXPECT_EQ(byte, 7);
    Choose(kReading);
    Choose(kWriting);
  }
}

TEST_F(StreamCryptTest, WithoutAnAlgorithmBytesPassUnchanged) {
  Bind();
  target.content = FromText("plain");
  EXPECT_EQ(ReadOnce(Stream(), 3, S_OK), FromText("pla"));
  EXPECT_EQ(ReadOnce(Stream(), 30, S_FALSE), FromText("in"));
  EXPECT_EQ(ReadOnce(Stream(), 30, S_FALSE), Bytes{});
  target.largest_write = 2;
  target.write_status = S_FALSE;
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(Stream(), FromText("xyz"), &count), S_FALSE);
  EXPECT_EQ(count, 2u);
  EXPECT_EQ(WriteAll(Stream(), FromText("z")), S_FALSE);
  EXPECT_EQ(target.content, FromText("plainxyz"));
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_EQ(target.content, FromText("plainxyz"));
}

TEST_F(StreamCryptTest, AFailingReadCountsNothing) {
  for (int chosen = 0; chosen < 2; ++chosen) {
    target.content = Pattern(64);
    target.position = 0;
    target.failing_read = target.read_sizes.size() + 1;
    target.moved_by_failure = 3;
    Bind();
    uint8_t bytes[32];
    ULONG count = kUntouched;
    EXPECT_EQ(Stream()->Read(bytes, 32, &count), kStreamFailure);
    EXPECT_EQ(count, 0u);
    Choose(kReading);
  }
}

TEST_F(StreamCryptTest, AFailingReadLeavesTheBufferAlone) {
  Bind();
  target.content = Pattern(64);
  target.failing_read = 1;
  target.moved_by_failure = 3;
  const Bytes before(32, 0x5A);
  Bytes bytes = before;
  ULONG count = kUntouched;
  EXPECT_EQ(Stream()->Read(bytes.data(), 32, &count), kStreamFailure);
  EXPECT_EQ(bytes, before);
  // Nor does a short read touch what is behind its bytes.
  target.largest_read = 4;
  EXPECT_EQ(Stream()->Read(bytes.data(), 32, &count), S_FALSE);
  EXPECT_EQ(count, 4u);
  EXPECT_EQ(Slice(bytes, 0, 4), Slice(target.content, 3, 4));
  EXPECT_EQ(Slice(bytes, 4, 28), Slice(before, 4, 28));
}

// A stream that claims bytes it never wrote: zeros stand for them, not what the memory held before.
TEST_F(StreamCryptTest, BytesClaimedButNeverWrittenAreZeros) {
  Bind();
  const Bytes zeros(1024);
  for (const bool with_engine : {false, true}) {
    if (with_engine) {
      Choose(kReading);
      Encrypting();
    }
    const auto expected = [&](const Bytes& plain) {
      return with_engine ? PeerAes(kKey, plain, true) : plain;
    };
    target.excess_report = 1024;
    // Blocks of the heap that held something else last.
    for (int i = 0; i < 8; ++i) const std::vector<uint8_t> used(1024, 0xEE);
    EXPECT_EQ(ReadOnce(Stream(), 1024, with_engine ? S_OK : S_FALSE), expected(zeros));
    ScriptedStream sink;
    EXPECT_EQ(Stream()->CopyTo(&sink, Large(2048), nullptr, nullptr), S_OK);
    EXPECT_EQ(sink.content, expected(Bytes(2048)));
    // What a piece holds that was read before does not come twice either.
    target.content = Pattern(1024);
    target.position = 0;
    sink.content.clear();
    EXPECT_EQ(Stream()->CopyTo(&sink, Large(2048), nullptr, nullptr), S_OK);
    Bytes once = Pattern(1024);
    once.resize(2048);
    EXPECT_EQ(sink.content, expected(once));
    target.content.clear();
    target.position = 0;
  }
}

TEST_F(StreamCryptTest, ReadingGivesWholeBlocksAndDrainsAfterFinalize) {
  Bind();
  target.content = Pattern(20);
  Choose(kReading);
  Encrypting();
  const Bytes whole = PeerAes(kKey, target.content, true);
  EXPECT_EQ(ReadOnce(Stream(), 4096, S_OK), Slice(whole, 0, 16));
  EXPECT_EQ(ReadOnce(Stream(), 4096, S_FALSE), Bytes{});
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  const size_t reads = target.read_sizes.size();
  EXPECT_EQ(ReadOnce(Stream(), 4096, S_OK), Slice(whole, 16, 16));
  EXPECT_EQ(ReadOnce(Stream(), 4096, S_OK), Bytes{});
  EXPECT_EQ(target.read_sizes.size(), reads);
  // Draining has ended: the stream is asked again.
  target.content.resize(40);
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK).size(), 16u);
  EXPECT_EQ(target.read_sizes.size(), reads + 1);
}

TEST_F(StreamCryptTest, AReadMayGiveNothingWhileThereIsMore) {
  Bind();
  target.content = PeerAes(kKey, Pattern(32), false);
  Choose(kReading);
  Encrypting();
  EXPECT_EQ(ReadOnce(Stream(), 15, S_OK), Bytes{});
  EXPECT_EQ(ReadOnce(Stream(), 10, S_OK), Slice(Pattern(32), 0, 10));
  // What a read had no room for waits for the next.
  EXPECT_EQ(ReadOnce(Stream(), 7, S_OK), Slice(Pattern(32), 10, 7));
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{15, 10, 7}));
}

TEST_F(StreamCryptTest, AtTheEndOfTheStreamQueuedBytesWaitForFinalize) {
  Bind();
  target.content = Pattern(16);
  Choose(kReading);
  Encrypting();
  const Bytes whole = PeerAes(kKey, target.content, true);
  EXPECT_EQ(ReadOnce(Stream(), 10, S_OK), Bytes{});
  EXPECT_EQ(ReadOnce(Stream(), 10, S_OK), Slice(whole, 0, 10));
  EXPECT_EQ(ReadOnce(Stream(), 10, S_FALSE), Bytes{});
  target.short_read_status = S_OK;
  EXPECT_EQ(ReadOnce(Stream(), 10, S_OK), Bytes{});
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 4, S_OK), Slice(whole, 10, 4));
  EXPECT_EQ(ReadOnce(Stream(), 4, S_OK), Slice(whole, 14, 2));
  EXPECT_EQ(ReadOnce(Stream(), 4, S_OK), Bytes{});
}

TEST_F(StreamCryptTest, AReadOfNothingAsksTheStreamForNothing) {
  Bind();
  target.content = Pattern(16);
  Choose(kReading);
  EXPECT_EQ(ReadOnce(Stream(), 0, S_OK), Bytes{});
  EXPECT_EQ(target.read_sizes, std::vector<ULONG>{0});
  uint8_t byte = 0;
  EXPECT_EQ(Stream()->Read(&byte, 1, nullptr), S_OK);
}

TEST_F(StreamCryptTest, AReadOfNothingEndsDraining) {
  Bind();
  target.content = Pattern(20);
  Choose(kReading);
  Encrypting();
  EXPECT_EQ(ReadOnce(Stream(), 20).size(), 16u);
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  const size_t reads = target.read_sizes.size();
  EXPECT_EQ(ReadOnce(Stream(), 0, S_OK), Bytes{});
  EXPECT_EQ(target.read_sizes.size(), reads);
  // The last block is still queued; the stream is asked before it, and has no more.
  EXPECT_EQ(ReadOnce(Stream(), 16, S_FALSE), Bytes{});
  EXPECT_EQ(target.read_sizes.size(), reads + 1);
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK), Slice(PeerAes(kKey, Pattern(20), true), 16, 16));
}

// Zero counts: reads are passed on, writes are not.
TEST_F(StreamCryptTest, WithoutAnAlgorithmAReadOfNothingIsPassedOnAndAWriteIsNot) {
  Bind();
  target.content = Pattern(16);
  EXPECT_EQ(ReadOnce(Stream(), 0, S_OK), Bytes{});
  EXPECT_EQ(target.read_sizes, std::vector<ULONG>{0});
  for (int chosen = 0; chosen < 2; ++chosen) {
    ULONG count = kUntouched;
    EXPECT_EQ(WriteAll(Stream(), {}, &count), S_OK);
    EXPECT_EQ(count, 0u);
    Choose(kWriting);
  }
  EXPECT_TRUE(target.write_sizes.empty());
}

TEST_F(StreamCryptTest, TheStreamsOwnSuccessCodesAreReturned) {
  Bind();
  target.content = Pattern(20);
  target.short_read_status = kOtherSuccess;
  EXPECT_EQ(ReadOnce(Stream(), 30, kOtherSuccess), target.content);
  target.write_status = kOtherSuccess;
  EXPECT_EQ(WriteAll(Stream(), Pattern(3)), kOtherSuccess);
  // Through an engine: nothing read is the stream's status, something read is a success.
  Choose(kReading);
  target.content = Pattern(16);
  target.position = 0;
  EXPECT_EQ(ReadOnce(Stream(), 30, S_OK).size(), 16u);
  EXPECT_EQ(ReadOnce(Stream(), 30, kOtherSuccess), Bytes{});
  // A write is the stream's, unless nothing came out to be written.
  Choose(kWriting);
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(Stream(), Pattern(5), &count), S_OK);
  EXPECT_EQ(WriteAll(Stream(), Pattern(16), &count), kOtherSuccess);
  EXPECT_EQ(count, 16u);
  EXPECT_EQ(filter->WriteFinalize(), kOtherSuccess);
  // A copy is a success.
  ScriptedStream sink;
  sink.write_status = kOtherSuccess;
  target.content = Pattern(2048);
  target.position = 0;
  target.largest_read = 500;
  ULARGE_INTEGER written = Large(kUntouchedTotal);
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(5000), nullptr, &written), S_OK);
  EXPECT_EQ(written.QuadPart, 2048u);
  EXPECT_EQ(filter->put_ReadAlgorithm(Text(OLESTR("none")).Get()), kAlgorithmNotFound);
  target.position = 0;
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(5000), nullptr, &written), S_OK);
  EXPECT_EQ(written.QuadPart, 2048u);
}

TEST_F(StreamCryptTest, AFailingPlainWriteReportsItsCount) {
  Bind();
  target.failing_write = 1;
  target.moved_by_failure = 3;
  target.failure = STG_E_MEDIUMFULL;
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(Stream(), Pattern(8), &count), STG_E_MEDIUMFULL);
  EXPECT_EQ(count, 3u);
}

TEST_F(StreamCryptTest, ChangingTheReadDirectionLeavesTheQueues) {
  Bind();
  target.content = Pattern(16);
  Choose(kReading);
  Encrypting();
  EXPECT_EQ(ReadOnce(Stream(), 5), Bytes{});
  EXPECT_EQ(filter->put_ReadDecrypt(VARIANT_BOOL{2}), S_OK);
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 16), Bytes{});
  EXPECT_EQ(filter->put_ReadDecrypt(VARIANT_FALSE), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 16), PeerAes(kKey, Pattern(16), true));
}

// Any value but 0 is true.
TEST_F(StreamCryptTest, OtherTruthValuesDecryptToo) {
  Bind();
  for (const VARIANT_BOOL truth : {VARIANT_BOOL{2}, VARIANT_BOOL{256}, VARIANT_BOOL{-32768}}) {
    Choose(kReading);
    Choose(kWriting);
    EXPECT_EQ(filter->put_ReadDecrypt(truth), S_OK);
    EXPECT_EQ(filter->put_WriteDecrypt(truth), S_OK);
    target.content = PeerAes(kKey, Pattern(16), true);
    target.position = 0;
    EXPECT_EQ(ReadOnce(Stream(), 16), Pattern(16)) << truth;
    target.content.clear();
    EXPECT_EQ(WriteAll(Stream(), PeerAes(kKey, Pattern(16), true)), S_OK);
    EXPECT_EQ(target.content, Pattern(16)) << truth;
  }
}

// Without a stream the missing key is not looked at.
TEST_F(StreamCryptTest, UnboundComesBeforeKeyless) {
  for (const Direction* side : kDirections) {
    EXPECT_EQ((F()->*side->put_algorithm)(Text(OLESTR("AES")).Get()), S_OK);
  }
  uint8_t bytes[16] = {};
  ULONG count = kUntouched;
  EXPECT_EQ(Stream()->Read(bytes, 16, &count), S_FALSE);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(Stream()->Read(bytes, 0, &count), S_OK);
  EXPECT_EQ(Stream()->Write(bytes, 16, &count), STG_E_CANTSAVE);
  EXPECT_EQ(filter->WriteFinalize(), STG_E_CANTSAVE);
  ScriptedStream sink;
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(1), nullptr, nullptr), STG_E_REVERTED);
}

TEST_F(StreamCryptTest, AFinalizeThatFailsWhileDrainingGoesOnDraining) {
  Bind();
  target.content = Pattern(20);
  Choose(kReading);
  Encrypting();
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  // A copy that fails leaves a partial block behind, and draining as it is.
  ScriptedStream sink;
  sink.failing_write = 1;
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(20), nullptr, nullptr), kStreamFailure);
  EXPECT_EQ(filter->put_ReadPadType(-2), S_OK);
  EXPECT_EQ(filter->ReadFinalize(), E_OUTOFMEMORY);
  const size_t reads = target.read_sizes.size();
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK), Slice(PeerAes(kKey, Pattern(20), true), 0, 16));
  EXPECT_EQ(target.read_sizes.size(), reads);
}

TEST_F(StreamCryptTest, FinalizingADecryptionLeavesAPartialBlockBehind) {
  Bind();
  target.content = PeerAes(kKey, Pattern(16), true);
  target.content.push_back(1);
  Choose(kReading);
  EXPECT_EQ(ReadOnce(Stream(), 100, S_OK), Pattern(16));
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 100, S_OK), Bytes{});
}

TEST_F(StreamCryptTest, EveryChangeOfReadingEndsDraining) {
  Bind();
  const auto expect_reading = [&](const char* change, bool draining) {
    const size_t reads = target.read_sizes.size();
    uint8_t bytes[16];
    Stream()->Read(bytes, 16, nullptr);
    EXPECT_EQ(target.read_sizes.size(), reads + (draining ? 0 : 1)) << change;
  };
  const auto drain = [&] {
    Choose(kReading);
    target.content = Pattern(64);
    target.position = 0;
    EXPECT_EQ(filter->ReadFinalize(), S_OK);
  };
  drain();
  expect_reading("finalize", true);
  expect_reading("an empty read", false);
  drain();
  EXPECT_EQ(filter->ReadReset(), S_OK);
  expect_reading("ReadReset", false);
  drain();
  EXPECT_EQ(SetKey(kReading, kKey), S_OK);
  expect_reading("ReadKey", false);
  drain();
  EXPECT_EQ(SetKey(kReading, Pattern(5)), E_INVALIDARG);
  Choose(kReading);
  expect_reading("a refused ReadKey", false);
  drain();
  Encrypting();
  expect_reading("ReadDecrypt", false);
  drain();
  EXPECT_EQ(filter->ReadResetKey(), S_OK);
  EXPECT_EQ(SetKey(kReading, kKey), S_OK);
  expect_reading("ReadResetKey", false);
  drain();
  EXPECT_EQ(filter->put_ReadAlgorithm(Text(OLESTR("no")).Get()), kAlgorithmNotFound);
  expect_reading("ReadAlgorithm", false);
  drain();
  // The other direction does not.
  Choose(kWriting);
  EXPECT_EQ(filter->WriteReset(), S_OK);
  EXPECT_EQ(filter->put_WriteDecrypt(VARIANT_FALSE), S_OK);
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  expect_reading("writing", true);
}

TEST_F(StreamCryptTest, ARefusedPadFailsTheFinalizeAndDrainsNothing) {
  Bind();
  target.content = Pattern(20);
  Choose(kReading);
  Encrypting();
  EXPECT_EQ(filter->put_ReadPadType(-2), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 20, S_OK).size(), 16u);
  EXPECT_EQ(filter->ReadFinalize(), E_OUTOFMEMORY);
  EXPECT_EQ(ReadOnce(Stream(), 20, S_FALSE), Bytes{});
  EXPECT_EQ(filter->put_ReadPadType(0x141), S_OK);
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 20, S_OK), Slice(PeerAes(kKey, target.content, true, 0x41), 16, 16));
}

TEST_F(StreamCryptTest, WritingHoldsBackAPartialBlockUntilFinalize) {
  Bind();
  Choose(kWriting, OLESTR("DES"), Pattern(8));
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(Stream(), Pattern(5), &count), S_OK);
  EXPECT_EQ(count, 5u);
  EXPECT_TRUE(target.write_sizes.empty());
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_EQ(target.write_sizes, std::vector<ULONG>{8});
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_EQ(target.write_sizes, std::vector<ULONG>{8});
  // And back.
  EXPECT_EQ(filter->put_WriteDecrypt(VARIANT_TRUE), S_OK);
  const Bytes cipher = target.content;
  target.content.clear();
  EXPECT_EQ(WriteAll(Stream(), cipher, &count), S_OK);
  Bytes plain = Pattern(5);
  plain.resize(8);
  EXPECT_EQ(target.content, plain);
}

TEST_F(StreamCryptTest, WhatATargetDoesNotTakeStaysQueued) {
  Bind();
  Choose(kWriting);
  target.largest_write = 10;
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(Stream(), Pattern(40), &count), S_OK);
  EXPECT_EQ(count, 40u);
  EXPECT_EQ(WriteAll(Stream(), Slice(Pattern(48), 40, 1), &count), S_OK);
  EXPECT_EQ(count, 1u);
  target.largest_write = SIZE_MAX;
  EXPECT_EQ(WriteAll(Stream(), Slice(Pattern(48), 41, 7), &count), S_OK);
  EXPECT_EQ(target.write_sizes, (std::vector<ULONG>{32, 22, 28}));
  EXPECT_EQ(target.content, PeerAes(kKey, Pattern(48), true));
}

TEST_F(StreamCryptTest, AFailingTargetKeepsTheInputAcceptedAndTheRestQueued) {
  Bind();
  Choose(kWriting);
  target.failing_write = 1;
  target.moved_by_failure = 6;
  target.failure = STG_E_MEDIUMFULL;
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(Stream(), Pattern(16), &count), STG_E_MEDIUMFULL);
  EXPECT_EQ(count, 16u);
  target.failing_write = 2;
  target.moved_by_failure = 0;
  EXPECT_EQ(filter->WriteFinalize(), STG_E_MEDIUMFULL);
  target.write_status = S_FALSE;
  EXPECT_EQ(filter->WriteFinalize(), S_FALSE);
  EXPECT_EQ(target.content, PeerAes(kKey, Pattern(16), true));
}

TEST_F(StreamCryptTest, ATargetThatReportsTooMuchTakesNoMoreThanItWasGiven) {
  Bind();
  Choose(kWriting);
  target.excess_report = 1000;
  EXPECT_EQ(WriteAll(Stream(), Pattern(40)), S_OK);
  target.excess_report = 0;
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, Pattern(40), true));
}

TEST_F(StreamCryptTest, WriteResetDropsWhatIsQueued) {
  Bind();
  Choose(kWriting);
  target.largest_write = 0;
  EXPECT_EQ(WriteAll(Stream(), Pattern(20)), S_OK);
  EXPECT_EQ(filter->WriteReset(), S_OK);
  target.largest_write = SIZE_MAX;
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_TRUE(target.content.empty());
  EXPECT_EQ(WriteAll(Stream(), Pattern(16)), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, Pattern(16), true));
}

TEST_F(StreamCryptTest, ChangingTheDirectionLeavesTheQueues) {
  Bind();
  Choose(kWriting);
  EXPECT_EQ(WriteAll(Stream(), Pattern(5)), S_OK);
  EXPECT_EQ(filter->put_WriteDecrypt(VARIANT_TRUE), S_OK);
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_TRUE(target.content.empty());
  EXPECT_EQ(filter->put_WriteDecrypt(VARIANT_FALSE), S_OK);
  EXPECT_EQ(WriteAll(Stream(), Slice(Pattern(16), 5, 11)), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, Pattern(16), true));
}

TEST_F(StreamCryptTest, FinalizingAWrittenDecryptionReportsNoPartialBlock) {
  Bind();
  Choose(kWriting);
  EXPECT_EQ(filter->put_WriteDecrypt(VARIANT_TRUE), S_OK);
  EXPECT_EQ(WriteAll(Stream(), Pattern(17)), S_OK);
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, Pattern(16), false));
}

TEST_F(StreamCryptTest, ARefusedPadFailsWriteFinalize) {
  Bind();
  Choose(kWriting);
  EXPECT_EQ(filter->put_WritePadType(-2), S_OK);
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_EQ(WriteAll(Stream(), Pattern(1)), S_OK);
  EXPECT_EQ(filter->WriteFinalize(), E_OUTOFMEMORY);
  EXPECT_TRUE(target.content.empty());
  EXPECT_EQ(filter->put_WritePadType(4), S_OK);
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, Pattern(1), true, 4));
}

// Without a key nothing moves, whatever the operation and the state.
TEST_F(StreamCryptTest, WithoutAKeyNothingMoves) {
  Bind();
  target.content = Pattern(64);
  const auto expect_refusal = [&](const char* state) {
    const size_t size = target.content.size();
    uint8_t bytes[32] = {};
    ULONG count = kUntouched;
    EXPECT_EQ(Stream()->Read(bytes, 32, &count), E_UNEXPECTED) << state;
    EXPECT_EQ(count, 0u) << state;
    count = kUntouched;
    EXPECT_EQ(Stream()->Write(bytes, 32, &count), E_UNEXPECTED) << state;
    EXPECT_EQ(count, kUntouched) << state;
    ScriptedStream sink;
    ULARGE_INTEGER total = Large(kUntouchedTotal);
    EXPECT_EQ(Stream()->CopyTo(&sink, Large(32), &total, &total), E_UNEXPECTED) << state;
    EXPECT_EQ(total.QuadPart, kUntouchedTotal) << state;
    EXPECT_TRUE(sink.write_sizes.empty()) << state;
    EXPECT_TRUE(target.read_sizes.empty()) << state;
    EXPECT_EQ(target.content.size(), size) << state;
    // What asks for no transfer is not refused.
    EXPECT_EQ(Stream()->Write(bytes, 0, &count), S_OK) << state;
    EXPECT_EQ(Stream()->CopyTo(nullptr, Large(32), nullptr, nullptr), STG_E_INVALIDPOINTER);
    EXPECT_EQ(filter->ReadFinalize(), S_OK) << state;
    EXPECT_EQ(filter->WriteFinalize(), S_OK) << state;
    EXPECT_EQ(Stream()->Read(bytes, 32, &count), E_UNEXPECTED) << state;
  };
  for (const Direction* side : kDirections) {
    EXPECT_EQ((F()->*side->put_algorithm)(Text(OLESTR("AES")).Get()), S_OK);
  }
  expect_refusal("a new algorithm");
  for (const Direction* side : kDirections) EXPECT_EQ(SetKey(*side, Pattern(9)), E_INVALIDARG);
  expect_refusal("a key of a wrong length");
  for (const Direction* side : kDirections) {
    EXPECT_EQ(SetKey(*side, kKey), S_OK);
    EXPECT_EQ((F()->*side->reset_key)(), S_OK);
  }
  expect_refusal("a key dropped");
}

TEST_F(StreamCryptTest, AKeyThatCannotBeConvertedLeavesQueuedBytesWhereTheyAre) {
  Bind();
  Choose(kWriting);
  EXPECT_EQ(WriteAll(Stream(), Pattern(5)), S_OK);
  EXPECT_EQ(SetImpossibleKey(kWriting), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(filter->WriteFinalize(), E_UNEXPECTED);
  EXPECT_EQ(filter->WriteFinalize(), E_UNEXPECTED);
  EXPECT_TRUE(target.write_sizes.empty());

  // No partial block here, only output.
  target.content = Pattern(16);
  Choose(kReading);
  Encrypting();
  EXPECT_EQ(ReadOnce(Stream(), 10), Bytes{});
  EXPECT_EQ(ReadOnce(Stream(), 10).size(), 10u);
  EXPECT_EQ(SetImpossibleKey(kReading), DISP_E_TYPEMISMATCH);
  EXPECT_EQ(filter->ReadFinalize(), E_UNEXPECTED);
}

TEST_F(StreamCryptTest, OneTransferAboveTheQueueLimitFails) {
  Bind();
  Choose(kReading);
  Choose(kWriting);
  const Bytes large = Pattern(kTooMuch);
  ULONG count = kUntouched;
  EXPECT_EQ(WriteAll(Stream(), large, &count), E_OUTOFMEMORY);
  EXPECT_EQ(count, kUntouched);
  EXPECT_TRUE(target.content.empty());
  EXPECT_EQ(filter->WriteReset(), S_OK);
  EXPECT_EQ(WriteAll(Stream(), large, &count), E_OUTOFMEMORY);

  target.content = large;
  std::vector<uint8_t> bytes(kTooMuch);
  EXPECT_EQ(Stream()->Read(bytes.data(), kTooMuch, &count), E_OUTOFMEMORY);
  EXPECT_EQ(count, 0u);
  // The bytes that were taken are lost.
  EXPECT_EQ(target.position, kTooMuch);
  EXPECT_EQ(ReadOnce(Stream(), 16, S_FALSE), Bytes{});
  // A large request is well where the stream has little.
  target.position = kTooMuch - 16;
  EXPECT_EQ(ReadOnce(Stream(), kTooMuch, S_OK),
            PeerAes(kKey, Slice(large, kTooMuch - 16, 16), false));
}

TEST_F(StreamCryptTest, OneTransferUpToTheQueueLimitSucceeds) {
  Bind();
  Choose(kWriting);
  const Bytes large = Pattern(kTooMuch - 1);
  EXPECT_EQ(WriteAll(Stream(), large), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, large, true));
}

TEST_F(StreamCryptTest, CopyToFinalizesAndCountsTheInput) {
  Bind();
  target.content = Pattern(3001);
  Choose(kReading);
  Encrypting();
  EXPECT_EQ(filter->put_ReadPadType(7), S_OK);
  ScriptedStream sink;
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  ULARGE_INTEGER written = Large(kUntouchedTotal);
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(3001), &read, &written), S_OK);
  EXPECT_EQ(target.read_sizes, (std::vector<ULONG>{1024, 1024, 953}));
  EXPECT_EQ(sink.write_sizes, (std::vector<ULONG>{1024, 1024, 944, 16}));
  EXPECT_EQ(read.QuadPart, 3001u);
  EXPECT_EQ(written.QuadPart, 3001u);
  EXPECT_EQ(sink.content, PeerAes(kKey, target.content, true, 7));
  // It does not drain: the next read asks the stream.
  target.content.resize(3017);
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK).size(), 16u);
}

TEST_F(StreamCryptTest, CopyToLeavesDrainingAsItIs) {
  Bind();
  target.content = Pattern(64);
  Choose(kReading);
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  ScriptedStream sink;
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(32), nullptr, nullptr), S_OK);
  EXPECT_EQ(sink.content, PeerAes(kKey, Pattern(32), false));
  EXPECT_EQ(ReadOnce(Stream(), 16, S_OK), Bytes{});
  EXPECT_EQ(target.position, 32u);
}

TEST_F(StreamCryptTest, CopyToDropsWhatReadingHeldBack) {
  Bind();
  target.content = Pattern(40);
  Choose(kReading);
  Encrypting();
  EXPECT_EQ(ReadOnce(Stream(), 20).size(), 16u);
  ScriptedStream sink;
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(100), nullptr, nullptr), S_OK);
  EXPECT_EQ(sink.content, PeerAes(kKey, Slice(target.content, 20, 20), true));
}

TEST_F(StreamCryptTest, CopyToOfNothingResetsAndFinalizes) {
  Bind();
  target.content = Pattern(40);
  Choose(kReading);
  Encrypting();
  EXPECT_EQ(ReadOnce(Stream(), 20).size(), 16u);
  ScriptedStream sink;
  ULARGE_INTEGER read = Large(kUntouchedTotal);
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(0), &read, nullptr), S_OK);
  EXPECT_EQ(read.QuadPart, 0u);
  EXPECT_TRUE(sink.content.empty());
  EXPECT_EQ(filter->ReadFinalize(), S_OK);
  EXPECT_EQ(ReadOnce(Stream(), 20), Bytes{});
}

TEST_F(StreamCryptTest, CopyToSendsAgainWhatTheDestinationDidNotTake) {
  Bind();
  target.content = Pattern(2100);
  Choose(kReading);
  ScriptedStream sink;
  sink.largest_write = 1000;
  ULARGE_INTEGER written = Large(0);
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(5000), nullptr, &written), S_OK);
  // Writing nothing does not end the copy either, with an engine.
  EXPECT_EQ(sink.write_sizes, (std::vector<ULONG>{1024, 1048, 96}));
  EXPECT_EQ(written.QuadPart, 2100u);
  EXPECT_EQ(sink.content, PeerAes(kKey, Slice(target.content, 0, 2096), false));
  target.position = 0;
  sink.largest_write = 0;
  sink.write_sizes.clear();
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(5000), nullptr, &written), S_OK);
  EXPECT_EQ(sink.write_sizes, (std::vector<ULONG>{1024, 2048, 2096, 2096}));
  EXPECT_EQ(written.QuadPart, 2100u);
}

TEST_F(StreamCryptTest, CopyToWithoutAlgorithmCountsWhatTheDestinationTook) {
  Bind();
  target.content = Pattern(3000);
  ScriptedStream sink;
  sink.largest_write = 1000;
  ULARGE_INTEGER read = Large(0);
  ULARGE_INTEGER written = Large(0);
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(~ULONGLONG{0}), &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 3000u);
  EXPECT_EQ(written.QuadPart, 2952u);
  target.position = 0;
  sink.largest_write = 0;
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(3000), &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 1024u);
  EXPECT_EQ(written.QuadPart, 0u);
}

TEST_F(StreamCryptTest, CopyToThatFailsReportsNoTotals) {
  Bind();
  Encrypting();
  for (int chosen = 0; chosen < 2; ++chosen) {
    target.content = Pattern(3000);
    target.position = 0;
    target.read_sizes.clear();
    target.failing_read = 2;
    ScriptedStream sink;
    ULARGE_INTEGER total = Large(kUntouchedTotal);
    EXPECT_EQ(Stream()->CopyTo(&sink, Large(3000), &total, &total), kStreamFailure);
    EXPECT_EQ(sink.content.size(), 1024u);
    target.failing_read = 0;
    target.position = 0;
    ScriptedStream full;
    full.failing_write = 2;
    full.failure = STG_E_MEDIUMFULL;
    EXPECT_EQ(Stream()->CopyTo(&full, Large(3000), &total, &total), STG_E_MEDIUMFULL);
    EXPECT_EQ(Stream()->CopyTo(nullptr, Large(3000), &total, &total), STG_E_INVALIDPOINTER);
    EXPECT_EQ(total.QuadPart, kUntouchedTotal);
    Choose(kReading);
  }
  // The last block's own failures.
  target.content = Pattern(20);
  target.position = 0;
  ScriptedStream sink;
  sink.failing_write = 2;
  ULARGE_INTEGER total = Large(kUntouchedTotal);
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(20), &total, &total), kStreamFailure);
  target.position = 0;
  EXPECT_EQ(filter->put_ReadPadType(-5), S_OK);
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(20), &total, &total), E_OUTOFMEMORY);
  EXPECT_EQ(total.QuadPart, kUntouchedTotal);
}

// The bound stream is handed queued bytes: it must not be able to pull them away.
TEST_F(StreamCryptTest, EnginesDoNotChangeInsideAStreamOperation) {
  Bind();
  Choose(kReading);
  Choose(kWriting);
  int calls = 0;
  const auto meddle = [&] {
    ++calls;
    for (const Direction* side : kDirections) {
      EXPECT_EQ((F()->*side->put_algorithm)(Text(OLESTR("DES")).Get()), E_UNEXPECTED);
      EXPECT_EQ(SetKey(*side, kKey), E_UNEXPECTED);
      EXPECT_EQ((F()->*side->reset)(), E_UNEXPECTED);
      EXPECT_EQ((F()->*side->reset_key)(), E_UNEXPECTED);
      EXPECT_EQ((F()->*side->put_decrypt)(VARIANT_TRUE), E_UNEXPECTED);
      EXPECT_EQ((F()->*side->finalize)(), E_UNEXPECTED);
      EXPECT_EQ(Name(*side), "AES");
    }
  };
  target.on_read = meddle;
  target.on_write = meddle;
  EXPECT_EQ(WriteAll(Stream(), Pattern(20)), S_OK);
  EXPECT_EQ(filter->WriteFinalize(), S_OK);
  EXPECT_EQ(target.content, PeerAes(kKey, Pattern(20), true));
  EXPECT_EQ(ReadOnce(Stream(), 32), PeerAes(kKey, PeerAes(kKey, Pattern(20), true), false));
  ScriptedStream sink;
  sink.on_write = meddle;
  target.position = 0;
  EXPECT_EQ(Stream()->CopyTo(&sink, Large(16), nullptr, nullptr), S_OK);
  EXPECT_EQ(calls, 2 + 1 + 2);
}

}  // namespace
}  // namespace mirolta::stream_test
