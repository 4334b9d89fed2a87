#include "byte_buffer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "memory_watch.h"
#include "test_values.h"

namespace mirolta::test {
namespace {

Bytes Content(const ByteBuffer& buffer) {
  return Bytes(buffer.Data(), buffer.Data() + buffer.Length());
}

Bytes Pattern(uint32_t count, uint32_t start = 0) {
  Bytes bytes(count);
  for (uint32_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>((start + i) * 7 + 1);
  return bytes;
}

TEST(ByteBuffer, ConstructionRoundsStepAndMaximum) {
  const struct {
    uint32_t limit, step, expected_step, expected_maximum;
  } rows[] = {
      {0, 0, 256, 512},
      {0, 255, 256, 512},
      {0, 256, 256, 512},
      {0, 257, 257, 514},
      {255, 256, 256, 512},
      {257, 256, 256, 512},
      {511, 256, 256, 512},
      {512, 256, 256, 768},
      {1048576, 256, 256, 1048832},
      {1048576, 65536, 65536, 1114112},
      {1048576, 1000, 1000, 1049000},
      {1001, 1000, 1000, 2000},
  };
  for (const auto& row : rows) {
    ByteBuffer buffer(row.limit, row.step);
    EXPECT_TRUE(buffer.IsValid());
    EXPECT_EQ(buffer.Step(), row.expected_step);
    EXPECT_EQ(buffer.Maximum(), row.expected_maximum);
    EXPECT_EQ(buffer.Capacity(), row.expected_step);
    EXPECT_EQ(buffer.Length(), 0u);
  }
}

TEST(ByteBuffer, MaximumIsHeldBelowTwoToThe32) {
  ByteBuffer buffer(0xFFFFFFFFu, 0);
  EXPECT_EQ(buffer.Maximum(), 0xFFFFFFFFu);
  EXPECT_EQ(buffer.Capacity(), 256u);
}

TEST(ByteBuffer, TerminatorsAreLineFeedThenCarriageReturn) {
  EXPECT_EQ(ByteBuffer::kLineTerminator[0], 10);
  EXPECT_EQ(ByteBuffer::kLineTerminator[1], 13);
  EXPECT_EQ(ByteBuffer::kLineTerminator[2], 0);
  EXPECT_EQ(ByteBuffer::kShortLineTerminator[0], 10);
  EXPECT_EQ(ByteBuffer::kShortLineTerminator[1], 0);
}

TEST(ByteBuffer, DefaultsTake512BytesAndNoMore) {
  ByteBuffer buffer;
  const Bytes bytes = Pattern(512);
  for (uint32_t i = 0; i < 512; ++i) ASSERT_EQ(buffer.Append(&bytes[i], 1), 1u);
  EXPECT_EQ(buffer.Append(bytes.data(), 1), 0u);
  EXPECT_EQ(buffer.AppendFill(1, 1), 0u);
  EXPECT_EQ(buffer.ReserveTail(1), nullptr);
  EXPECT_NE(buffer.ReserveTail(0), nullptr);
  EXPECT_EQ(Content(buffer), bytes);
}

TEST(ByteBuffer, AppendIsAllOrNothing) {
  ByteBuffer buffer;
  const Bytes bytes = Pattern(513);
  EXPECT_EQ(buffer.Append(bytes.data(), 513), 0u);
  EXPECT_EQ(buffer.Length(), 0u);
  EXPECT_EQ(buffer.Capacity(), 256u);
  EXPECT_EQ(buffer.Append(bytes.data(), 300), 300u);
  EXPECT_EQ(buffer.Capacity(), 512u);
  EXPECT_EQ(buffer.Append(bytes.data(), 213), 0u);
  EXPECT_EQ(Content(buffer), Bytes(bytes.begin(), bytes.begin() + 300));
  EXPECT_EQ(buffer.Append(nullptr, 4), 0u);
  EXPECT_EQ(buffer.Append(bytes.data(), 0), 0u);
  EXPECT_EQ(buffer.Length(), 300u);
}

TEST(ByteBuffer, GrowsInWholeStepsBeyondTheShortfall) {
  ByteBuffer buffer(100000, 1000);  // maximum 101000
  const Bytes bytes = Pattern(100000);
  EXPECT_EQ(buffer.Append(bytes.data(), 1000), 1000u);
  EXPECT_EQ(buffer.Capacity(), 1000u);  // full without growing
  EXPECT_EQ(buffer.Append(bytes.data(), 1), 1u);
  EXPECT_EQ(buffer.Capacity(), 2000u);  // shortfall 1: one step
  EXPECT_EQ(buffer.Append(bytes.data(), 1999), 1999u);
  EXPECT_EQ(buffer.Capacity(), 4000u);  // shortfall 1000: a whole step and one more
  EXPECT_EQ(buffer.Append(bytes.data(), 97500), 97500u);
  EXPECT_EQ(buffer.Capacity(), 101000u);  // 4000 + 97000 is just the maximum
  EXPECT_EQ(buffer.Append(bytes.data(), 501), 0u);
  EXPECT_EQ(buffer.Append(bytes.data(), 500), 500u);
}

TEST(ByteBuffer, LastGrowthIsCutToTheMaximum) {
  ByteBuffer buffer;
  EXPECT_EQ(buffer.AppendFill(9, 512), 512u);  // the rule says 256 + 2 * 256
  EXPECT_EQ(buffer.Capacity(), 512u);
}

TEST(ByteBuffer, AppendMayTakeItsOwnContent) {
  ByteBuffer buffer;
  const Bytes bytes = Pattern(200);
  ASSERT_EQ(buffer.Append(bytes.data(), 200), 200u);
  ASSERT_EQ(buffer.Append(buffer.Data() + 50, 150), 150u);  // grows while it reads
  Bytes expected = bytes;
  expected.insert(expected.end(), bytes.begin() + 50, bytes.end());
  EXPECT_EQ(Content(buffer), expected);
}

TEST(ByteBuffer, CommitTakesNoMoreThanTheCapacity) {
  ByteBuffer buffer;
  uint8_t* tail = buffer.ReserveTail(300);
  ASSERT_NE(tail, nullptr);
  const Bytes bytes = Pattern(300);
  std::memcpy(tail, bytes.data(), 300);
  EXPECT_EQ(buffer.Length(), 0u);
  EXPECT_EQ(buffer.Commit(513), 0u);
  EXPECT_EQ(buffer.Length(), 0u);
  EXPECT_EQ(buffer.Commit(300), 300u);
  EXPECT_EQ(Content(buffer), bytes);
  EXPECT_EQ(buffer.Commit(213), 0u);
  EXPECT_EQ(buffer.Length(), 300u);
  EXPECT_EQ(buffer.Commit(212), 212u);
}

TEST(ByteBuffer, TakePeekAndConsumeStartAtTheFront) {
  ByteBuffer buffer;
  uint8_t out[300] = {};
  EXPECT_EQ(buffer.Take(out, 10), 0u);
  EXPECT_EQ(buffer.Peek(out, 10), 0u);
  EXPECT_EQ(buffer.Consume(10), 0u);
  const Bytes bytes = Pattern(300);
  ASSERT_EQ(buffer.Append(bytes.data(), 300), 300u);
  EXPECT_EQ(buffer.Peek(out, 5), 5u);
  EXPECT_EQ(Bytes(out, out + 5), Bytes(bytes.begin(), bytes.begin() + 5));
  EXPECT_EQ(buffer.Length(), 300u);
  EXPECT_EQ(buffer.Take(out, 100), 100u);
  EXPECT_EQ(Bytes(out, out + 100), Bytes(bytes.begin(), bytes.begin() + 100));
  EXPECT_EQ(buffer.Consume(50), 50u);
  EXPECT_EQ(Content(buffer), Bytes(bytes.begin() + 150, bytes.end()));
  EXPECT_EQ(buffer.Capacity(), 512u);
  EXPECT_EQ(buffer.Take(nullptr, 10), 0u);
  EXPECT_EQ(buffer.Length(), 150u);
  EXPECT_EQ(buffer.Take(out, 1000), 150u);
  EXPECT_EQ(buffer.Length(), 0u);
}

TEST(ByteBuffer, TakesABlockThatIsAlone) {
  for (const uint32_t held : {15u, 16u, 17u}) {
    for (const uint32_t wanted : {15u, 16u, 17u}) {
      ByteBuffer buffer;
      const Bytes bytes = Pattern(held);
      ASSERT_EQ(buffer.Append(bytes.data(), held), held);
      uint8_t out[18] = {};
      EXPECT_EQ(buffer.Take(nullptr, wanted), 0u);
      EXPECT_EQ(Content(buffer), bytes);
      const uint32_t taken = std::min(held, wanted);
      EXPECT_EQ(buffer.Take(out, wanted), taken);
      EXPECT_EQ(Bytes(out, out + taken), Bytes(bytes.data(), bytes.data() + taken));
      EXPECT_EQ(out[taken], 0u);
      EXPECT_EQ(Content(buffer), Bytes(bytes.data() + taken, bytes.data() + held));
    }
  }
}

TEST(ByteBuffer, ClearKeepsStorageResetAndReinitDoNot) {
  ByteBuffer buffer(100000, 300);
  ASSERT_EQ(buffer.AppendFill(1, 1000), 1000u);
  const uint32_t capacity = buffer.Capacity();
  buffer.Clear();
  EXPECT_EQ(buffer.Length(), 0u);
  EXPECT_EQ(buffer.Capacity(), capacity);
  ASSERT_EQ(buffer.AppendFill(1, 1000), 1000u);
  buffer.Reset();
  EXPECT_EQ(buffer.Length(), 0u);
  EXPECT_EQ(buffer.Capacity(), 300u);
  EXPECT_EQ(buffer.Maximum(), 100200u);
  ASSERT_EQ(buffer.AppendFill(1, 1000), 1000u);
  buffer.Reinit(0, 0);
  EXPECT_EQ(buffer.Length(), 0u);
  EXPECT_EQ(buffer.Capacity(), 256u);
  EXPECT_EQ(buffer.Step(), 256u);
  EXPECT_EQ(buffer.Maximum(), 512u);
}

TEST(ByteBuffer, MoveAllToMovesEverything) {
  ByteBuffer from(10000, 0), to(10000, 0);
  const Bytes bytes = Pattern(1000);
  ASSERT_EQ(from.Append(bytes.data(), 1000), 1000u);
  ASSERT_EQ(to.AppendFill(0xEE, 3), 3u);
  EXPECT_EQ(from.MoveAllTo(to), 1000u);
  EXPECT_EQ(from.Length(), 0u);
  Bytes expected = bytes;
  expected.insert(expected.begin(), 3, 0xEE);
  EXPECT_EQ(Content(to), expected);
  EXPECT_EQ(from.MoveAllTo(to), 0u);
}

TEST(ByteBuffer, MoveAllToLosesTheRefusedBlock) {
  ByteBuffer from(10000, 0), to;  // to takes 512
  const Bytes bytes = Pattern(1000);
  ASSERT_EQ(from.Append(bytes.data(), 1000), 1000u);
  ASSERT_EQ(to.AppendFill(0, 100), 100u);
  EXPECT_EQ(from.MoveAllTo(to), 512u);  // one block moved, one lost
  EXPECT_EQ(to.Length(), 356u);
  EXPECT_EQ(Content(from), Bytes(bytes.begin() + 512, bytes.end()));
}

TEST(ByteBuffer, MoveAllToItselfMovesNothing) {
  ByteBuffer buffer;
  ASSERT_EQ(buffer.AppendFill(5, 400), 400u);
  EXPECT_EQ(buffer.MoveAllTo(buffer), 0u);
  EXPECT_EQ(Content(buffer), Bytes(400, 5));
}

TEST(ByteBuffer, FindDoesNotLookAtTheLastPosition) {
  ByteBuffer buffer;
  const auto set = [&](const Bytes& bytes) {
    buffer.Clear();
    ASSERT_EQ(buffer.Append(bytes.data(), static_cast<uint32_t>(bytes.size())), bytes.size());
  };
  const Bytes pattern = BytesOf("ab");
  const auto find = [&](const Bytes& p) {
    return buffer.Find(p.data(), static_cast<uint32_t>(p.size()));
  };
  EXPECT_EQ(find(pattern), -1);  // empty content
  EXPECT_EQ(buffer.Find(pattern.data(), 0), -1);
  set(BytesOf("abxx"));
  EXPECT_EQ(find(pattern), 0);
  EXPECT_EQ(buffer.Find(nullptr, 2), -1);
  EXPECT_EQ(buffer.Find(pattern.data(), 0), 0);
  set(BytesOf("xabx"));
  EXPECT_EQ(find(pattern), 1);
  set(BytesOf("xxab"));
  EXPECT_EQ(find(pattern), -1);
  set(BytesOf("abab"));
  EXPECT_EQ(find(pattern), 0);
  set(BytesOf("ab"));
  EXPECT_EQ(find(pattern), -1);  // as long as the content
  set(BytesOf("a"));
  EXPECT_EQ(find(pattern), -1);  // longer than the content
  EXPECT_EQ(find(Bytes(1000, 0)), -1);
}

// An unallocated buffer: every operation fails or does nothing.
void ExpectSafeWithoutStorage(ByteBuffer& buffer) {
  uint8_t byte = 1;
  EXPECT_FALSE(buffer.IsValid());
  EXPECT_EQ(buffer.Capacity(), 0u);
  EXPECT_EQ(buffer.Length(), 0u);
  EXPECT_EQ(buffer.Append(&byte, 1), 0u);
  EXPECT_EQ(buffer.AppendFill(1, 1), 0u);
  EXPECT_EQ(buffer.ReserveTail(1), nullptr);
  EXPECT_EQ(buffer.ReserveTail(0), nullptr);
  EXPECT_EQ(buffer.AppendFill(1, 0), 0u);
  EXPECT_EQ(buffer.Commit(1), 0u);
  EXPECT_EQ(buffer.Commit(0), 0u);
  EXPECT_EQ(buffer.Take(&byte, 1), 0u);
  EXPECT_EQ(buffer.Peek(&byte, 1), 0u);
  EXPECT_EQ(buffer.Consume(1), 0u);
  EXPECT_EQ(buffer.Find(&byte, 1), -1);
  ByteBuffer* none = &buffer;
  EXPECT_EQ(buffer.MoveAllTo(*none), 0u);
  buffer.Clear();
  buffer.Reset();
  EXPECT_FALSE(buffer.IsValid());
}

TEST(ByteBuffer, FailedConstructionLeavesItSafe) {
  alignas(ByteBuffer) uint8_t place[sizeof(ByteBuffer)];
  ByteBuffer* buffer = nullptr;
  {
    FailAllocationsAfter fail(0);
    buffer = new (place) ByteBuffer(1000, 300);
    ExpectSafeWithoutStorage(*buffer);
    buffer->Reinit(1000, 300);
    EXPECT_FALSE(buffer->IsValid());
  }
  buffer->Reset();
  EXPECT_TRUE(buffer->IsValid());
  EXPECT_EQ(buffer->Capacity(), 300u);
  EXPECT_EQ(buffer->AppendFill(7, 10), 10u);
  buffer->~ByteBuffer();
}

TEST(ByteBuffer, FailedGrowthLeavesTheContent) {
  ByteBuffer buffer(100000, 0);
  const Bytes bytes = Pattern(256);
  ASSERT_EQ(buffer.Append(bytes.data(), 256), 256u);
  {
    FailAllocationsAfter fail(0);
    EXPECT_EQ(buffer.Append(bytes.data(), 1), 0u);
    EXPECT_EQ(buffer.AppendFill(0, 1), 0u);
    EXPECT_EQ(buffer.ReserveTail(1), nullptr);
  }
  EXPECT_EQ(Content(buffer), bytes);
  EXPECT_EQ(buffer.Capacity(), 256u);
  EXPECT_EQ(buffer.Append(bytes.data(), 1), 1u);
}

TEST(ByteBuffer, StorageIsWipedBeforeItIsFreed) {
  const Bytes secret = BytesOf("the secret of this test");
  const auto count = static_cast<uint32_t>(secret.size());
  const auto fill = [&](ByteBuffer& buffer) {
    ASSERT_EQ(buffer.AppendFill(1, 20), 20u);
    ASSERT_EQ(buffer.Append(secret.data(), count), count);
  };
  {
    ByteBuffer buffer(10000, 0);
    fill(buffer);
    WatchFreedMemory watch(secret.data(), secret.size());
    ASSERT_EQ(buffer.AppendFill(0, 500), 500u);
    EXPECT_GT(watch.Freed(), 0);
    EXPECT_EQ(watch.FreedWithSecret(), 0);
    buffer.Reset();
    EXPECT_EQ(watch.FreedWithSecret(), 0);
  }
  {
    ByteBuffer buffer;
    fill(buffer);
    buffer.Clear();  // the bytes still lie behind the content
    WatchFreedMemory watch(secret.data(), secret.size());
    buffer.Reinit(0, 0);
    EXPECT_GT(watch.Freed(), 0);
    EXPECT_EQ(watch.FreedWithSecret(), 0);
  }
  WatchFreedMemory watch(secret.data(), secret.size());
  {
    ByteBuffer buffer;
    fill(buffer);
    EXPECT_EQ(buffer.Consume(20), 20u);
  }
  EXPECT_GT(watch.Freed(), 0);
  EXPECT_EQ(watch.FreedWithSecret(), 0);
}

// A reference model of the queue: growth computed step by step.
struct Model {
  uint64_t step, maximum, capacity;
  Bytes content;

  Model(uint64_t limit, uint64_t wanted_step) {
    step = wanted_step < 256 ? 256 : wanted_step;
    maximum = step;
    while (maximum <= (limit > step ? limit : step)) maximum += step;
    capacity = step;
  }
  bool MakeRoom(uint64_t count) {
    if (content.size() + count <= capacity) return true;
    if (content.size() + count > maximum) return false;
    const uint64_t short_by = content.size() + count - capacity;
    for (uint64_t covered = 0; covered <= short_by; covered += step) capacity += step;
    if (capacity > maximum) capacity = maximum;
    return true;
  }
  Bytes Take(uint64_t count) {
    const auto end = content.begin() + static_cast<long>(std::min<uint64_t>(count, content.size()));
    Bytes taken(content.begin(), end);
    content.erase(content.begin(), end);
    return taken;
  }
};

TEST(ByteBuffer, BehavesAsItsModelOnRandomOperations) {
  std::mt19937 random(20240611);
  const auto below = [&](uint32_t bound) { return static_cast<uint32_t>(random() % bound); };
  for (int round = 0; round < 60; ++round) {
    const uint32_t limit = below(6000), step = below(900);
    ByteBuffer buffer(limit, step);
    Model model(limit, step);
    ASSERT_EQ(buffer.Maximum(), model.maximum);
    for (int i = 0; i < 400; ++i) {
      const uint32_t count = below(4) == 0 ? below(3000) : below(300);
      const Bytes bytes = Pattern(count + 1, static_cast<uint32_t>(random()));
      Bytes out(count + 1, 0xCC);
      switch (below(8)) {
        case 0:
        case 1: {
          const bool fits = model.MakeRoom(count);
          ASSERT_EQ(buffer.Append(bytes.data(), count), fits ? count : 0);
          if (fits) model.content.insert(model.content.end(), bytes.begin(), bytes.end() - 1);
          break;
        }
        case 2: {
          const bool fits = model.MakeRoom(count);
          ASSERT_EQ(buffer.AppendFill(bytes[0], count), fits ? count : 0);
          if (fits) model.content.insert(model.content.end(), count, bytes[0]);
          break;
        }
        case 3: {
          const bool fits = model.MakeRoom(count);
          uint8_t* tail = buffer.ReserveTail(count);
          ASSERT_EQ(tail != nullptr, fits);
          if (!fits) break;
          std::memcpy(tail, bytes.data(), count);
          ASSERT_EQ(buffer.Commit(count), count);
          model.content.insert(model.content.end(), bytes.begin(), bytes.end() - 1);
          break;
        }
        case 4: {
          const Bytes taken = model.Take(count);
          ASSERT_EQ(buffer.Take(out.data(), count), taken.size());
          ASSERT_TRUE(std::equal(taken.begin(), taken.end(), out.begin()));
          ASSERT_EQ(out[taken.size()], 0xCC);
          break;
        }
        case 5:
          ASSERT_EQ(buffer.Consume(count), model.Take(count).size());
          break;
        case 6: {
          const uint32_t n = below(3) + 1;
          int32_t expected = -1;
          const auto length = static_cast<uint32_t>(model.content.size());
          if (length == 0) break;
          const uint32_t from = below(length);
          const uint8_t* const content = model.content.data();
          const Bytes pattern(content + from, content + std::min(from + n, length));
          const auto size = static_cast<uint32_t>(pattern.size());
          for (uint32_t at = 0; at + size < length && expected < 0; ++at) {
            if (std::equal(pattern.begin(), pattern.end(), content + at)) {
              expected = static_cast<int32_t>(at);
            }
          }
          ASSERT_EQ(buffer.Find(pattern.data(), size), expected);
          break;
        }
        default:
          if (below(20) == 0) {
            buffer.Reset();
            model.content.clear();
            model.capacity = model.step;
          } else if (below(10) == 0) {
            buffer.Clear();
            model.content.clear();
          }
      }
      ASSERT_EQ(buffer.Capacity(), model.capacity);
      ASSERT_EQ(Content(buffer), model.content);
    }
  }
}

}  // namespace
}  // namespace mirolta::test
