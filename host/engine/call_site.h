// Detects whether a property that the engine reads is the callee of a call.
//
// Automation distinguishes a property with arguments from a plain one by the call only: `n.Text`
// reads a property, `n.Text(65001)` reads it with an argument, and a getter that sees just the name
// cannot tell them apart. The engine reads the callee of a call by an instruction of its own, so
// the opcode of the running instruction decides. Those opcodes are learned from a known script at
// start, not hard-coded; if they cannot be distinguished, every read counts as a plain one.
#pragma once

#include <bitset>

#include "engine/engine_api.h"

namespace mirolta::host {

class CallSites {
 public:
  // Learn runs the known script. Call once, before any other script runs.
  void Learn(duk_context* engine);
  // IsCall is for a native function that the engine runs in place of a property read: true if the
  // script calls the property.
  bool IsCall(duk_context* engine) const;

 private:
  std::bitset<256> calls_;  // by opcode; none if Learn could not distinguish them
};

}  // namespace mirolta::host
