#include "registry/registry_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "registry/registry_text.h"
#include "system/file_trust.h"

namespace mirolta {
namespace {

constexpr LONG ERROR_DISK_FULL = 112;
constexpr LONG ERROR_CANTREAD = 1012;
constexpr mode_t kFolderMode = 0755;
constexpr mode_t kFileMode = 0644;
constexpr mode_t kLockMode = 0600;  // who could only read it could hold it all the same
constexpr int kMostLinks = 40;

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
      return ERROR_DISK_FULL;
    default:
      return otherwise;
  }
}

FileState StateFrom(const struct stat& facts) {
  return {true, facts.st_dev, facts.st_ino, facts.st_size, facts.st_mtim, facts.st_ctim};
}

// The part of a variable that counts; empty ones and relative folders do not, and none where the
// process has rights that whoever set them does not have.
const char* Variable(const char* name, bool absolute) {
  const char* value = secure_getenv(name);
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
    if (got < 0 && errno != EINTR) return ErrorNumber(errno, ERROR_CANTREAD);
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

// The folder of a file, opened, and the file's name in it; without one errno says why.
struct FilePlace {
  explicit FilePlace(const char* file) : name(std::strrchr(file, '/')) {
    RuntimeArray<char> path;
    if (name == nullptr) {
      name = file;
      folder.number = open(".", kFlags);
      return;
    }
    const size_t length = name == file ? 1 : static_cast<size_t>(name - file);
    ++name;
    if (path.Append(file, length) && path.Append('\0')) {
      folder.number = open(path.data(), kFlags);
    } else {
      errno = ENOMEM;
    }
  }

  static constexpr int kFlags = O_PATH | O_DIRECTORY | O_CLOEXEC;
  OpenedFile folder{-1};
  const char* name;
};

// Makes a file that was not there, whatever lies about under its name: what a killed writer left is
// removed, links are not followed. Writes `text` to it.
LONG WriteNew(const FilePlace& place, const char* fresh, const RuntimeArray<char>& text,
              OpenedFile* file) {
  const int folder = place.folder.number;
  unlinkat(folder, fresh, 0);
  file->number =
      openat(folder, fresh, O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, kFileMode);
  if (file->number < 0) return ErrorNumber(errno, ERROR_CANTWRITE);
  const LONG error = WriteAll(file->number, text.data(), text.size());
  if (error != ERROR_SUCCESS) return error;
  return fsync(file->number) == 0 ? ERROR_SUCCESS : ErrorNumber(errno, ERROR_CANTWRITE);
}

// A link stays a link, one that leads nowhere too: what it leads to is locked and replaced.
LONG FollowLinks(const char* file, RuntimeArray<char>* place) {
  if (!Join(place, file, "")) return ERROR_OUTOFMEMORY;
  char target[PATH_MAX];
  for (int links = 0;; ++links) {
    const ssize_t length = readlink(place->data(), target, sizeof(target));
    if (length < 0) return ERROR_SUCCESS;
    if (length == sizeof(target) || links == kMostLinks) return ERROR_CANTWRITE;
    // A relative one is from the link's folder.
    const char* const slash = std::strrchr(place->data(), '/');
    const bool relative = target[0] != '/' && slash != nullptr;
    place->Shorten(relative ? static_cast<size_t>(slash - place->data()) + 1 : 0);
    if (!place->Append(target, static_cast<size_t>(length)) || !place->Append('\0')) {
      return ERROR_OUTOFMEMORY;
    }
  }
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
  return errno == ENOENT || errno == ENOTDIR ? ERROR_SUCCESS : ErrorNumber(errno, ERROR_CANTREAD);
}

LONG LoadRegistryFile(const char* file, RegistryKey* root, FileState* state, DWORD* bad_line) {
  *state = {};
  *bad_line = 0;
  struct stat facts = {};
  // Only looked at: opening a device may do something, and opening a pipe waits.
  if (stat(file, &facts) == 0 && !S_ISREG(facts.st_mode)) return ERROR_CANTREAD;
  const OpenedFile opened(open(file, O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  if (opened.number < 0) {
    return errno == ENOENT || errno == ENOTDIR ? ERROR_SUCCESS : ErrorNumber(errno, ERROR_CANTREAD);
  }
  if (fstat(opened.number, &facts) != 0) return ErrorNumber(errno, ERROR_CANTREAD);
  if (!S_ISREG(facts.st_mode)) return ERROR_CANTREAD;
  if (!IsTrusted(facts)) return ERROR_ACCESS_DENIED;
  *state = StateFrom(facts);
  RuntimeArray<char> text;
  const LONG error = ReadAll(opened.number, &text);
  if (error != ERROR_SUCCESS) return error;
  return ParseRegistry(text.data(), text.size(), root, bad_line);
}

LONG StoreRegistryFile(const char* file, const RegistryKey& root, FileState* state) {
  RuntimeArray<char> text;
  RuntimeArray<char> target;
  RuntimeArray<char> fresh;
  LONG error = FollowLinks(file, &target);
  if (error != ERROR_SUCCESS) return error;
  const FilePlace place(target.data());
  const int folder = place.folder.number;
  if (folder < 0) return ErrorNumber(errno, ERROR_CANTWRITE);
  if (!FormatRegistry(root, &text) || !Join(&fresh, place.name, ".new")) return ERROR_OUTOFMEMORY;
  struct stat old = {};
  const bool replaces = fstatat(folder, place.name, &old, AT_SYMLINK_NOFOLLOW) == 0;
  OpenedFile opened(-1);
  error = WriteNew(place, fresh.data(), text, &opened);
  if (error == ERROR_SUCCESS && replaces && fchmod(opened.number, old.st_mode & 0777) != 0) {
    error = ErrorNumber(errno, ERROR_CANTWRITE);
  }
  if (error == ERROR_SUCCESS && renameat(folder, fresh.data(), folder, place.name) != 0) {
    error = ErrorNumber(errno, ERROR_CANTWRITE);
  }
  if (error != ERROR_SUCCESS) {
    if (opened.number >= 0) unlinkat(folder, fresh.data(), 0);
    return error;
  }
  // After renaming, which may count as a change of the file. One that cannot be told is read anew.
  struct stat facts = {};
  *state = fstat(opened.number, &facts) == 0 ? StateFrom(facts) : FileState{};
  return ERROR_SUCCESS;
}

namespace {

std::mutex g_held_lock;  // holds for moments only
RegistryLock* g_held = nullptr;

}  // namespace

LONG RegistryLock::Enter(const char* file) {
  RuntimeArray<char> target;
  RuntimeArray<char> name;
  LONG error = FollowLinks(file, &target);
  if (error != ERROR_SUCCESS) return error;
  if (!Join(&name, target.data(), ".lock")) return ERROR_OUTOFMEMORY;
  constexpr int kFlags = O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY;
  const auto open_file = [&] {
    // A child that is forked in between would keep what it does not know of.
    const std::lock_guard<std::mutex> lock(g_held_lock);
    lock_file_ = open(name.data(), kFlags, kLockMode);
    if (lock_file_ < 0) return;
    next_ = g_held;
    g_held = this;
  };
  open_file();
  if (lock_file_ < 0 && errno == ENOENT) {
    error = MakeFolders(target.data());
    if (error != ERROR_SUCCESS) return error;
    open_file();
  }
  if (lock_file_ < 0) return ErrorNumber(errno, ERROR_CANTWRITE);
  while (flock(lock_file_, LOCK_EX) != 0) {
    if (errno == EINTR) continue;
    error = ErrorNumber(errno, ERROR_CANTWRITE);
    Leave();
    return error;
  }
  return ERROR_SUCCESS;
}

void RegistryLock::Leave() {
  if (lock_file_ < 0) return;
  const std::lock_guard<std::mutex> lock(g_held_lock);
  RegistryLock** link = &g_held;
  while (*link != this) link = &(*link)->next_;
  *link = next_;
  // By name: a child that has the file open would keep the lock beyond its closing here.
  flock(lock_file_, LOCK_UN);
  close(lock_file_);
  lock_file_ = -1;
}

void RegistryLock::BeforeFork() {
  g_held_lock.lock();
}

void RegistryLock::AfterFork(bool in_child) {
  for (; in_child && g_held != nullptr; g_held = g_held->next_) {
    close(g_held->lock_file_);
    g_held->lock_file_ = -1;
  }
  g_held_lock.unlock();
}

}  // namespace mirolta
