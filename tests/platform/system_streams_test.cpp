#include <malloc.h>
#include <sys/resource.h>
#include <sys/stat.h>

#include <cstring>
#include <vector>

#include "all_at_once.h"
#include "runtime_allocations.h"
#include "system_support.h"

namespace mirolta {
namespace {

// Owns a stream.
class StreamHolder {
 public:
  explicit StreamHolder(IStream* stream) : stream_(stream) {}
  StreamHolder(const StreamHolder&) = delete;
  StreamHolder& operator=(const StreamHolder&) = delete;
  ~StreamHolder() {
    if (stream_ != nullptr) {
      EXPECT_EQ(stream_->Release(), 0u);
    }
  }
  IStream* operator->() const { return stream_; }
  IStream* get() const { return stream_; }

 private:
  IStream* stream_;
};

IStream* NewMemoryStream() {
  IStream* stream = nullptr;
  EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &stream), S_OK);
  return stream;
}

IStream* OpenFileStream(const std::string& file, DWORD mode, BOOL create = FALSE) {
  IStream* stream = nullptr;
  const std::u16string name = Wide(file);
  EXPECT_EQ(SHCreateStreamOnFileEx(name.c_str(), mode, 0, create, nullptr, &stream), S_OK);
  return stream;
}

HRESULT StatusOfOpening(const std::string& file, DWORD mode, BOOL create = FALSE) {
  IStream* stream = reinterpret_cast<IStream*>(0x10);
  const std::u16string name = Wide(file);
  const HRESULT status = SHCreateStreamOnFileEx(name.c_str(), mode, 0, create, nullptr, &stream);
  if (SUCCEEDED(status)) {
    stream->Release();
  } else {
    EXPECT_EQ(stream, nullptr);
  }
  return status;
}

void Put(IStream* stream, const std::string& bytes) {
  ULONG written = 99;
  EXPECT_EQ(stream->Write(bytes.data(), static_cast<ULONG>(bytes.size()), &written), S_OK);
  EXPECT_EQ(written, bytes.size());
}

std::string Get(IStream* stream, ULONG count, HRESULT expected) {
  std::string bytes(count, '#');
  ULONG read = 99;
  EXPECT_EQ(stream->Read(bytes.data(), count, &read), expected);
  EXPECT_LE(read, count);
  bytes.resize(read);
  return bytes;
}

HRESULT Seek(IStream* stream, LONGLONG move, DWORD origin, ULONGLONG* position = nullptr) {
  LARGE_INTEGER by;
  by.QuadPart = move;
  ULARGE_INTEGER at = {};
  const HRESULT status = stream->Seek(by, origin, position == nullptr ? nullptr : &at);
  if (position != nullptr) *position = at.QuadPart;
  return status;
}

HRESULT SetSize(IStream* stream, ULONGLONG size) {
  ULARGE_INTEGER to;
  to.QuadPart = size;
  return stream->SetSize(to);
}

ULONGLONG SizeOf(IStream* stream) {
  STATSTG facts;
  EXPECT_EQ(stream->Stat(&facts, STATFLAG_NONAME), S_OK);
  EXPECT_EQ(facts.pwcsName, nullptr);
  return facts.cbSize.QuadPart;
}

// Both kinds of streams; the parameter selects the kind.
class EveryStream : public testing::TestWithParam<bool> {
 protected:
  bool in_memory() const { return GetParam(); }
  HRESULT short_read() const { return in_memory() ? S_OK : S_FALSE; }
  IStream* Make() {
    return in_memory() ? NewMemoryStream()
                       : OpenFileStream(folder_.File("f"), STGM_READWRITE | STGM_CREATE);
  }
  TemporaryFolder folder_;
};
INSTANTIATE_TEST_SUITE_P(Kinds, EveryStream, testing::Bool(),
                         [](const testing::TestParamInfo<bool>& kind) {
                           return kind.param ? "Memory" : "File";
                         });

TEST_P(EveryStream, ReadsWhatWasWritten) {
  const StreamHolder stream(Make());
  Put(stream.get(), "hello world");
  EXPECT_EQ(Get(stream.get(), 5, short_read()), "");
  ULONGLONG at = 99;
  EXPECT_EQ(Seek(stream.get(), 0, STREAM_SEEK_SET, &at), S_OK);
  EXPECT_EQ(at, 0u);
  EXPECT_EQ(Get(stream.get(), 5, S_OK), "hello");
  EXPECT_EQ(Get(stream.get(), 100, short_read()), " world");
  EXPECT_EQ(Get(stream.get(), 0, S_OK), "");
  EXPECT_EQ(Seek(stream.get(), 6, STREAM_SEEK_SET), S_OK);
  Put(stream.get(), "there");
  EXPECT_EQ(Seek(stream.get(), -11, STREAM_SEEK_CUR, &at), S_OK);
  EXPECT_EQ(at, 0u);
  EXPECT_EQ(Get(stream.get(), 11, S_OK), "hello there");
  EXPECT_EQ(Seek(stream.get(), -5, STREAM_SEEK_END, &at), S_OK);
  EXPECT_EQ(at, 6u);
  EXPECT_EQ(SizeOf(stream.get()), 11u);
}

TEST_P(EveryStream, RefusesWrongCalls) {
  const StreamHolder stream(Make());
  Put(stream.get(), "abc");
  ULONG count = 99;
  EXPECT_EQ(stream->Read(nullptr, 1, &count), STG_E_INVALIDPOINTER);
  EXPECT_EQ(count, 0u);
  count = 99;
  EXPECT_EQ(stream->Write(nullptr, 1, &count), STG_E_INVALIDPOINTER);
  EXPECT_EQ(count, 0u);
  EXPECT_EQ(Seek(stream.get(), -1, STREAM_SEEK_SET), STG_E_SEEKERROR);
  EXPECT_EQ(Seek(stream.get(), -4, STREAM_SEEK_CUR), STG_E_SEEKERROR);
  EXPECT_EQ(Seek(stream.get(), -4, STREAM_SEEK_END), STG_E_SEEKERROR);
  EXPECT_TRUE(FAILED(Seek(stream.get(), 0, 3)));
  ULONGLONG at = 99;
  EXPECT_EQ(Seek(stream.get(), 0, STREAM_SEEK_CUR, &at), S_OK);
  EXPECT_EQ(at, 3u);  // no failure moved it
  STATSTG facts;
  EXPECT_EQ(stream->Stat(nullptr, 0), STG_E_INVALIDPOINTER);
  EXPECT_EQ(stream->Stat(&facts, 2), STG_E_INVALIDFLAG);
  ULARGE_INTEGER zero = {};
  EXPECT_EQ(stream->LockRegion(zero, zero, 0), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(stream->UnlockRegion(zero, zero, 0), STG_E_INVALIDFUNCTION);
  EXPECT_EQ(stream->CopyTo(nullptr, zero, nullptr, nullptr), STG_E_INVALIDPOINTER);
  EXPECT_EQ(stream->Commit(STGC_DEFAULT), S_OK);
  EXPECT_EQ(stream->Revert(), S_OK);
  // The counts may be left out.
  char byte;
  EXPECT_EQ(stream->Write("d", 1, nullptr), S_OK);
  EXPECT_EQ(Seek(stream.get(), 0, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(stream->Read(&byte, 1, nullptr), S_OK);
  EXPECT_EQ(byte, 'a');
}

TEST_P(EveryStream, SizesChangeBothWays) {
  const StreamHolder stream(Make());
  Put(stream.get(), "abcdef");
  EXPECT_EQ(SetSize(stream.get(), 3), S_OK);
  EXPECT_EQ(SizeOf(stream.get()), 3u);
  EXPECT_EQ(Get(stream.get(), 5, short_read()), "");  // the position stayed, beyond the end
  Put(stream.get(), "Z");
  EXPECT_EQ(SizeOf(stream.get()), 7u);
  EXPECT_EQ(SetSize(stream.get(), 9), S_OK);
  EXPECT_EQ(Seek(stream.get(), 0, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(Get(stream.get(), 9, S_OK), std::string("abc\0\0\0Z\0\0", 9));
  EXPECT_EQ(stream->Write("", 0, nullptr), S_OK);
  EXPECT_EQ(SizeOf(stream.get()), 9u);
}

TEST_P(EveryStream, WritesBeyondTheEndFillWithZeros) {
  const StreamHolder stream(Make());
  Put(stream.get(), "a");
  ULONGLONG at = 0;
  EXPECT_EQ(Seek(stream.get(), 3, STREAM_SEEK_CUR, &at), S_OK);
  EXPECT_EQ(at, 4u);
  EXPECT_EQ(SizeOf(stream.get()), 1u);
  Put(stream.get(), "b");
  EXPECT_EQ(Seek(stream.get(), 0, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(Get(stream.get(), 5, S_OK), std::string("a\0\0\0b", 5));
}

TEST_P(EveryStream, PositionsHave64Bits) {
  const StreamHolder stream(Make());
  ULONGLONG at = 0;
  EXPECT_EQ(Seek(stream.get(), 0x123456789ALL, STREAM_SEEK_SET, &at), S_OK);
  EXPECT_EQ(at, 0x123456789Aull);
  EXPECT_EQ(Seek(stream.get(), -0x1000000000LL, STREAM_SEEK_CUR, &at), S_OK);
  EXPECT_EQ(at, 0x23456789Aull);
  EXPECT_EQ(Get(stream.get(), 1, short_read()), "");
}

TEST_P(EveryStream, CopiesFromItsPosition) {
  const StreamHolder stream(Make());
  std::string content;
  for (unsigned i = 0; i < 50000; ++i) content += static_cast<char>(i * 7 >> 3);
  Put(stream.get(), content);
  EXPECT_EQ(Seek(stream.get(), 10, STREAM_SEEK_SET), S_OK);
  const StreamHolder target(NewMemoryStream());
  ULARGE_INTEGER count;
  ULARGE_INTEGER read = {};
  ULARGE_INTEGER written = {};
  count.QuadPart = 40000;
  EXPECT_EQ(stream->CopyTo(target.get(), count, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 40000u);
  EXPECT_EQ(written.QuadPart, 40000u);
  count.QuadPart = ~0ull;  // the rest
  EXPECT_EQ(stream->CopyTo(target.get(), count, &read, &written), S_OK);
  EXPECT_EQ(read.QuadPart, 9990u);
  EXPECT_EQ(written.QuadPart, 9990u);
  EXPECT_EQ(stream->CopyTo(target.get(), count, nullptr, nullptr), S_OK);
  EXPECT_EQ(Seek(target.get(), 0, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(Get(target.get(), 49990, S_OK), content.substr(10));
}

// Takes what is written and notes its sizes.
class SizesTaken final : public IStream {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void**) override { return E_NOINTERFACE; }
  ULONG STDMETHODCALLTYPE AddRef() override { return 2; }
  ULONG STDMETHODCALLTYPE Release() override { return 1; }
  HRESULT STDMETHODCALLTYPE Write(const void*, ULONG count, ULONG* written) override {
    sizes.push_back(count);
    *written = count;
    return S_OK;
  }
#define NOT_USED(name, ...)                              \
  HRESULT STDMETHODCALLTYPE name(__VA_ARGS__) override { \
    return E_NOTIMPL;                                    \
  }
  NOT_USED(Read, void*, ULONG, ULONG*)
  NOT_USED(Seek, LARGE_INTEGER, DWORD, ULARGE_INTEGER*)
  NOT_USED(SetSize, ULARGE_INTEGER)
  NOT_USED(CopyTo, IStream*, ULARGE_INTEGER, ULARGE_INTEGER*, ULARGE_INTEGER*)
  NOT_USED(Commit, DWORD)
  NOT_USED(Revert)
  NOT_USED(LockRegion, ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
  NOT_USED(UnlockRegion, ULARGE_INTEGER, ULARGE_INTEGER, DWORD)
  NOT_USED(Stat, STATSTG*, DWORD)
  NOT_USED(Clone, IStream**)
#undef NOT_USED

  std::vector<ULONG> sizes;
};

TEST_P(EveryStream, CopiesInBlocksOf16Kilobytes) {
  const StreamHolder stream(Make());
  Put(stream.get(), std::string(40000, 'x'));
  EXPECT_EQ(Seek(stream.get(), 0, STREAM_SEEK_SET), S_OK);
  SizesTaken target;
  ULARGE_INTEGER all;
  all.QuadPart = 40000;
  EXPECT_EQ(stream->CopyTo(&target, all, nullptr, nullptr), S_OK);
  EXPECT_EQ(target.sizes, (std::vector<ULONG>{16384, 16384, 7232}));
}

TEST_P(EveryStream, AnswersForItsInterfaces) {
  const StreamHolder stream(Make());
  for (const IID& iid : {IID_IUnknown, IID_ISequentialStream, IID_IStream}) {
    void* out = nullptr;
    EXPECT_EQ(stream->QueryInterface(iid, &out), S_OK);
    EXPECT_EQ(out, stream.get());
    EXPECT_EQ(stream->Release(), 1u);
  }
  void* out = stream.get();
  EXPECT_EQ(stream->QueryInterface(IID_IDispatch, &out), E_NOINTERFACE);
  EXPECT_EQ(out, nullptr);
  EXPECT_EQ(stream->QueryInterface(IID_IStream, nullptr), E_POINTER);
}

TEST(MemoryStream, ClonesShareBytesButNotPositions) {
  IStream* stream = NewMemoryStream();
  Put(stream, "abcdef");
  EXPECT_EQ(Seek(stream, 2, STREAM_SEEK_SET), S_OK);
  IStream* made = nullptr;
  ASSERT_EQ(stream->Clone(&made), S_OK);
  const StreamHolder clone(made);
  EXPECT_EQ(Get(clone.get(), 2, S_OK), "cd");
  EXPECT_EQ(Get(stream, 1, S_OK), "c");
  Put(stream, "XYZW");
  EXPECT_EQ(stream->Release(), 0u);  // the clone keeps the bytes
  EXPECT_EQ(Get(clone.get(), 10, S_OK), "YZW");
  EXPECT_EQ(SizeOf(clone.get()), 7u);
  EXPECT_EQ(clone->Clone(nullptr), STG_E_INVALIDPOINTER);
}

TEST(MemoryStream, CopyToItsOwnCloneEnds) {
  const StreamHolder stream(NewMemoryStream());
  Put(stream.get(), "abc");
  EXPECT_EQ(Seek(stream.get(), 0, STREAM_SEEK_SET), S_OK);
  IStream* made = nullptr;
  ASSERT_EQ(stream->Clone(&made), S_OK);
  const StreamHolder clone(made);
  EXPECT_EQ(Seek(clone.get(), 0, STREAM_SEEK_END), S_OK);
  ULARGE_INTEGER all;
  all.QuadPart = ~0ull;
  EXPECT_EQ(stream->CopyTo(clone.get(), all, nullptr, nullptr), S_OK);
  EXPECT_EQ(SizeOf(stream.get()), 6u);
}

TEST(MemoryStream, HasNoName) {
  const StreamHolder stream(NewMemoryStream());
  Put(stream.get(), "abc");
  STATSTG facts;
  std::memset(&facts, 0x55, sizeof(facts));
  EXPECT_EQ(stream->Stat(&facts, STATFLAG_DEFAULT), S_OK);
  EXPECT_EQ(facts.pwcsName, nullptr);
  EXPECT_EQ(facts.type, STGTY_STREAM);
  EXPECT_EQ(facts.cbSize.QuadPart, 3u);
  EXPECT_EQ(facts.grfMode, STGM_READWRITE);
}

TEST(MemoryStream, ReportsShortMemory) {
  for (LONG allowed = 0; allowed < 2; ++allowed) {
    MiroltaFailAllocationAfter(allowed);
    IStream* stream = nullptr;
    EXPECT_EQ(CreateStreamOnHGlobal(nullptr, TRUE, &stream), E_OUTOFMEMORY) << allowed;
    EXPECT_EQ(stream, nullptr);
  }
  MiroltaFailAllocationAfter(-1);
  const StreamHolder stream(NewMemoryStream());
  Put(stream.get(), "abc");
  ULONG written = 99;
  const std::string large(5000, 'x');
  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(stream->Write(large.data(), 5000, &written), E_OUTOFMEMORY);
  EXPECT_EQ(written, 0u);
  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(SetSize(stream.get(), 5000), E_OUTOFMEMORY);
  MiroltaFailAllocationAfter(0);
  IStream* clone = nullptr;
  EXPECT_EQ(stream->Clone(&clone), E_OUTOFMEMORY);
  EXPECT_EQ(clone, nullptr);
  MiroltaFailAllocationAfter(-1);
  EXPECT_EQ(SetSize(stream.get(), ~0ull), E_OUTOFMEMORY);
  EXPECT_EQ(Seek(stream.get(), 0x7FFFFFFFFFFFFFFFLL, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(stream->Write("ab", 2, &written), E_OUTOFMEMORY);
  EXPECT_EQ(Seek(stream.get(), 1, STREAM_SEEK_CUR), STG_E_SEEKERROR);
  EXPECT_EQ(SizeOf(stream.get()), 3u);
  ULONGLONG at = 0;
  EXPECT_EQ(Seek(stream.get(), 0, STREAM_SEEK_CUR, &at), S_OK);
  EXPECT_EQ(at, 0x7FFFFFFFFFFFFFFFull);
}

TEST(MemoryStream, SizesAboveAPointersDoNotWrap) {
  if (sizeof(size_t) > 4) GTEST_SKIP() << "a size_t of 64 bits counts more bytes than a disk holds";
  const StreamHolder stream(NewMemoryStream());
  ULONG written = 0;
  ASSERT_EQ(stream->Write("abc", 3, &written), S_OK);
  EXPECT_EQ(SetSize(stream.get(), (1ull << 32) + 5), E_OUTOFMEMORY);
  EXPECT_EQ(Seek(stream.get(), 0xFFFFFFFF, STREAM_SEEK_SET), S_OK);
  EXPECT_EQ(stream->Write("ab", 2, &written), E_OUTOFMEMORY);
  EXPECT_EQ(SizeOf(stream.get()), 3u);
}

TEST(MemoryStream, TakesOnlyNoMemoryBlock) {
  IStream* stream = nullptr;
  char block;
  EXPECT_EQ(CreateStreamOnHGlobal(&block, FALSE, &stream), E_INVALIDARG);
  EXPECT_EQ(CreateStreamOnHGlobal(nullptr, FALSE, nullptr), E_INVALIDARG);
}

TEST(MemoryStream, ClonesMayBeUsedByDifferentThreads) {
  const StreamHolder stream(NewMemoryStream());
  IStream* clones[4] = {};
  for (IStream*& clone : clones) ASSERT_EQ(stream->Clone(&clone), S_OK);
  test::AllAtOnce(4, [&](unsigned i) {
    for (unsigned n = 0; n < 200; ++n) {
      EXPECT_EQ(Seek(clones[i], n * 4 + i, STREAM_SEEK_SET), S_OK);
      Put(clones[i], std::string(1, static_cast<char>('a' + i)));
    }
    clones[i]->Release();
  });
  EXPECT_EQ(SizeOf(stream.get()), 800u);
  for (int n = 0; n < 200; ++n) EXPECT_EQ(Get(stream.get(), 4, S_OK), "abcd");
}

TEST(FileStream, ReadsAndWritesTheFile) {
  const TemporaryFolder folder;
  const std::string file = folder.File("data");
  {
    const StreamHolder stream(OpenFileStream(file, STGM_WRITE | STGM_CREATE));
    Put(stream.get(), "content");
    char byte;
    EXPECT_EQ(stream->Read(&byte, 1, nullptr), STG_E_ACCESSDENIED);
  }
  EXPECT_EQ(ReadFile(file), "content");
  {
    const StreamHolder stream(OpenFileStream(file, STGM_READ));
    EXPECT_EQ(Get(stream.get(), 100, S_FALSE), "content");
    EXPECT_EQ(stream->Write("x", 1, nullptr), STG_E_ACCESSDENIED);
    EXPECT_EQ(SetSize(stream.get(), 1), STG_E_ACCESSDENIED);
    IStream* clone = reinterpret_cast<IStream*>(0x10);
    EXPECT_EQ(stream->Clone(&clone), E_NOTIMPL);
    EXPECT_EQ(clone, nullptr);
  }
  EXPECT_EQ(ReadFile(file), "content");
  { const StreamHolder stream(OpenFileStream(file, STGM_READWRITE | STGM_CREATE)); }
  EXPECT_EQ(ReadFile(file), "");  // made anew
}

TEST(FileStream, CommitsWhatIsOnADisk) {
  const TemporaryFolder folder;
  WriteFile(folder.File("data"), "12345");
  EXPECT_EQ(StreamHolder(OpenFileStream(folder.File("data"), STGM_READ))->Commit(0), S_OK);
  EXPECT_EQ(StreamHolder(OpenFileStream(folder.File("data"), STGM_READWRITE))->Commit(0), S_OK);
  EXPECT_EQ(StreamHolder(OpenFileStream("/dev/null", STGM_WRITE))->Commit(0), S_OK);
}

TEST(FileStream, HasNameSizeAndTimes) {
  const TemporaryFolder folder;
  const std::string file = folder.File("data");
  WriteFile(file, "12345");
  const StreamHolder stream(OpenFileStream(file, STGM_READ));
  STATSTG facts;
  ASSERT_EQ(stream->Stat(&facts, STATFLAG_DEFAULT), S_OK);
  EXPECT_EQ(Narrow(facts.pwcsName), file);
  CoTaskMemFree(facts.pwcsName);
  EXPECT_EQ(facts.cbSize.QuadPart, 5u);
  EXPECT_EQ(facts.grfMode, STGM_READ);
  struct stat known = {};
  ASSERT_EQ(stat(file.c_str(), &known), 0);
  const uint64_t ticks =
      static_cast<uint64_t>(facts.mtime.dwHighDateTime) << 32 | facts.mtime.dwLowDateTime;
  EXPECT_EQ(ticks / 10000000u - 11644473600u, static_cast<uint64_t>(known.st_mtim.tv_sec));
  MiroltaFailAllocationAfter(0);
  EXPECT_EQ(stream->Stat(&facts, STATFLAG_DEFAULT), E_OUTOFMEMORY);
  MiroltaFailAllocationAfter(-1);
}

// Blocks of the allocator have room to spare for some lengths.
TEST(FileStream, NamesOfEachLengthFitTheirMemory) {
  const TemporaryFolder folder;
  for (size_t length = 1; length <= 16; ++length) {
    const std::string file = folder.File(std::string(length, 'n'));
    WriteFile(file, "");
    const StreamHolder stream(OpenFileStream(file, STGM_READ));
    STATSTG facts;
    ASSERT_EQ(stream->Stat(&facts, STATFLAG_DEFAULT), S_OK);
    EXPECT_EQ(Narrow(facts.pwcsName), file);
    EXPECT_GE(malloc_usable_size(facts.pwcsName), (file.size() + 1) * sizeof(WCHAR)) << length;
    CoTaskMemFree(facts.pwcsName);
  }
}

TEST(FileStream, SaysWhyItCannotOpen) {
  const TemporaryFolder folder;
  EXPECT_EQ(StatusOfOpening(folder.File("none"), STGM_READ), STG_E_FILENOTFOUND);
  EXPECT_EQ(StatusOfOpening(folder.File("none"), STGM_READWRITE), STG_E_FILENOTFOUND);
  EXPECT_EQ(StatusOfOpening(folder.File("no/file"), STGM_WRITE | STGM_CREATE), STG_E_FILENOTFOUND);
  EXPECT_EQ(StatusOfOpening(folder.File(""), STGM_READ), STG_E_ACCESSDENIED);  // a folder
  EXPECT_EQ(StatusOfOpening(folder.File("f"), 3), STG_E_INVALIDFLAG);
  EXPECT_EQ(StatusOfOpening(folder.File("f"), 0x10000), STG_E_INVALIDFLAG);
  EXPECT_EQ(StatusOfOpening(folder.File("f"), STGM_WRITE | 0x10, TRUE), S_OK);
  EXPECT_EQ(StatusOfOpening(folder.File("f"), STGM_WRITE, TRUE), STG_E_FILEALREADYEXISTS);
  EXPECT_EQ(StatusOfOpening(folder.File("f") + "/below", STGM_READ), STG_E_FILENOTFOUND);
  IStream* stream = nullptr;
  EXPECT_EQ(SHCreateStreamOnFileEx(nullptr, 0, 0, FALSE, nullptr, &stream), STG_E_INVALIDPARAMETER);
  EXPECT_EQ(SHCreateStreamOnFileEx(u"x", 0, 0, FALSE, nullptr, nullptr), STG_E_INVALIDPOINTER);
}

TEST(FileStream, SaysThatTooManyFilesAreOpen) {
  const TemporaryFolder folder;
  ASSERT_EQ(StatusOfOpening(folder.File("f"), STGM_WRITE, TRUE), S_OK);
  rlimit limit = {};
  ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &limit), 0);
  const rlimit none = {0, limit.rlim_max};
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &none), 0);
  const HRESULT status = StatusOfOpening(folder.File("f"), STGM_READ);
  ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &limit), 0);
  EXPECT_EQ(status, STG_E_TOOMANYOPENFILES);
}

TEST(FileStream, AccessMayBeDenied) {
  // A running program cannot be opened for writing, even by root. The thread's is the emulator in an emulated
  // build, whose own program is a file like others.
  EXPECT_EQ(StatusOfOpening("/proc/thread-self/exe", STGM_WRITE), STG_E_ACCESSDENIED);
  if (geteuid() != 0) {
    const TemporaryFolder folder;
    WriteFile(folder.File("f"), "x");
    chmod(folder.File("f").c_str(), 0);
    EXPECT_EQ(StatusOfOpening(folder.File("f"), STGM_READ), STG_E_ACCESSDENIED);
  }
}

TEST(FileStream, AFullDiskIsReported) {
  const StreamHolder stream(OpenFileStream("/dev/full", STGM_WRITE));
  ULONG written = 99;
  EXPECT_EQ(stream->Write("x", 1, &written), STG_E_MEDIUMFULL);
  EXPECT_EQ(written, 0u);
  EXPECT_EQ(SetSize(stream.get(), ~0ull), STG_E_MEDIUMFULL);
  const StreamHolder source(NewMemoryStream());
  Put(source.get(), "abc");
  EXPECT_EQ(Seek(source.get(), 0, STREAM_SEEK_SET), S_OK);
  ULARGE_INTEGER count;
  count.QuadPart = 3;
  ULARGE_INTEGER read = {};
  ULARGE_INTEGER copied = {};
  EXPECT_EQ(source->CopyTo(stream.get(), count, &read, &copied), STG_E_MEDIUMFULL);
  EXPECT_EQ(read.QuadPart, 3u);
  EXPECT_EQ(copied.QuadPart, 0u);
}

TEST(FileStream, ReportsShortMemory) {
  const TemporaryFolder folder;
  const std::string file = folder.File("data");
  WriteFile(file, "12345");
  EXPECT_GT(test::FailEachAllocation([&] { return StatusOfOpening(file, STGM_READ); }), 2);
}

TEST(FileStream, NamesBeyondAsciiAndOddBytes) {
  const TemporaryFolder folder;
  const std::string file = folder.File("\xC3\xBC\xF0\x9F\x98\x80");
  const std::u16string name = Wide(folder.File("")) + u"\u00FC\U0001F600";
  IStream* stream = nullptr;
  ASSERT_EQ(SHCreateStreamOnFileEx(name.c_str(), STGM_WRITE, 0, TRUE, nullptr, &stream), S_OK);
  stream->Release();
  EXPECT_TRUE(std::filesystem::exists(file));
  // A byte that is not UTF-8 becomes a lone surrogate.
  const std::u16string odd = Wide(folder.File("")) + u"\xDCFF";
  ASSERT_EQ(SHCreateStreamOnFileEx(odd.c_str(), STGM_WRITE, 0, TRUE, nullptr, &stream), S_OK);
  stream->Release();
  EXPECT_TRUE(std::filesystem::exists(folder.File("\xFF")));
}

TEST(FileStream, PipesCanBeReadButNotMovedIn) {
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  ASSERT_EQ(write(ends[1], "abc", 3), 3);
  close(ends[1]);
  {
    const StreamHolder stream(
        OpenFileStream("/proc/self/fd/" + std::to_string(ends[0]), STGM_READ));
    EXPECT_EQ(Seek(stream.get(), 0, STREAM_SEEK_CUR), STG_E_SEEKERROR);
    EXPECT_EQ(Get(stream.get(), 2, S_OK), "ab");
    EXPECT_EQ(Get(stream.get(), 2, S_FALSE), "c");
  }
  close(ends[0]);
}

}  // namespace
}  // namespace mirolta
