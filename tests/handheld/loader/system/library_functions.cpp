// The registry, and the libraries of objects and automation: the runtime's functions have the
// device's types.
#include "platform.h"
#include "system/system_library.h"

namespace mirolta::loader {

std::span<const SystemFunction> RegistryFunctions() {
  static const SystemFunction functions[] = {
      Function("RegCloseKey", RegCloseKey),       Function("RegCreateKeyExW", RegCreateKeyExW),
      Function("RegDeleteKeyW", RegDeleteKeyW),   Function("RegDeleteValueW", RegDeleteValueW),
      Function("RegEnumKeyExW", RegEnumKeyExW),   Function("RegEnumValueW", RegEnumValueW),
      Function("RegOpenKeyExW", RegOpenKeyExW),   Function("RegQueryValueExW", RegQueryValueExW),
      Function("RegSetValueExW", RegSetValueExW),
  };
  return functions;
}

std::span<const SystemFunction> ObjectFunctions() {
  static const SystemFunction functions[] = {
      Function("CLSIDFromString", CLSIDFromString), Function("CoTaskMemAlloc", CoTaskMemAlloc),
      Function("CoTaskMemFree", CoTaskMemFree),     Function("StringFromCLSID", StringFromCLSID),
      Function("StringFromGUID2", StringFromGUID2),
  };
  return functions;
}

std::span<const SystemFunction> AutomationFunctions() {
  static const SystemFunction functions[] = {
      Function("CreateErrorInfo", CreateErrorInfo),
      Function("GetErrorInfo", GetErrorInfo),
      Function("LoadRegTypeLib", LoadRegTypeLib),
      Function("LoadTypeLib", LoadTypeLib),
      Function("RegisterTypeLib", RegisterTypeLib),
      Function("SafeArrayAccessData", SafeArrayAccessData),
      Function("SafeArrayCreate", SafeArrayCreate),
      Function("SafeArrayCreateVector", SafeArrayCreateVector),
      Function("SafeArrayDestroy", SafeArrayDestroy),
      Function("SafeArrayGetDim", SafeArrayGetDim),
      Function("SafeArrayGetElement", SafeArrayGetElement),
      Function("SafeArrayGetElemsize", SafeArrayGetElemsize),
      Function("SafeArrayGetLBound", SafeArrayGetLBound),
      Function("SafeArrayGetUBound", SafeArrayGetUBound),
      Function("SafeArrayLock", SafeArrayLock),
      Function("SafeArrayPtrOfIndex", SafeArrayPtrOfIndex),
      Function("SafeArrayUnaccessData", SafeArrayUnaccessData),
      Function("SafeArrayUnlock", SafeArrayUnlock),
      Function("SetErrorInfo", SetErrorInfo),
      Function("SysAllocString", SysAllocString),
      Function("SysAllocStringByteLen", SysAllocStringByteLen),
      Function("SysAllocStringLen", SysAllocStringLen),
      Function("SysFreeString", SysFreeString),
      Function("SysReAllocString", SysReAllocString),
      Function("SysReAllocStringLen", SysReAllocStringLen),
      Function("SysStringByteLen", SysStringByteLen),
      Function("SysStringLen", SysStringLen),
      Function("VariantChangeType", VariantChangeType),
      Function("VariantChangeTypeEx", VariantChangeTypeEx),
      Function("VariantClear", VariantClear),
      Function("VariantCopy", VariantCopy),
      Function("VariantCopyInd", VariantCopyInd),
      Function("VariantInit", VariantInit),
  };
  return functions;
}

}  // namespace mirolta::loader
