// Filters over each other and over the platform's own streams, against whole-buffer results.
#include <unistd.h>

#include <cstdio>
#include <random>

#include "stream_sides.h"

namespace mirolta::test {
namespace {

const Bytes kLongKey = PatternBytes(32, 5);
constexpr size_t kLargest = 5000;

OwnedReference<IStream> MemoryStream(const Bytes& bytes = {}) {
  OwnedReference<IStream> stream;
  EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, stream.Put()), S_OK);
  EXPECT_EQ(WriteAll(stream.Get(), bytes), S_OK);
  EXPECT_EQ(stream->Seek(Move(0), STREAM_SEEK_SET, nullptr), S_OK);
  return stream;
}

// A file that is removed with the object.
class TemporaryFile {
 public:
  TemporaryFile() {
    static int number = 0;
    name_ = testing::TempDir() + "mirolta-stream-" + std::to_string(getpid()) + "-" +
            std::to_string(number++);
  }
  ~TemporaryFile() { std::remove(name_.c_str()); }
  OwnedReference<IStream> Open(DWORD mode) const {
    std::basic_string<OLECHAR> wide(name_.begin(), name_.end());
    OwnedReference<IStream> stream;
    EXPECT_EQ(SHCreateStreamOnFileEx(wide.c_str(), mode, 0, FALSE, nullptr, stream.Put()), S_OK);
    return stream;
  }
  const std::string& Name() const { return name_; }

 private:
  std::string name_;
};

// Reads in pieces until a read gives nothing, as a client of IStream does.
Bytes ReadToEnd(IStream* stream, std::minstd_rand& random, ULONG largest) {
  Bytes all;
  Bytes piece(largest);
  for (;;) {
    ULONG got = 0;
    const HRESULT status =
        stream->Read(piece.data(), 1 + static_cast<ULONG>(random()) % largest, &got);
    EXPECT_TRUE(SUCCEEDED(status));
    if (FAILED(status) || got == 0) return all;
    all = all + Head(piece, got);
  }
}
void WriteInPieces(IStream* stream, const Bytes& bytes, std::minstd_rand& random) {
  for (size_t at = 0; at < bytes.size();) {
    const size_t length = 1 + random() % 700;
    const Bytes piece = Part(bytes, at, std::min(length, bytes.size() - at));
    ULONG written = 0;
    ASSERT_EQ(WriteAll(stream, piece, &written), S_OK);
    ASSERT_EQ(written, piece.size());
    at += piece.size();
  }
}

DigestFilter Digesting(IUnknown* target) {
  DigestFilter filter(target);
  Reading(filter).Choose(OLESTR("MD5"));
  Writing(filter).Choose(OLESTR("MD5"));
  return filter;
}
CryptFilter Enciphering(IUnknown* target) {
  CryptFilter filter(target);
  Reading(filter).Choose(OLESTR("AES"), kLongKey);
  Writing(filter).Choose(OLESTR("AES"), kLongKey);
  return filter;
}

TEST(StreamChainTest, DigestsOfEverySizeAreThoseOfTheWholeBuffer) {
  std::minstd_rand random(1);
  const Bytes all = PatternBytes(kLargest);
  ScriptedStream target;
  ScriptedStream sink;
  const DigestFilter filter = Digesting(&target);
  for (size_t size = 0; size <= kLargest; ++size) {
    const Bytes bytes = Head(all, size);
    const Text digest = PeerText(OLESTR("MD5"), bytes);
    target.content = bytes;
    target.position = 0;
    target.largest_read = size % 3 == 0 ? 100 : SIZE_MAX;
    EXPECT_EQ(filter->ReadReset(), S_OK);
    ASSERT_EQ(ReadToEnd(filter.Stream(), random, 2000), bytes);
    ASSERT_EQ(Reading(filter).Value(), digest) << size;

    target.position = 0;
    sink.content.clear();
    EXPECT_EQ(filter->ReadReset(), S_OK);
    ASSERT_EQ(filter.Stream()->CopyTo(&sink, Large(size), nullptr, nullptr), S_OK);
    ASSERT_EQ(sink.content, bytes);
    ASSERT_EQ(Reading(filter).Value(), digest) << size;

    target.content.clear();
    EXPECT_EQ(filter->WriteReset(), S_OK);
    WriteInPieces(filter.Stream(), bytes, random);
    ASSERT_EQ(target.content, bytes);
    ASSERT_EQ(Writing(filter).Value(), digest) << size;
  }
}

TEST(StreamChainTest, CiphertextsOfEverySizeAreThoseOfTheWholeBuffer) {
  std::minstd_rand random(2);
  const Bytes all = PatternBytes(kLargest);
  ScriptedStream target;
  ScriptedStream sink;
  const CryptFilter filter = Enciphering(&target);
  for (size_t size = 0; size <= kLargest; ++size) {
    const Bytes bytes = Head(all, size);
    const Bytes cipher = PeerAes(kLongKey, bytes, true);
    target.content.clear();
    WriteInPieces(filter.Stream(), bytes, random);
    ASSERT_EQ(filter->WriteFinalize(), S_OK);
    ASSERT_EQ(target.content, cipher) << size;

    // Decrypting keeps the pad.
    Bytes padded = bytes;
    padded.resize(cipher.size());
    target.position = 0;
    sink.content.clear();
    ASSERT_EQ(filter.Stream()->CopyTo(&sink, Large(~ULONGLONG{0}), nullptr, nullptr), S_OK);
    ASSERT_EQ(sink.content, padded) << size;

    target.position = 0;
    Bytes plain;
    while (target.position < target.content.size()) {
      plain = plain + ReadOnce(filter.Stream(), 1 + static_cast<ULONG>(random()) % 900);
    }
    ASSERT_EQ(filter->ReadFinalize(), S_OK);
    ASSERT_EQ(plain + ReadToEnd(filter.Stream(), random, 500), padded) << size;
  }
}

TEST(StreamChainTest, WritesPassACipherThenADigestThenAFile) {
  std::minstd_rand random(3);
  for (const size_t size : {0u, 1u, 15u, 16u, 17u, 1023u, 1024u, 1025u, (1u << 20) + 3u}) {
    const TemporaryFile file;
    const Bytes bytes = PatternBytes(size);
    const Bytes cipher = PeerAes(kLongKey, bytes, true);
    {
      const DigestFilter digest = Digesting(file.Open(STGM_WRITE | STGM_CREATE).Get());
      const CryptFilter crypt = Enciphering(digest.Stream());
      WriteInPieces(crypt.Stream(), bytes, random);
      EXPECT_EQ(crypt->WriteFinalize(), S_OK);
      EXPECT_EQ(Writing(digest).Value(), PeerText(OLESTR("MD5"), cipher));
    }
    // And back, the plaintext digested by a filter on top.
    const DigestFilter lower = Digesting(file.Open(STGM_READ).Get());
    const CryptFilter crypt = Enciphering(lower.Stream());
    const DigestFilter upper = Digesting(crypt.Stream());
    // A read may give nothing before the end, when no block is whole.
    Bytes plain;
    for (ULARGE_INTEGER position = Large(0); position.QuadPart < cipher.size();) {
      plain = plain + ReadToEnd(upper.Stream(), random, 40000);
      EXPECT_EQ(upper.Stream()->Seek(Move(0), STREAM_SEEK_CUR, &position), S_OK);
    }
    EXPECT_EQ(crypt->ReadFinalize(), S_OK);
    Bytes padded = bytes;
    padded.resize(cipher.size());
    EXPECT_EQ(plain + ReadToEnd(upper.Stream(), random, 40000), padded) << size;
    EXPECT_EQ(Reading(lower).Value(), PeerText(OLESTR("MD5"), cipher)) << size;
    EXPECT_EQ(Reading(upper).Value(), PeerText(OLESTR("MD5"), padded)) << size;
  }
}

TEST(StreamChainTest, ACopyPassesTwoDigestsAndTheCipherBetween) {
  for (const size_t size : {0u, 5u, 16u, 3000u, 4096u, 100001u}) {
    const Bytes bytes = PatternBytes(size);
    const Bytes cipher = PeerAes(kLongKey, bytes, true);
    const DigestFilter lower = Digesting(MemoryStream(bytes).Get());
    const CryptFilter crypt = Enciphering(lower.Stream());
    EXPECT_EQ(crypt->put_ReadDecrypt(VARIANT_FALSE), S_OK);
    const OwnedReference<IStream> memory = MemoryStream();
    const DigestFilter destination = Digesting(memory.Get());
    ULARGE_INTEGER read = Large(0);
    ULARGE_INTEGER written = Large(0);
    EXPECT_EQ(crypt.Stream()->CopyTo(destination.Stream(), Large(~ULONGLONG{0}), &read, &written),
              S_OK);
    EXPECT_EQ(read.QuadPart, size);
    EXPECT_EQ(written.QuadPart, size);
    EXPECT_EQ(Reading(lower).Value(), PeerText(OLESTR("MD5"), bytes));
    EXPECT_EQ(Writing(destination).Value(), PeerText(OLESTR("MD5"), cipher));
    EXPECT_EQ(memory->Seek(Move(0), STREAM_SEEK_SET, nullptr), S_OK);
    EXPECT_EQ(ReadOnce(memory.Get(), static_cast<ULONG>(cipher.size() + 1)), cipher);
  }
}

// The platform's own streams copy to a filter as to any stream.
TEST(StreamChainTest, AStreamOfThePlatformCopiesIntoAFilter) {
  const Bytes bytes = PatternBytes(100001);
  ScriptedStream sink;
  const CryptFilter crypt = Enciphering(&sink);
  EXPECT_EQ(MemoryStream(bytes)->CopyTo(crypt.Stream(), Large(bytes.size()), nullptr, nullptr),
            S_OK);
  EXPECT_EQ(crypt->WriteFinalize(), S_OK);
  EXPECT_EQ(sink.content, PeerAes(kLongKey, bytes, true));
}

TEST(StreamChainTest, StatReportsSizeAndNameOfTheFileBelow) {
  const TemporaryFile file;
  const OwnedReference<IStream> stream = file.Open(STGM_READWRITE | STGM_CREATE);
  EXPECT_EQ(WriteAll(stream.Get(), PatternBytes(77)), S_OK);
  const DigestFilter digest = Digesting(stream.Get());
  const CryptFilter crypt = Enciphering(digest.Stream());
  STATSTG statistics = {};
  EXPECT_EQ(crypt.Stream()->Stat(&statistics, STATFLAG_DEFAULT), S_OK);
  EXPECT_EQ(statistics.cbSize.QuadPart, 77u);
  ASSERT_NE(statistics.pwcsName, nullptr);
  EXPECT_EQ(Text(statistics.pwcsName), Text(file.Name().begin(), file.Name().end()));
  CoTaskMemFree(statistics.pwcsName);
}

TEST(StreamChainTest, SeekingGoesThroughOnlyWhereEveryFilterAllowsIt) {
  const DigestFilter digest = Digesting(MemoryStream(PatternBytes(100)).Get());
  const CryptFilter crypt = Enciphering(digest.Stream());
  EXPECT_EQ(crypt->put_SeekingForbidden(VARIANT_FALSE), S_OK);
  EXPECT_EQ(crypt.Stream()->Seek(Move(7), STREAM_SEEK_SET, nullptr), E_UNEXPECTED);
  EXPECT_EQ(digest->put_SeekingForbidden(VARIANT_FALSE), S_OK);
  ULARGE_INTEGER position = Large(0);
  EXPECT_EQ(crypt.Stream()->Seek(Move(7), STREAM_SEEK_SET, &position), S_OK);
  EXPECT_EQ(position.QuadPart, 7u);
  // The engines do not follow positions.
  EXPECT_EQ(ReadOnce(crypt.Stream(), 16), PeerAes(kLongKey, Part(PatternBytes(100), 7, 16), false));
}

}  // namespace
}  // namespace mirolta::test
