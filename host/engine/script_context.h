// The state of one script run that the host's native functions share.
#pragma once

#include <setjmp.h>

#include <string>
#include <string_view>
#include <vector>

#include "engine/call_site.h"
#include "engine/engine_api.h"
#include "engine/memory_refusals.h"
#include "objects/member_table.h"
#include "objects/object_table.h"
#include "source/script_source.h"
#include "values/byte_loan.h"
#include "values/scoped_variant.h"

namespace mirolta::host {

struct ScriptLink;

struct ScriptContext {
  duk_context* engine = nullptr;
  ObjectTable objects;
  DescribedTables described;
  CallSites call_sites;
  // Values that are kept, for each automation object that a script gets.
  void* dispatch_handler = nullptr;
  void* stream_prototype = nullptr;  // for each stream
  // The name of the property that holds the lower bound of a byte array, where it is not 0.
  void* lower_bound_name = nullptr;
  // A result of which the engine makes a value; if it throws, the result stays until the next one.
  ScopedVariant left_result;
  // For byte arrays that are arguments (byte_loan.h).
  SpareArray spare_array;
  // Shared with the automation objects of script objects, which may outlive the engine.
  ScriptLink* link = nullptr;

  std::string script_path;       // as given
  std::string script_full_path;  // absolute
  std::vector<std::string> arguments;
  // The scripts whose lines reports of errors show, by their names; of two with one name the last.
  std::vector<const ScriptText*> scripts;
  bool is_batch = false;        // no error reports, and WScript.Echo prints nothing
  bool is_interactive = false;  // at the prompt
  unsigned time_limit = 0;      // in seconds, 0 for none

  // The depth of nested calls into automation.
  int calls_running = 0;
  // The line where the last value that is not an Error was thrown.
  int last_thrown_line = 0;
  size_t memory_in_use = 0;
  // Set while the engine is created: leads out of it when there is no memory.
  jmp_buf* creation = nullptr;
  unsigned creation_failures = 0;
  // The most that the engine may allocate; a script that needs more gets an error.
  size_t memory_limit = size_t{1} << 30;
  MemoryRefusals refusals;
};

// ContextOf returns the context that the engine was created with.
ScriptContext& ContextOf(duk_context* engine);

// Values that the host keeps by name, out of the reach of scripts. KeepValue stores the value on
// top of the stack, pops it and returns its address if it is an object; PushKept pushes the value,
// undefined if there is none. duk_push_heapptr pushes an object by its address sooner.
void* KeepValue(duk_context* engine, const char* name);
void PushKept(duk_context* engine, const char* name);

// KeepName returns the address of the engine's string with this text, which the engine keeps until
// its end.
void* KeepName(duk_context* engine, std::string_view name);
// Call once, before KeepName.
void InstallNames(duk_context* engine);

}  // namespace mirolta::host
