// The script engine and one run of a script.
#pragma once

#include <string>
#include <vector>

#include "engine/script_context.h"
#include "source/script_source.h"

namespace mirolta::host {

// The script engine with all that the host defines in it. Its end releases every automation object
// that the script still holds.
class ScriptEngine {
 public:
  ScriptEngine() = default;
  ScriptEngine(const ScriptEngine&) = delete;
  ScriptEngine& operator=(const ScriptEngine&) = delete;
  ~ScriptEngine();

  // The context, to be filled in before Start.
  ScriptContext& Context() { return context_; }
  // Start creates the engine; false with a message in *problem if memory runs out.
  bool Start(std::string* problem);
  // The engine; null before Start.
  duk_context* Api() const { return context_.engine; }

 private:
  ScriptContext context_;
};

struct RunOptions {
  std::vector<std::string> arguments;
  bool is_batch = false;    // no error reports, and WScript.Echo prints nothing
  unsigned time_limit = 0;  // in seconds, 0 for none
  // For the prompt: called before and after the script, in its engine. With `follow` its result
  // counts for the exit status, and the script's errors do not.
  void (*prepare)(ScriptEngine* engine) = nullptr;
  bool (*follow)(ScriptEngine* engine) = nullptr;
};

// RunScript runs a script and returns the host's exit status: 0, or 1 with a report on standard
// error if the script cannot be compiled or throws an error that it does not catch. WScript.Quit
// ends the process.
int RunScript(const ScriptText& script, const RunOptions& options);

}  // namespace mirolta::host
