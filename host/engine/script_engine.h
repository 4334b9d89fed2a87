// One run of one script.
#pragma once

#include <string>
#include <vector>

#include "engine/script_context.h"

namespace mirolta::host {

// The script engine with everything that a script finds in it. At its end every automation object
// that the script still held is given back.
class ScriptEngine {
 public:
  ScriptEngine() = default;
  ScriptEngine(const ScriptEngine&) = delete;
  ScriptEngine& operator=(const ScriptEngine&) = delete;
  ~ScriptEngine();

  // The context, to be filled in before Start.
  ScriptContext& context() { return context_; }
  // False with *problem if the engine cannot be had.
  bool Start(std::string* problem);
  // The engine; null before Start.
  duk_context* api() const { return context_.engine; }

 private:
  ScriptContext context_;
};

// RunScript runs a script file with its arguments and returns the host's exit status: 0, or 1 with
// a report on standard error for a script that cannot be read or compiled and for an uncaught
// error. WScript.Quit does not return.
int RunScript(const std::string& path, const std::vector<std::string>& arguments);

}  // namespace mirolta::host
