// Circuits of and, and-not, or, exclusive-or: what every vector unit has.
#pragma once

#include <cstdio>

#include "circuit.h"

namespace mirolta {

class GateSearch final : public Search {
 public:
  using Search::Search;

  int Extend(Circuit& circuit, uint64_t target, uint64_t mask, int limit, int depth) override {
    const int found = Short(circuit, target, mask, limit);
    if (found >= 0 || circuit.count + 3 > limit || depth == kInputs) return found;

    Circuit best;
    best.count = 0;
    uint8_t order[kInputs];
    Shuffle(order, kInputs);
    // Many ways are tried for the first steps only.
    int attempts = depth == 0 ? kInputs : depth == 1 ? 4 : 2;
    for (int i = 0; i < kInputs && attempts > 0; ++i) {
      const uint64_t select = circuit.table[order[i]];
      if ((select & mask) == 0 || (~select & mask) == 0) continue;
      --attempts;
      // target = base ^ (change op select): with "and" the change applies where select is set, with
      // "and not" where it is clear; "or" also complements the base where select is set.
      const Operation operation = static_cast<Operation>(Random(3));
      const uint64_t change_mask = operation == kAnd ? select : ~select;
      const uint64_t base_target = operation == kOr ? ~target : target;
      Circuit trial = circuit;
      const int base = Extend(trial, base_target, mask & ~change_mask, limit - 2, depth + 1);
      if (base < 0) continue;
      int result = Short(trial, target, mask, limit);
      if (result < 0) {
        const int change =
            Extend(trial, target ^ trial.table[base], mask & change_mask, limit - 2, depth + 1);
        if (change < 0) continue;
        const int part = Add(trial, Two(operation, order[i], change));
        result = Add(trial, Two(kXor, part, base));
      }
      best = trial;
      best_result_[depth] = result;
      limit = trial.count - 1;
    }
    if (best.count == 0) return -1;
    circuit = best;
    return best_result_[depth];
  }

  uint64_t Value(const Gate& gate, const uint64_t* table) const override {
    return Apply(gate.operation, table[gate.a], table[gate.b]);
  }

  bool Place(Circuit& circuit, uint8_t* usable, int count, uint64_t target, uint64_t mask,
             const Gate& old, bool two_gates) override {
    Reorder(usable, count);
    const uint64_t wanted = target & mask;
    if (two_gates) return AddTwo(circuit, usable, count, wanted, mask) >= 0;
    const int first = static_cast<int>(Random(4));
    return AddOne(circuit, usable, count, wanted, mask, first, &old) >= 0;
  }

  void Print(const Gate& gate, int value) const override {
    static const char* const kNames[] = {"And", "AndNot", "Or", "Xor"};
    std::printf("  const Vector v%d = %s(v%d, v%d);\n", value, kNames[gate.operation], gate.a,
                gate.b);
  }

 private:
  enum Operation : uint8_t { kAnd, kAndNot, kOr, kXor };  // kAndNot: the second but not the first

  static uint64_t Apply(int operation, uint64_t a, uint64_t b) {
    switch (operation) {
      case kAnd:
        return a & b;
      case kAndNot:
        return ~a & b;
      case kOr:
        return a | b;
      default:
        return a ^ b;
    }
  }

  static Gate Two(int operation, int a, int b) {
    return {static_cast<uint8_t>(operation), static_cast<uint8_t>(a), static_cast<uint8_t>(b), 0};
  }

  static bool IsSame(const Gate& x, const Gate& y) {
    const bool turned = x.a == y.b && x.b == y.a && x.operation != kAndNot;
    return x.operation == y.operation && ((x.a == y.a && x.b == y.b) || turned);
  }

  // Adds a gate over the values order[count], other than old, that gives wanted wherever mask is
  // set, operations tried from the first one on; returns the value, or -1 if there is none.
  int AddOne(Circuit& circuit, const uint8_t* order, int count, uint64_t wanted, uint64_t mask,
             int first, const Gate* old) const {
    for (int i = 0; i < count; ++i) {
      for (int j = 0; j < count; ++j) {
        for (int k = 0; k < 4; ++k) {
          const Gate gate = Two((first + k) % 4, order[i], order[j]);
          if (gate.operation != kAndNot && j > i) continue;
          if ((Value(gate, circuit.table) & mask) != wanted) continue;
          if (old == nullptr || !IsSame(*old, gate)) return Add(circuit, gate);
        }
      }
    }
    return -1;
  }

  // Adds two gates over the values order[count] that give wanted wherever mask is set; returns the
  // value, or -1 if there are none.
  int AddTwo(Circuit& circuit, const uint8_t* order, int count, uint64_t wanted,
             uint64_t mask) const {
    for (int i = 0; i < count; ++i) {
      for (int j = 0; j < count; ++j) {
        for (int operation = kAnd; operation <= kXor; ++operation) {
          if (operation != kAndNot && j >= i) continue;
          const uint64_t pair =
              Apply(operation, circuit.table[order[i]], circuit.table[order[j]]) & mask;
          // What the outer gate may make of this pair, tested before its other input is known.
          const bool covers = (pair & wanted) == wanted;
          const bool inside = (pair & ~wanted) == 0;
          const bool apart = (pair & wanted) == 0;
          for (int k = 0; k < count; ++k) {
            const uint64_t other = circuit.table[order[k]] & mask;
            int outer;
            bool pair_first = true;
            if ((pair ^ other) == wanted) {
              outer = kXor;
            } else if (covers && (pair & other) == wanted) {
              outer = kAnd;
            } else if (inside && (pair | other) == wanted) {
              outer = kOr;
            } else if (apart && (~pair & other) == wanted) {
              outer = kAndNot;
            } else if (covers && (pair & ~other) == wanted) {
              outer = kAndNot;
              pair_first = false;
            } else {
              continue;
            }
            const int first = Add(circuit, Two(operation, order[i], order[j]));
            return pair_first ? Add(circuit, Two(outer, first, order[k]))
                              : Add(circuit, Two(outer, order[k], first));
          }
        }
      }
    }
    return -1;
  }

  // An existing value, or one gate or two.
  int Short(Circuit& circuit, uint64_t target, uint64_t mask, int limit) {
    const int match = Match(circuit, target, mask);
    if (match >= 0) return match;
    const int count = circuit.count;
    if (count + 1 > limit) return -1;
    uint8_t order[kMostValues];
    Shuffle(order, count);
    const uint64_t wanted = target & mask;
    const int one = AddOne(circuit, order, count, wanted, mask, kAnd, nullptr);
    if (one >= 0) return one;
    return count + 2 > limit ? -1 : AddTwo(circuit, order, count, wanted, mask);
  }

  int best_result_[kInputs + 1];
};

}  // namespace mirolta
