// The same work on many threads at once.
#pragma once

#include <atomic>
#include <vector>

#include "test_thread.h"

namespace mirolta::test {

// AllAtOnce runs work(i) on `count` threads, which start at the same moment.
template <typename Work>
void AllAtOnce(unsigned count, Work work) {
  std::atomic<unsigned> waiting{0};
  std::atomic<bool> go{false};
  std::vector<Thread> threads;
  for (unsigned i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      ++waiting;
      while (!go) LetOthersRun();
      work(i);
    });
  }
  while (waiting != count) LetOthersRun();
  go = true;
  for (Thread& thread : threads) thread.join();
}

}  // namespace mirolta::test
