#include "classes/object_creation.h"

#include <stdio.h>
#include <unistd.h>

#include "classes/class_list.h"
#include "command_line/module_registration.h"
#include "command_line/registered_classes.h"
#include "engine/status_text.h"
#include "files/full_path.h"
#include "portable/registry_mode.h"

namespace mirolta::host {
namespace {

bool g_reports_modules = false;

// A status of reading the registry as its error number; 0 for others.
LONG RegistryErrorOf(HRESULT status) {
  for (const LONG error : {ERROR_BADDB, ERROR_CANTREAD, ERROR_ACCESS_DENIED}) {
    if (status == HRESULT_FROM_WIN32(error)) return error;
  }
  return ERROR_SUCCESS;
}

bool IsMissing(const std::string& file) {
  return file.starts_with('/') && access(file.c_str(), F_OK) != 0;
}

std::string RegisteredIn(const RegisteredClass& registered) {
  return registered.file + ", registered in " + RegistryFileOf(registered.layer) + ", ";
}

// Why a registered class has no objects, where its module is to blame.
std::string ModuleProblem(const RegisteredClass& registered, HRESULT status) {
  if (IsMissing(registered.file)) {
    return RegisteredIn(registered) + "does not exist; " +
           RemovalAdvice(registered.file, registered.layer);
  }
  if (status == CO_E_ERRORINDLL) {
    return RegisteredIn(registered) + "cannot be loaded as a module";
  }
  return status == CO_E_DLLNOTFOUND ? RegisteredIn(registered) + "cannot be found" : "";
}

std::string Explain(const Units& name, HRESULT status) {
  char number[16];
  snprintf(number, sizeof number, "0x%08X", static_cast<unsigned>(status));
  std::string text = std::string("(") + number + ", " +
                     StandardText(status, "an error of the class without a known text") + ")";
  CLSID id;
  RegisteredClass registered;
  std::string more;
  const HRESULT known = CLSIDFromProgID(name.c_str(), &id);
  if (known == status && RegistryErrorOf(status) != ERROR_SUCCESS) {
    more = RegistryReadProblem(RegistryErrorOf(status));
  } else if (SUCCEEDED(known) && FindClass(id, &registered) == ERROR_SUCCESS) {
    more = ModuleProblem(registered, status);
  }
  return more.empty() ? text : text + ": " + more;
}

HRESULT CreateRegistered(const Units& name, CLSID* id, OwnedReference<IDispatch>* object) {
  const HRESULT status = CLSIDFromProgID(name.c_str(), id);
  if (FAILED(status)) return status;
  void* made = nullptr;
  const HRESULT created =
      CoCreateInstance(*id, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch, &made);
  object->Attach(static_cast<IDispatch*>(made));
  return created;
}

// Whether a module has a class.
bool HasClass(const std::string& module, const CLSID& id) {
  using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
  const HMODULE loaded = LoadLibraryW(UnitsFromSystem(module).c_str());
  if (loaded == nullptr) return false;
  const auto get = reinterpret_cast<GetClassObject>(
      reinterpret_cast<void*>(GetProcAddress(loaded, "DllGetClassObject")));
  void* factory = nullptr;
  const bool has =
      get != nullptr && SUCCEEDED(get(id, IID_IClassFactory, &factory)) && factory != nullptr;
  if (has) static_cast<IUnknown*>(factory)->Release();
  FreeLibrary(loaded);
  return has;
}

void Report(const Units& name, const CLSID& id) {
  RegisteredClass registered;
  if (FindClass(id, &registered) != ERROR_SUCCESS) return;
  const std::string own = OwnModulePath();
  const bool is_own = !own.empty() && FullPath(registered.file) == FullPath(own);
  std::string text = SystemFromUnits(name) + ": " + registered.file;
  text += is_own && IsOwnModuleRegistered() ? ", beside the host"
                                            : ", registered in " + RegistryFileOf(registered.layer);
  if (!is_own && !own.empty() && HasClass(own, id)) text += ", instead of " + own;
  fprintf(stderr, "mirolta-host: %s\n", text.c_str());
}

HRESULT Create(const Units& name, OwnedReference<IDispatch>* object) {
  CLSID id = {};
  HRESULT status = CreateRegistered(name, &id, object);
  if (status == CO_E_CLASSSTRING) {
    const HRESULT created = CreateHostObject(name, object);
    if (created != CO_E_CLASSSTRING) return created;
  }
  if (FAILED(status) && RegisterOwnModule()) status = CreateRegistered(name, &id, object);
  if (SUCCEEDED(status) && g_reports_modules) Report(name, id);
  return status;
}

}  // namespace

HRESULT CreateObject(const Units& name, OwnedReference<IDispatch>* object, std::string* problem) {
  const HRESULT status = Create(name, object);
  if (FAILED(status)) *problem = Explain(name, status);
  return status;
}

void ReportModules(bool wanted) {
  g_reports_modules = wanted;
}

}  // namespace mirolta::host
