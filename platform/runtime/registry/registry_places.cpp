#include "registry/registry_places.h"

#include <cstdlib>
#include <string_view>

#include "system/file_name.h"

namespace mirolta::runtime {
namespace {

constexpr char kBelowFolder[] = "/mirolta/registry.reg";
constexpr char kSystemFile[] = "/etc/mirolta/registry.reg";
constexpr char kSystemFolders[] = "/usr/local/share:/usr/share";

// The value of an environment variable; null if it is empty, relative where it must be absolute, or
// if the process is set-user-id.
const char* Variable(const char* name, bool absolute) {
  const char* value = secure_getenv(name);
  if (value == nullptr || *value == 0 || (absolute && *value != '/')) return nullptr;
  return value;
}

const char* OnlyRegistry() {
  return Variable("MIROLTA_REGISTRY", false);
}

const char* ValueOr(const char* name, const char* otherwise) {
  const char* const value = Variable(name, false);
  return value == nullptr ? otherwise : value;
}

bool AppendSystemRegistry(RuntimeArray<char>* file) {
  return JoinFileName(file, ValueOr("MIROLTA_SYSTEM_REGISTRY", kSystemFile), "");
}

LONG Named(bool named) {
  return named ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
}

}  // namespace

LONG NameUserRegistry(RuntimeArray<char>* file) {
  if (const char* only = OnlyRegistry()) return Named(JoinFileName(file, only, ""));
  if (const char* data = Variable("XDG_DATA_HOME", true)) {
    return Named(JoinFileName(file, data, kBelowFolder));
  }
  const char* const home = Variable("HOME", true);
  if (home == nullptr) return ERROR_FILE_NOT_FOUND;
  return Named(file->Append(home, std::strlen(home)) &&
               JoinFileName(file, "/.local/share", kBelowFolder));
}

LONG NameSystemRegistry(RuntimeArray<char>* file) {
  if (OnlyRegistry() != nullptr) return ERROR_ACCESS_DENIED;
  return Named(AppendSystemRegistry(file));
}

LONG NameLowerRegistries(RuntimeArray<char>* files) {
  if (OnlyRegistry() != nullptr) return ERROR_SUCCESS;
  if (!AppendSystemRegistry(files)) return ERROR_OUTOFMEMORY;
  std::string_view folders = ValueOr("XDG_DATA_DIRS", kSystemFolders);
  while (!folders.empty()) {
    const std::string_view folder = folders.substr(0, folders.find(':'));
    folders.remove_prefix(folder.size());
    if (!folders.empty()) folders.remove_prefix(1);
    if (!folder.starts_with('/')) continue;
    if (!files->Append(folder.data(), folder.size()) || !JoinFileName(files, kBelowFolder, "")) {
      return ERROR_OUTOFMEMORY;
    }
  }
  return ERROR_SUCCESS;
}

}  // namespace mirolta::runtime
