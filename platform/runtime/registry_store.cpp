#include "registry_store.h"

#include <mutex>

#include "registry_file.h"
#include "utf8_text.h"

namespace mirolta {
namespace {

// Everything under g_lock. Nothing here has a destructor that runs at the end of the process; what
// is left in memory then is still in use by definition.
std::mutex g_lock;
RegistryKey* g_root = nullptr;  // null: nothing loaded
FileState g_state;
RuntimeArray<char>* g_file = nullptr;  // what g_root was loaded from
bool g_in_memory = false;
unsigned g_batches = 0;
bool g_changed = false;  // within the batch
DWORD g_bad_line = 0;
RegistryLock* g_file_lock = nullptr;

void Forget() {
  DeleteRuntime(g_root);
  g_root = nullptr;
  g_state = {};
}

// Loads what the file says unless that is what is loaded.
LONG Refresh() {
  if (g_root != nullptr && (g_in_memory || g_batches != 0)) return ERROR_SUCCESS;
  RuntimeArray<char> file;
  LONG error = NameRegistryFile(&file);
  if (error != ERROR_SUCCESS) return error;
  if (g_file == nullptr) g_file = NewRuntime<RuntimeArray<char>>();
  if (g_file == nullptr) return ERROR_OUTOFMEMORY;
  if (g_root != nullptr && g_file->size() == file.size() &&
      std::memcmp(g_file->data(), file.data(), file.size()) == 0) {
    FileState now;
    error = StateOf(file.data(), &now);
    if (error != ERROR_SUCCESS) return error;
    if (now == g_state) return ERROR_SUCCESS;
  }
  Forget();
  g_file->Swap(file);
  RegistryKey* root = NewRuntime<RegistryKey>();
  if (root == nullptr) return ERROR_OUTOFMEMORY;
  error = LoadRegistryFile(g_file->data(), root, &g_state, &g_bad_line);
  if (error != ERROR_SUCCESS) {
    DeleteRuntime(root);
    return error;
  }
  g_root = root;
  return ERROR_SUCCESS;
}

LONG EnterFile() {
  if (g_in_memory || g_batches != 0) return ERROR_SUCCESS;
  RuntimeArray<char> file;
  const LONG error = NameRegistryFile(&file);
  if (error != ERROR_SUCCESS) return error;
  if (g_file_lock == nullptr) g_file_lock = NewRuntime<RegistryLock>();
  if (g_file_lock == nullptr) return ERROR_OUTOFMEMORY;
  return g_file_lock->Enter(file.data());
}

void LeaveFile() {
  if (g_batches == 0 && g_file_lock != nullptr) g_file_lock->Leave();
}

LONG StoreFile() {
  const LONG error = StoreRegistryFile(g_file->data(), *g_root, &g_state);
  if (error != ERROR_SUCCESS) Forget();
  return error;
}

}  // namespace

RegistryUse::RegistryUse(RegistryAccess access) : access_(access) {
  g_lock.lock();
  error_ = access == RegistryAccess::kWrite ? EnterFile() : ERROR_SUCCESS;
  if (error_ == ERROR_SUCCESS && access != RegistryAccess::kHandles) error_ = Refresh();
}

RegistryUse::~RegistryUse() {
  if (access_ == RegistryAccess::kWrite) LeaveFile();
  g_lock.unlock();
}

RegistryKey* RegistryUse::root() const {
  return g_root;
}

LONG RegistryUse::Store() {
  if (g_in_memory) return ERROR_SUCCESS;
  if (g_batches != 0) {
    g_changed = true;
    return ERROR_SUCCESS;
  }
  return StoreFile();
}

}  // namespace mirolta

using namespace mirolta;

extern "C" LONG MiroltaRegistryInMemory(BOOL in_memory) {
  const std::lock_guard<std::mutex> lock(g_lock);
  const bool wanted = in_memory != FALSE;
  if (wanted == g_in_memory) return ERROR_SUCCESS;
  if (!wanted) {
    g_in_memory = false;
    Forget();
    return ERROR_SUCCESS;
  }
  LONG error = Refresh();
  if (error == ERROR_OUTOFMEMORY) return error;
  if (error != ERROR_SUCCESS) {
    Forget();
    g_root = NewRuntime<RegistryKey>();
    if (g_root == nullptr) return ERROR_OUTOFMEMORY;
  }
  g_in_memory = true;
  return ERROR_SUCCESS;
}

extern "C" LONG MiroltaRegistryBatch(BOOL begin) {
  const std::lock_guard<std::mutex> lock(g_lock);
  if (begin != FALSE) {
    LONG error = EnterFile();
    if (error == ERROR_SUCCESS) error = Refresh();
    if (error != ERROR_SUCCESS) {
      LeaveFile();
      return error;
    }
    ++g_batches;
    return ERROR_SUCCESS;
  }
  if (g_batches == 0) return ERROR_INVALID_PARAMETER;
  if (--g_batches != 0) return ERROR_SUCCESS;
  const LONG error = g_changed && !g_in_memory ? StoreFile() : ERROR_SUCCESS;
  g_changed = false;
  LeaveFile();
  return error;
}

extern "C" DWORD MiroltaRegistryFile(LPWSTR file, DWORD capacity) {
  RuntimeArray<char> name;
  RuntimeArray<WCHAR> wide;
  if (NameRegistryFile(&name) != ERROR_SUCCESS ||
      !AppendWideFileName(name.data(), name.size(), &wide))
    return 0;
  if (file == nullptr || wide.size() > capacity) return 0;
  std::memcpy(file, wide.data(), wide.size() * sizeof(WCHAR));
  return static_cast<DWORD>(wide.size() - 1);
}

extern "C" DWORD MiroltaRegistryBadLine() {
  const std::lock_guard<std::mutex> lock(g_lock);
  return g_bad_line;
}
