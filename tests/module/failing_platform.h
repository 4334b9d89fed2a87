// Operations of the platform that fail on demand: registry, files, resources, type libraries, error
// objects. A program that links failing_platform.cpp replaces them; they call the runtime's until a
// test makes one fail.
#pragma once

#include <string>

#include "platform.h"
#include "platform_fault.h"
#include "text.h"

namespace mirolta::test {

struct PlatformFaults {
  PlatformFault open_key, create_key, close_key, delete_key, delete_value, set_value, query_value,
      enum_key, enum_value, file_name, lock_resource, guid_text, create_error, load_library,
      get_address;
};
inline PlatformFaults faults;

// These replace the module's name and library when they are set.
inline const OLECHAR* module_file = nullptr;
inline ITypeLib* module_library = nullptr;
// What the replaced library was registered with, and how often it was unregistered.
inline Text registered_file, registered_folder;
inline int unregistered = 0;
// Which libraries were asked for, in order.
inline std::string library_calls;

// An error object without error information.
class MuteError final : public ICreateErrorInfo {
 public:
  HRESULT STDMETHODCALLTYPE QueryInterface(REFIID, void** out) override {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  ULONG STDMETHODCALLTYPE AddRef() override { return ++references; }
  ULONG STDMETHODCALLTYPE Release() override { return --references; }
  HRESULT STDMETHODCALLTYPE SetGUID(REFGUID) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetSource(LPOLESTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetDescription(LPOLESTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetHelpFile(LPOLESTR) override { return S_OK; }
  HRESULT STDMETHODCALLTYPE SetHelpContext(DWORD) override { return S_OK; }

  ULONG references = 0;
};
// CreateErrorInfo gives it when it fails.
inline MuteError mute_error;

}  // namespace mirolta::test
