#include "registry/registry_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>

#include "portable/repeated_call.h"
#include "registry/registry_text.h"
#include "system/file_name.h"
#include "system/file_trust.h"
#include "system/opened_file.h"

namespace mirolta::runtime {
namespace {

constexpr mode_t kFileMode = 0644;

FileState StateFrom(const struct stat& facts) {
  return {true, facts.st_dev, facts.st_ino, facts.st_size, facts.st_mtim, facts.st_ctim};
}

LONG ReadAll(int file, RuntimeArray<char>* text) {
  char block[16384];
  for (;;) {
    const ssize_t got = Repeated([&] { return read(file, block, sizeof(block)); });
    if (got == 0) return ERROR_SUCCESS;
    if (got < 0) return ErrorOfErrno(errno, ERROR_CANTREAD);
    if (!text->Append(block, static_cast<size_t>(got))) return ERROR_OUTOFMEMORY;
  }
}

LONG WriteAll(int file, const char* bytes, size_t size) {
  while (size != 0) {
    const ssize_t put = Repeated([&] { return write(file, bytes, size); });
    if (put < 0) return ErrorOfErrno(errno, ERROR_CANTWRITE);
    bytes += put;
    size -= static_cast<size_t>(put);
  }
  return ERROR_SUCCESS;
}

// The opened folder of a file and the file's name in it. Without a folder errno says why.
struct FilePlace {
  explicit FilePlace(const char* file) : name(std::strrchr(file, '/')) {
    RuntimeArray<char> path;
    if (name == nullptr) {
      name = file;
      folder.number = Repeated([] { return open(".", kFlags); });
      return;
    }
    const size_t length = name == file ? 1 : static_cast<size_t>(name - file);
    ++name;
    if (path.Append(file, length) && path.Append('\0')) {
      folder.number = Repeated([&] { return open(path.Data(), kFlags); });
    } else {
      errno = ENOMEM;
    }
  }

  static constexpr int kFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
  OpenedFile folder{-1};
  const char* name;
};

// Creates a file for writing; -1 with errno on failure. A file left by a killed writer is removed
// first; links are not followed.
int CreateNew(const FilePlace& place, const char* fresh) {
  const int folder = place.folder.number;
  unlinkat(folder, fresh, 0);
  constexpr int kFlags = O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW;
  return Repeated([&] { return openat(folder, fresh, kFlags, kFileMode); });
}

LONG WriteToDisk(int file, const RuntimeArray<char>& text) {
  const LONG error = WriteAll(file, text.Data(), text.Size());
  if (error != ERROR_SUCCESS) return error;
  const int synced = Repeated([&] { return fsync(file); });
  return synced == 0 ? ERROR_SUCCESS : ErrorOfErrno(errno, ERROR_CANTWRITE);
}

}  // namespace

bool operator==(const FileState& a, const FileState& b) {
  if (!a.exists || !b.exists) return a.exists == b.exists;
  return a.device == b.device && a.inode == b.inode && a.size == b.size &&
         a.modified.tv_sec == b.modified.tv_sec && a.modified.tv_nsec == b.modified.tv_nsec &&
         a.changed.tv_sec == b.changed.tv_sec && a.changed.tv_nsec == b.changed.tv_nsec;
}

LONG StateOf(const char* file, FileState* state) {
  struct stat facts = {};
  *state = {};
  if (stat(file, &facts) == 0) {
    *state = StateFrom(facts);
    return ERROR_SUCCESS;
  }
  return errno == ENOENT || errno == ENOTDIR ? ERROR_SUCCESS : ErrorOfErrno(errno, ERROR_CANTREAD);
}

LONG LoadRegistryFile(const char* file, RegistryKey* root, FileState* state, DWORD* bad_line) {
  *state = {};
  *bad_line = 0;
  struct stat facts = {};
  // stat comes first: opening a device may have effects, and opening a pipe blocks.
  const bool exists = stat(file, &facts) == 0;
  if (exists && !S_ISREG(facts.st_mode)) return ERROR_CANTREAD;
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  const OpenedFile opened(exists ? Repeated([&] { return open(file, kFlags); }) : -1);
  if (opened.number < 0) {
    return errno == ENOENT || errno == ENOTDIR ? ERROR_SUCCESS
                                               : ErrorOfErrno(errno, ERROR_CANTREAD);
  }
  if (fstat(opened.number, &facts) != 0) return ErrorOfErrno(errno, ERROR_CANTREAD);
  if (!S_ISREG(facts.st_mode)) return ERROR_CANTREAD;
  if (!IsTrusted(facts)) return ERROR_ACCESS_DENIED;
  *state = StateFrom(facts);
  RuntimeArray<char> text;
  const LONG error = ReadAll(opened.number, &text);
  if (error != ERROR_SUCCESS) return error;
  return ParseRegistry(text.Data(), text.Size(), root, bad_line);
}

LONG StoreRegistryFile(const char* file, const RegistryKey& root, bool for_all, FileState* state) {
  RuntimeArray<char> text;
  RuntimeArray<char> target;
  RuntimeArray<char> fresh;
  LONG error = FollowLinks(file, &target);
  if (error != ERROR_SUCCESS) return error;
  const FilePlace place(target.Data());
  const int folder = place.folder.number;
  if (folder < 0) return ErrorOfErrno(errno, ERROR_CANTWRITE);
  if (!FormatRegistry(root, &text) || !JoinFileName(&fresh, place.name, ".new"))
    return ERROR_OUTOFMEMORY;
  struct stat old = {};
  const bool replaces = fstatat(folder, place.name, &old, AT_SYMLINK_NOFOLLOW) == 0;
  // A file that cannot be looked at must not get another mode.
  if (!replaces && errno != ENOENT) return ErrorOfErrno(errno, ERROR_CANTWRITE);
  const OpenedFile opened(CreateNew(place, fresh.Data()));
  if (opened.number < 0) return ErrorOfErrno(errno, ERROR_CANTWRITE);
  error = WriteToDisk(opened.number, text);
  const mode_t mode = replaces ? old.st_mode & 0777 : kFileMode;
  if (error == ERROR_SUCCESS && (replaces || for_all) && fchmod(opened.number, mode) != 0) {
    error = ErrorOfErrno(errno, ERROR_CANTWRITE);
  }
  if (error == ERROR_SUCCESS && renameat(folder, fresh.Data(), folder, place.name) != 0) {
    error = ErrorOfErrno(errno, ERROR_CANTWRITE);
  }
  if (error != ERROR_SUCCESS) {
    unlinkat(folder, fresh.Data(), 0);
    return error;
  }
  // After renaming, which may change ctime. An unknown state makes the next use read the file
  // again.
  struct stat facts = {};
  *state = fstat(opened.number, &facts) == 0 ? StateFrom(facts) : FileState{};
  return ERROR_SUCCESS;
}

}  // namespace mirolta::runtime
