// A plugin of QEMU's user emulation that counts the instructions of the emulated program. Each system
// call of the program whose first argument is kMark prints the count so far, in a line of its own on
// the standard error of QEMU.
#include <dlfcn.h>

#include <cinttypes>
#include <cstddef>
#include <cstdint>
#include <cstdio>

#include "count_mark.h"

// What is used of QEMU's plugin interface, whose header Debian does not ship. These declarations are
// the same in all its versions.
// Source: QEMU, include/qemu/qemu-plugin.h, versions 1 (QEMU 4.2) to 4 (QEMU 10.0).
extern "C" {

using PluginId = uint64_t;
struct TranslatedBlock;

using TranslatedCallback = void (*)(PluginId id, TranslatedBlock* block);
using ExecutedCallback = void (*)(unsigned processor, void* data);
using SystemCallCallback = void (*)(PluginId id, unsigned processor, int64_t number, uint64_t a1,
                                    uint64_t a2, uint64_t a3, uint64_t a4, uint64_t a5, uint64_t a6,
                                    uint64_t a7, uint64_t a8);

void qemu_plugin_register_vcpu_tb_trans_cb(PluginId id, TranslatedCallback callback);
size_t qemu_plugin_tb_n_insns(const TranslatedBlock* block);
void qemu_plugin_register_vcpu_tb_exec_cb(TranslatedBlock* block, ExecutedCallback callback,
                                          int registers, void* data);
void qemu_plugin_register_vcpu_syscall_cb(PluginId id, SystemCallCallback callback);

// QEMU reads the version after the constructors, and loads no plugin of a version that it lacks.
__attribute__((visibility("default"))) int qemu_plugin_version = 1;
__attribute__((visibility("default"))) int qemu_plugin_install(PluginId id, const void* emulator,
                                                               int count, char** arguments);
}

namespace {

__attribute__((constructor)) void ChooseVersion() {
  // A function that version 2 brought.
  if (dlsym(RTLD_DEFAULT, "qemu_plugin_num_vcpus") != nullptr) qemu_plugin_version = 2;
}

uint64_t executed = 0;

void Executed(unsigned, void* instructions) {
  executed += reinterpret_cast<uintptr_t>(instructions);
}

void Translated(PluginId, TranslatedBlock* block) {
  constexpr int kReadsNoRegisters = 0;
  qemu_plugin_register_vcpu_tb_exec_cb(
      block, Executed, kReadsNoRegisters,
      reinterpret_cast<void*>(uintptr_t{qemu_plugin_tb_n_insns(block)}));
}

void SystemCall(PluginId, unsigned, int64_t, uint64_t a1, uint64_t, uint64_t, uint64_t, uint64_t,
                uint64_t, uint64_t, uint64_t) {
  if (static_cast<uint32_t>(a1) == mirolta::bench::kMark) {
    std::fprintf(stderr, "%" PRIu64 "\n", executed);
  }
}

}  // namespace

int qemu_plugin_install(PluginId id, const void*, int, char**) {
  qemu_plugin_register_vcpu_tb_trans_cb(id, Translated);
  qemu_plugin_register_vcpu_syscall_cb(id, SystemCall);
  return 0;
}
