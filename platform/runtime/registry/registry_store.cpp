#include "registry/registry_store.h"

#include <pthread.h>

#include <mutex>

#include "charsets/escaped_utf8.h"

namespace mirolta::runtime {
namespace {

// Protected by g_lock, as is the tree. Nothing here is destroyed at exit: other threads may still
// use it.
std::mutex g_lock;
RegistryKey* g_root = nullptr;  // null: nothing loaded
FileState g_state;
RuntimeArray<char>* g_file = nullptr;  // the file that g_root was loaded from
bool g_in_memory = false;
DWORD g_bad_line = 0;

// The changes that a thread has collected.
struct Batch {
  unsigned depth = 0;
  RegistryKey root;  // the registry with the changes
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

// Loads the file unless it is unchanged since it was loaded.
LONG Refresh() {
  if (g_root != nullptr && g_in_memory) return ERROR_SUCCESS;
  RuntimeArray<char> file;
  LONG error = NameRegistryFile(&file);
  if (error != ERROR_SUCCESS) return error;
  if (g_file == nullptr) g_file = NewRuntime<RuntimeArray<char>>();
  if (g_file == nullptr) return ERROR_OUTOFMEMORY;
  if (g_root != nullptr && g_file->Size() == file.Size() &&
      std::memcmp(g_file->Data(), file.Data(), file.Size()) == 0) {
    FileState now;
    error = StateOf(file.Data(), &now);
    if (error != ERROR_SUCCESS) return error;
    if (now == g_state) return ERROR_SUCCESS;
  }
  Forget();
  g_file->Swap(file);
  RegistryKey* root = NewRuntime<RegistryKey>();
  if (root == nullptr) return ERROR_OUTOFMEMORY;
  error = LoadRegistryFile(g_file->Data(), root, &g_state, &g_bad_line);
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

}  // namespace

RegistryUse::RegistryUse(RegistryAccess access) {
  WatchForksAndThreads();
  g_lock.lock();
  if (access == RegistryAccess::kHandles || t_batch != nullptr) return;
  while (access == RegistryAccess::kWrite && !g_in_memory && !file_lock_.IsHeld()) {
    g_lock.unlock();
    RuntimeArray<char> file;
    error_ = NameRegistryFile(&file);
    if (error_ == ERROR_SUCCESS) error_ = file_lock_.Enter(file.Data());
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

LONG RegistryUse::Make(RegistryChange** change, bool* changed) {
  if (t_batch != nullptr) {
    const LONG error = MakeChange(**change, &t_batch->root, changed);
    if (error != ERROR_SUCCESS) return error;
    // Collected even if it changes nothing now: it may when it is repeated.
    *t_batch->end = *change;
    t_batch->end = &(*change)->next;
    *change = nullptr;
    return ERROR_SUCCESS;
  }
  if (g_in_memory) return MakeChange(**change, g_root, changed);
  if ((*change)->kind == RegistryChange::Kind::kMakeKey &&
      g_root->FindPath(ViewOf((*change)->path)) != nullptr) {
    *changed = false;
    return ERROR_SUCCESS;
  }
  RegistryKey* draft = CopyOf(*g_root);
  if (draft == nullptr) return ERROR_OUTOFMEMORY;
  const LONG error = MakeChange(**change, draft, changed);
  if (error == ERROR_SUCCESS && *changed) return Publish(draft);
  DeleteRuntime(draft);
  return error;
}

LONG RegistryUse::MakeAgain(const RegistryChange* first) {
  RegistryKey* draft = CopyOf(*g_root);
  if (draft == nullptr) return ERROR_OUTOFMEMORY;
  LONG error = ERROR_SUCCESS;
  bool any = false;
  for (const RegistryChange* change = first; change != nullptr && error == ERROR_SUCCESS;
       change = change->next) {
    bool changed = false;
    error = RepeatChange(*change, draft, &changed);
    any = any || changed;
  }
  if (error == ERROR_SUCCESS && any) return Publish(draft);
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
    error = StoreRegistryFile(file.Data(), *draft, &state);
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

LONG BeginBatch() {
  if (t_batch != nullptr) {
    ++t_batch->depth;
    return ERROR_SUCCESS;
  }
  Batch* batch = NewRuntime<Batch>();
  if (batch == nullptr) return ERROR_OUTOFMEMORY;
  LONG error;
  {
    const RegistryUse use(RegistryAccess::kRead);
    error = use.Error();
    if (error == ERROR_SUCCESS && !use.Root()->CopyTo(&batch->root)) error = ERROR_OUTOFMEMORY;
  }
  if (error != ERROR_SUCCESS) {
    DeleteRuntime(batch);
    return error;
  }
  batch->depth = 1;
  if (g_has_batch_end) pthread_setspecific(g_batch_end, batch);
  t_batch = batch;
  return ERROR_SUCCESS;
}

LONG EndBatch() {
  Batch* batch = t_batch;
  if (batch == nullptr) return ERROR_INVALID_PARAMETER;
  if (--batch->depth != 0) return ERROR_SUCCESS;
  t_batch = nullptr;
  if (g_has_batch_end) pthread_setspecific(g_batch_end, nullptr);
  LONG error = ERROR_SUCCESS;
  if (batch->first != nullptr) {
    RegistryUse use(RegistryAccess::kWrite);
    error = use.Error();
    if (error == ERROR_SUCCESS) error = use.MakeAgain(batch->first);
  }
  DeleteRuntime(batch);
  return error;
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
  return begin != FALSE ? BeginBatch() : EndBatch();
}

extern "C" DWORD MiroltaRegistryFile(LPWSTR file, DWORD capacity) {
  RuntimeArray<char> name;
  RuntimeArray<WCHAR> wide;
  if (NameRegistryFile(&name) != ERROR_SUCCESS ||
      !AppendWideFromUtf8(name.Data(), name.Size(), &wide))
    return 0;
  if (file == nullptr || wide.Size() > capacity) return 0;
  std::memcpy(file, wide.Data(), wide.Size() * sizeof(WCHAR));
  return static_cast<DWORD>(wide.Size() - 1);
}

extern "C" DWORD MiroltaRegistryBadLine() {
  const std::lock_guard<std::mutex> lock(g_lock);
  return g_bad_line;
}
