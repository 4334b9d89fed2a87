#include "registry_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "registry_text.h"

namespace mirolta {
namespace {

constexpr LONG kErrorDiskFull = 112;
constexpr LONG kErrorCannotRead = 1012;
constexpr mode_t kFolderMode = 0755;
constexpr mode_t kFileMode = 0644;

LONG ErrorNumber(int error, LONG otherwise) {
  switch (error) {
    case EACCES:
    case EPERM:
    case EROFS:
      return ERROR_ACCESS_DENIED;
    case ENOMEM:
      return ERROR_OUTOFMEMORY;
    case ENOSPC:
    case EDQUOT:
      return kErrorDiskFull;
    default:
      return otherwise;
  }
}

FileState StateFrom(const struct stat& facts) {
  return {true, facts.st_dev, facts.st_ino, facts.st_size, facts.st_mtim, facts.st_ctim};
}

// The part of a variable that counts; empty ones and relative folders do not.
const char* Variable(const char* name, bool absolute) {
  const char* value = std::getenv(name);
  if (value == nullptr || *value == 0 || (absolute && *value != '/')) return nullptr;
  return value;
}

bool Join(RuntimeArray<char>* out, const char* first, const char* second) {
  return out->Append(first, std::strlen(first)) && out->Append(second, std::strlen(second) + 1);
}

// An open file that closes itself.
struct OpenedFile {
  explicit OpenedFile(int opened) : number(opened) {}
  OpenedFile(const OpenedFile&) = delete;
  OpenedFile& operator=(const OpenedFile&) = delete;
  ~OpenedFile() {
    if (number >= 0) close(number);
  }
  int number;
};

LONG ReadAll(int file, RuntimeArray<char>* text) {
  char block[16384];
  for (;;) {
    const ssize_t got = read(file, block, sizeof(block));
    if (got == 0) return ERROR_SUCCESS;
    if (got < 0 && errno != EINTR) return ErrorNumber(errno, kErrorCannotRead);
    if (got > 0 && !text->Append(block, static_cast<size_t>(got))) return ERROR_OUTOFMEMORY;
  }
}

LONG WriteAll(int file, const char* bytes, size_t size) {
  while (size != 0) {
    const ssize_t put = write(file, bytes, size);
    if (put < 0 && errno != EINTR) return ErrorNumber(errno, ERROR_CANTWRITE);
    if (put > 0) {
      bytes += put;
      size -= static_cast<size_t>(put);
    }
  }
  return ERROR_SUCCESS;
}

// Writes `text` to the new file; the caller removes it after a failure.
LONG WriteNew(const char* file, mode_t mode, const RuntimeArray<char>& text, FileState* state) {
  const OpenedFile opened(open(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, mode));
  if (opened.number < 0) return ErrorNumber(errno, ERROR_CANTWRITE);
  const LONG error = WriteAll(opened.number, text.data(), text.size());
  if (error != ERROR_SUCCESS) return error;
  struct stat facts = {};
  if (fsync(opened.number) != 0 || fstat(opened.number, &facts) != 0) {
    return ErrorNumber(errno, ERROR_CANTWRITE);
  }
  *state = StateFrom(facts);
  return ERROR_SUCCESS;
}

// A link stays a link: what it leads to is locked and replaced. `place` has PATH_MAX bytes.
const char* PlaceOf(const char* file, char* place) {
  return realpath(file, place) != nullptr ? place : file;
}

// Makes the folders that `file` lies in.
LONG MakeFolders(const char* file) {
  RuntimeArray<char> folder;
  for (const char* slash = std::strchr(file + 1, '/'); slash != nullptr;
       slash = std::strchr(slash + 1, '/')) {
    folder.Shorten(0);
    if (!folder.Append(file, static_cast<size_t>(slash - file)) || !folder.Append('\0')) {
      return ERROR_OUTOFMEMORY;
    }
    struct stat facts = {};
    if (mkdir(folder.data(), kFolderMode) != 0 && stat(folder.data(), &facts) != 0) {
      return ErrorNumber(errno, ERROR_CANTWRITE);
    }
  }
  return ERROR_SUCCESS;
}

}  // namespace

bool operator==(const FileState& a, const FileState& b) {
  if (!a.exists || !b.exists) return a.exists == b.exists;
  return a.device == b.device && a.inode == b.inode && a.size == b.size &&
         a.modified.tv_sec == b.modified.tv_sec && a.modified.tv_nsec == b.modified.tv_nsec &&
         a.changed.tv_sec == b.changed.tv_sec && a.changed.tv_nsec == b.changed.tv_nsec;
}

LONG NameRegistryFile(RuntimeArray<char>* file) {
  bool named = false;
  if (const char* given = Variable("MIROLTA_REGISTRY", false)) {
    named = Join(file, given, "");
  } else if (const char* data = Variable("XDG_DATA_HOME", true)) {
    named = Join(file, data, "/mirolta/registry.reg");
  } else if (const char* home = Variable("HOME", true)) {
    named = Join(file, home, "/.local/share/mirolta/registry.reg");
  } else {
    return ERROR_FILE_NOT_FOUND;
  }
  return named ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
}

LONG StateOf(const char* file, FileState* state) {
  struct stat facts = {};
  *state = {};
  if (stat(file, &facts) == 0) {
    *state = StateFrom(facts);
    return ERROR_SUCCESS;
  }
  return errno == ENOENT || errno == ENOTDIR ? ERROR_SUCCESS : ErrorNumber(errno, kErrorCannotRead);
}

LONG LoadRegistryFile(const char* file, RegistryKey* root, FileState* state, DWORD* bad_line) {
  *state = {};
  *bad_line = 0;
  const OpenedFile opened(open(file, O_RDONLY | O_CLOEXEC));
  if (opened.number < 0) {
    return errno == ENOENT || errno == ENOTDIR ? ERROR_SUCCESS
                                               : ErrorNumber(errno, kErrorCannotRead);
  }
  struct stat facts = {};
  if (fstat(opened.number, &facts) != 0) return ErrorNumber(errno, kErrorCannotRead);
  *state = StateFrom(facts);
  RuntimeArray<char> text;
  const LONG error = ReadAll(opened.number, &text);
  if (error != ERROR_SUCCESS) return error;
  return ParseRegistry(text.data(), text.size(), root, bad_line);
}

LONG StoreRegistryFile(const char* file, const RegistryKey& root, FileState* state) {
  RuntimeArray<char> text;
  RuntimeArray<char> fresh;
  char place[PATH_MAX];
  file = PlaceOf(file, place);
  if (!FormatRegistry(root, &text) || !Join(&fresh, file, ".new")) return ERROR_OUTOFMEMORY;
  struct stat old = {};
  const bool replaces = stat(file, &old) == 0;
  LONG error = WriteNew(fresh.data(), replaces ? old.st_mode & 0777 : kFileMode, text, state);
  if (error == ERROR_SUCCESS && rename(fresh.data(), file) != 0) {
    error = ErrorNumber(errno, ERROR_CANTWRITE);
  }
  if (error != ERROR_SUCCESS) {
    unlink(fresh.data());
    return error;
  }
  // Renaming may count as a change of the file.
  return StateOf(file, state);
}

LONG RegistryLock::Enter(const char* file) {
  char place[PATH_MAX];
  file = PlaceOf(file, place);
  RuntimeArray<char> name;
  if (!Join(&name, file, ".lock")) return ERROR_OUTOFMEMORY;
  constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC;
  lock_file_ = open(name.data(), kFlags, kFileMode);
  if (lock_file_ < 0 && errno == ENOENT) {
    const LONG error = MakeFolders(file);
    if (error != ERROR_SUCCESS) return error;
    lock_file_ = open(name.data(), kFlags, kFileMode);
  }
  if (lock_file_ < 0) return ErrorNumber(errno, ERROR_CANTWRITE);
  while (flock(lock_file_, LOCK_EX) != 0) {
    if (errno == EINTR) continue;
    const LONG error = ErrorNumber(errno, ERROR_CANTWRITE);
    Leave();
    return error;
  }
  return ERROR_SUCCESS;
}

void RegistryLock::Leave() {
  if (lock_file_ >= 0) close(lock_file_);
  lock_file_ = -1;
}

}  // namespace mirolta
