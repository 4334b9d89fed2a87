#include "command_line/module_registration.h"

#include <stdio.h>
#include <unistd.h>

#include <vector>

#include "engine/status_text.h"
#include "files/full_path.h"
#include "portable/registry_mode.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr OLECHAR kOwnClass[] = OLESTR("Vardeko.crypt.HashObject");
constexpr char kOwnModule[] = "/../lib/libMirolta.so";

std::string OwnModulePath() {
  const std::string host = FullPath("/proc/self/exe");
  const size_t slash = host.rfind('/');
  return slash == std::string::npos ? "" : FullPath(host.substr(0, slash) + kOwnModule);
}

std::string RegistryFile() {
  OLECHAR file[4096];
  const DWORD length = MiroltaRegistryFile(file, 4096);
  return SystemFromUnits({file, length});
}

std::string StatusSentence(const char* what, HRESULT status) {
  char number[16];
  snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(status));
  const char* text = StandardText(status, nullptr);
  std::string sentence = std::string(what) + " failed with " + number;
  if (text != nullptr) sentence = sentence + " (" + text + ")";
  const DWORD line = MiroltaRegistryBadLine();
  if (line != 0) {
    sentence +=
        "; the registry file " + RegistryFile() + " is malformed in line " + std::to_string(line);
  }
  return sentence;
}

// Describes a failure to read or write the registry file.
HRESULT RegistryFailure(const char* what, LONG error, std::string* problem) {
  const HRESULT status = HRESULT_FROM_WIN32(error);
  *problem = StatusSentence((what + (" the registry file " + RegistryFile())).c_str(), status);
  return status;
}

HRESULT CallEntry(const std::string& path, const char* entry, std::string* problem) {
  const HMODULE loaded = LoadLibraryW(UnitsFromSystem(path).c_str());
  if (loaded == nullptr) {
    *problem = "the file cannot be loaded as a module";
    return CO_E_ERRORINDLL;
  }
  HRESULT status = CO_E_ERRORINDLL;
  if (const FARPROC function = GetProcAddress(loaded, entry)) {
    status = function();
    if (FAILED(status)) *problem = StatusSentence(entry, status);
  } else {
    *problem = std::string("the module has no entry point ") + entry;
  }
  FreeLibrary(loaded);
  return status;
}

// Adds to *found the keys at and below `name` whose default value is the path of the module.
LONG FindKeysOf(const std::string& module, HKEY parent, const Units& name, const std::string& above,
                std::vector<std::string>* found) {
  HKEY key = nullptr;
  LONG error = RegOpenKeyExW(parent, name.c_str(), 0, KEY_READ, &key);
  if (error == ERROR_FILE_NOT_FOUND) return ERROR_SUCCESS;
  if (error != ERROR_SUCCESS) return error;
  const std::string path = above + "\\" + SystemFromUnits(name);
  OLECHAR text[4096];
  DWORD size = sizeof text;
  DWORD type = REG_NONE;
  error = RegQueryValueExW(key, nullptr, nullptr, &type, reinterpret_cast<BYTE*>(text), &size);
  // Other paths to the same file count too.
  if (error == ERROR_SUCCESS && type == REG_SZ && text[0] == OLECHAR{'/'} &&
      FullPath(SystemFromUnits(text)) == module) {
    found->push_back(path);
  }
  for (DWORD i = 0;; ++i) {
    OLECHAR below[256];
    DWORD length = 256;
    error = RegEnumKeyExW(key, i, below, &length, nullptr, nullptr, nullptr, nullptr);
    if (error == ERROR_SUCCESS) error = FindKeysOf(module, key, below, path, found);
    if (error != ERROR_SUCCESS) break;
  }
  RegCloseKey(key);
  return error == ERROR_NO_MORE_ITEMS ? ERROR_SUCCESS : error;
}

// DllUnregisterServer may succeed and leave keys behind.
HRESULT CheckIsGone(const std::string& module, std::string* problem) {
  std::vector<std::string> left;
  LONG error = ERROR_SUCCESS;
  for (const OLECHAR* root : {OLESTR("CLSID"), OLESTR("TypeLib")}) {
    if (error == ERROR_SUCCESS) {
      error = FindKeysOf(module, HKEY_CLASSES_ROOT, root, "HKEY_CLASSES_ROOT", &left);
    }
  }
  if (error != ERROR_SUCCESS) return RegistryFailure("reading", error, problem);
  if (left.empty()) return S_OK;
  *problem = "still registered in";
  for (const std::string& path : left) *problem += " " + path;
  return E_FAIL;
}

}  // namespace

HRESULT CallRegistration(const std::string& module, bool registers, std::string* problem,
                         RegistryScope scope) {
  if (scope == RegistryScope::kSystem) {
    *problem = "there is no system-wide registry yet";
    return E_NOTIMPL;
  }
  const std::string path = FullPath(module);
  if (path.empty()) {
    *problem = "there is no such file";
    return STG_E_FILENOTFOUND;
  }
  const LONG begun = MiroltaRegistryBatch(TRUE);
  if (begun != ERROR_SUCCESS) return RegistryFailure("reading", begun, problem);
  const char* entry = registers ? "DllRegisterServer" : "DllUnregisterServer";
  const HRESULT status = CallEntry(path, entry, problem);
  const LONG written = MiroltaRegistryBatch(FALSE);
  if (FAILED(status)) return status;
  if (written != ERROR_SUCCESS) return RegistryFailure("writing", written, problem);
  return registers ? status : CheckIsGone(path, problem);
}

bool RegisterOwnModule() {
  CLSID known;
  // Any other status is a failed look-up, such as E_OUTOFMEMORY, not a missing class.
  if (CLSIDFromProgID(kOwnClass, &known) != CO_E_CLASSSTRING) return false;
  const std::string module = OwnModulePath();
  if (module.empty() || MiroltaRegistryInMemory(TRUE) != ERROR_SUCCESS) return false;
  std::string problem;
  const HRESULT status = CallRegistration(module, true, &problem);
  if (FAILED(status)) {
    fprintf(stderr, "mirolta-host: %s: %s\n", module.c_str(), problem.c_str());
  }
  return SUCCEEDED(status);
}

}  // namespace mirolta::host
