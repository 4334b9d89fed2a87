// Detects whether a property that the engine reads is the callee of a call.
//
// Automation distinguishes a property with arguments from a plain one by the call only: `n.Text`
// reads a property, `n.Text(65001)` reads it with an argument, and a getter that sees just the name
// cannot tell them apart. The engine reads the callee of a call by an instruction of its own, so
// the opcode of the running instruction decides. Those opcodes are learned from a known script at
// start, not hard-coded; if they cannot be distinguished, every read counts as a plain one.
//
// The engine takes microseconds to tell which instruction runs. Most names are only called or only
// read in a script, which its text shows (member_uses.h). Scripts that compile more code have to do
// so through eval or Function. The code of a direct call of eval is seen before it is compiled
// (eval_calls.h); after other uses of eval, and of Function, the text says nothing.
#pragma once

#include <bitset>
#include <unordered_map>

#include "engine/engine_api.h"
#include "source/member_uses.h"

namespace mirolta::host {

// The uses of a name in the text of the script.
struct NameUse {
  bool is_called = false;
  bool is_read = false;
};

class CallSites {
 public:
  // Learn runs the known script. Call once, before any other script runs.
  void Learn(duk_context* engine);
  // IsCall is for a native function that the engine runs in place of a property read: true if the
  // script calls the property.
  bool IsCall(duk_context* engine) const;

  // NoteScript says which script will run, and that it is the only one but for the code that it
  // compiles.
  // Errors: the engine's, std::bad_alloc.
  void NoteScript(duk_context* engine, const MemberUses& uses);
  // ForgetScript says that scripts may run that are not noted.
  void ForgetScript() { is_noted_ = false; }
  // KnowsAllCode returns false if no script was noted, or if it may have compiled code that was not.
  bool KnowsAllCode() const { return is_noted_ && unseen_reads_of_eval_ == 0; }
  // UseOf returns how the noted code uses the name at this address, which KeepName returned. The
  // result is updated when more code is noted.
  // Errors: std::bad_alloc.
  const NameUse* UseOf(const void* name) { return &uses_[name]; }
  // Whether the noted code calls or reads members by keys that it computes: any member then.
  bool CallsComputed() const { return calls_computed_; }
  bool ReadsComputed() const { return reads_computed_; }

 private:
  void Watch(duk_context* engine);
  static duk_ret_t GetEval(duk_context* engine);
  struct NoteCodeFunction;
  void NoteUses(duk_context* engine, const MemberUses& uses);
  static duk_ret_t MakeFunction(duk_context* engine);

  std::bitset<256> calls_;  // by opcode; none if Learn could not distinguish them
  bool is_noted_ = false;
  // A rewritten call of eval reads it twice.
  unsigned unseen_reads_of_eval_ = 0;
  const void* eval_ = nullptr;
  bool calls_computed_ = false;
  bool reads_computed_ = false;
  std::unordered_map<const void*, NameUse> uses_;
};

}  // namespace mirolta::host
