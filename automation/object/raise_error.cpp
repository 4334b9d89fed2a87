#include "raise_error.h"

#include "seam/checked_size.h"

namespace mirolta {

namespace {

constexpr ULONG_PTR kFirstText = 65536;  // message ids from here on are pointers
constexpr INT kMessageCapacity = 1024;
constexpr DWORD kNameCapacity = 120;
constexpr DWORD kSourceCapacity = 256;

// Reads the description of a class, the first value of its registry key. False if the class is not
// registered.
bool ReadClassDescription(REFCLSID class_id, OLECHAR (&source)[kSourceCapacity + 1]) {
  constexpr INT kGuidCapacity = 39;
  OLECHAR path[6 + kGuidCapacity] = OLESTR("CLSID\\");
  if (StringFromGUID2(class_id, path + 6, kGuidCapacity) == 0) return false;

  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return false;
  OLECHAR name[kNameCapacity];
  DWORD name_length = kNameCapacity;
  DWORD type = REG_NONE;
  DWORD size = kSourceCapacity * sizeof(OLECHAR);
  const LONG error = RegEnumValueW(key, 0, name, &name_length, nullptr, &type,
                                   reinterpret_cast<BYTE*>(source), &size);
  RegCloseKey(key);
  if (error != ERROR_SUCCESS || type != REG_SZ) return false;

  // Stored text may lack its terminator.
  source[size / sizeof(OLECHAR)] = 0;
  return source[0] != 0;
}

// Not inlined: the text is not on the stack during RaiseError's other calls.
__attribute__((noinline)) void SetSource(ICreateErrorInfo* error, REFCLSID class_id) {
  OLECHAR source[kSourceCapacity + 1];
  if (ReadClassDescription(class_id, source)) error->SetSource(source);
}

void SetMessage(ICreateErrorInfo* error, HINSTANCE module, UINT id) {
  OLECHAR unknown[] = OLESTR("Unknown Error");
  // Not in the frame: threads of small devices have little stack.
  OLECHAR* const text = NewArray<OLECHAR>(SizeConstant(kMessageCapacity));
  const bool found = text != nullptr && LoadStringW(module, id, text, kMessageCapacity) != 0;
  error->SetDescription(found ? text : unknown);
  delete[] text;
}

}  // namespace

HRESULT RaiseError(REFCLSID class_id, ULONG_PTR message_id, DWORD help_context,
                   const OLECHAR* help_file, REFIID interface_id, HRESULT status,
                   HINSTANCE module) {
  const bool is_text = message_id >= kFirstText;
  if (!is_text && status == 0) status = MessageStatus(static_cast<UINT>(message_id));

  ICreateErrorInfo* error = nullptr;
  if (SUCCEEDED(CreateErrorInfo(&error))) {
    error->SetGUID(interface_id);
    SetSource(error, class_id);
    if (help_context != 0 && help_file != nullptr) {
      error->SetHelpContext(help_context);
      error->SetHelpFile(const_cast<OLECHAR*>(help_file));
    }
    if (is_text) {
      error->SetDescription(reinterpret_cast<OLECHAR*>(message_id));
    } else {
      SetMessage(error, module, static_cast<UINT>(message_id));
    }
    void* found = nullptr;
    if (SUCCEEDED(error->QueryInterface(IID_IErrorInfo, &found))) {
      IErrorInfo* const info = static_cast<IErrorInfo*>(found);
      SetErrorInfo(0, info);
      info->Release();
    }
    error->Release();
  }
  return status != 0 ? status : DISP_E_EXCEPTION;
}

HRESULT RaiseError(REFCLSID class_id, ULONG_PTR message_id, REFIID interface_id, HRESULT status,
                   HINSTANCE module) {
  return RaiseError(class_id, message_id, 0, nullptr, interface_id, status, module);
}

}  // namespace mirolta
