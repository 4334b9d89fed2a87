// How the transforms in plain C++ keep their elements: one 64-bit word at a time.
#pragma once

#include "transform_kernels.h"

namespace mirolta {

// SingleWord is the part of a transform's operations (transform_loops.h) that moves elements.
struct SingleWord {
  using Word = uint64_t;
  static constexpr size_t kWidth = 1;

  static Word Load(const Limb* x) {
    if constexpr (kElementLimbs == 1) return x[0];
    return x[0] | static_cast<Word>(x[kElementLimbs - 1]) << 32;
  }
  static Word LoadPart(const Limb* x, size_t) { return x[0]; }
  static Word Broadcast(const Limb* x) { return Load(x); }
  static void Store(Limb* z, Word x) {
    z[0] = static_cast<Limb>(x);
    if constexpr (kElementLimbs == 2) z[1] = static_cast<Limb>(x >> 32);
  }
  static Word Set(uint64_t x) { return x; }
};

}  // namespace mirolta
