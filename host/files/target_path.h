// What the path of a file to be written leads to.
#pragma once

#include <sys/stat.h>

#include <string>

namespace mirolta::host {

enum class TargetKind {
  kNew,      // nothing is there
  kRegular,  // a regular file
  kOther,    // a folder, a pipe, a device, or a name of an open descriptor
};

struct Target {
  TargetKind kind = TargetKind::kOther;
  std::string path;        // symbolic links in its last component followed
  struct stat facts = {};  // of a regular file
};

// FindTarget follows `path` to the file that opening it would reach.
// Errors: the system's error number, 0 if there is none.
[[nodiscard]] int FindTarget(const std::string& path, Target* target);

// FolderOf returns the folder of a path with the slash at its end, "" for the current folder.
std::string FolderOf(const std::string& path);

// IsSameFile tells whether both paths lead to one file or device, or would if it were there.
bool IsSameFile(const std::string& a, const std::string& b);

}  // namespace mirolta::host
