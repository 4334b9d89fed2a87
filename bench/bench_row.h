// A row of the benchmark: one task, done by this library and by its peers.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace mirolta::bench {

// Contestant is one implementation of a row's task.
struct Contestant {
  std::string name;
  // Does the task for one of the row's operands.
  std::function<void(size_t operand)> run;
  // The output of the last run, read outside the measured time; null where outputs are random.
  std::function<std::string()> result;
};

// The name of this library's own contestant, the first of its row.
inline constexpr char kOurs[] = "ours";

// Enough operands that no branch predictor can learn them.
inline constexpr size_t kOperands = 512;

struct Row {
  std::string name;     // level/task/size
  double bytes = 0;     // processed by one run; 0 if the time of a run is the result
  double required = 0;  // our speed over that of the best peer
  double stretch = 0;
  size_t operands = kOperands;
  int iterations = 0;  // fixed if the cost depends on the operand; 0: as many as time allows
  // Creates the contestants when the row is measured.
  std::function<std::vector<Contestant>()> make;
  bool has_threads = false;  // starts threads: elapsed time is measured
};

using RowList = std::vector<Row>;

// The groups of rows, each in the file of its name.
void AddDigestRows(RowList* rows);
void AddHmacRows(RowList* rows);
void AddAesRows(RowList* rows);
void AddDesRows(RowList* rows);
void AddProductRows(RowList* rows);
void AddPowerRows(RowList* rows);
void AddTextRows(RowList* rows);
void AddPrimeRows(RowList* rows);
void AddRsaRows(RowList* rows);
void AddClassRows(RowList* rows);
void AddScalingRows(RowList* rows);

}  // namespace mirolta::bench
