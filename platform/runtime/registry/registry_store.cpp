#include "registry/registry_store.h"

#include <pthread.h>

#include <mutex>

#include "charsets/escaped_utf8.h"
#include "registry/lower_registries.h"
#include "registry/registry_places.h"

namespace mirolta::runtime {
namespace {

// Protected by g_lock, as is the tree. Nothing here is destroyed at exit: other threads may still
// use it.
std::mutex g_lock;
RegistryKey* g_root = nullptr;  // null: nothing loaded
FileState g_state;
RuntimeArray<char>* g_file = nullptr;  // the file that g_root was loaded from
bool g_in_memory = false;
RegistryKey* g_memory_lower = nullptr;  // what is visible below a registry in memory
DWORD g_failed_layer = 0;
DWORD g_bad_line = 0;

// The changes that a thread has collected.
struct Batch {
  unsigned depth = 0;
  bool is_system = false;  // changes the system-wide file
  RegistryKey root;        // the file's content with the changes
  RegistryChange* first = nullptr;
  RegistryChange** end = &first;

  ~Batch() {
    while (RegistryChange* change = first) {
      first = change->next;
      DeleteRuntime(change);
    }
  }
};
thread_local Batch* t_batch = nullptr;

// Discards the batch of a thread that ends; it is the thread's value of this key.
pthread_key_t g_batch_end;
bool g_has_batch_end = false;
void GiveUp(void* batch) {
  DeleteRuntime(static_cast<Batch*>(batch));
}

// A forked child finds the registry unlocked and holds no lock of its parent.
void BeforeFork() {
  g_lock.lock();
  RegistryLock::BeforeFork();
}
void AfterForkInParent() {
  RegistryLock::AfterFork(false);
  g_lock.unlock();
}
void AfterForkInChild() {
  RegistryLock::AfterFork(true);
  g_lock.unlock();
}
void WatchForksAndThreads() {
  static std::once_flag once;
  std::call_once(once, [] {
    pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
    g_has_batch_end = pthread_key_create(&g_batch_end, GiveUp) == 0;
  });
}

void Forget() {
  DeleteRuntime(g_root);
  g_root = nullptr;
  g_state = {};
}

// Loads the file unless it is unchanged since it was loaded. A process may have no file, which reads
// as an empty one.
LONG Refresh() {
  if (g_root != nullptr && g_in_memory) return ERROR_SUCCESS;
  RuntimeArray<char> file;
  LONG error = NameUserRegistry(&file);
  if (error == ERROR_OUTOFMEMORY) return error;
  const bool has_file = error == ERROR_SUCCESS;
  if (g_file == nullptr) g_file = NewRuntime<RuntimeArray<char>>();
  if (g_file == nullptr) return ERROR_OUTOFMEMORY;
  const bool is_same = g_root != nullptr && g_file->Size() == file.Size() &&
                       (!has_file || std::memcmp(g_file->Data(), file.Data(), file.Size()) == 0);
  if (is_same) {
    FileState now;
    error = has_file ? StateOf(file.Data(), &now) : ERROR_SUCCESS;
    if (error != ERROR_SUCCESS) return error;
    if (now == g_state) return ERROR_SUCCESS;
  }
  Forget();
  g_file->Swap(file);
  RegistryKey* root = NewRuntime<RegistryKey>();
  if (root == nullptr) return ERROR_OUTOFMEMORY;
  g_failed_layer = 0;
  g_bad_line = 0;
  error = has_file ? LoadRegistryFile(g_file->Data(), root, &g_state, &g_bad_line) : ERROR_SUCCESS;
  if (error != ERROR_SUCCESS) {
    DeleteRuntime(root);
    return error;
  }
  g_root = root;
  return ERROR_SUCCESS;
}

RegistryKey* CopyOf(const RegistryKey& root) {
  RegistryKey* copy = NewRuntime<RegistryKey>();
  if (copy == nullptr || root.CopyTo(copy)) return copy;
  DeleteRuntime(copy);
  return nullptr;
}

LONG RepeatAll(const RegistryChange* first, RegistryKey* root, bool* changed) {
  LONG error = ERROR_SUCCESS;
  *changed = false;
  for (const RegistryChange* change = first; change != nullptr && error == ERROR_SUCCESS;
       change = change->next) {
    bool has_changed = false;
    error = RepeatChange(*change, root, &has_changed);
    *changed = *changed || has_changed;
  }
  return error;
}

}  // namespace

RegistryUse::RegistryUse(RegistryAccess access) {
  WatchForksAndThreads();
  g_lock.lock();
  if (access == RegistryAccess::kHandles || t_batch != nullptr) return;
  while (access == RegistryAccess::kWrite && !g_in_memory && !file_lock_.IsHeld()) {
    g_lock.unlock();
    RuntimeArray<char> file;
    error_ = NameUserRegistry(&file);
    if (error_ == ERROR_SUCCESS) error_ = file_lock_.Enter(file.Data(), false);
    g_lock.lock();
    if (error_ != ERROR_SUCCESS) return;
  }
  error_ = Refresh();
}

RegistryUse::~RegistryUse() {
  g_lock.unlock();
}

RegistryKey* RegistryUse::Root() const {
  return t_batch != nullptr ? &t_batch->root : g_root;
}

LONG RegistryUse::Lower(RegistryKey** root) const {
  *root = nullptr;
  if (t_batch != nullptr) return ERROR_SUCCESS;
  if (!g_in_memory) return ReadLowerRegistries(root, &g_failed_layer, &g_bad_line);
  *root = g_memory_lower;
  return ERROR_SUCCESS;
}

LONG RegistryUse::Make(RegistryChange** change, bool* changed) {
  if (t_batch != nullptr) {
    const LONG error = MakeChange(**change, &t_batch->root, nullptr, changed);
    if (error != ERROR_SUCCESS) return error;
    // Collected even if it changes nothing now: it may when it is repeated.
    *t_batch->end = *change;
    t_batch->end = &(*change)->next;
    *change = nullptr;
    return ERROR_SUCCESS;
  }
  RegistryKey* lower = nullptr;
  LONG error = Lower(&lower);
  if (error != ERROR_SUCCESS) return error;
  if (g_in_memory) return MakeChange(**change, g_root, lower, changed);
  if ((*change)->kind == RegistryChange::Kind::kMakeKey &&
      g_root->FindPath(ViewOf((*change)->path)) != nullptr) {
    *changed = false;
    return ERROR_SUCCESS;
  }
  RegistryKey* draft = CopyOf(*g_root);
  if (draft == nullptr) return ERROR_OUTOFMEMORY;
  error = MakeChange(**change, draft, lower, changed);
  if (error == ERROR_SUCCESS && *changed) return Publish(draft);
  DeleteRuntime(draft);
  return error;
}

LONG RegistryUse::MakeAgain(const RegistryChange* first) {
  RegistryKey* draft = CopyOf(*g_root);
  if (draft == nullptr) return ERROR_OUTOFMEMORY;
  bool changed = false;
  const LONG error = RepeatAll(first, draft, &changed);
  if (error == ERROR_SUCCESS && changed) return Publish(draft);
  DeleteRuntime(draft);
  return error;
}

// Makes `draft` the registry. The file's lock is held, so no other process does the same.
LONG RegistryUse::Publish(RegistryKey* draft) {
  LONG error = ERROR_SUCCESS;
  FileState state;
  RuntimeArray<char> file;
  if (!g_in_memory) {
    if (!file.Append(g_file->Data(), g_file->Size())) {
      DeleteRuntime(draft);
      return ERROR_OUTOFMEMORY;
    }
    g_lock.unlock();
    error = StoreRegistryFile(file.Data(), *draft, false, &state);
    g_lock.lock();
  }
  // Another thread may have switched to memory meanwhile, where this change is not visible.
  if (error != ERROR_SUCCESS || (g_in_memory && !file.IsEmpty())) {
    DeleteRuntime(draft);
    return error;
  }
  DeleteRuntime(g_root);
  g_root = draft;
  g_state = state;
  if (!file.IsEmpty()) g_file->Swap(file);
  return ERROR_SUCCESS;
}

namespace {

// Reads the content that a batch starts from.
LONG ReadUserRegistry(RegistryKey* root) {
  const RegistryUse use(RegistryAccess::kRead);
  if (use.Error() != ERROR_SUCCESS) return use.Error();
  return use.Root()->CopyTo(root) ? ERROR_SUCCESS : ERROR_OUTOFMEMORY;
}

LONG ReadSystemRegistry(const char* file, RegistryKey* root) {
  FileState state;
  DWORD bad_line = 0;
  const LONG error = LoadRegistryFile(file, root, &state, &bad_line);
  const std::lock_guard<std::mutex> lock(g_lock);
  g_failed_layer = 1;
  g_bad_line = bad_line;
  return error;
}

LONG ReadSystemRegistry(RegistryKey* root) {
  {
    const std::lock_guard<std::mutex> lock(g_lock);
    if (g_in_memory) return ERROR_ACCESS_DENIED;
  }
  RuntimeArray<char> file;
  const LONG error = NameSystemRegistry(&file);
  return error == ERROR_SUCCESS ? ReadSystemRegistry(file.Data(), root) : error;
}

LONG BeginBatch(bool is_system) {
  if (t_batch != nullptr) {
    if (is_system && !t_batch->is_system) return ERROR_INVALID_PARAMETER;
    ++t_batch->depth;
    return ERROR_SUCCESS;
  }
  WatchForksAndThreads();
  RuntimeOwner<Batch> batch(NewRuntime<Batch>());
  if (batch == nullptr) return ERROR_OUTOFMEMORY;
  const LONG error = is_system ? ReadSystemRegistry(&batch->root) : ReadUserRegistry(&batch->root);
  if (error != ERROR_SUCCESS) return error;
  batch->depth = 1;
  batch->is_system = is_system;
  if (g_has_batch_end) pthread_setspecific(g_batch_end, batch.get());
  t_batch = batch.release();
  return ERROR_SUCCESS;
}

// Makes the changes of a batch in the system-wide file.
LONG ChangeSystemRegistry(const RegistryChange* first) {
  RuntimeArray<char> file;
  LONG error = NameSystemRegistry(&file);
  if (error != ERROR_SUCCESS) return error;
  RegistryLock lock;
  error = lock.Enter(file.Data(), true);
  if (error != ERROR_SUCCESS) return error;
  RegistryKey root;
  error = ReadSystemRegistry(file.Data(), &root);
  bool changed = false;
  if (error == ERROR_SUCCESS) error = RepeatAll(first, &root, &changed);
  if (error != ERROR_SUCCESS || !changed) return error;
  FileState state;
  return StoreRegistryFile(file.Data(), root, true, &state);
}

LONG ChangeUserRegistry(const RegistryChange* first) {
  RegistryUse use(RegistryAccess::kWrite);
  return use.Error() == ERROR_SUCCESS ? use.MakeAgain(first) : use.Error();
}

// Returns the thread's batch, which it has no longer; null if it has none.
RuntimeOwner<Batch> TakeBatch() {
  RuntimeOwner<Batch> batch(t_batch);
  if (t_batch != nullptr && g_has_batch_end) pthread_setspecific(g_batch_end, nullptr);
  t_batch = nullptr;
  return batch;
}

LONG EndBatch() {
  if (t_batch == nullptr) return ERROR_INVALID_PARAMETER;
  if (--t_batch->depth != 0) return ERROR_SUCCESS;
  const RuntimeOwner<Batch> batch = TakeBatch();
  if (batch->first == nullptr) return ERROR_SUCCESS;
  return batch->is_system ? ChangeSystemRegistry(batch->first) : ChangeUserRegistry(batch->first);
}

DWORD CopyWideName(const char* name, size_t size, LPWSTR out, DWORD capacity) {
  RuntimeArray<WCHAR> wide;
  if (!AppendWideFromUtf8(name, size, &wide)) return 0;
  if (out == nullptr || wide.Size() > capacity) return 0;
  std::memcpy(out, wide.Data(), wide.Size() * sizeof(WCHAR));
  return static_cast<DWORD>(wide.Size() - 1);
}

}  // namespace
}  // namespace mirolta::runtime

using namespace mirolta::runtime;

extern "C" LONG MiroltaRegistryInMemory(BOOL in_memory) {
  WatchForksAndThreads();
  const std::lock_guard<std::mutex> lock(g_lock);
  const bool wanted = in_memory != FALSE;
  if (wanted == g_in_memory) return ERROR_SUCCESS;
  if (!wanted) {
    g_in_memory = false;
    g_memory_lower = nullptr;
    Forget();
    return ERROR_SUCCESS;
  }
  RegistryKey* lower = nullptr;
  if (ReadLowerRegistries(&lower, &g_failed_layer, &g_bad_line) == ERROR_OUTOFMEMORY) {
    return ERROR_OUTOFMEMORY;
  }
  const LONG error = Refresh();
  if (error == ERROR_OUTOFMEMORY) return error;
  if (error != ERROR_SUCCESS) {
    Forget();
    g_root = NewRuntime<RegistryKey>();
    if (g_root == nullptr) return ERROR_OUTOFMEMORY;
  }
  g_memory_lower = lower;
  g_in_memory = true;
  return ERROR_SUCCESS;
}

extern "C" LONG MiroltaRegistryBatch(BOOL begin) {
  return begin != FALSE ? BeginBatch(false) : EndBatch();
}

extern "C" void MiroltaRegistryDiscard() {
  TakeBatch();
}

extern "C" LONG MiroltaSystemRegistryBatch() {
  return BeginBatch(true);
}

extern "C" DWORD MiroltaRegistryFile(DWORD layer, LPWSTR file, DWORD capacity) {
  RuntimeArray<char> names;
  const LONG error = layer == 0 ? NameUserRegistry(&names) : NameLowerRegistries(&names);
  if (error != ERROR_SUCCESS) return 0;
  for (size_t at = 0; at != names.Size();) {
    const char* const name = names.Data() + at;
    const size_t size = std::strlen(name) + 1;
    if (layer <= 1) return CopyWideName(name, size, file, capacity);
    --layer;
    at += size;
  }
  return 0;
}

extern "C" DWORD MiroltaRegistryFailedLayer() {
  const std::lock_guard<std::mutex> lock(g_lock);
  return g_failed_layer;
}

extern "C" DWORD MiroltaRegistryBadLine() {
  const std::lock_guard<std::mutex> lock(g_lock);
  return g_bad_line;
}
