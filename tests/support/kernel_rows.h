// What holds for every list of kernels, whatever the primitive.
#pragma once

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "platform.h"

namespace mirolta::test {

inline bool Runs(uint32_t needs) {
  return (needs & ~ProcessorFeatures()) == 0;
}

// The kernel's name as the name of a test.
template <typename Row>
std::string TestNameOf(const Row& kernel) {
  std::string name = kernel.name;
  for (char& c : name) {
    if (c == '-' || c == ' ') c = '_';
  }
  return name;
}

// Runs check(kernel) for each kernel of a list that this processor can run, and names the others.
template <typename List, typename Check>
void ForEachKernel(const List& list, const Check& check) {
  for (const auto& kernel : list) {
    if (!Runs(kernel.needs)) {
      std::printf("skipped, the processor lacks it: %s\n", kernel.name);
      continue;
    }
    SCOPED_TRACE(kernel.name);
    check(kernel);
  }
}

// The function of the last row.
template <typename List>
auto PortableOf(const List& list) {
  return list[list.size() - 1].function;
}

// Expects a portable last row, names that begin with the primitive's, and `chosen` to be the first
// row that the processor runs. A build of portable code alone has one row.
template <typename List, typename Function>
void ExpectOrderedList(const List& list, std::string_view primitive, Function chosen) {
  SCOPED_TRACE(std::string(primitive));
  ASSERT_GE(list.size(), 1u);
  EXPECT_EQ(list[list.size() - 1].needs, 0u) << "the last kernel must be portable";
#ifdef MIROLTA_PORTABLE_ONLY
  EXPECT_EQ(list.size(), 1u);
#endif
  bool is_found = false;
  for (const auto& kernel : list) {
    EXPECT_EQ(std::string(kernel.name).rfind(primitive, 0), 0u) << kernel.name;
    if (is_found || !Runs(kernel.needs)) continue;
    EXPECT_EQ(chosen, kernel.function) << kernel.name;
    is_found = true;
  }
}

// What the kernels of a kind need, by the end of their names.
struct KernelKind {
  std::string_view ending;
  uint32_t needs;
};

// Expects each kernel to be of one kind, and to need what that needs.
template <typename List>
void ExpectNeeds(const List& list, const std::vector<KernelKind>& kinds) {
  for (const auto& kernel : list) {
    const std::string_view name = kernel.name;
    int matches = 0;
    for (const KernelKind& kind : kinds) {
      if (!name.ends_with(kind.ending)) continue;
      EXPECT_EQ(kernel.needs, kind.needs) << name;
      ++matches;
    }
    EXPECT_EQ(matches, 1) << name;
  }
}

}  // namespace mirolta::test
