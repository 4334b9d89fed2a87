#include "command_line/module_registration.h"

#include <errno.h>
#include <stdio.h>
#include <string.h>
#include <unistd.h>

#include <vector>

#include "command_line/registered_classes.h"
#include "engine/status_text.h"
#include "files/full_path.h"
#include "portable/registry_mode.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr OLECHAR kOwnClass[] = OLESTR("Vardeko.crypt.HashObject");
// Relative to the host: the folder of an installation, and that of a build.
constexpr const char* kOwnFolders[] = {MIROLTA_MODULE_FOLDER, "../lib"};

bool g_own_module_registered = false;

// Describes a failure to read or write the registry file that a registration changes.
HRESULT RegistryFailure(bool is_writing, LONG error, RegistryScope scope, std::string* problem) {
  const HRESULT status = HRESULT_FROM_WIN32(error);
  const bool is_system = scope == RegistryScope::kSystem;
  if (error == ERROR_FILE_NOT_FOUND && !is_system) {
    *problem = "there is no registry file: neither MIROLTA_REGISTRY nor HOME is set";
  } else if (is_system && RegistryFileOf(1).empty()) {
    *problem = "MIROLTA_REGISTRY replaces the system-wide registry; unset it to use --system";
  } else if (is_writing) {
    *problem = "the registry file " + RegistryFileOf(is_system ? 1 : 0) + " cannot be written";
    if (error != ERROR_CANTWRITE) *problem += ": " + DescribeStatus(status);
  } else {
    *problem = RegistryReadProblem(error);
  }
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
    if (FAILED(status)) *problem = std::string(entry) + " failed: " + DescribeStatus(status);
  } else {
    *problem = std::string("the module has no entry point ") + entry;
  }
  FreeLibrary(loaded);
  return status;
}

// Removes the entries of a module that cannot do so itself; `problem` says why.
HRESULT RemoveEntries(const std::string& module, HRESULT status, std::string* problem) {
  const LONG error = RemoveClassesOf(module);
  if (error == ERROR_SUCCESS) return S_OK;
  if (error != ERROR_FILE_NOT_FOUND) {
    *problem = "removing its entries failed: " + DescribeStatus(HRESULT_FROM_WIN32(error));
  } else {
    *problem += ", and nothing is registered for it";
  }
  return status;
}

// Of a file whose path cannot be found; errno says why.
HRESULT NotReached(std::string* problem) {
  const bool is_missing = errno == ENOENT || errno == ENOTDIR;
  *problem = is_missing ? "there is no such file"
                        : std::string("the file cannot be reached: ") + strerror(errno);
  return STG_E_FILENOTFOUND;
}

// Replaces all that the registry has of the file: another version may have had other classes.
HRESULT RegisterWithinBatch(const std::string& module, std::string* problem) {
  const std::string path = FullLinkPath(module);
  if (path.empty()) return NotReached(problem);
  const LONG error = RemoveClassesOf(path);
  if (error != ERROR_SUCCESS && error != ERROR_FILE_NOT_FOUND) {
    *problem = "removing its entries failed: " + DescribeStatus(HRESULT_FROM_WIN32(error));
    return HRESULT_FROM_WIN32(error);
  }
  return CallEntry(path, "DllRegisterServer", problem);
}

HRESULT UnregisterWithinBatch(const std::string& module, std::string* problem) {
  const std::string path = FullLinkPath(module);
  const HRESULT status =
      path.empty() ? NotReached(problem) : CallEntry(path, "DllUnregisterServer", problem);
  const bool has_entry = status != STG_E_FILENOTFOUND && status != CO_E_ERRORINDLL;
  return has_entry ? status : RemoveEntries(module, status, problem);
}

LONG BeginBatch(RegistryScope scope) {
  return scope == RegistryScope::kSystem ? MiroltaSystemRegistryBatch()
                                         : MiroltaRegistryBatch(TRUE);
}

// Unregisters a module. Its function deletes its classes whoever has registered them: where it
// deletes what names another copy, the batch starts again and only deletes what names the module.
LONG UnregisterOwn(const std::string& module, RegistryScope scope, HRESULT* status,
                   std::string* problem) {
  std::vector<KeyOfModule> before;
  std::vector<KeyOfModule> after;
  LONG error = FindKeysOfOthers(module, &before);
  if (error != ERROR_SUCCESS) return error;
  *status = UnregisterWithinBatch(module, problem);
  error = FindKeysOfOthers(module, &after);
  if (error != ERROR_SUCCESS || after.size() == before.size()) return error;
  MiroltaRegistryDiscard();
  problem->clear();
  *status = S_OK;
  error = BeginBatch(scope);
  if (error == ERROR_SUCCESS) error = RemoveClassesOf(module);
  return error == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : error;
}

// DllUnregisterServer may succeed and leave keys behind. Within a batch only the written layer is
// visible.
HRESULT CheckIsGone(const std::string& module, RegistryScope scope, std::string* problem) {
  std::vector<KeyOfModule> left;
  const LONG error = FindKeysOf(module, &left);
  if (error != ERROR_SUCCESS) return RegistryFailure(false, error, scope, problem);
  if (left.empty()) return S_OK;
  *problem = "still registered in";
  for (const KeyOfModule& key : left) *problem += " HKEY_CLASSES_ROOT\\" + key.path;
  return E_FAIL;
}

// A module that the user unregisters may be registered for everybody. Lower layers that cannot be
// read are for those to report who need them.
HRESULT CheckLowerLayers(const std::string& module, std::string* problem) {
  std::vector<KeyOfModule> left;
  if (FindKeysOf(module, &left) != ERROR_SUCCESS) return S_OK;
  for (const KeyOfModule& key : left) {
    if (key.layer == 0) continue;
    *problem = "still registered in the system-wide registry " + RegistryFileOf(key.layer) + "; " +
               RemovalAdvice(module, key.layer);
    return E_FAIL;
  }
  return S_OK;
}

}  // namespace

HRESULT CallRegistration(const std::string& module, bool registers, std::string* problem,
                         RegistryScope scope) {
  const bool is_system = scope == RegistryScope::kSystem;
  LONG error = BeginBatch(scope);
  HRESULT status = S_OK;
  if (error == ERROR_SUCCESS && registers) status = RegisterWithinBatch(module, problem);
  if (error == ERROR_SUCCESS && !registers) error = UnregisterOwn(module, scope, &status, problem);
  if (error != ERROR_SUCCESS || (registers && FAILED(status))) MiroltaRegistryDiscard();
  if (error != ERROR_SUCCESS) return RegistryFailure(false, error, scope, problem);
  if (registers && FAILED(status)) return status;
  if (SUCCEEDED(status) && !registers) status = CheckIsGone(module, scope, problem);
  const LONG written = MiroltaRegistryBatch(FALSE);
  if (SUCCEEDED(status) && written != ERROR_SUCCESS) {
    return RegistryFailure(true, written, scope, problem);
  }
  if (registers || is_system) return status;
  // Also after a failure: a module may fail to remove what the user's registry does not hold.
  const HRESULT lower = CheckLowerLayers(module, problem);
  return FAILED(lower) ? lower : status;
}

std::string OwnModulePath() {
  const std::string host = FullPath("/proc/self/exe");
  const size_t slash = host.rfind('/');
  if (slash == std::string::npos) return "";
  for (const char* folder : kOwnFolders) {
    std::string module =
        FullLinkPath(host.substr(0, slash + 1) + folder + '/' + MIROLTA_MODULE_FILE);
    if (!module.empty()) return module;
  }
  return "";
}

bool IsOwnModuleRegistered() {
  return g_own_module_registered;
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
  g_own_module_registered = SUCCEEDED(status);
  return g_own_module_registered;
}

}  // namespace mirolta::host
