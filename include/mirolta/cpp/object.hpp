// SPDX-License-Identifier: MIT
// Counted references to objects.
#pragma once

#include <cstddef>
#include <utility>

#include "call.hpp"

namespace mirolta {

// Object holds a reference to an object by one of its interfaces, or none.
template <typename Interface>
class Object {
 public:
  Object() noexcept = default;
  Object(std::nullptr_t) noexcept {}
  // A further reference to the object.
  explicit Object(Interface* object) noexcept : object_(object) {
    if (object_ != nullptr) object_->AddRef();
  }
  Object(const Object& other) noexcept : Object(other.object_) {}
  Object(Object&& other) noexcept : object_(other.Detach()) {}
  Object& operator=(Object other) noexcept {
    std::swap(object_, other.object_);
    return *this;
  }
  ~Object() {
    if (object_ != nullptr) object_->Release();
  }

  // Takes over a reference, or gives it up.
  static Object Attach(Interface* object) noexcept {
    Object owner;
    owner.object_ = object;
    return owner;
  }
  Interface* Detach() noexcept { return std::exchange(object_, nullptr); }

  Interface* Get() const noexcept { return object_; }
  Interface* operator->() const noexcept { return object_; }
  explicit operator bool() const noexcept { return object_ != nullptr; }
  // For a function that returns a reference: a place that holds none.
  Interface** Put() noexcept {
    *this = Object();
    return &object_;
  }

  // Another interface of the object.
  // Errors: E_NOINTERFACE; E_POINTER without an object
  template <typename Other>
  Result<Object<Other>> TryAs() const {
    if (object_ == nullptr) return Error(E_POINTER);
    void* other = nullptr;
    const HRESULT status = object_->QueryInterface(IdOf<Other>::value, &other);
    if (detail::IsFailure(status)) return Error(status);
    return Object<Other>::Attach(static_cast<Other*>(other));
  }
  template <typename Other>
  Object<Other> As() const {
    return TryAs<Other>().Value();
  }

  friend bool operator==(const Object& a, const Object& b) noexcept {
    return a.object_ == b.object_;
  }
  friend bool operator!=(const Object& a, const Object& b) noexcept { return !(a == b); }

 private:
  Interface* object_ = nullptr;
};

}  // namespace mirolta
