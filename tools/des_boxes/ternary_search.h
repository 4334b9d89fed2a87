// Circuits of gates with three inputs and any truth table: vpternlog.
#pragma once

#include <algorithm>
#include <cstdio>

#include "circuit.h"

namespace mirolta {

class TernarySearch final : public Search {
 public:
  using Search::Search;

  int Extend(Circuit& circuit, uint64_t target, uint64_t mask, int limit, int depth) override {
    const int found = Short(circuit, target, mask, limit);
    // A selecting gate and at least two for its sides: what takes less, Short finds.
    if (found >= 0 || circuit.count + 3 > limit || depth == kInputs) return found;

    Circuit best;
    best.count = 0;
    uint8_t order[kMostValues];
    Shuffle(order, kInputs);
    // Now and then a value other than an input selects.
    if (depth < 2 && circuit.count > kInputs) {
      order[Random(kInputs)] = static_cast<uint8_t>(
          kInputs + static_cast<int>(Random(static_cast<uint32_t>(circuit.count - kInputs))));
    }
    for (int i = 0; i < kInputs; ++i) {
      const uint64_t select = circuit.table[order[i]];
      if ((select & mask) == 0 || (~select & mask) == 0) continue;
      Circuit trial = circuit;
      const uint64_t first = Random(2) != 0 ? select : ~select;
      const int one = Extend(trial, target, mask & first, limit - 1, depth + 1);
      if (one < 0) continue;
      int result = Short(trial, target, mask, limit);
      if (result < 0) {
        const int other = Extend(trial, target, mask & ~first, limit - 1, depth + 1);
        if (other < 0) continue;
        const int on = first == select ? one : other;
        result = Add(trial, {0xCA, order[i], static_cast<uint8_t>(on),
                             static_cast<uint8_t>(on == one ? other : one)});
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
    uint64_t result = 0;
    for (int cell = 0; cell < 8; ++cell) {
      if ((gate.operation >> cell & 1) == 0) continue;
      result |= Cell(table, gate.a, gate.b, gate.c, cell);
    }
    return result;
  }

  bool Place(Circuit& circuit, uint8_t* usable, int count, uint64_t target, uint64_t mask,
             const Gate& old, bool two_gates) override {
    Reorder(usable, count);
    std::copy_n(usable, count, order_);
    Gate first;
    Gate last;
    if (two_gates) {
      if (!TwoGates(circuit, count, target, mask, &first, &last)) return false;
      Add(circuit, first);
    } else if (!OneGate(circuit, count, target, mask, &old, &last)) {
      return false;
    }
    Add(circuit, last);
    return true;
  }

  void Print(const Gate& gate, int value) const override {
    std::printf("  const Vector v%d = Ternary<0x%02X>(v%d, v%d, v%d);\n", value, gate.operation,
                gate.a, gate.b, gate.c);
  }

 private:
  static uint64_t Cell(const uint64_t* table, int a, int b, int c, int cell) {
    return ((cell & 4) != 0 ? table[a] : ~table[a]) & ((cell & 2) != 0 ? table[b] : ~table[b]) &
           ((cell & 1) != 0 ? table[c] : ~table[c]);
  }

  // An existing value, or one gate or two.
  int Short(Circuit& circuit, uint64_t target, uint64_t mask, int limit) {
    const int match = Match(circuit, target, mask);
    if (match >= 0) return match;
    if (circuit.count + 1 > limit) return -1;
    Shuffle(order_, circuit.count);
    Gate last;
    if (OneGate(circuit, circuit.count, target, mask, nullptr, &last)) return Add(circuit, last);
    if (circuit.count + 2 > limit) return -1;
    Gate first;
    if (!TwoGates(circuit, circuit.count, target, mask, &first, &last)) return -1;
    Add(circuit, first);
    return Add(circuit, last);
  }

  // Makes a gate of a, b, c that is target where mask is set; what no input reaches is random.
  bool Fit(const Circuit& circuit, int a, int b, int c, uint64_t target, uint64_t mask,
           Gate* gate) {
    uint32_t operation = 0;
    for (int cell = 0; cell < 8; ++cell) {
      const uint64_t points = Cell(circuit.table, a, b, c, cell) & mask;
      const bool ones = (points & target) != 0;
      if (ones && (points & ~target) != 0) return false;
      if (ones || (points == 0 && Random(2) != 0)) operation |= 1u << cell;
    }
    *gate = {static_cast<uint8_t>(operation), static_cast<uint8_t>(a), static_cast<uint8_t>(b),
             static_cast<uint8_t>(c)};
    return true;
  }

  static bool HasSameInputs(const Gate& x, const Gate& y) {
    const auto has = [&](int value) { return x.a == value || x.b == value || x.c == value; };
    return has(y.a) && has(y.b) && has(y.c);
  }

  // Of the values order_[count]; not a gate of the same inputs as old.
  bool OneGate(const Circuit& circuit, int count, uint64_t target, uint64_t mask, const Gate* old,
               Gate* gate) {
    for (int i = 0; i < count; ++i) {
      for (int j = 0; j < i; ++j) {
        for (int k = 0; k < j; ++k) {
          if (!Fit(circuit, order_[i], order_[j], order_[k], target, mask, gate)) continue;
          if (old == nullptr || !HasSameInputs(*old, *gate)) return true;
        }
      }
    }
    return false;
  }

  // The parts of the points that some values leave with both zeros and ones of the target.
  struct Mixed {
    int count;
    uint64_t part[32];
  };

  static Mixed Split(const Mixed& from, uint64_t table, uint64_t target) {
    Mixed to;
    to.count = 0;
    for (int i = 0; i < from.count; ++i) {
      for (const uint64_t part : {from.part[i] & table, from.part[i] & ~table}) {
        if ((part & target) != 0 && (part & ~target) != 0) to.part[to.count++] = part;
      }
    }
    return to;
  }

  static bool Separates(const Mixed& mixed, uint64_t table, uint64_t target) {
    for (int i = 0; i < mixed.count; ++i) {
      const uint64_t on = mixed.part[i] & table;
      const uint64_t off = mixed.part[i] & ~table;
      if ((on & target) != 0 && (on & ~target) != 0) return false;
      if ((off & target) != 0 && (off & ~target) != 0) return false;
    }
    return true;
  }

  // Looks for four or five values that determine the target, and among those for a gate of three
  // whose result can stand for them in a second gate.
  bool TwoGates(const Circuit& circuit, int count, uint64_t target, uint64_t mask, Gate* first,
                Gate* last) {
    Mixed m1 = {1, {mask}};
    for (int i = 0; i < count; ++i) {
      const Mixed m2 = Split(m1, circuit.table[order_[i]], target);
      for (int j = i + 1; j < count; ++j) {
        const Mixed m3 = Split(m2, circuit.table[order_[j]], target);
        for (int k = j + 1; k < count; ++k) {
          const Mixed m4 = Split(m3, circuit.table[order_[k]], target);
          for (int l = k + 1; l < count; ++l) {
            const Mixed m5 = Split(m4, circuit.table[order_[l]], target);
            const int set[5] = {order_[i], order_[j], order_[k], order_[l], 0};
            if (m5.count == 0) {
              if (Decompose4(circuit, set, target, mask, first, last)) return true;
            }
            if (m5.count > 16) continue;
            for (int m = l + 1; m < count; ++m) {
              if (!Separates(m5, circuit.table[order_[m]], target)) continue;
              const int all[5] = {set[0], set[1], set[2], set[3], order_[m]};
              if (Decompose5(circuit, all, target, mask, first, last)) return true;
            }
          }
        }
      }
    }
    return false;
  }

  bool Decompose4(const Circuit& circuit, const int* set, uint64_t target, uint64_t mask,
                  Gate* first, Gate* last) {
    for (int out = 0; out < 4; ++out) {
      int in[3];
      for (int i = 0, n = 0; i < 4; ++i) {
        if (i != out) in[n++] = set[i];
      }
      for (int again = 0; again < 3; ++again) {
        if (Inner(circuit, in, set[out], in[again], target, mask, first, last)) return true;
      }
    }
    return false;
  }

  bool Decompose5(const Circuit& circuit, const int* set, uint64_t target, uint64_t mask,
                  Gate* first, Gate* last) {
    for (int d = 0; d < 5; ++d) {
      for (int e = 0; e < d; ++e) {
        int in[3];
        for (int i = 0, n = 0; i < 5; ++i) {
          if (i != d && i != e) in[n++] = set[i];
        }
        if (Inner(circuit, in, set[d], set[e], target, mask, first, last)) return true;
      }
    }
    return false;
  }

  // Two cells of the inner gate must differ if, with the same d and e, one has a zero and the other
  // a one of the target: colours the cells with two colours accordingly.
  bool Inner(const Circuit& circuit, const int* in, int d, int e, uint64_t target, uint64_t mask,
             Gate* first, Gate* last) {
    uint32_t differs[8] = {};
    uint64_t cells[8];
    for (int i = 0; i < 8; ++i) cells[i] = Cell(circuit.table, in[0], in[1], in[2], i) & mask;
    for (int outer = 0; outer < 4; ++outer) {
      const uint64_t points = ((outer & 2) != 0 ? circuit.table[d] : ~circuit.table[d]) &
                              ((outer & 1) != 0 ? circuit.table[e] : ~circuit.table[e]);
      uint32_t zeros = 0;
      uint32_t ones = 0;
      for (int i = 0; i < 8; ++i) {
        if ((cells[i] & points & target) != 0) ones |= 1u << i;
        if ((cells[i] & points & ~target) != 0) zeros |= 1u << i;
      }
      if ((zeros & ones) != 0) return false;
      for (int i = 0; i < 8; ++i) {
        if ((ones >> i & 1) != 0) differs[i] |= zeros;
        if ((zeros >> i & 1) != 0) differs[i] |= ones;
      }
    }
    uint32_t known = 0;
    uint32_t colour = 0;
    for (int start = 0; start < 8; ++start) {
      if ((known >> start & 1) != 0) continue;
      known |= 1u << start;
      if (Random(2) != 0) colour |= 1u << start;
      for (uint32_t before = 0; before != known;) {
        before = known;
        for (int i = 0; i < 8; ++i) {
          if ((known >> i & 1) == 0) continue;
          const uint32_t same = (colour >> i & 1) != 0 ? colour & known : ~colour & known;
          if ((differs[i] & same) != 0) return false;
          if ((colour >> i & 1) == 0) colour |= differs[i];
          known |= differs[i];
        }
      }
    }
    *first = {static_cast<uint8_t>(colour), static_cast<uint8_t>(in[0]),
              static_cast<uint8_t>(in[1]), static_cast<uint8_t>(in[2])};
    Circuit trial = circuit;
    const int inner = Add(trial, *first);
    return Fit(trial, inner, d, e, target, mask, last);
  }

  uint8_t order_[kMostValues];
  int best_result_[kInputs + 1];
};

}  // namespace mirolta
