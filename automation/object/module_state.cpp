#include "module_state.h"

namespace mirolta {

namespace {

// Constant-initialised: the module attaches during initialisation, and an initialiser that ran
// later would reset the state.
constinit ModuleState state{};
bool attached = false;

CRITICAL_SECTION* const kLocks[] = {&state.class_objects_lock, &state.type_info_lock,
                                    &state.module_lock};

}  // namespace

void InitModuleState(HINSTANCE instance, ClassRow* class_table, const GUID& type_library) {
  state.instance = instance;
  state.class_table = class_table;
  state.type_library = type_library;
  state.lock_count = 0;
  state.cleanups = nullptr;
  for (CRITICAL_SECTION* lock : kLocks) InitializeCriticalSection(lock);
  attached = true;
}

void TermModuleState() {
  while (state.cleanups != nullptr) {
    ModuleCleanup* const cleanup = state.cleanups;
    state.cleanups = cleanup->next;
    cleanup->run(cleanup->context);
  }
  for (CRITICAL_SECTION* lock : kLocks) DeleteCriticalSection(lock);
  attached = false;
}

ModuleState* CurrentModule() {
  return attached ? &state : nullptr;
}

// In the default order: whoever sees the count at zero, and unloads, sees all that the objects did
// before they were counted off.
void LockModule() {
  ++state.lock_count;
}

void UnlockModule() {
  --state.lock_count;
}

void AddModuleCleanup(ModuleCleanup* cleanup) {
  EnterCriticalSection(&state.module_lock);
  cleanup->next = state.cleanups;
  state.cleanups = cleanup;
  LeaveCriticalSection(&state.module_lock);
}

bool ModuleFileName(OLECHAR (&file)[MAX_PATH + 1]) {
  const DWORD length = GetModuleFileNameW(state.instance, file, MAX_PATH + 1);
  if (length == 0 || length > MAX_PATH) return false;
  file[length] = 0;
  return true;
}

}  // namespace mirolta
