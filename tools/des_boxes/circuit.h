// Straight-line circuits over the six inputs of a box, each value with its whole truth table.
#pragma once

#include <cstdint>
#include <random>
#include <utility>

namespace mirolta {

constexpr int kInputs = 6;
constexpr int kMostValues = 96;

// What one value is made of: operation over the values a, b, c that stand before it. With three
// inputs the operation is a truth table of eight bits, a in the index's top bit.
struct Gate {
  uint8_t operation;
  uint8_t a, b, c;
};

struct Circuit {
  int count;  // values, the inputs first
  uint64_t table[kMostValues];
  Gate gate[kMostValues];
};

// Bit v of a table is the value for the inputs v, the first input in the top bit of v.
inline Circuit InputsOnly() {
  Circuit circuit = {};
  circuit.count = kInputs;
  for (int input = 0; input < kInputs; ++input) {
    for (int v = 0; v < 64; ++v) {
      circuit.table[input] |= static_cast<uint64_t>(v >> (kInputs - 1 - input) & 1) << v;
    }
  }
  return circuit;
}

// A search for gates that extend a circuit by a value that is target wherever mask is set.
class Search {
 public:
  explicit Search(uint32_t seed) : random_(seed) {}
  virtual ~Search() = default;

  // Returns the value's number, or -1 if that takes more than limit values in all; the circuit is
  // then as it was.
  virtual int Extend(Circuit& circuit, uint64_t target, uint64_t mask, int limit, int depth) = 0;

  // The truth table of a gate of values with these tables.
  virtual uint64_t Value(const Gate& gate, const uint64_t* table) const = 0;

  // Adds one gate other than old, or two gates, over the values usable[count], which it may
  // reorder, such that the last one is target wherever mask is set; false if there are none.
  virtual bool Place(Circuit& circuit, uint8_t* usable, int count, uint64_t target, uint64_t mask,
                     const Gate& old, bool two_gates) = 0;

  // Prints a gate as a statement of the kernels.
  virtual void Print(const Gate& gate, int value) const = 0;

  uint32_t Random(uint32_t bound) { return static_cast<uint32_t>(random_() % bound); }

  int Add(Circuit& circuit, const Gate& gate) const {
    circuit.gate[circuit.count] = gate;
    circuit.table[circuit.count] = Value(gate, circuit.table);
    return circuit.count++;
  }

 protected:
  static int Match(const Circuit& circuit, uint64_t target, uint64_t mask) {
    for (int i = 0; i < circuit.count; ++i) {
      if (((circuit.table[i] ^ target) & mask) == 0) return i;
    }
    return -1;
  }

  void Reorder(uint8_t* values, int count) {
    for (int i = count; i > 1; --i) {
      std::swap(values[i - 1], values[Random(static_cast<uint32_t>(i))]);
    }
  }

  // order[count] := the numbers below count, shuffled.
  void Shuffle(uint8_t* order, int count) {
    for (int i = 0; i < count; ++i) {
      const uint32_t j = Random(static_cast<uint32_t>(i + 1));
      if (j != static_cast<uint32_t>(i)) order[i] = order[j];
      order[j] = static_cast<uint8_t>(i);
    }
  }

 private:
  std::mt19937 random_;
};

}  // namespace mirolta
