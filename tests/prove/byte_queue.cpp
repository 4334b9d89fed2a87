// The byte queue against a small model: every sequence of a few operations, with sizes around the step by
// which it grows and the maximum. Queues with a planted fault each must be reported.
//
//   byte_queue          sequences of four operations
//   byte_queue --full   sequences of five
#include <algorithm>
#include <iterator>
#include <vector>

#include "byte_buffer.h"
#include "verdict.h"

namespace mirolta {

namespace {

using Content = std::vector<uint8_t>;

constexpr uint32_t kStep = ByteBuffer::kMinimumStep;
constexpr uint32_t kLimit = 2 * kStep;
constexpr uint32_t kMaximum = 3 * kStep;  // one step above the limit

uint64_t wrong = 0;

void Expect(bool holds) {
  wrong += !holds;
}

// Bytes that differ from call to call.
Content Fresh(uint32_t count) {
  static uint8_t next = 0;
  Content bytes(count);
  for (uint8_t& one : bytes) one = next++ * 7;
  return bytes;
}

bool Fits(const Content& model, size_t count) {
  return model.size() + count <= kMaximum;
}

// The operations, each on a queue and on its model. Counts of nothing do nothing.
template <typename Queue>
void Append(Queue& queue, Content& model, uint32_t count) {
  const Content bytes = Fresh(count);
  const bool fits = Fits(model, count);
  Expect(queue.Append(bytes.data(), count) == (fits ? count : 0));
  if (fits) model.insert(model.end(), bytes.begin(), bytes.end());
}

template <typename Queue>
void AppendCopies(Queue& queue, Content& model, uint32_t count) {
  const bool fits = Fits(model, count);
  Expect(queue.AppendFill(0xEE, count) == (fits ? count : 0));
  if (fits) model.insert(model.end(), count, 0xEE);
}

// All of the content but its first byte again, from its own storage.
template <typename Queue>
void AppendOwn(Queue& queue, Content& model, uint32_t) {
  if (model.size() < 2) return;
  const uint32_t count = static_cast<uint32_t>(model.size()) - 1;
  const bool fits = Fits(model, count);
  Expect(queue.Append(queue.Data() + 1, count) == (fits ? count : 0));
  if (!fits) return;
  const Content copy(model.begin() + 1, model.end());
  model.insert(model.end(), copy.begin(), copy.end());
}

template <typename Queue>
void Reserve(Queue& queue, Content& model, uint32_t count) {
  uint8_t* const tail = queue.ReserveTail(count);
  Expect((tail != nullptr) == Fits(model, count));
  if (tail == nullptr) return;
  Expect(tail == queue.Data() + queue.Length() && queue.Capacity() - queue.Length() >= count);
  const Content bytes = Fresh(count);
  std::copy(bytes.begin(), bytes.end(), tail);
  Expect(queue.Commit(queue.Capacity() - queue.Length() + 1) == 0);
  Expect(queue.Commit(count) == count);
  model.insert(model.end(), bytes.begin(), bytes.end());
}

template <typename Queue>
void Take(Queue& queue, Content& model, uint32_t count) {
  const uint32_t taken = std::min(count, static_cast<uint32_t>(model.size()));
  Content bytes(count + 1, 0xA5);
  Expect(queue.Peek(bytes.data(), count) == taken);
  Expect(std::equal(model.begin(), model.begin() + taken, bytes.begin()) && bytes[taken] == 0xA5);
  Expect(queue.Take(bytes.data(), count) == taken);
  Expect(std::equal(model.begin(), model.begin() + taken, bytes.begin()) && bytes[taken] == 0xA5);
  model.erase(model.begin(), model.begin() + taken);
}

template <typename Queue>
void Consume(Queue& queue, Content& model, uint32_t count) {
  const uint32_t taken = std::min(count, static_cast<uint32_t>(model.size()));
  Expect(queue.Consume(count) == taken);
  model.erase(model.begin(), model.begin() + taken);
}

template <typename Queue>
void Clear(Queue& queue, Content& model, uint32_t) {
  queue.Clear();
  model.clear();
}

template <typename Queue>
void Reset(Queue& queue, Content& model, uint32_t) {
  queue.Reset();
  model.clear();
  Expect(queue.Capacity() == kStep);
}

// To a queue that takes all of it, and back.
template <typename Queue>
void Move(Queue& queue, Content& model, uint32_t) {
  ByteBuffer other(kLimit, kStep);
  Expect(queue.MoveAllTo(other) == model.size() && queue.Length() == 0 &&
         other.Length() == model.size());
  Expect(other.MoveAllTo(queue) == model.size() && other.Length() == 0);
}

// Every place of two bytes of the content; a pattern at its very end is not found.
template <typename Queue>
void Find(Queue& queue, Content& model, uint32_t count) {
  if (model.size() < count) return;
  const Content pattern(model.end() - count, model.end());
  int32_t expected = -1;
  for (size_t i = 0; expected < 0 && i + count < model.size(); ++i) {
    if (std::equal(pattern.begin(), pattern.end(), model.begin() + static_cast<ptrdiff_t>(i))) {
      expected = static_cast<int32_t>(i);
    }
  }
  Expect(queue.Find(pattern.data(), count) == expected);
}

template <typename Queue>
struct Operation {
  void (*run)(Queue& queue, Content& model, uint32_t count);
  uint32_t count;
};

template <typename Queue>
constexpr Operation<Queue> kOperations[] = {
    {Append<Queue>, 1},         {Append<Queue>, kStep - 1},
    {Append<Queue>, kStep},     {Append<Queue>, kStep + 1},
    {Append<Queue>, kLimit},    {AppendCopies<Queue>, 2},
    {AppendCopies<Queue>, 300}, {AppendOwn<Queue>, 0},
    {Reserve<Queue>, 1},        {Reserve<Queue>, kStep},
    {Take<Queue>, 1},           {Take<Queue>, kStep},
    {Take<Queue>, kMaximum},    {Consume<Queue>, kStep - 1},
    {Clear<Queue>, 0},          {Reset<Queue>, 0},
    {Move<Queue>, 0},           {Find<Queue>, 2},
};

// Runs the sequence with that number, its first operation in the lowest digit.
template <typename Queue>
void RunSequence(uint64_t number, int length) {
  constexpr size_t kCount = std::size(kOperations<Queue>);
  Queue queue(kLimit, kStep);
  Content model;
  Expect(queue.Maximum() == kMaximum);
  for (int i = 0; i < length; ++i, number /= kCount) {
    const Operation<Queue>& operation = kOperations<Queue>[number % kCount];
    operation.run(queue, model, operation.count);
    Expect(queue.IsValid() && queue.Length() == model.size() && queue.Capacity() % kStep == 0 &&
           queue.Capacity() >= queue.Length() && queue.Capacity() <= kMaximum &&
           std::equal(model.begin(), model.end(), queue.Data()));
  }
}

// Queues that are wrong in a rare state.
struct LosesAByte : ByteBuffer {
  using ByteBuffer::ByteBuffer;
  uint32_t Consume(uint32_t count) noexcept {
    const uint32_t taken = ByteBuffer::Consume(count);
    if (Length() == kStep + 1) (void)ByteBuffer::Consume(1);
    return taken;
  }
};
struct RefusesTheLastByte : ByteBuffer {
  using ByteBuffer::ByteBuffer;
  uint32_t Append(const uint8_t* bytes, uint32_t count) noexcept {
    return Length() + count == kMaximum ? 0 : ByteBuffer::Append(bytes, count);
  }
};
struct FindsTheEnd : ByteBuffer {
  using ByteBuffer::ByteBuffer;
  int32_t Find(const uint8_t* pattern, uint32_t count) const noexcept {
    const int32_t found = ByteBuffer::Find(pattern, count);
    return found < 0 && Length() == count ? 0 : found;
  }
};

template <typename Queue>
bool Run(const char* name, int length, bool is_planted) {
  wrong = 0;
  uint64_t sequences = 1;
  for (int i = 0; i < length; ++i) sequences *= std::size(kOperations<Queue>);
  for (uint64_t number = 0; number < sequences; ++number) RunSequence<Queue>(number, length);
  const std::string what = "sequences of " + std::to_string(length) + " operations";
  return prove::Report(name, sequences, what, wrong, is_planted);
}

}  // namespace

}  // namespace mirolta

int main(int argc, char** argv) {
  using namespace mirolta;
  const bool is_full = prove::WantsAll(argc, argv);
  bool holds = Run<ByteBuffer>("byte queue", is_full ? 5 : 4, false);
  holds &= Run<LosesAByte>("byte queue that loses a byte", 3, true);
  holds &= Run<RefusesTheLastByte>("byte queue that refuses the last byte", 3, true);
  holds &= Run<FindsTheEnd>("byte queue that finds a pattern at its end", 3, true);
  return holds ? 0 : 1;
}
