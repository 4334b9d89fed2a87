// The AES engine: blocks of 16 bytes, keys of 16, 24 or 32 bytes.
#pragma once

#include "aes_schedule.h"
#include "cipher_engine.h"

namespace mirolta {

class AesEngine final : public CipherEngine {
 public:
  AesEngine() noexcept;
  ~AesEngine() override;

 private:
  bool BuildSchedule(const uint8_t* key, uint32_t length) override;
  void WipeSchedule() override;

  AesSchedule schedule_ = {};
};

}  // namespace mirolta
