#include "files/target_path.h"

#include <errno.h>
#include <linux/magic.h>
#include <sys/vfs.h>
#include <unistd.h>

namespace mirolta::host {
namespace {

constexpr int kMostLinks = 40;  // the system's limit

// Links in procfs lead to open files; the text of such a link is not a path.
bool IsInProcessFolder(const std::string& path) {
  const std::string folder = FolderOf(path);
  struct statfs facts = {};
  return statfs(folder.empty() ? "." : folder.c_str(), &facts) == 0 &&
         static_cast<unsigned long>(facts.f_type) == PROC_SUPER_MAGIC;
}

// The text of the link at `path`; false with errno set.
bool ReadLink(const std::string& path, std::string* text) {
  char bytes[4096];
  const ssize_t size = readlink(path.c_str(), bytes, sizeof bytes);
  if (size < 0) return false;
  text->assign(bytes, static_cast<size_t>(size));
  return true;
}

bool IsSameNode(const struct stat& a, const struct stat& b) {
  if ((a.st_mode & S_IFMT) != (b.st_mode & S_IFMT)) return false;
  // One device may have nodes in several folders.
  if (S_ISCHR(a.st_mode) || S_ISBLK(a.st_mode)) return a.st_rdev == b.st_rdev;
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

}  // namespace

std::string FolderOf(const std::string& path) {
  return path.substr(0, path.rfind('/') + 1);
}

int FindTarget(const std::string& path, Target* target) {
  target->path = path;
  for (int links = 0; links <= kMostLinks; ++links) {
    target->kind = TargetKind::kOther;
    if (IsInProcessFolder(target->path)) return 0;
    if (lstat(target->path.c_str(), &target->facts) != 0) {
      target->kind = TargetKind::kNew;
      return errno == ENOENT ? 0 : errno;
    }
    if (!S_ISLNK(target->facts.st_mode)) {
      if (S_ISREG(target->facts.st_mode)) target->kind = TargetKind::kRegular;
      return 0;
    }
    std::string link;
    if (!ReadLink(target->path, &link)) return errno;
    target->path = link.starts_with('/') ? link : FolderOf(target->path) + link;
  }
  return ELOOP;
}

bool IsSameFile(const std::string& a, const std::string& b) {
  struct stat first = {}, second = {};
  const bool has_first = stat(a.c_str(), &first) == 0;
  const bool has_second = stat(b.c_str(), &second) == 0;
  if (has_first || has_second) return has_first && has_second && IsSameNode(first, second);
  // Neither exists: compare the names and the folders.
  Target one, other;
  if (FindTarget(a, &one) != 0 || FindTarget(b, &other) != 0) return false;
  const std::string folder_one = FolderOf(one.path), folder_other = FolderOf(other.path);
  return one.path.substr(folder_one.size()) == other.path.substr(folder_other.size()) &&
         stat((folder_one + '.').c_str(), &first) == 0 &&
         stat((folder_other + '.').c_str(), &second) == 0 && IsSameNode(first, second);
}

}  // namespace mirolta::host
