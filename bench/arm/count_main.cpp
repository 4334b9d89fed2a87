// Runs every row's contestants under an emulator that counts instructions (count_plugin.cpp).
//
//   mirolta-arm-count [PATTERN]    the rows whose name contains PATTERN
//
// For each contestant it prints row, bytes of the task, contestant and how often it did the task between
// the first two marks; it did it twice as often between the second and the third. Fails if a result differs
// from ours.
#include <sys/prctl.h>

#include <cstdio>

#include "count_mark.h"
#include "counted_row.h"

namespace mirolta::bench {

namespace {

// To the kernel this is an unknown request.
void Mark() {
  (void)prctl(static_cast<int>(kMark), 0, 0, 0, 0);
}

bool CountRow(const CountedRow& row) {
  const std::vector<Counted> contestants = row.make();
  std::string ours;
  for (const Counted& contestant : contestants) {
    // What runs once, such as the choice of a kernel, is not counted.
    contestant.run(1);
    Mark();
    contestant.run(row.count);
    Mark();
    contestant.run(2 * row.count);
    Mark();
    const std::string result = contestant.result();
    if (ours.empty()) ours = result;
    if (result.empty() || result != ours) {
      std::fprintf(stdout, "%s: %s gives another result\n", row.name.c_str(),
                   contestant.name.c_str());
      return false;
    }
    std::printf("%s|%zu|%s|%zu\n", row.name.c_str(), row.bytes, contestant.name.c_str(), row.count);
  }
  return true;
}

int Main(const std::string& pattern) {
  CountedRows rows;
  AddCountedDigests(&rows);
  AddCountedCiphers(&rows);
  AddCountedNumbers(&rows);
  bool are_same = true;
  for (const CountedRow& row : rows) {
    if (row.name.find(pattern) != std::string::npos) are_same = CountRow(row) && are_same;
  }
  return are_same ? 0 : 1;
}

}  // namespace

}  // namespace mirolta::bench

int main(int argc, char** argv) {
  return mirolta::bench::Main(argc > 1 ? argv[1] : "");
}
