#include "files/file_facts.h"

#include <dirent.h>
#include <errno.h>
#include <fcntl.h>

#include <algorithm>

#include "classes/host_call.h"
#include "engine/file_statuses.h"
#include "files/file_paths.h"
#include "files/target_path.h"

namespace mirolta::host {
namespace {

class OpenFolder {
 public:
  explicit OpenFolder(const std::string& path) {
    do {
      folder_ = opendir(path.c_str());
    } while (folder_ == nullptr && errno == EINTR);
    if (folder_ == nullptr) Fail(errno == ENOENT ? kPathNotFound : FileStatusOf(errno));
  }
  OpenFolder(const OpenFolder&) = delete;
  OpenFolder& operator=(const OpenFolder&) = delete;
  ~OpenFolder() { closedir(folder_); }

  // The next name, null at the end.
  const char* Next() {
    errno = 0;
    const dirent* entry = readdir(folder_);
    if (entry == nullptr && errno != 0) Fail(FileStatusOf(errno));
    return entry == nullptr ? nullptr : entry->d_name;
  }

 private:
  DIR* folder_ = nullptr;
};

}  // namespace

PathKind KindOf(const std::string& path) {
  struct stat facts = {};
  if (stat(path.c_str(), &facts) != 0 && lstat(path.c_str(), &facts) != 0) return PathKind::kNone;
  return S_ISDIR(facts.st_mode) ? PathKind::kFolder : PathKind::kFile;
}

struct stat FactsOf(const std::string& path) {
  struct stat facts = {};
  if (stat(path.c_str(), &facts) != 0 && lstat(path.c_str(), &facts) != 0) {
    Fail(errno == ENOENT ? MissingStatus(path) : FileStatusOf(errno));
  }
  return facts;
}

HRESULT MissingStatus(const std::string& path) {
  const std::string folder = FolderOf(WithoutEnd(path));
  return folder.empty() || KindOf(folder) == PathKind::kFolder ? kFileNotFound : kPathNotFound;
}

bool IsReadOnly(const struct stat& facts) {
  return (facts.st_mode & (S_IWUSR | S_IWGRP | S_IWOTH)) == 0;
}

std::vector<std::string> NamesIn(const std::string& path) {
  std::vector<std::string> names;
  OpenFolder folder(path);
  while (const char* name = folder.Next()) {
    const std::string_view text = name;
    if (text != "." && text != "..") names.emplace_back(text);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::string> NamesIn(const std::string& path, PathKind kind) {
  std::vector<std::string> names = NamesIn(path);
  names.erase(
      std::remove_if(names.begin(), names.end(),
                     [&](const std::string& name) { return KindOf(PathIn(path, name)) != kind; }),
      names.end());
  return names;
}

double FolderSize(const std::string& folder) {
  double size = 0;
  for (const std::string& name : NamesIn(folder)) {
    const std::string path = PathIn(folder, name);
    struct stat facts = {};
    if (lstat(path.c_str(), &facts) != 0) {
      // What was deleted meanwhile does not count.
      if (errno == ENOENT) continue;
      Fail(FileStatusOf(errno));
    }
    if (S_ISDIR(facts.st_mode)) size += FolderSize(path);
    if (S_ISREG(facts.st_mode)) size += static_cast<double>(facts.st_size);
  }
  return size;
}

double Milliseconds(const timespec& time) {
  return static_cast<double>(time.tv_sec) * 1000;
}

double CreationTime(const std::string& path, const struct stat& facts) {
  struct statx more = {};
  if (statx(AT_FDCWD, path.c_str(), 0, STATX_BTIME, &more) == 0 &&
      (more.stx_mask & STATX_BTIME) != 0) {
    return static_cast<double>(more.stx_btime.tv_sec) * 1000;
  }
  return Milliseconds(facts.st_mtim);
}

}  // namespace mirolta::host
