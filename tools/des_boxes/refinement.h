// Makes a circuit of two-input gates smaller by a random walk over circuits of about its size.
#pragma once

#include <algorithm>
#include <vector>

#include "gate_search.h"

namespace mirolta {

// Refiner takes one gate after another and puts other gates in its place that do the same wherever
// an output depends on it. Gates that nothing needs any more go. A step may leave the circuit a few
// gates larger than the smallest one so far: that is how the walk gets away from there.
// Source: resubstitution with don't-cares, as logic optimisers have it: Mishchenko and Brayton,
// Scalable don't-care-based logic optimization and resubstitution, 2011.
class Refiner {
 public:
  Refiner(const Circuit& circuit, const std::vector<int>& outputs, uint32_t seed)
      : random_(seed), now_{circuit, outputs}, best_(now_) {
    Tidy(now_);
    best_ = now_;
  }

  const Circuit& circuit() const { return best_.circuit; }
  const std::vector<int>& outputs() const { return best_.outputs; }

  void Walk(long steps) {
    for (long step = 0; step < steps; ++step) {
      if (step % kStepsFromBest == 0) {
        now_ = best_;
        slack_ = static_cast<int>(Random(kMostSlack + 1));
      }
      Step();
      if (now_.circuit.count <= best_.circuit.count) best_ = now_;
    }
  }

 private:
  struct State {
    Circuit circuit;
    std::vector<int> outputs;
  };

  static constexpr long kStepsFromBest = 100000;
  static constexpr uint32_t kMostSlack = 4;
  static constexpr uint32_t kOneOfTwoGates = 30;  // of so many steps, one tries two gates

  uint32_t Random(uint32_t bound) { return static_cast<uint32_t>(random_() % bound); }

  void Step() {
    const Circuit& c = now_.circuit;
    const int gate = kInputs + static_cast<int>(Random(static_cast<uint32_t>(c.count - kInputs)));
    const uint64_t care = Care(now_, gate);
    uint8_t usable[kMostValues];
    const int count = Usable(c, gate, usable);
    State next = now_;
    Circuit& to = next.circuit;
    if (!Place(&to, usable, count, gate, care, Random(kOneOfTwoGates) == 0)) return;
    // What was made stands behind the old gates; it takes the gate's place everywhere.
    const int made = to.count - 1;
    for (int i = kInputs; i < c.count; ++i) {
      if (to.gate[i].a == gate) to.gate[i].a = static_cast<uint8_t>(made);
      if (to.gate[i].b == gate) to.gate[i].b = static_cast<uint8_t>(made);
    }
    for (int& output : next.outputs) {
      if (output == gate) output = made;
    }
    Tidy(next);
    if (next.circuit.count <= best_.circuit.count + slack_) now_ = next;
  }

  // Adds a copy of a usable value, a gate of two of them, or two gates that agree with gate where
  // care is set; false if there is none.
  bool Place(Circuit* c, uint8_t* usable, int count, int gate, uint64_t care, bool two_gates) {
    const uint64_t wanted = c->table[gate] & care;
    const Gate& old = c->gate[gate];
    for (int i = count; i > 1; --i) {
      std::swap(usable[i - 1], usable[Random(static_cast<uint32_t>(i))]);
    }
    for (int i = 0; i < count; ++i) {
      if ((c->table[usable[i]] & care) != wanted) continue;
      // The same value by "or" with itself; Tidy takes it out.
      GateSearch::Add(*c, GateSearch::kOr, usable[i], usable[i]);
      return true;
    }
    if (two_gates) return GateSearch::AddTwo(*c, usable, count, wanted, care) >= 0;
    const int first = static_cast<int>(Random(4));
    for (int i = 0; i < count; ++i) {
      for (int j = 0; j < count; ++j) {
        for (int k = 0; k < 4; ++k) {
          const int operation = (first + k) % 4;
          if (operation != GateSearch::kAndNot && j > i) continue;
          const int a = usable[i];
          const int b = usable[j];
          if ((GateSearch::Apply(operation, c->table[a], c->table[b]) & care) != wanted) continue;
          const bool same = old.operation == operation &&
                            ((old.a == a && old.b == b) ||
                             (old.a == b && old.b == a && operation != GateSearch::kAndNot));
          if (same) continue;
          GateSearch::Add(*c, operation, a, b);
          return true;
        }
      }
    }
    return false;
  }

  // The inputs for which some output changes if gate does.
  static uint64_t Care(const State& state, int gate) {
    uint64_t table[kMostValues] = {};
    const Circuit& c = state.circuit;
    for (int i = 0; i < c.count; ++i) {
      table[i] = i == gate  ? ~c.table[i]
                 : i < gate ? c.table[i]
                            : GateSearch::Apply(c.gate[i].operation, table[c.gate[i].a],
                                                table[c.gate[i].b]);
    }
    uint64_t care = 0;
    for (const int output : state.outputs) care |= table[output] ^ c.table[output];
    return care;
  }

  // The values that do not depend on gate.
  static int Usable(const Circuit& c, int gate, uint8_t* usable) {
    bool depends[kMostValues] = {};
    depends[gate] = true;
    int count = 0;
    for (int i = 0; i < c.count; ++i) {
      if (i > gate) depends[i] = depends[c.gate[i].a] || depends[c.gate[i].b];
      if (!depends[i]) usable[count++] = static_cast<uint8_t>(i);
    }
    return count;
  }

  // Orders the gates by what they need, drops what no output needs, and puts one gate in the place
  // of gates that are the same.
  static void Tidy(State& state) {
    Circuit tidy = InputsOnly();
    int place[kMostValues] = {};
    for (int i = 0; i < kMostValues; ++i) place[i] = i < kInputs ? i : -1;
    for (int& output : state.outputs) output = Move(state.circuit, output, place, &tidy);
    state.circuit = tidy;
  }

  static int Move(const Circuit& from, int value, int* place, Circuit* to) {
    if (place[value] >= 0) return place[value];
    const Gate& gate = from.gate[value];
    const int a = Move(from, gate.a, place, to);
    const int b = Move(from, gate.b, place, to);
    const uint64_t table = GateSearch::Apply(gate.operation, to->table[a], to->table[b]);
    int found = 0;
    while (found < to->count && to->table[found] != table) ++found;
    if (found == to->count) found = GateSearch::Add(*to, gate.operation, a, b);
    return place[value] = found;
  }

  std::mt19937 random_;
  State now_;
  State best_;
  int slack_ = 0;
};

}  // namespace mirolta
