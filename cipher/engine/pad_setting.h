// An engine's pad setting, as its owner keeps it.
#pragma once

#include <atomic>

#include "cipher_engine.h"

namespace mirolta {

// PadSetting is read and written without the owner's lock, while another thread may be replacing
// the engine. Therefore the owner keeps the setting and applies it to the engine, under the lock,
// before the engine pads.
class PadSetting {
 public:
  // EngineGone and EngineMade say that the owner's engine was dropped or made; a new engine has the
  // setting 0.
  void EngineGone() { present_.store(false); }
  // In this order: a thread that sees the new engine does not see the old one's setting.
  void EngineMade() {
    value_.store(0);
    present_.store(true);
  }

  bool IsPresent() const { return present_.load(); }
  LONG Value() const { return value_.load(); }
  void Set(LONG value) { value_.store(value); }

  void ApplyTo(CipherEngine& engine) const { engine.SetPadType(value_.load()); }

 private:
  std::atomic<bool> present_{false};
  std::atomic<LONG> value_{0};
};

}  // namespace mirolta
