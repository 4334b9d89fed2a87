#include "module_registration.h"

#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include "host_errors.h"
#include "portable/registry_mode.h"
#include "text_encoding.h"

namespace mirolta {
namespace {

constexpr OLECHAR kOwnClass[] = OLESTR("Vardeko.crypt.HashObject");
constexpr char kOwnModule[] = "/../lib/libMirolta.so";

// The absolute path of a file, empty if there is no such file.
std::string FullPath(const std::string& path) {
  char* full = realpath(path.c_str(), nullptr);
  std::string found = full != nullptr ? full : "";
  free(full);
  return found;
}

std::string OwnModulePath() {
  const std::string host = FullPath("/proc/self/exe");
  const size_t slash = host.rfind('/');
  return slash == std::string::npos ? "" : FullPath(host.substr(0, slash) + kOwnModule);
}

std::string StatusSentence(const char* what, HRESULT status) {
  char number[16];
  snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(status));
  const char* text = StandardText(status);
  std::string sentence = std::string(what) + " failed with " + number;
  if (text != nullptr) sentence = sentence + " (" + text + ")";
  const DWORD line = MiroltaRegistryBadLine();
  if (line != 0) {
    OLECHAR file[4096];
    const DWORD length = MiroltaRegistryFile(file, 4096);
    sentence += "; the registry file " + SystemFromUnits({file, length}) +
                " is malformed in line " + std::to_string(line);
  }
  return sentence;
}

}  // namespace

HRESULT CallRegistration(const std::string& module, bool registers, std::string* problem) {
  const std::string path = FullPath(module);
  if (path.empty()) {
    *problem = "there is no such file";
    return STG_E_FILENOTFOUND;
  }
  const HMODULE loaded = LoadLibraryW(UnitsFromSystem(path).c_str());
  if (loaded == nullptr) {
    *problem = "the file cannot be loaded as a module";
    return CO_E_ERRORINDLL;
  }
  const char* entry = registers ? "DllRegisterServer" : "DllUnregisterServer";
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

bool RegisterOwnModule() {
  CLSID known;
  if (SUCCEEDED(CLSIDFromProgID(kOwnClass, &known))) return false;
  const std::string module = OwnModulePath();
  if (module.empty() || MiroltaRegistryInMemory(TRUE) != ERROR_SUCCESS) return false;
  std::string problem;
  const HRESULT status = CallRegistration(module, true, &problem);
  if (FAILED(status)) {
    fprintf(stderr, "mirolta-host: %s: %s\n", module.c_str(), problem.c_str());
  }
  return SUCCEEDED(status);
}

}  // namespace mirolta
