// Works out small circuits for the boxes of DES and prints them as a header of the kernels.
//
//   des-box-search ternary|gates SECONDS_PER_BOX [SEED [BOX]]
//
// The four outputs of a box are added to a circuit one after another. After each the best circuits
// are kept, and each of them is tried again with every output that is missing; all choices among
// equally good steps are random, so the best of many rounds is taken. A random walk then makes it
// smaller. The kernels have what came of "ternary 150 5" (180 gates) and of "gates 240 3" (354);
// more time or luck may find less.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "des_tables.h"
#include "gate_search.h"
#include "refinement.h"
#include "ternary_search.h"

namespace mirolta {
namespace {

constexpr int kOutputs = 4;
constexpr size_t kKept = 12;

struct State {
  Circuit circuit;
  int output[kOutputs];  // -1 while it is missing
};

// The tables' words have the outputs where the permutation P and a rotation by one put them.
constexpr uint8_t kOutputPlaces[8][kOutputs] = {{9, 17, 23, 31}, {13, 28, 2, 18}, {24, 16, 30, 6},
                                                {26, 20, 10, 1}, {8, 14, 25, 3},  {4, 29, 11, 19},
                                                {32, 12, 22, 7}, {5, 27, 15, 21}};

uint64_t OutputTable(int box, int output) {
  uint64_t table = 0;
  for (int v = 0; v < 64; ++v) {
    const uint32_t word = kDesTables.substitution[box / 2 + box % 2 * 4][v];
    table |= static_cast<uint64_t>(word >> (33 - kOutputPlaces[box][output]) % 32 & 1) << v;
  }
  return table;
}

using Clock = std::chrono::steady_clock;

State Improve(Search& search, const uint64_t* targets, Clock::time_point end) {
  State best;
  best.circuit.count = kMostValues;
  while (Clock::now() < end || best.circuit.count == kMostValues) {
    std::vector<State> kept = {{InputsOnly(), {-1, -1, -1, -1}}};
    for (int level = 0; level < kOutputs && !kept.empty(); ++level) {
      std::vector<State> next;
      for (const State& from : kept) {
        for (int output = 0; output < kOutputs; ++output) {
          if (from.output[output] >= 0) continue;
          for (int attempt = 0; attempt < (level == 0 ? 6 : 2); ++attempt) {
            if (Clock::now() >= end && best.circuit.count < kMostValues) return best;
            State state = from;
            // As good as the worst that is kept, or better than the best result so far.
            int limit = best.circuit.count - 1;
            if (next.size() == kKept && next.back().circuit.count < limit) {
              limit = next.back().circuit.count;
            }
            const int value = search.Extend(state.circuit, targets[output], ~uint64_t{0}, limit, 0);
            if (value < 0) continue;
            state.output[output] = value;
            size_t at = 0;
            while (at < next.size() && next[at].circuit.count < state.circuit.count) ++at;
            next.insert(next.begin() + static_cast<std::ptrdiff_t>(at), state);
            if (next.size() > kKept) next.pop_back();
          }
        }
      }
      kept = next;
    }
    if (!kept.empty() && kept[0].circuit.count < best.circuit.count) best = kept[0];
  }
  return best;
}

// Walks from many starts, each as long as it finds something smaller once in a while.
State ImproveByWalks(Search& search, const uint64_t* targets, Clock::time_point end) {
  constexpr auto kSearchTime = std::chrono::seconds(20);
  constexpr auto kVainTime = std::chrono::seconds(15);
  constexpr long kSteps = 1000;
  State best;
  best.circuit.count = kMostValues;
  do {
    const State start = Improve(search, targets, std::min(end, Clock::now() + kSearchTime));
    Refiner refiner(search, start.circuit, {start.output, start.output + kOutputs});
    int count = kMostValues;
    auto found = Clock::now();
    while (Clock::now() < std::min(end, found + kVainTime)) {
      refiner.Walk(kSteps);
      if (refiner.Best().count >= count) continue;
      count = refiner.Best().count;
      found = Clock::now();
    }
    if (refiner.Best().count >= best.circuit.count) continue;
    best.circuit = refiner.Best();
    std::copy_n(refiner.Outputs().begin(), kOutputs, best.output);
  } while (Clock::now() < end);
  return best;
}

void PrintBox(const Search& search, int box, const State& state) {
  std::printf("\n// %d gates.\n", state.circuit.count - kInputs);
  std::printf("MIROLTA_DES_BOX void Box(BoxNumber<%d>, const Vector* in, Vector* out) {\n", box);
  for (int i = 0; i < kInputs; ++i) std::printf("  const Vector v%d = in[%d];\n", i, i);
  for (int i = kInputs; i < state.circuit.count; ++i) search.Print(state.circuit.gate[i], i);
  unsigned inverted = 0;
  for (int i = 0; i < kOutputs; ++i) {
    const uint64_t table = state.circuit.table[state.output[i]];
    const bool is_complement = table == ~OutputTable(box, i);
    if (!is_complement && table != OutputTable(box, i)) std::abort();
    inverted |= static_cast<unsigned>(is_complement) << i;
    std::printf("  out[%d] = v%d;\n", i, state.output[i]);
  }
  std::printf("}\nconstexpr uint32_t InvertedOutputs(BoxNumber<%d>) {\n  return %u;\n}\n", box,
              inverted);
  std::fflush(stdout);
}

}  // namespace
}  // namespace mirolta

int main(int argc, char** argv) {
  using namespace mirolta;
  if (argc < 3) {
    std::fprintf(stderr, "usage: des-box-search ternary|gates SECONDS_PER_BOX [SEED [BOX]]\n");
    return 2;
  }
  const uint32_t seed = argc > 3 ? static_cast<uint32_t>(std::strtoul(argv[3], nullptr, 10)) : 1;
  const bool ternary = std::strcmp(argv[1], "ternary") == 0;
  std::unique_ptr<Search> search;
  if (ternary) {
    search = std::make_unique<TernarySearch>(seed);
  } else {
    search = std::make_unique<GateSearch>(seed);
  }
  std::printf(
      "// The S-boxes of DES as circuits of %s, generated by tools/des_boxes.\n"
      "// The including file has MIROLTA_DES_BOX, Vector, BoxNumber and the operations. in[6] are "
      "the inputs\n"
      "// and out[4] the outputs in the standard's order. InvertedOutputs has a bit for each "
      "output "
      "that is\n"
      "// complemented, the first output in the lowest bit.\n",
      ternary ? "three-input gates" : "two-input gates");
  int total = 0;
  const long only = argc > 4 ? std::strtol(argv[4], nullptr, 10) : -1;
  for (int box = 0; box < 8; ++box) {
    if (only >= 0 && box != only) continue;
    uint64_t targets[kOutputs];
    for (int output = 0; output < kOutputs; ++output) {
      targets[output] = OutputTable(box, output);
      // No two-input operation makes a one of zeros; the complement is taken at the end.
      if (!ternary && (targets[output] & 1) != 0) targets[output] = ~targets[output];
    }
    const auto end = Clock::now() + std::chrono::seconds(std::strtol(argv[2], nullptr, 10));
    const State state = ImproveByWalks(*search, targets, end);
    PrintBox(*search, box, state);
    total += state.circuit.count - kInputs;
  }
  std::fprintf(stderr, "%d gates\n", total);
  return 0;
}
