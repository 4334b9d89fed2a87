#include "files/file_paths.h"

#include <unistd.h>

#include <algorithm>
#include <vector>

#include "classes/host_call.h"
#include "engine/file_statuses.h"

namespace mirolta::host {
namespace {

constexpr OLECHAR kSlash = '/';
constexpr OLECHAR kBackslash = '\\';

bool IsSeparator(OLECHAR unit) {
  return unit == kSlash || unit == kBackslash;
}

// Whether the path is a drive, or starts with one and a separator.
bool HasDrive(UnitsView path) {
  if (path.size() < 2 || path[1] != OLECHAR{':'}) return false;
  const auto letter = static_cast<OLECHAR>(path[0] | 0x20);
  return letter >= OLECHAR{'a'} && letter <= OLECHAR{'z'} &&
         (path.size() == 2 || IsSeparator(path[2]));
}

// The length of "/", "c:\" or "c:" at the start.
size_t RootLength(UnitsView path) {
  const size_t drive = HasDrive(path) ? 2 : 0;
  return drive + (path.size() > drive && IsSeparator(path[drive]) ? 1 : 0);
}

UnitsView Trimmed(UnitsView path) {
  const size_t root = RootLength(path);
  while (path.size() > root && IsSeparator(path.back())) path.remove_suffix(1);
  return path;
}

// Where the last part of a trimmed path starts.
size_t LastPart(UnitsView path) {
  size_t at = path.size();
  const size_t root = RootLength(path);
  while (at > root && !IsSeparator(path[at - 1])) --at;
  return at;
}

UnitsView NameIn(UnitsView path) {
  const UnitsView trimmed = Trimmed(path);
  return trimmed.substr(LastPart(trimmed));
}

}  // namespace

Units FileNameOf(UnitsView path) {
  return Units(NameIn(path));
}

Units BaseNameOf(UnitsView path) {
  const UnitsView name = NameIn(path);
  return Units(name.substr(0, name.rfind(OLECHAR{'.'})));
}

Units ExtensionOf(UnitsView path) {
  const UnitsView name = NameIn(path);
  const size_t dot = name.rfind(OLECHAR{'.'});
  return dot == UnitsView::npos ? Units() : Units(name.substr(dot + 1));
}

Units ParentFolderOf(UnitsView path) {
  const UnitsView trimmed = Trimmed(path);
  if (trimmed.size() <= RootLength(trimmed)) return {};
  return Units(Trimmed(trimmed.substr(0, LastPart(trimmed))));
}

Units DriveNameOf(UnitsView path) {
  if (HasDrive(path)) return Units(path.substr(0, 2));
  return !path.empty() && IsSeparator(path[0]) ? Units(1, kSlash) : Units();
}

Units JoinedPath(UnitsView path, UnitsView name) {
  if (path.empty()) return Units(name);
  if (name.empty()) return Units(path);
  Units joined(path);
  const size_t last = path.find_last_of(UnitsView(OLESTR("/\\")));
  const bool is_separated = IsSeparator(path.back()) || (path.size() == 2 && HasDrive(path));
  if (is_separated) {
    while (!name.empty() && IsSeparator(name[0])) name.remove_prefix(1);
  } else if (!IsSeparator(name[0])) {
    joined += last == UnitsView::npos ? kSlash : path[last];
  }
  joined += name;
  return joined;
}

std::string SystemPath(UnitsView path) {
  if (path.find(OLECHAR{0}) != UnitsView::npos) Fail(kBadFileName);
  std::string system = SystemFromUnits(path);
  std::replace(system.begin(), system.end(), '\\', '/');
  return system;
}

std::string AbsolutePath(const std::string& path) {
  std::string whole;
  if (!path.starts_with('/')) {
    char folder[4096];
    if (getcwd(folder, sizeof folder) == nullptr) Fail(kPathNotFound);
    whole = folder;
  }
  whole += '/';
  whole += path;
  std::vector<std::string> parts;
  for (size_t at = 0; at < whole.size();) {
    const size_t end = std::min(whole.find('/', at), whole.size());
    std::string part = whole.substr(at, end - at);
    at = end + 1;
    if (part == "..") {
      if (!parts.empty()) parts.pop_back();
    } else if (!part.empty() && part != ".") {
      parts.push_back(std::move(part));
    }
  }
  std::string absolute;
  for (const std::string& part : parts) absolute += '/' + part;
  return absolute.empty() ? "/" : absolute;
}

bool EndsWithSeparator(const std::string& path) {
  return path.ends_with('/');
}

std::string WithoutEnd(std::string path) {
  while (path.size() > 1 && EndsWithSeparator(path)) path.pop_back();
  return path;
}

std::string PathIn(const std::string& folder, const std::string& name) {
  return EndsWithSeparator(folder) ? folder + name : folder + '/' + name;
}

bool HasWildcard(UnitsView name) {
  return name.find_first_of(UnitsView(OLESTR("*?"))) != UnitsView::npos;
}

bool MatchesPattern(UnitsView name, UnitsView pattern) {
  if (pattern == OLESTR("*.*")) return true;
  size_t at = 0, next = 0;
  // Where to continue if what follows the last * does not match.
  size_t star = UnitsView::npos, retry = 0;
  while (at < name.size()) {
    if (next < pattern.size() && pattern[next] == OLECHAR{'*'}) {
      star = next++;
      retry = at;
    } else if (next < pattern.size() &&
               (pattern[next] == OLECHAR{'?'} || pattern[next] == name[at])) {
      ++next;
      ++at;
    } else if (star != UnitsView::npos) {
      next = star + 1;
      at = ++retry;
    } else {
      return false;
    }
  }
  while (next < pattern.size() && pattern[next] == OLECHAR{'*'}) ++next;
  return next == pattern.size();
}

}  // namespace mirolta::host
