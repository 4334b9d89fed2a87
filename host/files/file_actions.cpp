#include "files/file_actions.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <vector>

#include "classes/host_call.h"
#include "engine/file_statuses.h"
#include "files/byte_channel.h"
#include "files/file_facts.h"
#include "files/file_paths.h"
#include "files/full_path.h"
#include "files/target_path.h"
#include "files/temporary_file.h"
#include "portable/repeated_call.h"

namespace mirolta::host {
namespace {

// The most nested folders that are deleted, one descriptor each. The system's limit for paths bounds
// the depth of what is copied.
constexpr int kMostDepth = 1000;
constexpr int kFolderFlags = O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;
constexpr mode_t kPermissions = S_IRWXU | S_IRWXG | S_IRWXO;

[[noreturn]] void FailForSystem(int error, const std::string& path) {
  Fail(error == ENOENT ? MissingStatus(path) : FileStatusOf(error));
}

class Descriptor {
 public:
  explicit Descriptor(int file) : file_(file) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (file_ >= 0) close(file_);
  }
  int Get() const { return file_; }
  int Detach() {
    const int file = file_;
    file_ = -1;
    return file;
  }

 private:
  int file_;
};

void CopyBytes(int source, IStream* target) {
  std::vector<char> block(size_t{1} << 17);
  for (;;) {
    size_t got = 0;
    HRESULT status = ReadDescriptor(source, block.data(), block.size(), &got);
    if (FAILED(status)) Fail(status);
    if (got == 0) return;
    ULONG done = 0;
    status = target->Write(block.data(), static_cast<ULONG>(got), &done);
    if (FAILED(status)) Fail(FileStatusOfStream(status));
    if (done != got) Fail(kDiskFull);
  }
}

// Gives the copy the permissions and times of its source, and syncs it if it replaces a file.
void FinishCopy(const std::string& path, const struct stat& facts, bool replaces) {
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NOFOLLOW;
  const Descriptor file(Repeated([&] { return open(path.c_str(), kFlags); }));
  if (file.Get() < 0) Fail(FileStatusOf(errno));
  const timespec times[] = {facts.st_atim, facts.st_mtim};
  if (futimens(file.Get(), times) != 0 || fchmod(file.Get(), facts.st_mode & kPermissions) != 0 ||
      (replaces && Repeated([&] { return fsync(file.Get()); }) != 0)) {
    Fail(FileStatusOf(errno));
  }
}

std::string TextOfLink(const std::string& path) {
  char text[4096];
  const ssize_t size = readlink(path.c_str(), text, sizeof text);
  if (size < 0) FailForSystem(errno, path);
  return {text, static_cast<size_t>(size)};
}

void CopyLink(const std::string& source, const std::string& target, bool overwrites) {
  const std::string text = TextOfLink(source);
  if (symlink(text.c_str(), target.c_str()) == 0) return;
  if (errno != EEXIST) FailForSystem(errno, target);
  if (!overwrites) Fail(kFileExists);
  if (unlink(target.c_str()) != 0 || symlink(text.c_str(), target.c_str()) != 0) {
    FailForSystem(errno, target);
  }
}

void CopyTree(const std::string& source, const std::string& target, bool overwrites) {
  struct stat own = {};
  if (stat(source.c_str(), &own) != 0) FailForSystem(errno, source);
  // Open to us until the copy is whole.
  const bool is_new = mkdir(target.c_str(), S_IRWXU) == 0;
  if (!is_new) {
    const int error = errno;
    if (error == ENOENT) Fail(kPathNotFound);
    if (error != EEXIST) Fail(FileStatusOf(error));
    if (KindOf(target) != PathKind::kFolder) Fail(kFileExists);
  }
  for (const std::string& name : NamesIn(source)) {
    const std::string from = PathIn(source, name), to = PathIn(target, name);
    struct stat facts = {};
    if (lstat(from.c_str(), &facts) != 0) FailForSystem(errno, from);
    if (S_ISDIR(facts.st_mode)) {
      CopyTree(from, to, overwrites);
    } else if (S_ISLNK(facts.st_mode)) {
      CopyLink(from, to, overwrites);
    } else {
      CopyOneFile(from, to, overwrites);
    }
  }
  if (is_new && chmod(target.c_str(), own.st_mode & kPermissions) != 0) Fail(FileStatusOf(errno));
}

// Whether `path`, which need not exist, is the folder or lies in it.
bool IsWithin(const std::string& path, const std::string& folder) {
  std::string place = FullPath(path);
  if (place.empty()) {
    const std::string parent = FolderOf(WithoutEnd(path));
    place = FullPath(parent.empty() ? "." : parent);
  }
  const std::string whole = FullPath(folder);
  return place == whole || place.starts_with(PathIn(whole, ""));
}

int RenameToNew(const std::string& source, const std::string& target) {
#ifdef RENAME_NOREPLACE
  if (renameat2(AT_FDCWD, source.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0)
    return 0;
  if (errno != EINVAL && errno != ENOSYS) return errno;
#endif
  // A race where the file system knows no better: a file made meanwhile is lost.
  struct stat facts = {};
  if (lstat(target.c_str(), &facts) == 0) return EEXIST;
  return rename(source.c_str(), target.c_str()) == 0 ? 0 : errno;
}

// Between file systems.
void MoveByCopy(const std::string& source, const std::string& target) {
  struct stat facts = {};
  if (lstat(source.c_str(), &facts) != 0) FailForSystem(errno, source);
  if (S_ISDIR(facts.st_mode)) {
    if (mkdir(target.c_str(), S_IRWXU) != 0) FailForSystem(errno, target);
    try {
      CopyOneFolder(source, target, false);
    } catch (...) {
      DeleteOneFolder(target, true);
      throw;
    }
    DeleteOneFolder(source, true);
  } else {
    if (S_ISLNK(facts.st_mode)) {
      CopyLink(source, target, false);
    } else {
      CopyOneFile(source, target, false);
    }
    if (unlink(source.c_str()) != 0) FailForSystem(errno, source);
  }
}

// Deletes the content of an open folder, which is closed. Everything is reached from its folder's
// descriptor without following links: what is replaced by a link meanwhile leads nowhere else.
void DeleteContent(Descriptor* opened, bool force, int depth) {
  if (depth == kMostDepth) Fail(kPathFault);
  DIR* const folder = fdopendir(opened->Get());
  if (folder == nullptr) Fail(FileStatusOf(errno));
  const int file = opened->Detach();
  struct Closing {
    ~Closing() { closedir(folder); }
    DIR* folder;
  } const closing{folder};
  std::vector<std::string> names;
  errno = 0;
  while (const dirent* entry = readdir(folder)) {
    const std::string_view name = entry->d_name;
    if (name != "." && name != "..") names.emplace_back(name);
    errno = 0;
  }
  if (errno != 0) Fail(FileStatusOf(errno));
  for (const std::string& name : names) {
    struct stat facts = {};
    if (fstatat(file, name.c_str(), &facts, AT_SYMLINK_NOFOLLOW) != 0) {
      if (errno == ENOENT) continue;
      Fail(FileStatusOf(errno));
    }
    const bool is_folder = S_ISDIR(facts.st_mode);
    if (is_folder) {
      Descriptor inner(Repeated([&] { return openat(file, name.c_str(), kFolderFlags); }));
      if (inner.Get() < 0) Fail(FileStatusOf(errno));
      DeleteContent(&inner, force, depth + 1);
    } else if (S_ISREG(facts.st_mode) && !force && IsReadOnly(facts)) {
      Fail(kPermissionDenied);
    }
    if (unlinkat(file, name.c_str(), is_folder ? AT_REMOVEDIR : 0) != 0) {
      Fail(FileStatusOf(errno));
    }
  }
}

}  // namespace

void CopyOneFile(const std::string& source, const std::string& target, bool overwrites) {
  // Without waiting: a pipe is refused, not read.
  constexpr int kFlags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY;
  const Descriptor file(Repeated([&] { return open(source.c_str(), kFlags); }));
  if (file.Get() < 0) FailForSystem(errno, source);
  struct stat facts = {};
  if (fstat(file.Get(), &facts) != 0) Fail(FileStatusOf(errno));
  if (!S_ISREG(facts.st_mode)) Fail(kPermissionDenied);

  Target found;
  const int error = FindTarget(target, &found);
  if (error != 0) FailForSystem(error, target);
  if (found.kind == TargetKind::kOther || EndsWithSeparator(target)) Fail(kPermissionDenied);
  const bool replaces = found.kind == TargetKind::kRegular;
  if (replaces && !overwrites) Fail(kFileExists);
  if (replaces && (IsReadOnly(found.facts) || IsSameFile(source, found.path) ||
                   access(found.path.c_str(), W_OK) != 0)) {
    Fail(kPermissionDenied);
  }

  TemporaryFile copy;
  OwnedReference<IStream> stream;
  const HRESULT status = copy.Create(FolderOf(found.path), STGM_WRITE, &stream);
  if (FAILED(status)) {
    const HRESULT number = FileStatusOfStream(status);
    Fail(number == kFileNotFound ? kPathNotFound : number);
  }
  CopyBytes(file.Get(), stream.Get());
  stream.Reset();
  FinishCopy(copy.Path(), facts, replaces);
  const int moved = copy.MoveTo(found.path, !overwrites);
  if (moved != 0) FailForSystem(moved, target);
}

void CopyOneFolder(const std::string& source, const std::string& target, bool overwrites) {
  if (KindOf(source) != PathKind::kFolder) Fail(kPathNotFound);
  if (IsWithin(target, source)) Fail(kPermissionDenied);
  CopyTree(source, target, overwrites);
}

void MoveOne(const std::string& source, const std::string& target) {
  const int error = RenameToNew(source, target);
  if (error == EXDEV) return MoveByCopy(source, target);
  if (error == ENOENT) {
    // Either may be missing.
    Fail(KindOf(source) == PathKind::kNone ? MissingStatus(source) : kPathNotFound);
  }
  // A folder into itself.
  if (error == EINVAL) Fail(kPermissionDenied);
  if (error != 0) Fail(FileStatusOf(error));
}

void DeleteOneFile(const std::string& path, bool force) {
  struct stat facts = {};
  if (lstat(path.c_str(), &facts) != 0) FailForSystem(errno, path);
  if (S_ISDIR(facts.st_mode)) Fail(kFileNotFound);
  if (S_ISREG(facts.st_mode) && !force && IsReadOnly(facts)) Fail(kPermissionDenied);
  if (unlink(path.c_str()) != 0) FailForSystem(errno, path);
}

void DeleteOneFolder(const std::string& path, bool force) {
  Descriptor folder(Repeated([&] { return open(path.c_str(), kFolderFlags); }));
  if (folder.Get() < 0) {
    // A link to a folder fails with either.
    if (errno != ENOTDIR && errno != ELOOP)
      Fail(errno == ENOENT ? kPathNotFound : FileStatusOf(errno));
    if (KindOf(path) != PathKind::kFolder) Fail(kPathNotFound);
    if (unlink(path.c_str()) != 0) Fail(FileStatusOf(errno));
    return;
  }
  DeleteContent(&folder, force, 0);
  if (rmdir(path.c_str()) != 0) Fail(FileStatusOf(errno));
}

}  // namespace mirolta::host
