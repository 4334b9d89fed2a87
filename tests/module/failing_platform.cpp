#include "failing_platform.h"

using namespace mirolta::test;

// The operation that the definition here hides.
#define RUNTIME(name) RuntimeOperation(&(name), #name)

extern "C" {

LONG RegOpenKeyExW(HKEY key, LPCWSTR path, DWORD options, REGSAM access, HKEY* out) {
  return faults.open_key.Strikes() ? ERROR_ACCESS_DENIED
                                   : RUNTIME(RegOpenKeyExW)(key, path, options, access, out);
}

LONG RegCreateKeyExW(HKEY key, LPCWSTR path, DWORD reserved, LPWSTR key_class, DWORD options,
                     REGSAM access, void* security, HKEY* out, DWORD* disposition) {
  if (faults.create_key.Strikes()) return ERROR_ACCESS_DENIED;
  return RUNTIME(RegCreateKeyExW)(key, path, reserved, key_class, options, access, security, out,
                                  disposition);
}

// The key is closed nevertheless.
LONG RegCloseKey(HKEY key) {
  const LONG error = RUNTIME(RegCloseKey)(key);
  return faults.close_key.Strikes() ? ERROR_ACCESS_DENIED : error;
}

LONG RegDeleteKeyW(HKEY key, LPCWSTR path) {
  return faults.delete_key.Strikes() ? ERROR_ACCESS_DENIED : RUNTIME(RegDeleteKeyW)(key, path);
}

LONG RegDeleteValueW(HKEY key, LPCWSTR name) {
  return faults.delete_value.Strikes() ? ERROR_ACCESS_DENIED : RUNTIME(RegDeleteValueW)(key, name);
}

LONG RegSetValueExW(HKEY key, LPCWSTR name, DWORD reserved, DWORD type, const BYTE* data,
                    DWORD size) {
  return faults.set_value.Strikes()
             ? ERROR_ACCESS_DENIED
             : RUNTIME(RegSetValueExW)(key, name, reserved, type, data, size);
}

LONG RegQueryValueExW(HKEY key, LPCWSTR name, DWORD* reserved, DWORD* type, BYTE* data,
                      DWORD* size) {
  return faults.query_value.Strikes()
             ? ERROR_ACCESS_DENIED
             : RUNTIME(RegQueryValueExW)(key, name, reserved, type, data, size);
}

LONG RegEnumKeyExW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved,
                   LPWSTR key_class, DWORD* class_length, FILETIME* written) {
  if (faults.enum_key.Strikes()) return ERROR_ACCESS_DENIED;
  return RUNTIME(RegEnumKeyExW)(key, index, name, length, reserved, key_class, class_length,
                                written);
}

LONG RegEnumValueW(HKEY key, DWORD index, LPWSTR name, DWORD* length, DWORD* reserved, DWORD* type,
                   BYTE* data, DWORD* size) {
  if (faults.enum_value.Strikes()) return ERROR_ACCESS_DENIED;
  return RUNTIME(RegEnumValueW)(key, index, name, length, reserved, type, data, size);
}

DWORD GetModuleFileNameW(HMODULE module, LPWSTR file, DWORD capacity) {
  if (faults.file_name.Strikes()) return 0;
  if (module_file == nullptr) return RUNTIME(GetModuleFileNameW)(module, file, capacity);
  // Cuts a name that is too long, as the platform does.
  DWORD length = 0;
  while (length < capacity && module_file[length] != 0) {
    file[length] = module_file[length];
    ++length;
  }
  if (length < capacity) file[length] = 0;
  return length;
}

void* LockResource(void* loaded) {
  return faults.lock_resource.Strikes() ? nullptr : RUNTIME(LockResource)(loaded);
}

INT StringFromGUID2(REFGUID id, LPOLESTR text, INT capacity) {
  return faults.guid_text.Strikes() ? 0 : RUNTIME(StringFromGUID2)(id, text, capacity);
}

HRESULT LoadTypeLib(const OLECHAR* file, ITypeLib** out) {
  library_calls += "file ";
  if (module_library == nullptr) return RUNTIME(LoadTypeLib)(file, out);
  *out = module_library;
  module_library->AddRef();
  return S_OK;
}

HRESULT LoadRegTypeLib(REFGUID library, WORD major, WORD minor, LCID locale, ITypeLib** out) {
  library_calls += "registered " + std::to_string(major) + "." + std::to_string(minor) + " " +
                   std::to_string(locale) + " ";
  return RUNTIME(LoadRegTypeLib)(library, major, minor, locale, out);
}

HRESULT RegisterTypeLib(ITypeLib* library, OLECHAR* file, OLECHAR* help_directory) {
  if (module_library == nullptr) return RUNTIME(RegisterTypeLib)(library, file, help_directory);
  registered_file = file;
  registered_folder = help_directory;
  return S_FALSE;
}

HMODULE LoadLibraryW(LPCWSTR file) {
  return faults.load_library.Strikes() ? nullptr : RUNTIME(LoadLibraryW)(file);
}

static LONG WINAPI Unregistered() {
  ++unregistered;
  return E_ABORT;
}

FARPROC GetProcAddress(HMODULE module, LPCSTR name) {
  if (faults.get_address.Strikes()) return nullptr;
  return module_library != nullptr ? Unregistered : RUNTIME(GetProcAddress)(module, name);
}

HRESULT CreateErrorInfo(ICreateErrorInfo** out) {
  if (!faults.create_error.Strikes()) return RUNTIME(CreateErrorInfo)(out);
  *out = &mute_error;
  mute_error.AddRef();
  return S_OK;
}

}  // extern "C"
