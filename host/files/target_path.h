// Resolves the path of a file to be written.
#pragma once

#include <sys/stat.h>

#include <string>

namespace mirolta::host {

enum class TargetKind {
  kNew,      // does not exist
  kRegular,  // a regular file
  kOther,    // a folder, a pipe, a device, or a name of an open descriptor (/proc/self/fd)
};

struct Target {
  TargetKind kind = TargetKind::kOther;
  std::string path;        // with symbolic links in its last component resolved
  struct stat facts = {};  // of a regular file
};

// FindTarget resolves `path` to the file that open() would reach.
// Errors: errno of the failure, 0 if there is none.
[[nodiscard]] int FindTarget(const std::string& path, Target* target);

// FolderOf returns the folder of a path with a trailing slash, "" for the current folder.
std::string FolderOf(const std::string& path);

// IsSameFile tells whether both paths lead to the same file or device, or would if it existed.
bool IsSameFile(const std::string& a, const std::string& b);

}  // namespace mirolta::host
