// Measures this library alone, in any of its builds.
//
//   mirolta-speed [TEXT]    the rows whose names contain TEXT
//
// Each row is a line: name|bytes|nanoseconds of one run|digits that tell results apart.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <vector>

#include "speed_row.h"

namespace mirolta::bench {

namespace {

using Clock = std::chrono::steady_clock;
constexpr double kLeastNanoseconds = 2e6;  // of a repetition
constexpr int kRepetitions = 5;

double NanosecondsOf(const SpeedTask& task, long count) {
  const auto before = Clock::now();
  for (long i = 0; i < count; ++i) task.run();
  return std::chrono::duration<double, std::nano>(Clock::now() - before).count();
}

// The median of the repetitions.
double Measure(const SpeedTask& task) {
  long count = 1;
  while (NanosecondsOf(task, count) < kLeastNanoseconds) count *= 2;
  std::vector<double> times;
  for (int i = 0; i < kRepetitions; ++i) {
    times.push_back(NanosecondsOf(task, count) / static_cast<double>(count));
  }
  std::sort(times.begin(), times.end());
  return times[kRepetitions / 2];
}

// FNV-1a, 32 bits.
uint32_t Digits(const std::string& text) {
  uint32_t hash = 2166136261u;
  for (const char character : text) hash = (hash ^ static_cast<uint8_t>(character)) * 16777619u;
  return hash;
}

}  // namespace

}  // namespace mirolta::bench

int main(int argc, char** argv) {
  using namespace mirolta::bench;
  SpeedRows rows;
  AddByteRows(&rows);
  AddNumberRows(&rows);
  AddModuleRows(&rows);
  for (const SpeedRow& row : rows) {
    if (argc > 1 && std::strstr(row.name, argv[1]) == nullptr) continue;
    const SpeedTask task = row.make();
    task.run();
    const std::string result = task.result();
    if (result.empty()) {
      std::fprintf(stderr, "%s: no result\n", row.name);
      return 1;
    }
    std::printf("%s|%lu|%.2f|%08lx\n", row.name, static_cast<unsigned long>(row.bytes),
                Measure(task), static_cast<unsigned long>(Digits(result)));
    std::fflush(stdout);
  }
  return 0;
}
