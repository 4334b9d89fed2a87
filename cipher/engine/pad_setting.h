// The pad setting of an engine, where its owner keeps it.
#pragma once

#include <atomic>

#include "cipher_engine.h"

namespace mirolta {

// PadSetting is read and written without the owner's lock, while another thread may be replacing
// the engine under it. So the owner keeps the setting itself, and hands it to the engine, under the
// lock, before the engine pads.
class PadSetting {
 public:
  // EngineGone and EngineMade follow the engine; a new engine starts with setting 0.
  void EngineGone() { present_.store(false); }
  void EngineMade() {
    value_.store(0);
    present_.store(true);
  }

  bool present() const { return present_.load(); }
  LONG value() const { return value_.load(); }
  void Set(LONG value) { value_.store(value); }

  void ApplyTo(CipherEngine& engine) const { engine.SetPadType(value_.load()); }

 private:
  std::atomic<bool> present_{false};
  std::atomic<LONG> value_{0};
};

}  // namespace mirolta
