// Reads or writes memory by one kind of instruction, OFFSET bytes behind an aligned address, for
// alignment_test.py.
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {

alignas(16) unsigned char memory[64];

struct Kind {
  const char* name;
  void (*access)(unsigned char* place);
};

const Kind kKinds[] = {
    {"byte",
     [](unsigned char* p) {
       __asm__ volatile("ldrb r3, [%0]" : : "r"(p) : "r3", "memory");
     }},
    {"read16",
     [](unsigned char* p) {
       __asm__ volatile("ldrh r3, [%0]" : : "r"(p) : "r3", "memory");
     }},
    {"write16", [](unsigned char* p) { __asm__ volatile("strh r3, [%0]"
                                                        :
                                                        : "r"(p)
                                                        : "memory"); }},
    {"read32",
     [](unsigned char* p) {
       __asm__ volatile("ldr r3, [%0]" : : "r"(p) : "r3", "memory");
     }},
    {"write32", [](unsigned char* p) { __asm__ volatile("str r3, [%0]"
                                                        :
                                                        : "r"(p)
                                                        : "memory"); }},
    {"multiple",
     [](unsigned char* p) {
       __asm__ volatile("ldm %0, {r2, r3}" : : "r"(p) : "r2", "r3", "memory");
     }},
    {"pair",
     [](unsigned char* p) {
       __asm__ volatile("ldrd r2, r3, [%0]" : : "r"(p) : "r2", "r3", "memory");
     }},
};

}  // namespace

int main(int count, char** arguments) {
  if (count != 3) return 2;
  for (const Kind& kind : kKinds) {
    if (std::strcmp(arguments[1], kind.name) != 0) continue;
    kind.access(memory + std::atoi(arguments[2]));
    std::puts("accessed");
    return 0;
  }
  return 2;
}
