#include "classes/special_folders.h"

#include <stdio.h>
#include <stdlib.h>
#include <strings.h>

#include <iterator>
#include <memory>
#include <new>
#include <string>

#include "engine/host_errors.h"

namespace mirolta::host {
namespace {

// Where a folder is.
// Source: XDG Base Directory Specification 0.8; xdg-user-dirs, user-dirs.dirs(5);
//         Desktop Menu Specification 1.1; Desktop Application Autostart Specification 0.5
enum class Root {
  kNone,    // this system has no such folder
  kSystem,  // the path of the row
  kUser,    // a folder of user-dirs.dirs; without an entry, the path below the home folder
  kConfig,  // below the folder of the user's configuration
  kData,    // below the folder of the user's data
};

struct FolderRow {
  const char* name;
  Root root;
  const char* path;
  const char* variable = "";  // of user-dirs.dirs
};

// In the platform's order, which has the desktop twice.
constexpr FolderRow kDesktop = {"Desktop", Root::kUser, "/Desktop", "XDG_DESKTOP_DIR"};
constexpr FolderRow kFolders[] = {
    {"AllUsersDesktop", Root::kNone, ""},
    {"AllUsersStartMenu", Root::kSystem, "/usr/share/applications"},
    {"AllUsersPrograms", Root::kSystem, "/usr/share/applications"},
    {"AllUsersStartup", Root::kSystem, "/etc/xdg/autostart"},
    kDesktop,
    {"AppData", Root::kConfig, ""},
    {"PrintHood", Root::kNone, ""},
    {"Templates", Root::kUser, "/Templates", "XDG_TEMPLATES_DIR"},
    {"Fonts", Root::kData, "/fonts"},
    {"NetHood", Root::kNone, ""},
    kDesktop,
    {"StartMenu", Root::kData, "/applications"},
    {"SendTo", Root::kNone, ""},
    {"Recent", Root::kNone, ""},
    {"Startup", Root::kConfig, "/autostart"},
    {"Favorites", Root::kNone, ""},
    {"MyDocuments", Root::kUser, "/Documents", "XDG_DOCUMENTS_DIR"},
    {"Programs", Root::kData, "/applications"},
};
constexpr int32_t kFolderCount = static_cast<int32_t>(std::size(kFolders));

// The value of an environment variable that is an absolute path, "" otherwise.
std::string PathVariable(const char* name) {
  const char* const value = getenv(name);
  return value != nullptr && *value == '/' ? value : "";
}

// A base folder, "" if it is unknown.
std::string BaseFolder(const char* variable, const char* below_home) {
  std::string path = PathVariable(variable);
  if (!path.empty()) return path;
  path = PathVariable("HOME");
  return path.empty() ? path : path + below_home;
}

std::string ConfigFolder() {
  return BaseFolder("XDG_CONFIG_HOME", "/.config");
}

// The folder of a line VARIABLE="$HOME/..." or VARIABLE="/...", "" for other lines.
std::string FolderOfLine(std::string_view line, std::string_view variable) {
  line.remove_prefix(std::min(line.find_first_not_of(" \t"), line.size()));
  if (!line.starts_with(variable) || !line.substr(variable.size()).starts_with("=\"")) return "";
  line.remove_prefix(variable.size() + 2);
  constexpr std::string_view kHome = "$HOME";
  const bool is_below_home = line.starts_with(kHome);
  std::string path = is_below_home ? PathVariable("HOME") : "";
  if (is_below_home) line.remove_prefix(kHome.size());
  for (size_t i = 0; i < line.size() && line[i] != '"'; ++i) {
    if (line[i] == '\\' && i + 1 < line.size()) ++i;
    path += line[i];
  }
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path.starts_with('/') ? path : "";
}

struct Closing {
  void operator()(FILE* file) const { static_cast<void>(fclose(file)); }
};

std::string UserFolder(const FolderRow& row) {
  std::string found = BaseFolder("HOME", "");
  if (found.empty()) return found;
  found += row.path;
  const std::unique_ptr<FILE, Closing> file(
      fopen((ConfigFolder() + "/user-dirs.dirs").c_str(), "re"));
  char line[4096];
  while (file != nullptr && fgets(line, sizeof line, file.get()) != nullptr) {
    std::string folder = FolderOfLine(line, row.variable);
    if (!folder.empty()) found = std::move(folder);
  }
  return found;
}

std::string PathOf(const FolderRow& row) {
  std::string path;
  switch (row.root) {
    case Root::kNone:
      break;
    case Root::kSystem:
      path = row.path;
      break;
    case Root::kUser:
      path = UserFolder(row);
      break;
    case Root::kConfig:
      path = ConfigFolder();
      if (!path.empty()) path += row.path;
      break;
    case Root::kData:
      path = BaseFolder("XDG_DATA_HOME", "/.local/share");
      if (!path.empty()) path += row.path;
      break;
  }
  return path;
}

class SpecialFolders final : public HostObject {
 public:
  const HostClass& Class() const override;

  // By name or by number.
  void GetItem(HostCall& call) {
    const VARIANT& key = call.At(0);
    if (key.vt != VT_BSTR) {
      const int32_t index = call.Integer(0);
      if (index < 0 || index >= kFolderCount) Fail(kSubscriptOutOfRange);
      call.ReturnText(UnitsFromSystem(PathOf(kFolders[index])));
      return;
    }
    const std::string name = SystemFromUnits(call.Text(0));
    for (const FolderRow& row : kFolders) {
      if (strcasecmp(row.name, name.c_str()) != 0) continue;
      call.ReturnText(UnitsFromSystem(PathOf(row)));
      return;
    }
    call.ReturnText({});
  }

  void GetCount(HostCall& call) const { call.ReturnInteger(kFolderCount); }

  void NewEnum(HostCall& call) const {
    ValueList paths;
    for (const FolderRow& row : kFolders) {
      const Units path = UnitsFromSystem(PathOf(row));
      ScopedVariant value;
      value.bstrVal = SysAllocStringLen(path.data(), static_cast<UINT>(path.size()));
      if (value.bstrVal == nullptr) throw std::bad_alloc();
      value.vt = VT_BSTR;
      paths.Add(value);
    }
    call.ReturnUnknown(NewEnumerator(std::move(paths)));
  }

 private:
  ~SpecialFolders() override = default;
};

constexpr auto kMethod = MemberKind::kMethod;
constexpr auto kProperty = MemberKind::kProperty;

constexpr HostMember kMembers[] = {
    {"Item", DISPID_VALUE, kProperty, 1, 1, CallMember<&SpecialFolders::GetItem>, nullptr,
     "(name As Variant) As String",
     "The path of a folder by name or number, \"\" if this system has none of that name."},
    {"Count", 1, kMethod, 0, 0, CallMember<&SpecialFolders::GetCount>, nullptr, "() As Long",
     "The number of folders."},
    {"length", 2, kProperty, 0, 0, CallMember<&SpecialFolders::GetCount>, nullptr, " As Long",
     "The number of folders."},
    {"_NewEnum", DISPID_NEWENUM, kProperty, 0, 0, CallMember<&SpecialFolders::NewEnum>, nullptr,
     " As String", "Enumerates the paths."},
};
static_assert(IsWellFormed(kMembers));

const HostClass& SpecialFolders::Class() const {
  return kSpecialFoldersClass;
}

}  // namespace

constexpr HostClass kSpecialFoldersClass = {"WScript.Shell.SpecialFolders",
                                            "The folders of the user and the system.", kMembers};

HostObject* NewSpecialFolders() {
  return new SpecialFolders;
}

}  // namespace mirolta::host
