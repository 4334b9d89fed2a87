// The DES engine: blocks of 8 bytes, keys of 8 (single), 16 or 24 bytes (triple DES).
#pragma once

#include "cipher_engine.h"
#include "des_schedule.h"

namespace mirolta {

class DesEngine final : public CipherEngine {
 public:
  DesEngine() noexcept;
  ~DesEngine() override;

 private:
  bool BuildSchedule(const uint8_t* key, uint32_t length) override;
  void WipeSchedule() override;

  DesSchedule schedule_ = {};
};

}  // namespace mirolta
