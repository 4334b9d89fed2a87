// Whether a member that is being read is about to be called.
//
// Automation tells a method or a property with arguments from a plain property only by the call
// itself: `n.Text` reads a property, `n.Text(65001)` reads it with an argument, and for a reader
// that sees the name alone the two are one. The script engine reads the member of a call with an
// instruction of its own, so the instruction that is running gives the answer. Which instructions
// these are is learnt from two known functions at start, not assumed; if they cannot be told apart
// every read counts as a plain one.
#pragma once

#include <bitset>

#include "engine/engine_api.h"

namespace mirolta::host {

class CallSites {
 public:
  // Learn runs the known functions. Call once, before any script runs.
  void Learn(duk_context* engine);
  // IsCall is for a native function that the engine runs in place of a property read: true if the
  // script calls what it reads.
  bool IsCall(duk_context* engine) const;
  // True if Learn could tell the instructions apart.
  bool CanTell() const { return calls_.any(); }

 private:
  std::bitset<256> calls_;  // by instruction code
};

}  // namespace mirolta::host
