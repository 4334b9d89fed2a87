// Calls on a separate stack, to find what they leave on it and in registers.
#pragma once

#include <cstddef>

namespace mirolta::test {

// Where callers leave room for four arguments and functions save ten vector registers.
#ifdef _WIN64
inline constexpr bool kHasLargeFrames = true;
#else
inline constexpr bool kHasLargeFrames = false;
#endif

// PaintedStack owns a stack that is painted before each call, so that what the call wrote shows.
class PaintedStack {
 public:
  // More than any call of the module needs.
  static constexpr size_t kSize = size_t{1} << 20;
  static constexpr unsigned char kPaint = 0xA5;
  // What of a stack belongs to the frames that a call returns through: the harness's, those of the
  // member itself, and what runs after the wiping, such as leaving the lock.
  static constexpr size_t kOwnFrames = kHasLargeFrames ? 1536 : 1024;
  static constexpr size_t kLastCall = 32;
  // General, mask and vector registers.
  static constexpr size_t kRegisterBytes = 16 * 8 + 8 * 8 + 32 * 64;

  PaintedStack();
  ~PaintedStack();
  PaintedStack(const PaintedStack&) = delete;
  PaintedStack& operator=(const PaintedStack&) = delete;

  // Run calls `function` and keeps the registers as it left them. All registers that a call need
  // not preserve are zero when it begins.
  template <typename Function>
  void Run(Function function) {
    Run([](void* context) { (*static_cast<Function*>(context))(); }, &function);
  }

  // The part that the last call wrote to, from the deepest byte up.
  const unsigned char* Touched() const { return touched_; }
  size_t TouchedBytes() const { return static_cast<size_t>(top_ - touched_); }
  // How many bytes deeper than that are neither paint nor zero; but for the call by which the stack
  // is overwritten, the deepest of all.
  size_t DirtyBytes(size_t depth) const;

  const unsigned char* Registers() const { return registers_; }
  // Whether this processor's registers are kept.
  static bool KeepsRegisters();

 private:
  void Run(void (*function)(void*), void* context);

  unsigned char* bottom_;
  unsigned char* top_;
  unsigned char* touched_;
  alignas(64) unsigned char registers_[kRegisterBytes];
};

}  // namespace mirolta::test
