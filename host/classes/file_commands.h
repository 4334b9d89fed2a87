// Commands on files and folders that scripts name by paths, with wildcards in the last part.
#pragma once

#include <sys/stat.h>

#include <string>

#include "files/file_facts.h"

namespace mirolta::host {

// All take system paths and throw CallError and std::bad_alloc. If nothing has the name, that is
// kFileNotFound for files and kPathNotFound for folders.
void CopyPaths(PathKind kind, const std::string& source, const std::string& target,
               bool overwrites);
void MovePaths(PathKind kind, const std::string& source, const std::string& target);
void DeletePaths(PathKind kind, const std::string& source, bool force);

// MakeFolder creates a folder and returns its absolute path.
// Errors: kFileExists, kPathNotFound.
std::string MakeFolder(const std::string& path);

// TargetFor returns where a copy of `source` goes: into the target if that ends with a separator.
// Errors: kPathNotFound if it does and is no folder.
std::string TargetFor(const std::string& source, const std::string& target);

void SetPermissions(const std::string& path, mode_t mode);

}  // namespace mirolta::host
