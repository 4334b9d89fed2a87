// What the script engine's allocator remembers of requests that were refused.
//
// Without memory the engine makes each of its objects smaller, for which it needs memory, and throws
// an error inside for each that it cannot, which needs memory too: about 350 refused requests for
// each object, in every garbage collection. That takes minutes with a few thousand objects if the
// system is asked each time, and has no end that a user would wait for with millions.
#pragma once

#include <stddef.h>
#include <stdint.h>

namespace mirolta::host {

class MemoryRefusals {
 public:
  // Failed requests after which the engine does not recover: half a second of processor time, and
  // three times those of the engine's own objects.
  static constexpr uint32_t kMost = uint32_t{1} << 21;
  // Granted requests in a row after which it has recovered; an error inside takes fewer.
  static constexpr uint32_t kRecovery = 32;

  // The system refused as little or less, and nothing was freed since then.
  bool IsUseless(size_t size) const { return size >= least_; }
  void NoteRefused(size_t size) {
    if (size < least_) least_ = size;
  }
  void NoteFreed() { least_ = SIZE_MAX; }

  // NoteFailed returns true if the engine cannot recover.
  bool NoteFailed() {
    granted_ = 0;
    return ++failures_ > kMost;
  }
  void NoteGranted() {
    if (++granted_ >= kRecovery) failures_ = 0;
  }

 private:
  size_t least_ = SIZE_MAX;  // the smallest size that the system refused
  uint32_t failures_ = 0;    // since the last recovery
  uint32_t granted_ = 0;     // in a row
};

}  // namespace mirolta::host
