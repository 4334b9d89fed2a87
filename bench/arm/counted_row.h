// A row of the count: one task, done by this library and by its peers.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

namespace mirolta::bench {

// Counted is one implementation of a row's task.
struct Counted {
  std::string name;
  std::function<void(size_t count)> run;  // does the task count times
  std::function<std::string()> result;    // of the last time
};

struct CountedRow {
  std::string name;  // task/size
  size_t bytes = 0;  // processed by the task; 0 if its instructions are the result
  size_t count = 1;  // times that the task is done between two marks, and twice that
  std::function<std::vector<Counted>()> make;
};

using CountedRows = std::vector<CountedRow>;

// MakeCounted creates a contestant from work(), which does the task once.
template <typename Work, typename Result>
Counted MakeCounted(const char* name, Work work, Result result) {
  return {name,
          [=](size_t count) {
            for (; count != 0; --count) work();
          },
          result};
}

// The groups of rows, each in the file of its name.
void AddCountedDigests(CountedRows* rows);
void AddCountedCiphers(CountedRows* rows);
void AddCountedNumbers(CountedRows* rows);

}  // namespace mirolta::bench
