// The registers of ARM after work with secrets.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>

#include "platform.h"

namespace mirolta {
namespace {

#if defined(__arm__)

// Registers as they are right after a call: r0 to r3 and r12, and d0 to d31.
struct Registers {
  uint32_t general[5];
  uint64_t vectors[32];
};

// Leaves a secret in every register that it need not preserve.
HRESULT FillRegisters(void*) {
  __asm__ volatile(
      ".fpu neon\n\t"
      ".irp n,1,2,3,12\n\t"
      "mov r\\n, #0x5A\n\t"
      ".endr\n\t"
      ".irp n,0,1,2,3,8,9,10,11,12,13,14,15\n\t"
      "vmov.i8 q\\n, #0x5A\n\t"
      ".endr"
      :
      :
      : "r1", "r2", "r3", "r12", "d0", "d1", "d2", "d3", "d4", "d5", "d6", "d7");
  return S_OK;
}

// The call and the stores are one piece, so that nothing comes in between. r3 is zero before: functions push
// and pop it for the alignment of the stack.
void Keep(HRESULT (*run)(HRESULT (*)(void*), void*, const StackUse*), Registers* kept) {
  static const StackUse use = StackUse::kShort;
  struct {
    decltype(run) function;
    HRESULT (*work)(void*);
    const StackUse* use;
    uint32_t* general;
    uint64_t* vectors;
  } const call = {run, FillRegisters, &use, kept->general, kept->vectors};
  __asm__ volatile(
      ".fpu neon\n\t"
      "mov r5, %[call]\n\t"
      "ldr r12, [r5]\n\t"
      "ldr r0, [r5, #4]\n\t"
      "mov r1, #0\n\t"
      "ldr r2, [r5, #8]\n\t"
      "mov r3, #0\n\t"
      "blx r12\n\t"
      "ldr r4, [r5, #12]\n\t"
      "stm r4, {r0, r1, r2, r3, r12}\n\t"
      "ldr r4, [r5, #16]\n\t"
      "vstm r4!, {d0-d15}\n\t"
      "vstm r4, {d16-d31}"
      :
      : [call] "r"(&call)
      : "r0", "r1", "r2", "r3", "r4", "r5", "r12", "lr", "d0", "d1", "d2", "d3", "d4", "d5", "d6",
        "d7", "cc", "memory");
}

// How many registers hold something that a call need not preserve.
size_t Used(const Registers& kept) {
  size_t count = 0;
  for (const uint32_t& value : kept.general) count += value != 0 ? 1 : 0;
  for (size_t i = 0; i < 32; ++i) {
    const bool is_preserved = i >= 8 && i < 16;
    count += kept.vectors[i] != 0 && !is_preserved ? 1 : 0;
  }
  return count;
}

// All but r0, the status, and r3, by which the unoptimised function returns it.
constexpr size_t kFilled = 3 + 24;

#else

// Registers as they are right after a call: x0 to x17, and v0 to v31.
struct Registers {
  uint64_t general[18];
  uint64_t vectors[32][2];
};

// Leaves a secret in every register that it need not preserve.
HRESULT FillRegisters(void*) {
  __asm__ volatile(
      ".irp n,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17\n\t"
      "mov x\\n, #0x5A5A\n\t"
      ".endr\n\t"
      ".irp n,0,1,2,3,4,5,6,7,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31\n\t"
      "movi v\\n\\().16b, #0x5A\n\t"
      ".endr\n\t"
      ".irp n,8,9,10,11,12,13,14,15\n\t"
      "mov v\\n\\().d[1], x1\n\t"
      ".endr"
      :
      :
      : "x1", "x2", "x3", "x4", "x5", "x6", "x7", "x8", "x9", "x10", "x11", "x12", "x13", "x14",
        "x15", "x16", "x17", "v0", "v1", "v2", "v3", "v4", "v5", "v6", "v7", "v16", "v17", "v18",
        "v19", "v20", "v21", "v22", "v23", "v24", "v25", "v26", "v27", "v28", "v29", "v30", "v31");
  return S_OK;
}

// The call and the stores are one piece, so that nothing comes in between.
void Keep(HRESULT (*run)(HRESULT (*)(void*), void*, const StackUse*), Registers* kept) {
  static const StackUse use = StackUse::kShort;
  struct {
    decltype(run) function;
    HRESULT (*work)(void*);
    const StackUse* use;
    Registers* kept;
  } const call = {run, FillRegisters, &use, kept};
  __asm__ volatile(
      "mov x19, %[call]\n\t"
      "ldp x9, x0, [x19]\n\t"
      "mov x1, xzr\n\t"
      "ldr x2, [x19, #16]\n\t"
      "blr x9\n\t"
      "ldr x20, [x19, #24]\n\t"
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17\n\t"
      "str x\\n, [x20], #8\n\t"
      ".endr\n\t"
      ".irp n,0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,"
      "31\n\t"
      "str q\\n, [x20], #16\n\t"
      ".endr"
      :
      : [call] "r"(&call)
      : "x0", "x1", "x2", "x3", "x4", "x5", "x6", "x7", "x8", "x9", "x10", "x11", "x12", "x13",
        "x14", "x15", "x16", "x17", "x19", "x20", "x30", "v0", "v1", "v2", "v3", "v4", "v5", "v6",
        "v7", "v8", "v9", "v10", "v11", "v12", "v13", "v14", "v15", "v16", "v17", "v18", "v19",
        "v20", "v21", "v22", "v23", "v24", "v25", "v26", "v27", "v28", "v29", "v30", "v31", "cc",
        "memory");
}

// How many registers, or halves of vectors, hold something that a call need not preserve.
size_t Used(const Registers& kept) {
  size_t count = 0;
  for (const uint64_t& value : kept.general) count += value != 0 ? 1 : 0;
  for (size_t i = 0; i < 32; ++i) {
    const bool is_preserved = i >= 8 && i < 16;
    count += kept.vectors[i][0] != 0 && !is_preserved ? 1 : 0;
    count += kept.vectors[i][1] != 0 ? 1 : 0;
  }
  return count;
}

// All but x0, the status.
constexpr size_t kFilled = 17 + 2 * 24 + 8;

#endif

HRESULT Plain(HRESULT (*work)(void*), void* context, const StackUse*) {
  return work(context);
}

TEST(ClearedRegistersTest, NoneKeepsWhatWipedWorkHasLeft) {
  Registers kept;
  std::memset(&kept, 0xFF, sizeof kept);
  Keep(Plain, &kept);
  EXPECT_EQ(Used(kept), kFilled);
  std::memset(&kept, 0xFF, sizeof kept);
  Keep(RunWiped, &kept);
  EXPECT_EQ(Used(kept), 0u);
}

}  // namespace
}  // namespace mirolta
