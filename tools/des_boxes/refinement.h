// Makes a circuit smaller by a random walk over circuits of about its size.
#pragma once

#include <vector>

#include "circuit.h"

namespace mirolta {

// Refiner takes one gate after another and puts other gates in its place that do the same wherever
// an output depends on it. Gates that nothing needs any more go. A step may leave the circuit a few
// gates larger than the smallest one so far: that is how the walk gets away from there.
// Source: Mishchenko and Brayton, Scalable don't-care-based logic optimization and resubstitution,
//         2011.
class Refiner {
 public:
  // Two-input gates have the first input for the third, which changes nothing.
  Refiner(Search& search, const Circuit& circuit, const std::vector<int>& outputs)
      : search_(search), now_{circuit, outputs}, best_(now_) {
    Tidy(now_);
    best_ = now_;
  }

  const Circuit& Best() const { return best_.circuit; }
  const std::vector<int>& Outputs() const { return best_.outputs; }

  void Walk(long steps) {
    for (; steps > 0; --steps, ++steps_) {
      if (steps_ % kStepsFromBest == 0) {
        now_ = best_;
        slack_ = static_cast<int>(search_.Random(kMostSlack + 1));
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

  void Step() {
    const Circuit& c = now_.circuit;
    const int gate =
        kInputs + static_cast<int>(search_.Random(static_cast<uint32_t>(c.count - kInputs)));
    const uint64_t care = Care(now_, gate);
    uint8_t usable[kMostValues];
    const int count = Usable(c, gate, usable);
    State next = now_;
    Circuit& to = next.circuit;
    const uint64_t target = c.table[gate];
    int made = 0;
    while (made < count && ((c.table[usable[made]] ^ target) & care) != 0) ++made;
    if (made < count) {
      made = usable[made];
    } else if (search_.Place(to, usable, count, target, care, c.gate[gate],
                             search_.Random(kOneOfTwoGates) == 0)) {
      made = to.count - 1;
    } else {
      return;
    }
    for (int i = kInputs; i < c.count; ++i) {
      if (to.gate[i].a == gate) to.gate[i].a = static_cast<uint8_t>(made);
      if (to.gate[i].b == gate) to.gate[i].b = static_cast<uint8_t>(made);
      if (to.gate[i].c == gate) to.gate[i].c = static_cast<uint8_t>(made);
    }
    for (int& output : next.outputs) {
      if (output == gate) output = made;
    }
    Tidy(next);
    if (next.circuit.count <= best_.circuit.count + slack_) now_ = next;
  }

  // The inputs for which some output changes if gate does.
  uint64_t Care(const State& state, int gate) const {
    uint64_t table[kMostValues] = {};
    const Circuit& c = state.circuit;
    for (int i = 0; i < c.count; ++i) {
      table[i] = i == gate ? ~c.table[i] : i < gate ? c.table[i] : search_.Value(c.gate[i], table);
    }
    uint64_t care = 0;
    for (const int output : state.outputs) care |= table[output] ^ c.table[output];
    return care;
  }

  static bool Needs(const Gate& gate, const bool* values) {
    return values[gate.a] || values[gate.b] || values[gate.c];
  }

  // The values that do not depend on gate.
  static int Usable(const Circuit& c, int gate, uint8_t* usable) {
    bool depends[kMostValues] = {};
    depends[gate] = true;
    int count = 0;
    for (int i = 0; i < c.count; ++i) {
      if (i > gate) depends[i] = Needs(c.gate[i], depends);
      if (!depends[i]) usable[count++] = static_cast<uint8_t>(i);
    }
    return count;
  }

  // Orders the gates by what they need, drops what no output needs, and puts one gate in the place
  // of gates that are the same.
  void Tidy(State& state) const {
    Circuit tidy = InputsOnly();
    int place[kMostValues] = {};
    for (int i = 0; i < kMostValues; ++i) place[i] = i < kInputs ? i : -1;
    for (int& output : state.outputs) output = Move(state.circuit, output, place, &tidy);
    state.circuit = tidy;
  }

  int Move(const Circuit& from, int value, int* place, Circuit* to) const {
    if (place[value] >= 0) return place[value];
    const Gate& gate = from.gate[value];
    const Gate moved = {gate.operation, static_cast<uint8_t>(Move(from, gate.a, place, to)),
                        static_cast<uint8_t>(Move(from, gate.b, place, to)),
                        static_cast<uint8_t>(Move(from, gate.c, place, to))};
    const uint64_t table = search_.Value(moved, to->table);
    int found = 0;
    while (found < to->count && to->table[found] != table) ++found;
    if (found == to->count) found = search_.Add(*to, moved);
    return place[value] = found;
  }

  Search& search_;
  State now_;
  State best_;
  int slack_ = 0;
  long steps_ = 0;
};

}  // namespace mirolta
