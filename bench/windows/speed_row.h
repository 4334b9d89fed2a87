// A row of the comparison of builds: one task of this library alone, the same in every build.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace mirolta::bench {

struct SpeedTask {
  std::function<void()> run;
  std::function<std::string()> result;  // of the last run
};

struct SpeedRow {
  const char* name;  // level/task/size
  size_t bytes;      // processed by one run; 0 if the time of a run is the result
  // Creates the task when the row is measured.
  std::function<SpeedTask()> make;
};

using SpeedRows = std::vector<SpeedRow>;

// The groups of rows, each in the file of its name.
void AddByteRows(SpeedRows* rows);
void AddNumberRows(SpeedRows* rows);
void AddModuleRows(SpeedRows* rows);

}  // namespace mirolta::bench
