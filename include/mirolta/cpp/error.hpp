// SPDX-License-Identifier: MIT
// Failures: an exception with number, source and description, and results that hold a value or one.
#pragma once

#include <cstdint>
#include <exception>
#include <memory>
#include <optional>
#include <string>
#include <utility>

#include "../../mirolta.h"

#if defined(__cpp_exceptions) || defined(_CPPUNWIND)
  #define MIROLTA_HAS_EXCEPTIONS 1
#else
  #define MIROLTA_HAS_EXCEPTIONS 0
  #include <cstdio>
#endif

namespace mirolta {

// Error is a failure as a caller of automation sees it: the status as its number, and, where the
// class published them, the name of its source and a description, both UTF-8.
class Error : public std::exception {
 public:
  explicit Error(HRESULT number) noexcept : number_(number) { WriteStatus(); }
  Error(HRESULT number, std::string source, std::string description) : Error(number) {
    texts_ = std::make_shared<const Texts>(Texts{std::move(source), std::move(description)});
  }

  HRESULT Number() const noexcept { return number_; }
  std::string Source() const { return texts_ ? texts_->source : std::string(); }
  std::string Description() const { return texts_ ? texts_->description : std::string(); }
  // The description; without one the number, such as "status 0x80070057".
  const char* what() const noexcept override {
    return texts_ && !texts_->description.empty() ? texts_->description.c_str() : status_;
  }

 private:
  struct Texts {
    std::string source;
    std::string description;
  };

  void WriteStatus() noexcept {
    const auto bits = static_cast<std::uint32_t>(number_);
    for (unsigned i = 0; i < 8; ++i) {
      status_[kDigits + i] = "0123456789ABCDEF"[(bits >> (28 - 4 * i)) & 15];
    }
  }

  static constexpr std::size_t kDigits = 9;  // where they start

  HRESULT number_;
  std::shared_ptr<const Texts> texts_;  // shared, so that copies do not throw
  char status_[kDigits + 9] = "status 0x00000000";
};

namespace detail {

// Throws the error. A program without exceptions ends with its text on standard error.
[[noreturn]] inline void Raise(const Error& error) {
#if MIROLTA_HAS_EXCEPTIONS
  throw error;
#else
  std::fputs(error.what(), stderr);
  std::fputc('\n', stderr);
  std::terminate();
#endif
}

inline Error OwnError(HRESULT number, std::string description) {
  return Error(number, "mirolta.hpp", std::move(description));
}

}  // namespace detail

// Result holds the value of an operation or the Error of its failure.
template <typename Type>
class [[nodiscard]] Result {
 public:
  Result(Type value) : value_(std::move(value)) {}
  Result(Error failure) : failure_(std::move(failure)) {}

  bool HasValue() const noexcept { return value_.has_value(); }
  explicit operator bool() const noexcept { return HasValue(); }

  // The value.
  // Errors: of a failure, throws its Error; without exceptions the program ends.
  Type& Value() & {
    Require();
    return *value_;
  }
  const Type& Value() const& {
    Require();
    return *value_;
  }
  Type Value() && {
    Require();
    return *std::move(value_);
  }

  // The value, which must be there.
  Type& operator*() & noexcept { return *value_; }
  const Type& operator*() const& noexcept { return *value_; }
  Type&& operator*() && noexcept { return *std::move(value_); }
  Type* operator->() noexcept { return &*value_; }
  const Type* operator->() const noexcept { return &*value_; }

  // The failure; of a value, an Error with the number S_OK.
  const Error& Failure() const noexcept { return failure_; }

 private:
  void Require() const {
    if (!value_.has_value()) detail::Raise(failure_);
  }

  std::optional<Type> value_;
  Error failure_{S_OK};
};

template <>
class [[nodiscard]] Result<void> {
 public:
  Result() noexcept = default;
  Result(Error failure) noexcept : failed_(true), failure_(std::move(failure)) {}

  bool HasValue() const noexcept { return !failed_; }
  explicit operator bool() const noexcept { return HasValue(); }
  void Value() const {
    if (failed_) detail::Raise(failure_);
  }
  const Error& Failure() const noexcept { return failure_; }

 private:
  bool failed_ = false;
  Error failure_{S_OK};
};

}  // namespace mirolta
