// One direction of a stream filter, reading or writing: what both filters have of it.
#pragma once

#include <memory>

#include "platform.h"

namespace mirolta {

// FilterDirection<Engine> owns the direction's engine, if an algorithm was chosen. The filter's
// lock covers it.
template <typename EngineType>
class FilterDirection {
 public:
  EngineType* Engine() const { return engine_.get(); }

  // GetName returns the algorithm's name, an empty text without one.
  // Errors: E_OUTOFMEMORY.
  HRESULT GetName(BSTR* name) const {
    if (engine_ != nullptr) return engine_->GetNameString(name);
    *name = SysAllocString(OLESTR(""));
    return *name != nullptr ? S_OK : E_OUTOFMEMORY;
  }

 protected:
  FilterDirection() = default;
  ~FilterDirection() = default;

  std::unique_ptr<EngineType> engine_;
};

}  // namespace mirolta
