// State of the loaded module: its handle, the count that keeps it loaded, and the locks that do not
// belong to an object.
#pragma once

#include <atomic>

#include "platform.h"

namespace mirolta {

struct ClassRow;

// A function to call when the module is unloaded. The caller that registers a node owns it.
struct ModuleCleanup {
  void (*run)(void* context);
  void* context;
  ModuleCleanup* next;
};

struct ModuleState {
  HINSTANCE instance;                   // for resources and the module's file name
  ClassRow* class_table;                // ends in a row without class identifier
  GUID type_library;                    // identifier
  std::atomic<LONG> lock_count;         // objects, server locks, factories held by clients
  CRITICAL_SECTION class_objects_lock;  // creation of factories
  CRITICAL_SECTION type_info_lock;      // loading of type information
  CRITICAL_SECTION module_lock;         // the list of clean-ups
  ModuleCleanup* cleanups;
};

// InitModuleState sets the state of a module; the caller runs the hooks of the class table.
// TermModuleState runs the clean-ups and removes the state.
void InitModuleState(HINSTANCE instance, ClassRow* class_table, const GUID& type_library);
void TermModuleState();

// CurrentModule returns the state; null before load and after unload.
ModuleState* CurrentModule();

// LockModule and UnlockModule increment and decrement the count that DllCanUnloadNow reads.
void LockModule();
void UnlockModule();

// AddModuleCleanup registers `cleanup` to run at unload, in reverse order of registration.
void AddModuleCleanup(ModuleCleanup* cleanup);

// ModuleFileName writes the module's full file name; false if it is longer than MAX_PATH or
// unknown.
bool ModuleFileName(OLECHAR (&file)[MAX_PATH + 1]);

}  // namespace mirolta
