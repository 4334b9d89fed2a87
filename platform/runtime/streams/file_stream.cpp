#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "charsets/escaped_utf8.h"
#include "mirolta/bool.h"
#include "portable/repeated_call.h"
#include "streams/stream_base.h"
#include "texts/wide_text.h"

namespace mirolta::runtime {
namespace {

constexpr DWORD kAccess = 0x3;
constexpr DWORD kSharing = 0x70;  // accepted, without effect
constexpr size_t kLargestTransfer = 0x40000000;

struct StatusRow {
  int error;
  HRESULT status;
};
constexpr StatusRow kStatuses[] = {
    {ENOENT, STG_E_FILENOTFOUND},      {ENOTDIR, STG_E_FILENOTFOUND},
    {EACCES, STG_E_ACCESSDENIED},      {EPERM, STG_E_ACCESSDENIED},
    {EROFS, STG_E_ACCESSDENIED},       {EISDIR, STG_E_ACCESSDENIED},
    {ETXTBSY, STG_E_ACCESSDENIED},     {EBADF, STG_E_ACCESSDENIED},  // the wrong direction
    {EEXIST, STG_E_FILEALREADYEXISTS}, {ENOSPC, STG_E_MEDIUMFULL},
    {EDQUOT, STG_E_MEDIUMFULL},        {EFBIG, STG_E_MEDIUMFULL},
    {ENOMEM, E_OUTOFMEMORY},           {EMFILE, STG_E_TOOMANYOPENFILES},
    {ENFILE, STG_E_TOOMANYOPENFILES},
};

// `fault` is the status of a fault of the disk in that direction, `otherwise` of errors without a status of their own.
HRESULT StatusOf(int error, HRESULT fault, HRESULT otherwise = STG_E_INVALIDFUNCTION) {
  if (error == EIO) return fault;
  for (const StatusRow& row : kStatuses) {
    if (row.error == error) return row.status;
  }
  return otherwise;
}

FILETIME FileTime(const timespec& time) {
  // Units of 100 ns since 1601.
  const uint64_t ticks = (static_cast<uint64_t>(time.tv_sec) + 11644473600u) * 10000000u +
                         static_cast<uint64_t>(time.tv_nsec) / 100u;
  return {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
}

// A stream over an open file, at the file's own position. Pipes and devices cannot be positioned. A
// read that reaches the end returns S_FALSE.
class FileStream final : public StreamBase {
 public:
  FileStream(int file, DWORD mode, RuntimeArray<WCHAR>&& name)
      : file_(file), mode_(mode), name_(std::move(name)) {}

  HRESULT STDMETHODCALLTYPE Read(void* bytes, ULONG count, ULONG* read_count) override {
    const auto read_part = [&](ULONG done, size_t size) {
      return read(file_, static_cast<BYTE*>(bytes) + done, size);
    };
    return Transfer(bytes, count, read_count, S_FALSE, STG_E_READFAULT, read_part);
  }

  // After a failure *written counts the bytes written before it.
  HRESULT STDMETHODCALLTYPE Write(const void* bytes, ULONG count, ULONG* written) override {
    const auto write_part = [&](ULONG done, size_t size) {
      return write(file_, static_cast<const BYTE*>(bytes) + done, size);
    };
    return Transfer(bytes, count, written, STG_E_WRITEFAULT, STG_E_WRITEFAULT, write_part);
  }

  HRESULT STDMETHODCALLTYPE Seek(LARGE_INTEGER move, DWORD origin,
                                 ULARGE_INTEGER* position) override {
    constexpr int kOrigins[] = {SEEK_SET, SEEK_CUR, SEEK_END};
    if (origin > STREAM_SEEK_END) return STG_E_INVALIDFUNCTION;
    const off_t to = lseek(file_, move.QuadPart, kOrigins[origin]);
    if (to < 0) return STG_E_SEEKERROR;
    if (position != nullptr) position->QuadPart = static_cast<ULONGLONG>(to);
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE SetSize(ULARGE_INTEGER size) override {
    if ((mode_ & kAccess) == STGM_READ) return STG_E_ACCESSDENIED;
    if (size.QuadPart >> 63 != 0) return STG_E_MEDIUMFULL;
    const auto length = static_cast<off_t>(size.QuadPart);
    const int cut = Repeated([&] { return ftruncate(file_, length); });
    return cut == 0 ? S_OK : StatusOf(errno, STG_E_WRITEFAULT);
  }

  // Syncs the file; pipes and devices cannot be synced.
  HRESULT STDMETHODCALLTYPE Commit(DWORD) override {
    if ((mode_ & kAccess) == STGM_READ) return S_OK;
    if (Repeated([&] { return fsync(file_); }) == 0 || errno == EINVAL || errno == EROFS)
      return S_OK;
    return StatusOf(errno, STG_E_WRITEFAULT, STG_E_WRITEFAULT);
  }

  HRESULT STDMETHODCALLTYPE Stat(STATSTG* statistics, DWORD flags) override {
    const HRESULT status = BeginStat(statistics, flags);
    if (FAILED(status)) return status;
    struct stat facts = {};
    if (fstat(file_, &facts) != 0) return STG_E_READFAULT;
    if (flags == STATFLAG_DEFAULT) {
      const size_t bytes = (name_.Size() + 1) * sizeof(WCHAR);
      statistics->pwcsName = static_cast<LPOLESTR>(CoTaskMemAlloc(bytes));
      if (statistics->pwcsName == nullptr) return E_OUTOFMEMORY;
      std::memcpy(statistics->pwcsName, name_.Data(), bytes - sizeof(WCHAR));
      statistics->pwcsName[name_.Size()] = 0;
    }
    statistics->type = STGTY_STREAM;
    statistics->cbSize.QuadPart = static_cast<ULONGLONG>(facts.st_size);
    statistics->mtime = FileTime(facts.st_mtim);
    statistics->ctime = FileTime(facts.st_ctim);
    statistics->atime = FileTime(facts.st_atim);
    statistics->grfMode = mode_;
    return S_OK;
  }

  HRESULT STDMETHODCALLTYPE Clone(IStream** out) override {
    if (out != nullptr) *out = nullptr;
    return E_NOTIMPL;  // as the platform's file stream
  }

 private:
  ~FileStream() { close(file_); }

  // Calls part(done, size) until `count` bytes are transferred. `at_end` is the status when no byte
  // is, `fault` that of an error without a status of its own.
  template <typename Part>
  static HRESULT Transfer(const void* bytes, ULONG count, ULONG* transferred, HRESULT at_end,
                          HRESULT fault, Part part) {
    ULONG done = 0;
    HRESULT status = bytes == nullptr ? STG_E_INVALIDPOINTER : S_OK;
    while (status == S_OK && done < count) {
      const size_t size = std::min<size_t>(count - done, kLargestTransfer);
      const ssize_t moved = Repeated([&] { return part(done, size); });
      if (moved > 0) {
        done += static_cast<ULONG>(moved);
      } else if (moved == 0) {
        status = at_end;
      } else {
        status = StatusOf(errno, fault, fault);
      }
    }
    if (transferred != nullptr) *transferred = done;
    return status;
  }

  void Destroy() override {
    this->~FileStream();
    FreeRuntime(this);
  }
  ULONGLONG CopyLimit() override { return ~ULONGLONG{0}; }

  const int file_;
  const DWORD mode_;
  const RuntimeArray<WCHAR> name_;
};

int OpenFlags(DWORD mode, BOOL create) {
  constexpr int kAccessFlags[] = {O_RDONLY, O_WRONLY, O_RDWR};
  int flags = kAccessFlags[mode & kAccess] | O_CLOEXEC | O_NOCTTY;
  if ((mode & STGM_CREATE) != 0) {
    flags |= O_CREAT | O_TRUNC;
  } else if (create) {
    flags |= O_CREAT | O_EXCL;
  }
  return flags;
}

// Closes a file that cannot be used; one that was made for it is removed.
void CloseFailed(int file, const char* path, int flags) {
  if ((flags & O_EXCL) != 0) unlink(path);
  close(file);
}

HRESULT OpenFile(const char* path, int flags, int* file) {
  const HRESULT fault = (flags & O_ACCMODE) == O_RDONLY ? STG_E_READFAULT : STG_E_WRITEFAULT;
  *file = Repeated([&] { return open(path, flags, 0666); });
  if (*file < 0) return StatusOf(errno, fault);
  struct stat facts = {};
  HRESULT status = S_OK;
  if (fstat(*file, &facts) != 0) {
    status = StatusOf(errno, fault);
  } else if (S_ISDIR(facts.st_mode)) {
    status = STG_E_ACCESSDENIED;
  }
  if (FAILED(status)) CloseFailed(*file, path, flags);
  return status;
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" HRESULT SHCreateStreamOnFileEx(LPCWSTR file, DWORD mode, DWORD, BOOL create,
                                          IStream* reserved, IStream** out) {
  if (out == nullptr) return STG_E_INVALIDPOINTER;
  *out = nullptr;
  if (file == nullptr || reserved != nullptr) return STG_E_INVALIDPARAMETER;
  if ((mode & kAccess) == kAccess || (mode & ~(kAccess | kSharing | STGM_CREATE)) != 0) {
    return STG_E_INVALIDFLAG;
  }
  RuntimeArray<char> path;
  RuntimeArray<WCHAR> name;
  if (!AppendUtf8FromWide(file, &path) || !path.Append('\0') ||
      !name.Append(file, WideLength(file))) {
    return E_OUTOFMEMORY;
  }
  int opened = -1;
  const int flags = OpenFlags(mode, create);
  const HRESULT status = OpenFile(path.Data(), flags, &opened);
  if (FAILED(status)) return status;
  *out = NewRuntime<FileStream>(opened, mode, std::move(name));
  if (*out == nullptr) {
    CloseFailed(opened, path.Data(), flags);
    return E_OUTOFMEMORY;
  }
  return S_OK;
}
