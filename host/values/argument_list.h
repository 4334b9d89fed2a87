// The arguments of a call.
#pragma once

#include <stddef.h>

#include <memory>

#include "values/scoped_variant.h"

namespace mirolta::host {

// Owns its values. Few of them need no memory of their own.
class ArgumentList {
 public:
  ArgumentList() = default;
  ArgumentList(const ArgumentList&) = delete;
  ArgumentList& operator=(const ArgumentList&) = delete;
  ~ArgumentList() { Clear(); }

  // Resize clears the list and gives it `count` values, which are VT_EMPTY.
  // Errors: std::bad_alloc; the list is then empty.
  void Resize(size_t count) {
    Clear();
    if (count > kFew) many_ = std::make_unique<VARIANT[]>(count);
    values_ = count > kFew ? many_.get() : few_;
    for (size_t i = 0; i < count; ++i) values_[i] = VARIANT{};
    count_ = count;
  }
  void Clear() {
    for (size_t i = 0; i < count_; ++i) ClearBeforeEnd(values_[i]);
    count_ = 0;
    if (many_ != nullptr) many_.reset();
  }

  VARIANT* Values() { return values_; }
  size_t Count() const { return count_; }

 private:
  static constexpr size_t kFew = 4;

  size_t count_ = 0;
  VARIANT* values_ = few_;
  VARIANT few_[kFew];  // set by Resize
  std::unique_ptr<VARIANT[]> many_;
};

}  // namespace mirolta::host
