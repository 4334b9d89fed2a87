// A list of automation values that owns them.
#pragma once

#include <vector>

#include "platform.h"

namespace mirolta::host {

class ValueList {
 public:
  ValueList() = default;
  ValueList(const ValueList&) = delete;
  ValueList& operator=(const ValueList&) = delete;
  ValueList(ValueList&& other) noexcept : values_(std::move(other.values_)) {
    other.values_.clear();
  }
  ValueList& operator=(ValueList&& other) noexcept {
    values_.swap(other.values_);
    return *this;
  }
  ~ValueList();

  size_t Count() const { return values_.size(); }
  const VARIANT& At(size_t index) const { return values_[index]; }
  // Add adds a copy; AddObject takes the reference.
  // Errors: throws std::bad_alloc; AddObject has released the object then.
  void Add(const VARIANT& value);
  void AddObject(IDispatch* object);

 private:
  std::vector<VARIANT> values_;
};

// NewEnumerator returns an IEnumVARIANT of the values, as a property with the id DISPID_NEWENUM
// does.
// Errors: throws std::bad_alloc.
IUnknown* NewEnumerator(ValueList values);

}  // namespace mirolta::host
