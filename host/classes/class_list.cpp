#include "classes/class_list.h"

#include <strings.h>

#include <new>

#include "classes/ado_stream.h"
#include "classes/arguments_object.h"
#include "classes/dictionary.h"
#include "classes/drive_object.h"
#include "classes/environment_collection.h"
#include "classes/file_collections.h"
#include "classes/file_object.h"
#include "classes/file_system_object.h"
#include "classes/folder_object.h"
#include "classes/shell_object.h"
#include "classes/special_folders.h"
#include "classes/text_stream.h"

namespace mirolta::host {
namespace {

constexpr HostClassRow kClasses[] = {
    {"Scripting.FileSystemObject", &FileSystemObject::kClass, NewFileSystemObject},
    {"ADODB.Stream", &kAdoStreamClass, NewAdoStream},
    {"Scripting.Dictionary", &kDictionaryClass, NewDictionary},
    {"WScript.Shell", &kShellClass, NewShell},
    {"WScript.Shell.1", &kShellClass, NewShell},
};

constexpr const HostClass* kAllClasses[] = {
    &FileSystemObject::kClass, &FileObject::kClass,  &FilesObject::kClass,  &FolderObject::kClass,
    &FoldersObject::kClass,    &DriveObject::kClass, &DrivesObject::kClass, &TextStream::kClass,
    &kAdoStreamClass,          &kDictionaryClass,    &kShellClass,          &kEnvironmentClass,
    &kSpecialFoldersClass,     &kArgumentsClass,     &kNamedArgumentsClass, &kUnnamedArgumentsClass,
};

}  // namespace

std::span<const HostClassRow> HostClasses() {
  return kClasses;
}

std::span<const HostClass* const> AllHostClasses() {
  return kAllClasses;
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
