// One direction of the digest filter.
#pragma once

#include <atomic>

#include "filter_direction.h"
#include "hash_engine.h"

namespace mirolta {

// DigestDirection adds the switch. The filter's lock covers all but Enable, which may be called at
// any time.
class DigestDirection : public FilterDirection<HashEngine> {
 public:
  // SetAlgorithm releases the engine and, for a known name, creates a new one and switches the
  // direction on. If memory runs out there is no engine, which is no failure. Returns false for an
  // unknown name; the switch is then unchanged.
  bool SetAlgorithm(BSTR name);

  void Enable(VARIANT_BOOL value) { enabled_ = value; }
  VARIANT_BOOL Enabled() const { return enabled_; }

  bool IsDigesting() const { return engine_ != nullptr && enabled_ != 0; }

  // Update adds bytes[count] to the digest; only if IsDigesting.
  HRESULT Update(const void* bytes, ULONG count) {
    return engine_->Update(static_cast<const uint8_t*>(bytes), count);
  }

 private:
  // Set without the owner's lock; nothing else is read depending on it.
  std::atomic<VARIANT_BOOL> enabled_ = 0;
};

}  // namespace mirolta
