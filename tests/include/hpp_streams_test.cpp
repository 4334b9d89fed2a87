// Streams and filters of mirolta.hpp.
#include <gtest/gtest.h>

#include <mirolta.hpp>
#include <sstream>

#include "hpp_testing.h"
#include "memory_watch.h"

namespace {

using mirolta::Bytes;
using mirolta::CipherFilter;
using mirolta::CipherInput;
using mirolta::CipherOperation;
using mirolta::CipherOutput;
using mirolta::DigestFilter;
using mirolta::DigestInput;
using mirolta::DigestOutput;
using mirolta::InputStream;
using mirolta::Object;
using mirolta::OutputStream;

constexpr const char* kKey = "sixteen byte key";

std::string ReadAll(std::istream& in) {
  std::ostringstream out;
  out << in.rdbuf();
  return out.str();
}

std::string LongText() {
  std::string text;
  for (unsigned i = 0; text.size() < 70001; ++i) text += static_cast<char>('a' + i * i % 23);
  return text;
}

// A buffer that gives five bytes at a time, and throws after a limit.
class SlowBuffer : public std::streambuf {
 public:
  explicit SlowBuffer(std::string text, std::size_t limit = ~std::size_t{0})
      : text_(std::move(text)), limit_(limit) {}
  std::string written;

 protected:
  std::streamsize xsgetn(char* to, std::streamsize count) override {
    if (place_ >= limit_) throw std::runtime_error("unreadable");
    const std::size_t got =
        (std::min)({static_cast<std::size_t>(count), text_.size() - place_, std::size_t{5}});
    text_.copy(to, got, place_);
    place_ += got;
    return static_cast<std::streamsize>(got);
  }
  std::streamsize xsputn(const char* from, std::streamsize count) override {
    if (written.size() >= limit_) throw std::runtime_error("unwritable");
    written.append(from, static_cast<std::size_t>(count));
    return count;
  }

 private:
  std::string text_;
  std::size_t limit_;
  std::size_t place_ = 0;
};

TEST(HppWrappedStreamTest, ReadsAndWritesAndSeeks) {
  std::stringstream both("0123456789");
  const Object<IStream> stream = mirolta::WrapStream(static_cast<std::iostream&>(both));
  char bytes[8] = {};
  ULONG count = 9;
  EXPECT_EQ(stream->Read(bytes, 4, &count), S_OK);
  EXPECT_EQ(std::string(bytes, count), "0123");
  ULARGE_INTEGER position = {};
  LARGE_INTEGER move = {};
  EXPECT_EQ(stream->Seek(move, STREAM_SEEK_CUR, &position), S_OK);
  EXPECT_EQ(position.QuadPart, 4u);
  move.QuadPart = -2;
  EXPECT_EQ(stream->Seek(move, STREAM_SEEK_END, &position), S_OK);
  EXPECT_EQ(position.QuadPart, 8u);
  EXPECT_EQ(stream->Write("xyz", 3, &count), S_OK);
  EXPECT_EQ(count, 3u);
  EXPECT_EQ(stream->Read(bytes, 8, &count), S_FALSE);
  EXPECT_EQ(std::string(bytes, count), "xyz");
  EXPECT_EQ(stream->Read(bytes, 8, nullptr), S_FALSE);
  EXPECT_EQ(stream->Commit(0), S_OK);
  EXPECT_EQ(both.str(), "01234567xyz");
  move.QuadPart = 100;
  EXPECT_EQ(stream->Seek(move, STREAM_SEEK_SET, nullptr), STG_E_SEEKERROR);
  EXPECT_EQ(stream->Seek(move, 3, nullptr), STG_E_INVALIDFUNCTION);
}

TEST(HppWrappedStreamTest, HasOnlyTheSidesThatItWraps) {
  std::istringstream in("abc");
  std::ostringstream out;
  const Object<IStream> reading = mirolta::WrapStream(in);
  const Object<IStream> writing = mirolta::WrapStream(out);
  char byte = 0;
  ULONG count = 9;
  EXPECT_EQ(reading->Write("x", 1, &count), STG_E_ACCESSDENIED);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(reading->Commit(0), S_OK);
  EXPECT_EQ(writing->Read(&byte, 1, &count), STG_E_ACCESSDENIED);
  EXPECT_EQ(writing->Write("x", 1, nullptr), S_OK);
  LARGE_INTEGER none = {};
  ULARGE_INTEGER position = {};
  EXPECT_EQ(writing->Seek(none, STREAM_SEEK_CUR, &position), S_OK);
  EXPECT_EQ(position.QuadPart, 1u);
  EXPECT_EQ(reading->Read(nullptr, 1, &count), STG_E_INVALIDPOINTER);
  EXPECT_EQ(writing->Write(nullptr, 1, &count), STG_E_INVALIDPOINTER);
  IStream* clone = writing.Get();
  EXPECT_EQ(writing->Clone(&clone), E_NOTIMPL);
  EXPECT_EQ(clone, nullptr);
  ULARGE_INTEGER size = {};
  STATSTG statistics = {};
  EXPECT_EQ(writing->SetSize(size), E_NOTIMPL);
  EXPECT_EQ(writing->Revert(), E_NOTIMPL);
  EXPECT_EQ(writing->Stat(&statistics, STATFLAG_NONAME), E_NOTIMPL);
  EXPECT_EQ(writing->LockRegion(size, size, 1), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(writing->UnlockRegion(size, size, 1), STG_E_INVALIDFUNCTION);
  EXPECT_TRUE(reading.As<IUnknown>().As<ISequentialStream>());
  EXPECT_EQ(reading.TryAs<IHashObject>().Failure().Number(), E_NOINTERFACE);
  EXPECT_EQ(reading->QueryInterface(IID_IStream, nullptr), E_POINTER);
}

TEST(HppWrappedStreamTest, CopiesToAnother) {
  std::istringstream in(LongText());
  std::ostringstream out;
  ULARGE_INTEGER count = {};
  count.QuadPart = 60000;
  ULARGE_INTEGER read = {};
  ULARGE_INTEGER written = {};
  const Object<IStream> to = mirolta::WrapStream(out);
  const Object<IStream> from = mirolta::WrapStream(in);
  EXPECT_EQ(from->CopyTo(to.Get(), count, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 60000u);
  EXPECT_EQ(from->CopyTo(to.Get(), count, &read, &written), S_OK);
  EXPECT_EQ(written.QuadPart, 10001u);
  EXPECT_EQ(out.str(), LongText());
  EXPECT_EQ(from->CopyTo(nullptr, count, nullptr, nullptr), STG_E_INVALIDPOINTER);
  EXPECT_EQ(from->CopyTo(from.Get(), count, &read, nullptr), S_OK);
}

TEST(HppWrappedStreamTest, ExceptionsOfTheStreamAreStatuses) {
  SlowBuffer buffer("abc", 0);
  std::istream in(&buffer);
  std::ostream out(&buffer);
  char bytes[4];
  EXPECT_EQ(mirolta::WrapStream(in)->Read(bytes, 4, nullptr), STG_E_READFAULT);
  EXPECT_EQ(mirolta::WrapStream(out)->Write(bytes, 4, nullptr), STG_E_WRITEFAULT);
}

TEST(HppStreamTest, ReadsAnAutomationStream) {
  const std::string text = LongText();
  std::istringstream source(text);
  InputStream in(mirolta::WrapStream(source));
  std::string head(10, ' ');
  in.read(&head[0], 10);
  EXPECT_EQ(head, text.substr(0, 10));
  EXPECT_EQ(in.tellg(), 10);
  in.seekg(20000);
  EXPECT_EQ(in.get(), text[20000]);
  in.seekg(9, std::ios::cur);
  EXPECT_EQ(in.get(), text[20010]);
  in.seekg(-1, std::ios::end);
  EXPECT_EQ(in.get(), text.back());
  EXPECT_EQ(in.get(), EOF);
  EXPECT_TRUE(in.eof());
  EXPECT_FALSE(in.bad());
  in.clear();
  in.seekg(0);
  EXPECT_EQ(ReadAll(in), text);
  EXPECT_EQ(in.Failure().Number(), S_OK);
}

TEST(HppStreamTest, WritesToAnAutomationStream) {
  const std::string text = LongText();
  std::ostringstream target;
  {
    OutputStream out(mirolta::WrapStream(target));
    out << "number " << 17 << '\n';
    EXPECT_EQ(target.str(), "");
    out.flush();
    EXPECT_EQ(target.str(), "number 17\n");
    out << text;
    EXPECT_EQ(out.tellp(), static_cast<std::streamoff>(10 + text.size()));
    out << "end";
  }
  EXPECT_EQ(target.str(), "number 17\n" + text + "end");
}

TEST(HppStreamTest, FailuresSetTheBadbitAndAreKept) {
  SlowBuffer buffer(LongText(), 16384);
  std::istream source(&buffer);
  InputStream in(mirolta::WrapStream(source));
  EXPECT_EQ(in.get(), 'a');
  EXPECT_EQ(in.Failure().Number(), S_OK);
  std::string rest;
  in >> rest;
  EXPECT_TRUE(in.bad());
  EXPECT_EQ(in.Failure().Number(), STG_E_READFAULT);

  SlowBuffer full("", 0);
  std::ostream target(&full);
  OutputStream out(mirolta::WrapStream(target));
  out << "abc" << std::flush;
  EXPECT_TRUE(out.bad());
  EXPECT_EQ(out.Failure().Number(), STG_E_WRITEFAULT);

  InputStream none((Object<IStream>()));
  EXPECT_TRUE(none.bad());
  EXPECT_EQ(none.Failure().Number(), E_POINTER);
  mirolta::StreamBuffer thrower((Object<IStream>()));
  EXPECT_EQ(hpp_testing::ThrownBy([&] { thrower.sgetc(); }), E_POINTER);
  EXPECT_EQ(hpp_testing::ThrownBy([&] { thrower.sputc('x'); }), E_POINTER);
  EXPECT_EQ(hpp_testing::ThrownBy([&] { thrower.pubsync(); }), E_POINTER);
  EXPECT_EQ(hpp_testing::ThrownBy([&] { thrower.pubseekoff(0, std::ios::beg); }), E_POINTER);
}

// A stream that takes nothing, or a byte at a time.
class StingyStream : public IStream {
 public:
  explicit StingyStream(ULONG most) : most_(most) {}
  std::string written;

  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return 1; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE Read(void*, ULONG, ULONG*) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* taken) override {
    *taken = (std::min)(count, most_);
    written.append(static_cast<const char*>(bytes), *taken);
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER, DWORD, ULARGE_INTEGER*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE CopyTo(IStream*, ULARGE_INTEGER, ULARGE_INTEGER*,
                                   ULARGE_INTEGER*) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Revert() override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE LockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE UnlockRegion(ULARGE_INTEGER, ULARGE_INTEGER, DWORD) override {
    return E_NOTIMPL;
  }
  HRESULT STDMETHODCALLTYPE Stat(STATSTG*, DWORD) override { return E_NOTIMPL; }
  HRESULT STDMETHODCALLTYPE Clone(IStream**) override { return E_NOTIMPL; }

 private:
  ULONG most_;
};

TEST(HppStreamTest, WritesUntilAllIsTakenOrNothingIs) {
  StingyStream bytewise(1);
  OutputStream out((Object<IStream>(&bytewise)));
  out << "abc" << std::flush;
  EXPECT_EQ(bytewise.written, "abc");
  StingyStream full(0);
  OutputStream stuck((Object<IStream>(&full)));
  stuck << "abc" << std::flush;
  EXPECT_EQ(stuck.Failure().Number(), STG_E_MEDIUMFULL);
}

TEST(HppStreamTest, WipesItsMemory) {
  const std::string secret = "a secret of some length, in the buffer";
  std::istringstream source(secret);
  SlowBuffer target("");
  std::ostream sink(&target);
  mirolta::test::WatchFreedMemory watch(secret.data(), 16);
  {
    InputStream in(mirolta::WrapStream(source));
    EXPECT_EQ(in.get(), 'a');
    OutputStream out(mirolta::WrapStream(sink));
    out << secret;
  }
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

TEST(HppDigestStreamTest, DigestsWhatIsRead) {
  const std::string text = LongText();
  std::istringstream source(text);
  DigestInput in(source, "SHA256");
  EXPECT_EQ(ReadAll(in), text);
  EXPECT_EQ(in.Finish(), Bytes(mirolta::Sha256().Update(text).Finish()));
  std::istringstream keyed("what do ya want for nothing?");
  DigestInput mac(keyed, "MD5", "Jefe");
  ReadAll(mac);
  EXPECT_EQ(mac.FinishHex(), "750c783e6ab0b503eaa86e310a5db738");
}

TEST(HppDigestStreamTest, DigestsWhatIsWritten) {
  const std::string text = LongText();
  std::ostringstream target;
  DigestOutput out(target, "SHA1");
  out << text;
  EXPECT_EQ(out.Finish(), Bytes(mirolta::Sha1().Update(text).Finish()));
  EXPECT_EQ(target.str(), text);
  out << "abc";
  EXPECT_EQ(out.FinishHex(), "a9993e364706816aba3e25717850c26c9cd0d89d");
  DigestOutput mac(target, "MD5", "Jefe");
  mac << "what do ya want for nothing?";
  EXPECT_EQ(mac.FinishHex(), "750c783e6ab0b503eaa86e310a5db738");
}

TEST(HppDigestStreamTest, DigestsWithoutATarget) {
  DigestOutput out("SHA1");
  out << LongText();
  EXPECT_EQ(out.Finish(), Bytes(mirolta::Sha1().Update(LongText()).Finish()));
  DigestOutput mac("MD5", "Jefe");
  mac << "what do ya want for nothing?";
  EXPECT_EQ(mac.FinishHex(), "750c783e6ab0b503eaa86e310a5db738");
}

TEST(HppDigestStreamTest, FailuresAreErrors) {
  std::istringstream source("abc");
  EXPECT_EQ(hpp_testing::ThrownBy([&] { DigestInput in(source, "sha1"); }),
            hpp_testing::kAlgorithmNotFound);
  EXPECT_EQ(hpp_testing::ThrownBy([] { DigestOutput out("none"); }),
            hpp_testing::kAlgorithmNotFound);
  SlowBuffer full("", 0);
  std::ostream target(&full);
  DigestOutput out(target, "MD5");
  out << "abc";
  EXPECT_EQ(out.TryFinish().Failure().Number(), STG_E_WRITEFAULT);
  SlowBuffer broken("abc", 0);
  std::istream in(&broken);
  DigestInput input(in, "MD5");
  EXPECT_EQ(input.get(), EOF);
  EXPECT_EQ(input.TryFinish().Failure().Number(), STG_E_READFAULT);
}

TEST(HppDigestFilterTest, EachDirectionHasItsOwnState) {
  std::stringstream both("read");
  DigestFilter filter;
  filter.Bind(static_cast<std::iostream&>(both));
  mirolta::DigestDirection reading = filter.Reading();
  mirolta::DigestDirection writing = filter.Writing();
  EXPECT_EQ(reading.Algorithm(), "");
  EXPECT_FALSE(reading.IsEnabled());
  reading.SetAlgorithm("SHA256");
  writing.SetAlgorithm("MD5");
  EXPECT_EQ(reading.Algorithm(), "SHA256");
  EXPECT_EQ(writing.Algorithm(), "MD5");
  EXPECT_TRUE(reading.IsEnabled());
  writing.SetKey("Jefe");
  EXPECT_EQ(writing.Key(), Bytes("Jefe"));
  EXPECT_TRUE(reading.Key().empty());
  InputStream in(filter.Stream());
  OutputStream out(filter.Stream());
  std::string word;
  in >> word;
  EXPECT_EQ(word, "read");
  out << "what do ya want for nothing?" << std::flush;
  EXPECT_EQ(writing.FinishHex(), "750c783e6ab0b503eaa86e310a5db738");
  EXPECT_EQ(reading.FinishHex(), mirolta::Sha256().Update("read").FinishHex());
  out << "lost" << std::flush;
  writing.Reset();
  EXPECT_EQ(writing.Key(), Bytes("Jefe"));
  writing.ClearKey();
  writing.SetEnabled(false);
  out << "unseen" << std::flush;
  writing.SetEnabled(true);
  out << "abc" << std::flush;
  EXPECT_EQ(writing.FinishHex(), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(HppDigestFilterTest, FailuresAreErrors) {
  DigestFilter filter;
  EXPECT_EQ(filter.Reading().TryFinish().Failure().Number(), hpp_testing::kNotInitialized);
  EXPECT_EQ(filter.Writing().TrySetKey("x").Failure().Description(), "Not initialized.");
  EXPECT_EQ(filter.Writing().TryReset().Failure().Number(), hpp_testing::kNotInitialized);
  filter.Reading().SetAlgorithm("MD5");
  EXPECT_EQ(filter.Reading().TrySetKey({}).Failure().Number(), E_UNEXPECTED);
  const auto hash = mirolta::CreateObject<IHashObject>(CLSID_HashObject);
  const auto refused = filter.TryBind(hash);
  ASSERT_FALSE(refused);
  EXPECT_EQ(refused.Failure().Number(), static_cast<HRESULT>(0x80042775u));
  EXPECT_NE(refused.Failure().Description(), "");
  EXPECT_EQ(hpp_testing::ThrownBy([&] { filter.Bind(nullptr); }), E_POINTER);
}

TEST(HppDigestFilterTest, SeekingMustBeAllowed) {
  std::istringstream source("0123456789");
  DigestFilter filter;
  filter.Bind(source);
  InputStream in(filter.Stream());
  EXPECT_EQ(in.get(), '0');
  EXPECT_EQ(in.tellg(), 1);
  in.seekg(5);
  EXPECT_TRUE(in.fail());
  in.clear();
  filter.AllowSeeking(true);
  in.seekg(5);
  EXPECT_EQ(in.get(), '5');
}

TEST(HppDigestFilterTest, ChainsToAnotherFilter) {
  std::ostringstream target;
  DigestFilter outer;
  CipherFilter inner;
  inner.Bind(target);
  inner.Writing().SetAlgorithm("AES");
  inner.Writing().SetKey(kKey);
  outer.Bind(inner.Interface());
  outer.Writing().SetAlgorithm("MD5");
  OutputStream out(outer.Stream());
  out << "abc" << std::flush;
  inner.Writing().Finish();
  EXPECT_EQ(outer.Writing().FinishHex(), "900150983cd24fb0d6963f7d28e17f72");
  EXPECT_EQ(Bytes(target.str()), mirolta::Aes(kKey).Encrypt("abc"));
}

TEST(HppCipherStreamTest, EncryptsAndDecryptsWhatIsWritten) {
  const std::string text = LongText();
  std::ostringstream encrypted;
  CipherOutput out(encrypted, CipherOperation::kEncrypt, "AES", kKey, mirolta::Pad('.'));
  out << text;
  out.Finish();
  EXPECT_EQ(Bytes(encrypted.str()), mirolta::Aes(kKey, mirolta::Pad('.')).Encrypt(text));
  std::ostringstream decrypted;
  CipherOutput back(decrypted, CipherOperation::kDecrypt, "AES", kKey);
  back << encrypted.str();
  back.Finish();
  EXPECT_EQ(decrypted.str(), text + std::string(15, '.'));
}

TEST(HppCipherStreamTest, EncryptsAndDecryptsWhatIsRead) {
  const std::string text = LongText();
  std::istringstream plain(text);
  CipherInput encrypting(plain, CipherOperation::kEncrypt, "DES", "8 bytes.");
  const std::string encrypted = ReadAll(encrypting);
  EXPECT_EQ(Bytes(encrypted), mirolta::Des("8 bytes.").Encrypt(text));
  std::istringstream source(encrypted);
  CipherInput decrypting(source, CipherOperation::kDecrypt, "DES", "8 bytes.");
  EXPECT_EQ(ReadAll(decrypting).substr(0, text.size()), text);
  EXPECT_EQ(decrypting.get(), EOF);
}

// Some buffers return less than there is.
TEST(HppCipherStreamTest, ReadsASourceOfShortPieces) {
  const std::string text = "0123456789abcdef0123456789abcdef01";
  SlowBuffer slow(text);
  std::istream source(&slow);
  CipherInput in(source, CipherOperation::kEncrypt, "AES", kKey);
  EXPECT_EQ(Bytes(ReadAll(in)), mirolta::Aes(kKey).Encrypt(text));
  std::istringstream empty;
  CipherInput nothing(empty, CipherOperation::kEncrypt, "AES", kKey);
  EXPECT_EQ(ReadAll(nothing), "");
}

TEST(HppCipherStreamTest, WithoutFinishTheLastBlockIsMissing) {
  std::ostringstream target;
  {
    CipherOutput out(target, CipherOperation::kEncrypt, "AES", kKey);
    out << "0123456789abcdef0123";
  }
  EXPECT_EQ(target.str().size(), 16u);
}

TEST(HppCipherStreamTest, FailuresAreErrors) {
  std::stringstream stream("abc");
  EXPECT_EQ(hpp_testing::ThrownBy(
                [&] { CipherInput in(stream, CipherOperation::kDecrypt, "AES", "short"); }),
            E_INVALIDARG);
  EXPECT_EQ(hpp_testing::ThrownBy(
                [&] { CipherOutput out(stream, CipherOperation::kEncrypt, "aes", kKey); }),
            hpp_testing::kAlgorithmNotFound);
  SlowBuffer full("", 0);
  std::ostream target(&full);
  CipherOutput out(target, CipherOperation::kEncrypt, "AES", kKey);
  out << "abc";
  EXPECT_EQ(out.TryFinish().Failure().Number(), STG_E_WRITEFAULT);
  // An algorithm without a key moves nothing.
  CipherFilter keyless;
  keyless.Reading().SetAlgorithm("AES");
  CipherInput in(stream, std::move(keyless));
  EXPECT_EQ(in.get(), EOF);
  EXPECT_TRUE(in.bad());
  EXPECT_EQ(in.Failure().Number(), E_UNEXPECTED);
}

TEST(HppCipherFilterTest, EachDirectionHasItsOwnState) {
  CipherFilter filter;
  mirolta::CipherDirection reading = filter.Reading();
  mirolta::CipherDirection writing = filter.Writing();
  EXPECT_TRUE(reading.IsDecrypting());
  EXPECT_FALSE(writing.IsDecrypting());
  EXPECT_EQ(writing.Algorithm(), "");
  writing.SetAlgorithm("DES");
  reading.SetAlgorithm("AES");
  EXPECT_EQ(writing.Algorithm(), "DES");
  EXPECT_EQ(reading.Algorithm(), "AES");
  reading.SetKey(kKey);
  EXPECT_EQ(reading.Key(), Bytes(kKey));
  EXPECT_TRUE(writing.Key().empty());
  writing.SetDecrypting(true);
  EXPECT_TRUE(writing.IsDecrypting());
  reading.SetPad(mirolta::Pad(7));
  LONG pad = 0;
  filter.Interface()->get_ReadPadType(&pad);
  EXPECT_EQ(pad, 7);
  reading.ClearKey();
  EXPECT_TRUE(reading.Key().empty());
  EXPECT_EQ(filter.Writing().TryFinish().Failure().Number(), STG_E_CANTSAVE);
  CipherFilter fresh;
  EXPECT_EQ(fresh.Writing().TrySetPad(mirolta::Pad(1)).Failure().Number(),
            hpp_testing::kNotInitialized);
  EXPECT_EQ(fresh.Writing().TrySetKey(kKey).Failure().Number(), hpp_testing::kNotInitialized);
}

TEST(HppCipherFilterTest, ResetDiscardsPendingData) {
  std::ostringstream target;
  CipherFilter filter;
  filter.Bind(target);
  filter.Writing().SetAlgorithm("AES");
  filter.Writing().SetKey(kKey);
  OutputStream out(filter.Stream());
  out << "pending" << std::flush;
  filter.Writing().Reset();
  EXPECT_EQ(filter.Writing().Key(), Bytes(kKey));
  filter.Writing().Finish();
  EXPECT_EQ(target.str(), "");
}

}  // namespace
