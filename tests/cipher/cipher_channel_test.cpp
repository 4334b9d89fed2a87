#include "cipher_channel.h"

#include <gtest/gtest.h>

#include "cipher_model.h"
#include "cipher_testing.h"

namespace mirolta::test {
namespace {

// A toy cipher that mixes a block in itself, so that a byte out of place shows.
void ToyBlock(uint32_t block_size, const uint8_t* in, uint8_t* out) {
  for (uint32_t i = 0; i < block_size; ++i) {
    out[i] = static_cast<uint8_t>(in[block_size - 1 - i] ^ (17 * i + 5));
  }
}

template <uint32_t kBlockSize>
void ToyBlocks(const void*, const uint8_t* in, uint8_t* out, uint32_t block_count) {
  for (uint32_t i = 0; i < block_count; ++i) {
    ToyBlock(kBlockSize, in + kBlockSize * i, out + kBlockSize * i);
  }
}

constexpr BlockTransform kToy16 = {ToyBlocks<16>, nullptr, 16};
constexpr BlockTransform kToy8 = {ToyBlocks<8>, nullptr, 8};

Bytes Toy(uint32_t block_size, const Bytes& in) {
  Bytes out(in.size());
  for (size_t i = 0; i < in.size(); i += block_size) ToyBlock(block_size, &in[i], &out[i]);
  return out;
}

HRESULT Update(CipherChannel& channel, const BlockTransform& transform, const Bytes& data) {
  return channel.Update(transform, data.data(), static_cast<uint32_t>(data.size()));
}

TEST(CipherChannel, EverySplitGivesTheSameBlocks) {
  std::mt19937 random(1);
  for (const BlockTransform& toy : {kToy16, kToy8}) {
    const Bytes data = RandomBytes(random, 5 * toy.block_size);
    const Bytes expected = Toy(toy.block_size, data);
    for (size_t first = 0; first <= data.size(); ++first) {
      for (size_t second = first; second <= data.size(); ++second) {
        CipherChannel channel;
        EXPECT_EQ(Update(channel, toy, Part(data, 0, first)), S_OK);
        EXPECT_EQ(channel.Out().Length(), first / toy.block_size * toy.block_size);
        EXPECT_EQ(channel.In().Length(), first % toy.block_size);
        EXPECT_EQ(Update(channel, toy, Part(data, first, second - first)), S_OK);
        EXPECT_EQ(Update(channel, toy, Part(data, second, data.size() - second)), S_OK);
        EXPECT_EQ(Content(channel.Out()), expected);
      }
    }
  }
}

TEST(CipherChannel, DataBeyondTheInputQueueIsRefusedWhole) {
  CipherChannel channel;  // holds 512 bytes
  EXPECT_EQ(Update(channel, kToy16, Bytes(513, 1)), E_OUTOFMEMORY);
  EXPECT_EQ(channel.In().Length(), 0u);
  EXPECT_EQ(channel.Out().Length(), 0u);
  EXPECT_EQ(Update(channel, kToy16, Bytes(512, 1)), S_OK);
  EXPECT_EQ(channel.Out().Length(), 512u);
  channel.Out().Consume(512);
  // What waits counts too.
  EXPECT_EQ(Update(channel, kToy16, Bytes(3, 1)), S_OK);
  EXPECT_EQ(Update(channel, kToy16, Bytes(510, 1)), E_OUTOFMEMORY);
  EXPECT_EQ(channel.In().Length(), 3u);
  EXPECT_EQ(channel.Out().Length(), 0u);
  EXPECT_EQ(Update(channel, kToy16, Bytes(509, 1)), S_OK);
  EXPECT_EQ(channel.Out().Length(), 512u);
}

TEST(CipherChannel, FullOutputKeepsTheRestQueued) {
  std::mt19937 random(2);
  const Bytes data = RandomBytes(random, 900);
  CipherChannel channel;
  EXPECT_EQ(Update(channel, kToy16, Part(data, 0, 470)), S_OK);
  // 29 blocks are out and 6 bytes wait; 48 bytes more fit, of the 436 that come.
  EXPECT_EQ(Update(channel, kToy16, Part(data, 470, 430)), E_OUTOFMEMORY);
  EXPECT_EQ(Content(channel.Out()), Toy(16, Part(data, 0, 512)));
  EXPECT_EQ(Content(channel.In()), Part(data, 512, 388));
  // Nothing changes until there is room.
  EXPECT_EQ(channel.Update(kToy16, nullptr, 0), E_OUTOFMEMORY);
  EXPECT_EQ(Content(channel.In()), Part(data, 512, 388));
  // New data is taken although no block can move, until the input queue is full too.
  EXPECT_EQ(Update(channel, kToy16, Bytes(124, 9)), E_OUTOFMEMORY);
  EXPECT_EQ(channel.In().Length(), 512u);
  EXPECT_EQ(Update(channel, kToy16, Bytes(1, 9)), E_OUTOFMEMORY);
  EXPECT_EQ(channel.In().Length(), 512u);
  channel.Out().Consume(20);
  EXPECT_EQ(channel.Update(kToy16, nullptr, 0), E_OUTOFMEMORY);
  EXPECT_EQ(channel.Out().Length(), 508u);
  EXPECT_EQ(Content(channel.In()), Part(data, 528, 372) + Bytes(124, 9));
  channel.Out().Consume(508);
  EXPECT_EQ(channel.TransformQueued(kToy16), S_OK);
  EXPECT_EQ(Content(channel.Out()), Toy(16, Part(data, 528, 372) + Bytes(124, 9)));
  EXPECT_EQ(channel.In().Length(), 0u);
}

TEST(CipherChannel, WithoutAKeyDataIsQueuedAndKept) {
  constexpr BlockTransform kKeyless = {nullptr, nullptr, 16};
  CipherChannel channel;
  EXPECT_EQ(Update(channel, kKeyless, Bytes(15, 1)), S_OK);
  EXPECT_EQ(channel.TransformQueued(kKeyless), S_OK);
  EXPECT_EQ(Update(channel, kKeyless, Bytes(17, 1)), E_FAIL);
  EXPECT_EQ(channel.In().Length(), 32u);
  EXPECT_EQ(channel.Out().Length(), 0u);
  EXPECT_EQ(Update(channel, kKeyless, Bytes(481, 1)), E_OUTOFMEMORY);
  EXPECT_EQ(channel.TransformQueued(kToy16), S_OK);
  EXPECT_EQ(channel.Out().Length(), 32u);
}

TEST(CipherChannel, ClearKeepsTheShapeAndReinitChangesIt) {
  CipherChannel channel;
  channel.Reinit(2000, 300);
  EXPECT_EQ(Update(channel, kToy16, Bytes(100, 1)), S_OK);
  channel.Clear();
  EXPECT_EQ(channel.In().Length(), 0u);
  EXPECT_EQ(channel.Out().Length(), 0u);
  EXPECT_EQ(channel.In().Step(), 300u);
  EXPECT_EQ(channel.Out().Maximum(), 2100u);
  EXPECT_EQ(Update(channel, kToy16, Bytes(100, 1)), S_OK);
  channel.Reinit(0, 0);
  EXPECT_EQ(channel.In().Length(), 0u);
  EXPECT_EQ(channel.Out().Length(), 0u);
  EXPECT_EQ(channel.In().Maximum(), 512u);
  EXPECT_EQ(channel.Out().Maximum(), 512u);
}

TEST(CipherChannel, AgreesWithTheModelAtSmallLimits) {
  std::mt19937 random(3);
  for (const BlockTransform& toy : {kToy16, kToy8}) {
    const ModelChannel::Block block = [&](const uint8_t* in, uint8_t* out) {
      ToyBlock(toy.block_size, in, out);
    };
    CipherChannel channel;
    ModelChannel model;
    uint32_t refusals = 0;
    for (int step = 0; step < 20000; ++step) {
      const uint32_t choice = Below(random, 64);
      if (choice == 0) {
        const uint32_t growth = 256 + Below(random, 50);
        const uint32_t limit = Below(random, 1500);
        channel.Reinit(limit, growth);
        model.Reinit(limit, growth);
      } else if (choice < 16) {
        const uint32_t taken = channel.Out().Consume(Below(random, 900));
        model.out.erase(model.out.begin(), model.out.begin() + static_cast<ptrdiff_t>(taken));
      } else {
        const Bytes data = RandomBytes(random, Below(random, choice < 48 ? 60 : 1700));
        const HRESULT status = Update(channel, toy, data);
        ASSERT_EQ(status, model.Update(toy.block_size, block, data.data(),
                                       static_cast<uint32_t>(data.size())))
            << step;
        if (FAILED(status)) ++refusals;
      }
      ASSERT_EQ(Content(channel.In()), model.in) << step;
      ASSERT_EQ(Content(channel.Out()), model.out) << step;
    }
    EXPECT_GE(refusals, 1000u);
  }
}

}  // namespace
}  // namespace mirolta::test
