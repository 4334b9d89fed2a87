// A second thread beside the test's own.
#pragma once

#include <atomic>

#include "test_thread.h"

namespace mirolta::test {

// OtherThread runs one piece of work, which the test's thread may hold up by a lock.
class OtherThread {
 public:
  OtherThread() = default;
  OtherThread(const OtherThread&) = delete;
  OtherThread& operator=(const OtherThread&) = delete;
  ~OtherThread() { Join(); }

  // Returns when the thread runs.
  template <typename Work>
  void Begin(Work work) {
    thread_ = Thread([this, work] {
      has_begun_ = true;
      work();
      is_done_ = true;
    });
    while (!has_begun_) LetOthersRun();
  }
  // Gives the work time; true if it is not done then.
  bool IsHeldUp() const {
    for (int i = 0; i < 1000; ++i) LetOthersRun();
    return !is_done_;
  }
  // Waits for the end of the work: for ever if nothing lets it go on.
  void Join() {
    if (thread_.joinable()) thread_.join();
  }

 private:
  std::atomic<bool> has_begun_{false};
  std::atomic<bool> is_done_{false};
  Thread thread_;
};

}  // namespace mirolta::test
