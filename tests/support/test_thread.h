// Threads of tests: the language's, or the system's where the compiler's library has none.
#pragma once

#include <chrono>

#ifndef _WIN32

  #include <thread>

namespace mirolta::test {

using Thread = std::thread;

inline void LetOthersRun() {
  std::this_thread::yield();
}

inline void Pause(std::chrono::milliseconds time) {
  std::this_thread::sleep_for(time);
}

}  // namespace mirolta::test

#else

  #include <cstdlib>
  #include <functional>
  #include <memory>
  #include <utility>

  #include "platform.h"

namespace mirolta::test {

// Thread has of std::thread what the tests use. It may use the system's objects.
class Thread {
 public:
  Thread() = default;
  template <typename Work>
  explicit Thread(Work work) {
    auto own = std::make_unique<std::function<void()> >(std::move(work));
    handle_ = CreateThread(nullptr, 0, Run, own.get(), 0, nullptr);
    if (handle_ == nullptr) std::abort();
    own.release();
  }
  Thread(Thread&& other) noexcept : handle_(std::exchange(other.handle_, nullptr)) {}
  Thread& operator=(Thread&& other) noexcept {
    if (joinable()) std::abort();
    handle_ = std::exchange(other.handle_, nullptr);
    return *this;
  }
  ~Thread() {
    if (joinable()) std::abort();
  }

  bool joinable() const { return handle_ != nullptr; }
  void join() {
    WaitForSingleObject(handle_, INFINITE);
    CloseHandle(std::exchange(handle_, nullptr));
  }

 private:
  static DWORD WINAPI Run(void* work) {
    const std::unique_ptr<std::function<void()> > own(static_cast<std::function<void()>*>(work));
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    (*own)();
    CoUninitialize();
    return 0;
  }

  HANDLE handle_ = nullptr;
};

inline void LetOthersRun() {
  SwitchToThread();
}

inline void Pause(std::chrono::milliseconds time) {
  Sleep(static_cast<DWORD>(time.count()));
}

}  // namespace mirolta::test

#endif
