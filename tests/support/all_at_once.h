// The same work on many threads, begun at the same moment.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace mirolta::test {

// Runs work(i) on `count` threads, all let go at the same moment.
template <typename Work>
void AllAtOnce(unsigned count, Work work) {
  std::atomic<unsigned> waiting{0};
  std::atomic<bool> go{false};
  std::vector<std::thread> threads;
  for (unsigned i = 0; i < count; ++i) {
    threads.emplace_back([&, i] {
      ++waiting;
      while (!go) std::this_thread::yield();
      work(i);
    });
  }
  while (waiting != count) std::this_thread::yield();
  go = true;
  for (std::thread& thread : threads) thread.join();
}

}  // namespace mirolta::test
