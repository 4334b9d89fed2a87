// One direction of the digesting filter.
#pragma once

#include <atomic>
#include <memory>

#include "hash_engine.h"
#include "platform.h"

namespace mirolta {

// DigestDirection owns the engine, if an algorithm was chosen, and the direction's switch. The filter's
// lock covers all but Enable, which may be called at any time.
class DigestDirection {
 public:
  // SetAlgorithm drops the engine held and, for a known name, makes a new one and switches the
  // direction on. Without memory for the engine there is none, and that is no failure.
  // Returns: false for an unknown name; the switch stays as it was.
  bool SetAlgorithm(BSTR name);

  // GetName gives the algorithm's name, an empty text without one.
  // Errors: E_OUTOFMEMORY.
  HRESULT GetName(BSTR* name) const;

  void Enable(VARIANT_BOOL value) { enabled_ = value; }
  VARIANT_BOOL Enabled() const { return enabled_; }

  HashEngine* Engine() const { return engine_.get(); }
  bool IsDigesting() const { return engine_ != nullptr && enabled_ != 0; }

  // Update digests bytes[count]. Only while IsDigesting.
  HRESULT Update(const void* bytes, ULONG count) {
    return engine_->Update(static_cast<const uint8_t*>(bytes), count);
  }

 private:
  std::unique_ptr<HashEngine> engine_;
  std::atomic<VARIANT_BOOL> enabled_ = 0;
};

}  // namespace mirolta
