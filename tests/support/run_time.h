// How long tests look for races: seconds in an ordinary run, minutes when somebody asks for them.
#pragma once

#include <chrono>
#include <cstdlib>

namespace mirolta::test {

// RunTime is how long a test repeats its rounds: its usual time, or the seconds of MIROLTA_SECONDS.
class RunTime {
 public:
  explicit RunTime(double usual_seconds)
      : end_(std::chrono::steady_clock::now() +
             std::chrono::milliseconds(static_cast<long long>(Seconds(usual_seconds) * 1000))) {}

  bool IsOver() const { return std::chrono::steady_clock::now() >= end_; }

 private:
  static double Seconds(double usual_seconds) {
    const char* const wanted = std::getenv("MIROLTA_SECONDS");
    return wanted == nullptr ? usual_seconds : std::atof(wanted);
  }

  std::chrono::steady_clock::time_point end_;
};

}  // namespace mirolta::test
