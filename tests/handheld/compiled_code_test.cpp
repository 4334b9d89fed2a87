// What compiled code of the handheld calls, built for Linux on the same processor: division of 64 bits,
// and the touching of large frames from the top downwards.
#include <signal.h>
#include <sys/mman.h>

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>

namespace {

int failures = 0;

void Check(bool holds, const char* what, uint64_t a, uint64_t b) {
  if (holds) return;
  if (++failures < 10) {
    std::printf("failed: %s of %#llx and %#llx\n", what, static_cast<unsigned long long>(a),
                static_cast<unsigned long long>(b));
  }
}

void CheckDivision(uint64_t dividend, uint64_t divisor) {
  register uint32_t r0 __asm__("r0") = static_cast<uint32_t>(divisor);
  register uint32_t r1 __asm__("r1") = static_cast<uint32_t>(divisor >> 32);
  register uint32_t r2 __asm__("r2") = static_cast<uint32_t>(dividend);
  register uint32_t r3 __asm__("r3") = static_cast<uint32_t>(dividend >> 32);
  __asm__ __volatile__("bl __rt_udiv64"
                       : "+r"(r0), "+r"(r1), "+r"(r2), "+r"(r3)
                       :
                       : "r12", "lr", "cc", "memory");
  const uint64_t quotient = uint64_t{r1} << 32 | r0;
  const uint64_t remainder = uint64_t{r3} << 32 | r2;
  Check(quotient == dividend / divisor, "the quotient", dividend, divisor);
  Check(remainder == dividend % divisor, "the remainder", dividend, divisor);
}

uint64_t state = 1;

uint64_t Random() {
  state ^= state << 13;
  state ^= state >> 7;
  state ^= state << 17;
  return state;
}

// The stack of a frame: its pages become accessible one by one, as the system adds them.
constexpr uintptr_t kPage = 4096;
constexpr uintptr_t kPages = 16;
uintptr_t lowest = 0;
int added = 0;

void AddPage(int, siginfo_t* info, void*) {
  const uintptr_t page = reinterpret_cast<uintptr_t>(info->si_addr) & ~(kPage - 1);
  if (page != lowest - kPage) {
    std::printf("failed: page %d is skipped\n", added);
    std::fflush(stdout);
    std::_Exit(1);
  }
  mprotect(reinterpret_cast<void*>(page), kPage, PROT_READ | PROT_WRITE);
  lowest = page;
  ++added;
}

// Calls __chkstk as a function with a frame of `size` bytes would, on a stack with one page.
void CheckFrame(uintptr_t size) {
  void* const area = mmap(nullptr, kPages * kPage, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  const uintptr_t end = reinterpret_cast<uintptr_t>(area) + kPages * kPage;
  lowest = end - kPage;
  added = 0;
  mprotect(reinterpret_cast<void*>(lowest), kPage, PROT_READ | PROT_WRITE);
  const uintptr_t top = end - 64;
  register uintptr_t words __asm__("r4") = size / 4;
  register uint32_t r0 __asm__("r0") = 0xA0;
  register uint32_t r1 __asm__("r1") = 0xA1;
  register uint32_t r2 __asm__("r2") = 0xA2;
  register uint32_t r3 __asm__("r3") = 0xA3;
  register uintptr_t own __asm__("r6") = top;
  __asm__ __volatile__(
      "mov r5, sp\n\t"
      "mov sp, r6\n\t"
      "bl __chkstk\n\t"
      "mov r6, sp\n\t"
      "mov sp, r5"
      : "+r"(words), "+r"(own), "+r"(r0), "+r"(r1), "+r"(r2), "+r"(r3)
      :
      : "r5", "r12", "lr", "cc", "memory");
  // Before other calls use the registers.
  const uintptr_t bytes = words;
  const uintptr_t stack = own;
  const bool kept = r0 == 0xA0 && r1 == 0xA1 && r2 == 0xA2 && r3 == 0xA3;
  Check(bytes == size, "the size", bytes, size);
  Check(stack == top, "the stack pointer", stack, top);
  Check(kept, "the arguments", size, 0);
  Check(lowest <= top - size && lowest + kPage > top - size, "the lowest page", lowest, top - size);
  munmap(area, kPages * kPage);
}

}  // namespace

int main() {
  constexpr uint64_t kEdges[] = {1,          2,           3,
                                 0x7FFFFFFF, 0x80000000,  0xFFFFFFFF,
                                 1ull << 32, 0x100000001, 0x7FFFFFFFFFFFFFFF,
                                 1ull << 63, ~0ull - 1,   ~0ull};
  for (const uint64_t divisor : kEdges) {
    CheckDivision(0, divisor);
    for (const uint64_t dividend : kEdges) CheckDivision(dividend, divisor);
  }
  for (int i = 0; i < 100000; ++i) {
    const uint64_t divisor = Random() >> (Random() & 63);
    const uint64_t dividend = Random() >> (Random() & 63);
    if (divisor != 0) CheckDivision(dividend, divisor);
  }

  static char handler_stack[65536];
  const stack_t separate = {handler_stack, 0, sizeof handler_stack};
  sigaltstack(&separate, nullptr);
  struct sigaction action = {};
  action.sa_sigaction = AddPage;
  action.sa_flags = SA_SIGINFO | SA_ONSTACK;
  sigaction(SIGSEGV, &action, nullptr);
  for (const uintptr_t size : {4096u, 4100u, 8188u, 8192u, 24576u, 49152u}) CheckFrame(size);
  std::printf("%s\n", failures == 0 ? "passed" : "failed");
  return failures == 0 ? 0 : 1;
}
