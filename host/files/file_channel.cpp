#include "files/file_channel.h"

#include <errno.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "engine/file_statuses.h"
#include "files/file_facts.h"
#include "files/file_stream.h"
#include "portable/repeated_call.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

class Descriptor {
 public:
  Descriptor() = default;
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (file_ > kNone) close(file_);
  }

  int Get() const { return file_; }
  // Opens a file that is no folder.
  HRESULT Open(const std::string& path, int flags, struct stat* facts) {
    constexpr mode_t kNewFile = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    const int all_flags = flags | O_CLOEXEC | O_NOCTTY;
    file_ = Repeated([&] { return open(path.c_str(), all_flags, kNewFile); });
    if (file_ < 0) return errno == ENOENT ? MissingStatus(path) : FileStatusOf(errno);
    if (fstat(file_, facts) != 0) return FileStatusOf(errno);
    return S_ISDIR(facts->st_mode) ? kPermissionDenied : S_OK;
  }

 private:
  static constexpr int kNone = -1;
  int file_ = kNone;
};

class ReadingChannel final : public ByteChannel {
 public:
  HRESULT Open(const std::string& path) {
    struct stat facts = {};
    return file_.Open(path, O_RDONLY, &facts);
  }
  HRESULT Read(char* bytes, size_t size, size_t* got) override {
    return ReadDescriptor(file_.Get(), bytes, size, got);
  }
  bool IsTerminal() const override { return isatty(file_.Get()) != 0; }

 private:
  Descriptor file_;
};

class AppendingChannel final : public ByteChannel {
 public:
  HRESULT Open(const std::string& path, bool creates, bool* is_empty) {
    struct stat facts = {};
    const HRESULT status = file_.Open(path, O_WRONLY | O_APPEND | (creates ? O_CREAT : 0), &facts);
    *is_empty = facts.st_size == 0;
    return status;
  }
  HRESULT Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t count =
          Repeated([&] { return write(file_.Get(), bytes.data(), bytes.size()); });
      if (count < 0) return FileStatusOf(errno);
      bytes.remove_prefix(static_cast<size_t>(count));
    }
    return S_OK;
  }
  bool IsTerminal() const override { return isatty(file_.Get()) != 0; }

 private:
  Descriptor file_;
};

class NewFileChannel final : public ByteChannel {
 public:
  ~NewFileChannel() override {
    if (OutputFile* output = is_kept_ || !stream_ ? nullptr : OutputOf(stream_.Get())) {
      output->Discard();
    }
  }
  HRESULT Open(const std::string& path, bool must_be_new) {
    const FileMode mode = {STGM_WRITE, true, must_be_new};
    return OpenFileStream(EngineFromUnits(UnitsFromSystem(path)), mode, false, &stream_);
  }
  void Keep() override { is_kept_ = true; }
  HRESULT Write(std::string_view bytes) override {
    while (!bytes.empty()) {
      constexpr size_t kMost = size_t{1} << 30;
      const auto size = static_cast<ULONG>(bytes.size() < kMost ? bytes.size() : kMost);
      ULONG done = 0;
      const HRESULT status = stream_->Write(bytes.data(), size, &done);
      if (FAILED(status)) return FileStatusOfStream(status);
      if (done == 0) return kDiskFull;
      bytes.remove_prefix(done);
    }
    return S_OK;
  }
  HRESULT Close() override {
    OutputFile* output = OutputOf(stream_.Get());
    return output == nullptr ? S_OK : FileStatusOfStream(output->Finish());
  }

 private:
  OwnedReference<IStream> stream_;
  bool is_kept_ = false;
};

}  // namespace

HRESULT OpenForReading(const std::string& path, std::unique_ptr<ByteChannel>* channel) {
  auto made = std::make_unique<ReadingChannel>();
  const HRESULT status = made->Open(path);
  if (SUCCEEDED(status)) *channel = std::move(made);
  return status;
}

HRESULT OpenForAppending(const std::string& path, bool creates, bool* is_empty,
                         std::unique_ptr<ByteChannel>* channel) {
  auto made = std::make_unique<AppendingChannel>();
  const HRESULT status = made->Open(path, creates, is_empty);
  if (SUCCEEDED(status)) *channel = std::move(made);
  return status;
}

HRESULT OpenNewFile(const std::string& path, bool must_be_new,
                    std::unique_ptr<ByteChannel>* channel) {
  auto made = std::make_unique<NewFileChannel>();
  const HRESULT opened = made->Open(path, must_be_new);
  if (SUCCEEDED(opened)) {
    *channel = std::move(made);
    return S_OK;
  }
  const HRESULT status = FileStatusOfStream(opened);
  return status == kFileNotFound ? kPathNotFound : status;
}

}  // namespace mirolta::host
