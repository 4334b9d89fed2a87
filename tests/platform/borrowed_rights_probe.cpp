// What a program finds that may have rights its caller does not have:
//   probe rights            ends with 0 if it has such rights
//   probe registered        creates the test class as the registry says
//   probe module FILE       registers FILE for the test class in memory and creates it
//   probe library FILE      loads the type library of FILE
// Prints the status and the name of the registry's file.
#include <sys/auxv.h>
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "mirolta/runtime.h"
#include "portable/registry_mode.h"
#include "system_test_module.h"

using namespace mirolta;

namespace {

bool Register(const std::string& file) {
  WCHAR id[39];
  StringFromGUID2(kTestClass, id, 39);
  const std::u16string path = std::u16string(u"CLSID\\") + id + u"\\InprocServer32";
  const std::u16string text(file.begin(), file.end());
  HKEY key = nullptr;
  return MiroltaRegistryInMemory(TRUE) == ERROR_SUCCESS &&
         RegCreateKeyExW(HKEY_CLASSES_ROOT, path.c_str(), 0, nullptr, 0, KEY_WRITE, nullptr, &key,
                         nullptr) == ERROR_SUCCESS &&
         RegSetValueExW(key, nullptr, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                        static_cast<DWORD>(text.size() * 2 + 2)) == ERROR_SUCCESS;
}

HRESULT Create() {
  void* object = nullptr;
  return CoCreateInstance(kTestClass, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &object);
}

HRESULT Load(const std::string& file) {
  ITypeLib* library = nullptr;
  return LoadTypeLib(std::u16string(file.begin(), file.end()).c_str(), &library);
}

}  // namespace

int main(int count, char** words) {
  if (count < 2) return 2;
  if (std::strcmp(words[1], "rights") == 0) _exit(getauxval(AT_SECURE) != 0 ? 0 : 1);
  HRESULT status = E_INVALIDARG;
  if (std::strcmp(words[1], "registered") == 0) status = Create();
  if (std::strcmp(words[1], "module") == 0 && count == 3 && Register(words[2])) status = Create();
  if (std::strcmp(words[1], "library") == 0 && count == 3) status = Load(words[2]);
  WCHAR file[1024] = {};
  const DWORD length = MiroltaRegistryFile(0, file, 1024);
  std::printf("%08X %u", static_cast<unsigned>(status), length);
  std::fflush(stdout);
  _exit(0);  // a leak checker could not read this process
}
