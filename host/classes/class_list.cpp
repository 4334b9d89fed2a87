#include "classes/class_list.h"

#include <strings.h>

#include <new>

#include "classes/ado_stream.h"
#include "classes/dictionary.h"
#include "classes/file_system_object.h"
#include "classes/shell_object.h"

namespace mirolta::host {
namespace {

constexpr HostClassRow kClasses[] = {
    {"Scripting.FileSystemObject", &FileSystemObject::kClass, NewFileSystemObject},
    {"ADODB.Stream", &kAdoStreamClass, NewAdoStream},
    {"Scripting.Dictionary", &kDictionaryClass, NewDictionary},
    {"WScript.Shell", &kShellClass, NewShell},
    {"WScript.Shell.1", &kShellClass, NewShell},
};

}  // namespace

std::span<const HostClassRow> HostClasses() {
  return kClasses;
}

HRESULT CreateHostObject(UnitsView progid, OwnedReference<IDispatch>* object) {
  try {
    const std::string name = SystemFromUnits(progid);
    for (const HostClassRow& row : HostClasses()) {
      if (strcasecmp(row.progid, name.c_str()) != 0) continue;
      object->Attach(row.create());
      return S_OK;
    }
    return CO_E_CLASSSTRING;
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace mirolta::host
