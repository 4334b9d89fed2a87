// Kernels: the implementations of one primitive, chosen at run time.
#pragma once

#include <atomic>

#include "architecture.h"
#include "processor.h"

namespace mirolta {

// Kernel: one implementation, a row of the primitive's list. Function is a function pointer, or a
// pointer to a table of functions.
template <typename Function>
struct Kernel {
  const char* name;
  uint32_t needs;  // ProcessorFeature bits
  Function function;
};

// KernelList views the rows of a primitive: best first, a portable one (needs == 0) last. It does
// not own them.
template <typename Function>
class KernelList {
 public:
  template <size_t kCount>
  // NOLINTNEXTLINE(google-explicit-constructor): the rows are the list.
  constexpr KernelList(const Kernel<Function> (&rows)[kCount]) noexcept
      : rows_(rows), count_(kCount) {}

  constexpr const Kernel<Function>* begin() const noexcept { return rows_; }
  constexpr const Kernel<Function>* end() const noexcept { return rows_ + count_; }
  constexpr size_t size() const noexcept { return count_; }
  constexpr const Kernel<Function>& operator[](size_t i) const noexcept { return rows_[i]; }

  // Choose returns the first row that a processor with `features` runs.
  constexpr const Kernel<Function>& Choose(uint32_t features) const noexcept {
    const Kernel<Function>* row = rows_;
    while (row + 1 != end() && (row->needs & ~features) != 0) ++row;
    return *row;
  }

 private:
  const Kernel<Function>* rows_;
  size_t count_;
};

// What was chosen from a list, or null. Relaxed order is enough: every thread chooses the same, and what
// a pointer to a table leads to is constant.
template <const auto& kList>
inline constinit std::atomic<decltype(kList[0].function)> kept_kernel = nullptr;

// ChosenOnce is not inlined: callers of CurrentKernel need no registers for what runs once.
template <const auto& kList>
__attribute__((noinline)) auto ChosenOnce() noexcept {
  const auto function = kList.Choose(ProcessorFeatures()).function;
  kept_kernel<kList>.store(function, std::memory_order_relaxed);
  return function;
}

// ChosenKernel returns what CurrentKernel has chosen, or null before its first call.
template <const auto& kList>
auto ChosenKernel() noexcept {
  return kept_kernel<kList>.load(std::memory_order_relaxed);
}

// CurrentKernel returns the function of a KernelList that this processor runs. It is chosen at the
// first call. Engines and loops keep what it returns: every call checks whether it is the first.
// The list is a variable with external linkage: gcc 14 takes the instances for two internal ones of
// one name, in two files, for one function.
template <const auto& kList>
auto CurrentKernel() noexcept {
  const auto function = ChosenKernel<kList>();
  return function != nullptr ? function : ChosenOnce<kList>();
}

}  // namespace mirolta
