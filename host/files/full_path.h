// Absolute paths.
#pragma once

#include <string>

namespace mirolta::host {

// FullPath returns the absolute path of a file with all symbolic links resolved.
// Errors: "" if the file does not exist or cannot be reached; errno says why.
std::string FullPath(const std::string& path);

// FullLinkPath is FullPath of the folder, and the file's own name: a symbolic link is not followed
// if it is the file itself, so a link that leads to the current version of a library stays one.
// Errors: as for FullPath.
std::string FullLinkPath(const std::string& path);

// RootedPath returns a path that leads where `path` does, even if the current folder changes. It
// is `path` itself if that is absolute or the current folder has no path.
std::string RootedPath(const std::string& path);

}  // namespace mirolta::host
