#include "command_line/registered_classes.h"

#include <stdlib.h>
#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <system_error>

#include "engine/status_text.h"
#include "files/full_path.h"
#include "portable/registry_mode.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr DWORD kNameCapacity = 256;
constexpr DWORD kSystemLayer = 1;

// An open key, closed at the end of its scope.
class RegistryPath {
 public:
  RegistryPath(HKEY parent, const std::string& path) {
    error_ = RegOpenKeyExW(parent, UnitsFromSystem(path).c_str(), 0, KEY_READ, &key_);
  }
  RegistryPath(const RegistryPath&) = delete;
  RegistryPath& operator=(const RegistryPath&) = delete;
  ~RegistryPath() {
    if (key_ != nullptr) RegCloseKey(key_);
  }

  // Errors: ERROR_FILE_NOT_FOUND if there is no such key; those of reading the registry.
  LONG Error() const { return error_; }
  HKEY Get() const { return key_; }

 private:
  HKEY key_ = nullptr;
  LONG error_;
};

// Reads the default value of a key as text; another type is none.
LONG ReadText(HKEY parent, const std::string& path, std::string* text, DWORD* layer = nullptr) {
  const RegistryPath key(parent, path);
  if (key.Error() != ERROR_SUCCESS) return key.Error();
  Units units;
  DWORD size = 0;
  DWORD type = REG_NONE;
  LONG error = RegQueryValueExW(key.Get(), nullptr, nullptr, &type, nullptr, &size);
  while (error == ERROR_SUCCESS && type == REG_SZ) {
    units.resize(size / sizeof(OLECHAR));
    error = RegQueryValueExW(key.Get(), nullptr, nullptr, &type,
                             reinterpret_cast<BYTE*>(units.data()), &size);
    if (error != ERROR_MORE_DATA) break;
    error = ERROR_SUCCESS;  // it has grown meanwhile
  }
  if (error != ERROR_SUCCESS) return error;
  if (type != REG_SZ) return ERROR_FILE_NOT_FOUND;
  *text = SystemFromUnits(units.substr(0, units.find(OLECHAR{0})));
  return layer == nullptr ? ERROR_SUCCESS : MiroltaRegistryLayer(key.Get(), layer);
}

// The same; a missing key is an empty text.
LONG ReadOptional(HKEY parent, const std::string& path, std::string* text) {
  text->clear();
  const LONG error = ReadText(parent, path, text);
  return error == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : error;
}

// Calls work(name) for each subkey until one fails.
template <typename Work>
LONG ForEachSubkey(HKEY parent, const std::string& path, Work work) {
  const RegistryPath key(parent, path);
  if (key.Error() == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
  LONG error = key.Error();
  for (DWORD i = 0; error == ERROR_SUCCESS; ++i) {
    OLECHAR name[kNameCapacity];
    DWORD length = kNameCapacity;
    error = RegEnumKeyExW(key.Get(), i, name, &length, nullptr, nullptr, nullptr, nullptr);
    if (error == ERROR_SUCCESS) error = work(SystemFromUnits({name, length}));
  }
  return error == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : error;
}

std::vector<std::string> SplitPath(const std::string& path) {
  std::vector<std::string> names;
  for (size_t begin = 0; begin <= path.size();) {
    const size_t end = std::min(path.find('\\', begin), path.size());
    names.push_back(path.substr(begin, end - begin));
    begin = end + 1;
  }
  return names;
}

LONG DeleteTree(HKEY parent, const std::string& path) {
  std::vector<std::string> names;
  LONG error = ForEachSubkey(parent, path, [&](const std::string& name) {
    names.push_back(name);
    return ERROR_SUCCESS;
  });
  for (const std::string& name : names) {
    std::string below = path;
    below.append("\\").append(name);
    if (error == ERROR_SUCCESS) error = DeleteTree(parent, below);
  }
  if (error == ERROR_SUCCESS) error = RegDeleteKeyW(parent, UnitsFromSystem(path).c_str());
  return error == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : error;
}

// A path to a file that need not exist, absolute and without "." and "..".
std::string PlainPath(const std::string& file) {
  std::error_code failure;
  const std::filesystem::path path = std::filesystem::absolute(file, failure);
  return failure ? file : path.lexically_normal().string();
}

// Whether a text of the registry is a path to the module.
class ModuleName {
 public:
  explicit ModuleName(const std::string& file) : plain_(PlainPath(file)), full_(FullPath(file)) {}
  bool Matches(const std::string& text) const {
    if (!text.starts_with('/')) return false;
    return PlainPath(text) == plain_ || (!full_.empty() && FullPath(text) == full_);
  }

 private:
  std::string plain_;
  std::string full_;  // empty if there is no such file
};

// Adds the keys at and below `path` for which matches(path, default value) is true.
template <typename Matches>
LONG AddKeys(const std::string& path, Matches matches, std::vector<KeyOfModule>* keys) {
  std::string text;
  KeyOfModule key = {.path = path};
  LONG error = ReadText(HKEY_CLASSES_ROOT, path, &text, &key.layer);
  if (error == ERROR_SUCCESS && matches(path, text)) keys->push_back(key);
  if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) return error;
  return ForEachSubkey(HKEY_CLASSES_ROOT, path, [&](const std::string& name) {
    return AddKeys(path + "\\" + name, matches, keys);
  });
}

template <typename Matches>
LONG AddKeys(Matches matches, std::vector<KeyOfModule>* keys) {
  const LONG error = AddKeys("CLSID", matches, keys);
  return error == ERROR_SUCCESS ? AddKeys("TypeLib", matches, keys) : error;
}

// Whether a key's default value is the file of a module: CLSID\id\InprocServer32 and
// TypeLib\id\version\locale\system. Others have folders (HELPDIR).
bool IsModuleKey(const std::string& path) {
  const auto depth = std::count(path.begin(), path.end(), '\\');
  return depth == (path.starts_with("CLSID") ? 2 : 4);
}

// The ProgIDs of all classes.
using ProgIds = std::multimap<std::string, std::string>;
std::string LowerCase(std::string text) {
  for (char& c : text) {
    if (c >= 'A' && c <= 'Z') c = static_cast<char>(c + ('a' - 'A'));
  }
  return text;
}
LONG ReadProgIds(ProgIds* prog_ids) {
  return ForEachSubkey(HKEY_CLASSES_ROOT, "", [&](const std::string& name) {
    std::string id;
    const LONG error = ReadOptional(HKEY_CLASSES_ROOT, name + "\\CLSID", &id);
    if (!id.empty()) prog_ids->emplace(LowerCase(id), name);
    return error;
  });
}

std::string TextOf(const CLSID& id) {
  OLECHAR text[40];
  const INT length = StringFromGUID2(id, text, 40);
  return SystemFromUnits({text, static_cast<size_t>(length) - 1});
}

// Reads a class below CLSID. `prog_ids` may be null.
LONG ReadClass(const std::string& id, const ProgIds* prog_ids, RegisteredClass* found) {
  const std::string base = "CLSID\\" + id;
  LONG error = ReadText(HKEY_CLASSES_ROOT, base + "\\InprocServer32", &found->file, &found->layer);
  if (error != ERROR_SUCCESS) return error;
  if (FAILED(CLSIDFromString(UnitsFromSystem(id).c_str(), &found->id))) return ERROR_FILE_NOT_FOUND;
  error = ReadOptional(HKEY_CLASSES_ROOT, base + "\\VersionIndependentProgID", &found->prog_id);
  if (error == ERROR_SUCCESS && found->prog_id.empty()) {
    error = ReadOptional(HKEY_CLASSES_ROOT, base + "\\ProgID", &found->prog_id);
  }
  if (found->prog_id.empty() && prog_ids != nullptr) {
    const auto row = prog_ids->find(LowerCase(id));
    if (row != prog_ids->end()) found->prog_id = row->second;
  }
  return error;
}

// Deletes what makes a key a ProgID, and the key if nothing else is in it.
LONG DeleteProgId(const std::string& name) {
  LONG error = DeleteTree(HKEY_CLASSES_ROOT, name + "\\CLSID");
  if (error == ERROR_SUCCESS) error = DeleteTree(HKEY_CLASSES_ROOT, name + "\\CurVer");
  bool is_empty = true;
  if (error == ERROR_SUCCESS) {
    error = ForEachSubkey(HKEY_CLASSES_ROOT, name, [&](const std::string&) {
      is_empty = false;
      return ERROR_SUCCESS;
    });
  }
  return error == ERROR_SUCCESS && is_empty ? DeleteTree(HKEY_CLASSES_ROOT, name) : error;
}

LONG DeleteClass(const std::string& id, const ProgIds& prog_ids) {
  LONG error = DeleteTree(HKEY_CLASSES_ROOT, "CLSID\\" + id);
  const auto [begin, end] = prog_ids.equal_range(LowerCase(id));
  for (auto row = begin; row != end && error == ERROR_SUCCESS; ++row) {
    error = DeleteProgId(row->second);
  }
  return error;
}

// Deletes a library by the names of its key: id, version, locale, system.
LONG DeleteLibrary(const std::vector<std::string>& names) {
  CLSID id;
  char* end = nullptr;
  const unsigned long major = strtoul(names[1].c_str(), &end, 16);
  const unsigned long minor = *end == '.' ? strtoul(end + 1, nullptr, 16) : 0;
  const unsigned long locale = strtoul(names[2].c_str(), nullptr, 16);
  const SYSKIND kind = strcasecmp(names[3].c_str(), "linux64") == 0 ? SYS_WIN64 : SYS_WIN32;
  if (FAILED(CLSIDFromString(UnitsFromSystem(names[0]).c_str(), &id))) return ERROR_SUCCESS;
  const HRESULT status = UnRegisterTypeLib(id, static_cast<WORD>(major), static_cast<WORD>(minor),
                                           static_cast<LCID>(locale), kind);
  return SUCCEEDED(status) ? ERROR_SUCCESS : ERROR_CANTWRITE;
}

// A word of a command line, quoted for the shell if it must be.
std::string ShellWord(const std::string& text) {
  constexpr char kPlain[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789/._-+@%:,";
  if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) return text;
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

}  // namespace

LONG FindClass(const CLSID& id, RegisteredClass* found) {
  return ReadClass(TextOf(id), nullptr, found);
}

LONG ReadClasses(std::vector<RegisteredClass>* classes) {
  ProgIds prog_ids;
  const LONG error = ReadProgIds(&prog_ids);
  if (error != ERROR_SUCCESS) return error;
  return ForEachSubkey(HKEY_CLASSES_ROOT, "CLSID", [&](const std::string& id) {
    RegisteredClass found;
    const LONG missing = ReadClass(id, &prog_ids, &found);
    if (missing == ERROR_SUCCESS) classes->push_back(found);
    return missing == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : missing;
  });
}

LONG FindKeysOf(const std::string& file, std::vector<KeyOfModule>* keys) {
  const ModuleName module(file);
  return AddKeys([&](const std::string&, const std::string& text) { return module.Matches(text); },
                 keys);
}

LONG FindKeysOfOthers(const std::string& file, std::vector<KeyOfModule>* keys) {
  const ModuleName module(file);
  return AddKeys(
      [&](const std::string& path, const std::string& text) {
        return IsModuleKey(path) && text.starts_with('/') && !module.Matches(text);
      },
      keys);
}

LONG RemoveClassesOf(const std::string& file) {
  std::vector<KeyOfModule> keys;
  ProgIds prog_ids;
  LONG error = FindKeysOf(file, &keys);
  if (error == ERROR_SUCCESS && keys.empty()) return ERROR_FILE_NOT_FOUND;
  if (error == ERROR_SUCCESS) error = ReadProgIds(&prog_ids);
  for (const KeyOfModule& key : keys) {
    if (error != ERROR_SUCCESS) break;
    std::vector<std::string> names = SplitPath(key.path);
    const bool is_class = names[0] == "CLSID";
    names.erase(names.begin());
    if (is_class && names.size() == 2) error = DeleteClass(names[0], prog_ids);
    if (!is_class && names.size() == 4) error = DeleteLibrary(names);
  }
  return error;
}

std::string RegistryFileOf(DWORD layer) {
  OLECHAR file[4096];
  const DWORD length = MiroltaRegistryFile(layer, file, 4096);
  return SystemFromUnits({file, length});
}

std::string RegistryReadProblem(LONG error) {
  const std::string file = RegistryFileOf(MiroltaRegistryFailedLayer());
  std::string problem = "the registry file " + file;
  if (error == ERROR_BADDB) {
    return problem + " is malformed in line " + std::to_string(MiroltaRegistryBadLine());
  }
  if (error == ERROR_ACCESS_DENIED) {
    return problem + " is refused: it must belong to you or to root, and nobody else may write it" +
           " (chmod 644 " + ShellWord(file) + ")";
  }
  problem += " cannot be read";
  return error == ERROR_CANTREAD ? problem
                                 : problem + ": " + DescribeStatus(HRESULT_FROM_WIN32(error));
}

std::string RemovalAdvice(const std::string& file, DWORD layer) {
  if (layer > kSystemLayer) return "its entries are to be removed from " + RegistryFileOf(layer);
  const char* const system = layer == kSystemLayer ? "--system " : "";
  return "its entries are removed by mirolta-host --unregister " + (system + ShellWord(file));
}

}  // namespace mirolta::host
