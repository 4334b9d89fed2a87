// The same work on many threads at once.
#pragma once

#include <atomic>
#include <thread>
#include <vector>

namespace mirolta::test {

// AllAtOnce runs work(i) on `count` threads, which start at the same moment.
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
