// What one run of a script shares among the host's native functions.
#pragma once

#include <string>
#include <vector>

#include "engine/call_site.h"
#include "engine/engine_api.h"
#include "objects/object_table.h"

namespace mirolta::host {

struct ScriptLink;

struct ScriptContext {
  duk_context* engine = nullptr;
  ObjectTable objects;
  CallSites call_sites;
  // Shared with the automation objects that stand for script objects; they outlive the engine.
  ScriptLink* link = nullptr;

  std::string script_path;       // as given
  std::string script_full_path;  // absolute
  std::vector<std::string> arguments;

  // Calls into automation that are running now, one inside the other.
  int calls_running = 0;
  // Where the last value that is no Error was thrown.
  int last_thrown_line = 0;
  size_t memory_in_use = 0;
  // What the engine may have at one time. A script that wants more gets an error, not the machine's
  // last memory.
  size_t memory_limit = size_t{1} << 30;
};

// ContextOf returns the context that the engine was made with.
ScriptContext& ContextOf(duk_context* engine);

// Values that the host keeps for itself, out of the scripts' reach, by name.
// KeepValue takes the value on top of the stack; PushKept pushes it, undefined if there is none.
void KeepValue(duk_context* engine, const char* name);
void PushKept(duk_context* engine, const char* name);

}  // namespace mirolta::host
