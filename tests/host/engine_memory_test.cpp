// A script engine that gets no more memory.
#include <gtest/gtest.h>

#include "engine/memory_refusals.h"
#include "host_fixture.h"

namespace mirolta::host {
namespace {

class EngineMemory : public EngineTest {
 protected:
  // Runs a script without any memory; returns whether it threw.
  bool ThrowsWithoutMemory() {
    ScriptContext& context = engine_->Context();
    const size_t usual = context.memory_limit;
    context.memory_limit = 0;
    const bool threw = duk_peval_string(Api(), "[{}]") != 0;
    context.memory_limit = usual;
    duk_pop(Api());
    return threw;
  }
};

TEST_F(EngineMemory, FewObjectsLeaveTheEngineUsable) {
  EXPECT_TRUE(ThrowsWithoutMemory());
  EXPECT_EQ(Run("6 * 7"), "42");
}

TEST_F(EngineMemory, ManyObjectsEndTheRunInsteadOfTryingEach) {
  ASSERT_EQ(Run("var last = null; for (var i = 0; i < 50000; ++i) last = {next: last}; i"),
            "50000");
  EXPECT_EXIT(ThrowsWithoutMemory(), testing::ExitedWithCode(1),
              "^mirolta-host: not enough memory for the script engine\n$");
}

TEST_F(EngineMemory, ABlockThatMovesIsFreed) {
  const MemoryRefusals& refusals = engine_->Context().refusals;
  duk_memory_functions memory;
  duk_get_memory_functions(Api(), &memory);
  engine_->Context().refusals.NoteRefused(1000);
  void* const block = memory.alloc_func(memory.udata, 8);
  ASSERT_NE(block, nullptr);
  EXPECT_TRUE(refusals.IsUseless(1000));
  void* const larger = memory.realloc_func(memory.udata, block, 16);
  ASSERT_NE(larger, nullptr);
  EXPECT_FALSE(refusals.IsUseless(1000));
  engine_->Context().refusals.NoteRefused(1000);
  memory.free_func(memory.udata, larger);
  EXPECT_FALSE(refusals.IsUseless(1000));
}

// A read makes room for more where the size of a stream is not known.
TEST_F(EngineMemory, WhatAReadReturnsTakesNoMoreThanItsBytes) {
  ASSERT_EQ(Run("var none = WScript.OpenFile('/dev/null'), kept = [none.Read()]; kept[0].length"),
            "0");
  const size_t before = engine_->Context().memory_in_use;
  ASSERT_EQ(Run("for (var i = 0; i < 100; ++i) kept.push(none.Read()); kept.length"), "101");
  EXPECT_LT(engine_->Context().memory_in_use - before, 100u << 10);
}

TEST(MemoryRefusalsTest, AsMuchIsNotAskedForAgainBeforeSomethingIsFreed) {
  MemoryRefusals refusals;
  EXPECT_FALSE(refusals.IsUseless(SIZE_MAX - 1));
  refusals.NoteRefused(100);
  refusals.NoteRefused(200);
  EXPECT_TRUE(refusals.IsUseless(100));
  EXPECT_FALSE(refusals.IsUseless(99));
  refusals.NoteFreed();
  EXPECT_FALSE(refusals.IsUseless(100));
}

TEST(MemoryRefusalsTest, GrantedRequestsInARowAreARecovery) {
  MemoryRefusals refusals;
  const auto fail = [&](uint32_t count) {
    bool is_over = false;
    for (uint32_t i = 0; i < count; ++i) is_over = refusals.NoteFailed();
    return is_over;
  };
  const auto grant = [&](uint32_t count) {
    for (uint32_t i = 0; i < count; ++i) refusals.NoteGranted();
  };
  EXPECT_FALSE(fail(MemoryRefusals::kMost));
  grant(MemoryRefusals::kRecovery);
  EXPECT_FALSE(fail(MemoryRefusals::kMost - 1));
  grant(MemoryRefusals::kRecovery - 1);
  EXPECT_FALSE(fail(1));
  grant(MemoryRefusals::kRecovery - 1);
  EXPECT_TRUE(fail(1));
}

}  // namespace
}  // namespace mirolta::host
