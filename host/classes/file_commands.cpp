#include "classes/file_commands.h"

#include <errno.h>

#include <vector>

#include "classes/host_call.h"
#include "engine/file_statuses.h"
#include "files/file_actions.h"
#include "files/file_paths.h"
#include "files/target_path.h"

namespace mirolta::host {
namespace {

std::string NameIn(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

bool IsPattern(const std::string& path) {
  return HasWildcard(UnitsFromSystem(NameIn(path)));
}

// The paths of this kind that `source` names.
std::vector<std::string> Matches(PathKind kind, const std::string& source) {
  const bool is_folder = kind == PathKind::kFolder;
  if (!IsPattern(source)) {
    if (KindOf(source) == kind) return {source};
    Fail(is_folder ? kPathNotFound : MissingStatus(source));
  }
  const std::string folder = FolderOf(source);
  const Units pattern = UnitsFromSystem(NameIn(source));
  std::vector<std::string> found;
  for (const std::string& name : NamesIn(folder.empty() ? "." : folder, kind)) {
    if (MatchesPattern(UnitsFromSystem(name), pattern)) found.push_back(folder + name);
  }
  if (found.empty()) Fail(is_folder ? kPathNotFound : kFileNotFound);
  return found;
}

// The source as a path; a folder may have a separator at its end.
std::string SourceOf(PathKind kind, const std::string& source) {
  if (source.empty()) Fail(kind == PathKind::kFolder ? kPathNotFound : kFileNotFound);
  return kind == PathKind::kFolder ? WithoutEnd(source) : source;
}

// Calls action(from, to) for all that `source` names.
template <typename Action>
void ForEachPair(PathKind kind, const std::string& given, const std::string& target,
                 Action action) {
  if (target.empty()) Fail(kPathNotFound);
  const std::string source = SourceOf(kind, given);
  const std::string place = IsPattern(source) && !EndsWithSeparator(target) ? target + '/' : target;
  for (const std::string& from : Matches(kind, source)) action(from, TargetFor(from, place));
}

}  // namespace

std::string TargetFor(const std::string& source, const std::string& target) {
  if (target.empty()) Fail(kPathNotFound);
  if (!EndsWithSeparator(target)) return target;
  if (KindOf(target) != PathKind::kFolder) Fail(kPathNotFound);
  return PathIn(target, NameIn(source));
}

void CopyPaths(PathKind kind, const std::string& source, const std::string& target,
               bool overwrites) {
  ForEachPair(kind, source, target, [&](const std::string& from, const std::string& to) {
    if (kind == PathKind::kFolder) {
      CopyOneFolder(from, to, overwrites);
    } else {
      CopyOneFile(from, to, overwrites);
    }
  });
}

void MovePaths(PathKind kind, const std::string& source, const std::string& target) {
  ForEachPair(kind, source, target, MoveOne);
}

void DeletePaths(PathKind kind, const std::string& source, bool force) {
  for (const std::string& path : Matches(kind, SourceOf(kind, source))) {
    if (kind == PathKind::kFolder) {
      DeleteOneFolder(path, force);
    } else {
      DeleteOneFile(path, force);
    }
  }
}

std::string MakeFolder(const std::string& path) {
  if (path.empty()) Fail(kPathNotFound);
  std::string whole = AbsolutePath(path);
  if (mkdir(whole.c_str(), S_IRWXU | S_IRWXG | S_IRWXO) != 0) {
    Fail(errno == ENOENT ? kPathNotFound : FileStatusOf(errno));
  }
  return whole;
}

void SetPermissions(const std::string& path, mode_t mode) {
  if (chmod(path.c_str(), mode) == 0) return;
  Fail(errno == ENOENT ? MissingStatus(path) : FileStatusOf(errno));
}

}  // namespace mirolta::host
