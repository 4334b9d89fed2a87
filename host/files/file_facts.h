// What the system says about files and folders.
#pragma once

#include <sys/stat.h>

#include <optional>
#include <string>
#include <vector>

#include "platform.h"

namespace mirolta::host {

enum class PathKind : uint8_t {
  kNone,
  kFile,  // everything but a folder, also a link that leads nowhere
  kFolder,
};

// KindOf follows symbolic links. FactsOf does too, but for a link that leads nowhere.
PathKind KindOf(const std::string& path);
// Errors: throws CallError: MissingStatus, the system's.
struct stat FactsOf(const std::string& path);

// MissingStatus is kFileNotFound, or kPathNotFound if the folder of the file is missing too.
HRESULT MissingStatus(const std::string& path);

// A read-only file has no permission to write for anybody.
bool IsReadOnly(const struct stat& facts);

// The names in the folder `path`, in the order of their bytes, without "." and "..".
// Errors: throws CallError.
std::vector<std::string> NamesIn(const std::string& path);
// The same for those of one kind.
std::vector<std::string> NamesIn(const std::string& path, PathKind kind);

// The sum of the sizes of all files in a folder and its folders. Links are not followed; what may
// not be read throws CallError.
double FolderSize(const std::string& folder);

// The moment of creation in milliseconds since 1970, that of the last change if the file system
// does not keep it.
double CreationTime(const std::string& path, const struct stat& facts);
double Milliseconds(const timespec& time);

}  // namespace mirolta::host
