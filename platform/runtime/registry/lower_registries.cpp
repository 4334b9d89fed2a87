#include "registry/lower_registries.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "registry/registry_file.h"
#include "registry/registry_places.h"
#include "system/file_trust.h"

namespace mirolta::runtime {
namespace {

// Like the tree, protected by the registry's lock and not destroyed at exit.
struct LowerRegistries {
  RuntimeArray<char> names;
  RuntimeArray<FileState> states;
  RegistryKey root;
};
LowerRegistries* g_lower = nullptr;  // null: nothing loaded

// Calls work(file, layer) for each of the terminated names until one fails.
template <typename Work>
LONG ForEachFile(const RuntimeArray<char>& names, Work work) {
  DWORD layer = 0;
  LONG error = ERROR_SUCCESS;
  for (size_t at = 0; at != names.Size() && error == ERROR_SUCCESS;) {
    const char* const file = names.Data() + at;
    error = work(file, ++layer);
    at += std::strlen(file) + 1;
  }
  return error;
}

// A file that the process may not read, or that does not exist, is no layer. Other failures are for
// the reading to report.
bool CanBeRead(const char* file) {
  if (faccessat(AT_FDCWD, file, R_OK, AT_EACCESS) == 0) return true;
  return errno != ENOENT && errno != ENOTDIR && errno != EACCES;
}

bool IsUnchanged(const RuntimeArray<char>& names) {
  if (g_lower == nullptr || g_lower->names.Size() != names.Size()) return false;
  if (std::memcmp(g_lower->names.Data(), names.Data(), names.Size()) != 0) return false;
  return ForEachFile(names, [](const char* file, DWORD layer) -> LONG {
           FileState now;
           if (CanBeRead(file)) {
             const LONG error = StateOf(file, &now);
             if (error != ERROR_SUCCESS) return error;
           }
           return now == g_lower->states[layer - 1] ? ERROR_SUCCESS : ERROR_FILE_NOT_FOUND;
         }) == ERROR_SUCCESS;
}

// Adds to `view` what it lacks of `lower`.
bool AddLower(const RegistryKey& lower, DWORD layer, RegistryKey* view) {
  if (!view->HasValues() && lower.HasValues()) {
    if (!lower.CopyValuesTo(view)) return false;
    view->SetLayer(layer);
  }
  for (const RegistryKey* child = lower.FirstChild(); child != nullptr; child = child->Next()) {
    RegistryKey* same = view->FindChild(child->Name());
    if (same == nullptr) {
      same = view->AddChild(child->Name());
      if (same == nullptr) return false;
      same->SetLayer(layer);
    }
    if (!AddLower(*child, layer, same)) return false;
  }
  return true;
}

// The variables of a set-user-id process's caller name none of its files. Still nobody else may
// change the folders: who replaces a file is who may write its folder.
LONG CheckPlace(const char* file) {
  if (!HasBorrowedRights()) return ERROR_SUCCESS;
  RuntimeArray<char> resolved;
  const HRESULT status = ResolveTrusted(file, &resolved);
  if (status == E_OUTOFMEMORY) return ERROR_OUTOFMEMORY;
  return SUCCEEDED(status) ? ERROR_SUCCESS : ERROR_ACCESS_DENIED;
}

LONG Load(LowerRegistries* lower, DWORD* failed_layer, DWORD* bad_line) {
  return ForEachFile(lower->names, [&](const char* file, DWORD layer) -> LONG {
    *failed_layer = layer;
    *bad_line = 0;
    FileState state;
    if (CanBeRead(file)) {
      RegistryKey root;
      LONG error = CheckPlace(file);
      if (error == ERROR_SUCCESS) error = LoadRegistryFile(file, &root, &state, bad_line);
      if (error != ERROR_SUCCESS) return error;
      if (!AddLower(root, layer, &lower->root)) return ERROR_OUTOFMEMORY;
    }
    return lower->states.Append(state) ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
  });
}

}  // namespace

LONG ReadLowerRegistries(RegistryKey** root, DWORD* failed_layer, DWORD* bad_line) {
  *root = nullptr;
  RuntimeArray<char> names;
  LONG error = NameLowerRegistries(&names);
  if (error != ERROR_SUCCESS || names.IsEmpty()) return error;
  if (!IsUnchanged(names)) {
    DeleteRuntime(g_lower);
    g_lower = nullptr;
    RuntimeOwner<LowerRegistries> loaded(NewRuntime<LowerRegistries>());
    if (loaded == nullptr) return ERROR_OUTOFMEMORY;
    loaded->names.Swap(names);
    error = Load(loaded.get(), failed_layer, bad_line);
    if (error != ERROR_SUCCESS) return error;
    g_lower = loaded.release();
  }
  *root = &g_lower->root;
  return ERROR_SUCCESS;
}

}  // namespace mirolta::runtime
