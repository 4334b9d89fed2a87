/* A plugin of QEMU's user mode that ends the program with status 86 at its first access to memory that
   is not aligned to its own size, as a processor without unaligned access does. On such a processor a
   pair of registers (LDRD, STRD) must be aligned to eight bytes. QEMU itself refuses only what the newest
   processors refuse too.

   The declarations are those of QEMU's qemu-plugin.h, which distributions do not package. */
#include <inttypes.h>
#include <stdint.h>
#include <stdio.h>
#include <unistd.h>

#define EXPORTED __attribute__((visibility("default")))

typedef uint64_t qemu_plugin_id_t;
typedef struct qemu_info_t qemu_info_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
typedef void (*TranslatedCallback)(qemu_plugin_id_t id, struct qemu_plugin_tb *block);
typedef void (*MemoryCallback)(unsigned processor, uint32_t info, uint64_t address, void *data);
enum { kNoRegisters = 0, kReadsAndWrites = 3 };
void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id, TranslatedCallback callback);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb *block);
struct qemu_plugin_insn *qemu_plugin_tb_get_insn(const struct qemu_plugin_tb *block, size_t index);
const void *qemu_plugin_insn_data(const struct qemu_plugin_insn *instruction);
size_t qemu_plugin_insn_size(const struct qemu_plugin_insn *instruction);
const char *qemu_plugin_insn_symbol(const struct qemu_plugin_insn *instruction);
void qemu_plugin_register_vcpu_mem_cb(struct qemu_plugin_insn *instruction, MemoryCallback callback,
                                      int registers, int kinds, void *data);
unsigned qemu_plugin_mem_size_shift(uint32_t info);

EXPORTED int qemu_plugin_version = QEMU_PLUGIN_API;
EXPORTED int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t *info, int count,
                                 char **arguments);

static void End(uint64_t size, uint64_t address, const char *function) {
  fprintf(stderr, "unaligned access of %" PRIu64 " bytes to 0x%" PRIx64 " in %s\n", size, address,
          function != NULL ? function : "a function without a name");
  _exit(86);
}

static void Check(unsigned processor, uint32_t info, uint64_t address, void *function) {
  const uint64_t size = UINT64_C(1) << qemu_plugin_mem_size_shift(info);
  (void)processor;
  if ((address & (size - 1)) != 0) End(size, address, function);
}

/* QEMU tells of a pair as of one access, or as of two whose second is the first's address plus four. */
static void CheckPair(unsigned processor, uint32_t info, uint64_t address, void *function) {
  static __thread uint64_t second;
  const uint64_t size = UINT64_C(1) << qemu_plugin_mem_size_shift(info);
  (void)processor;
  if (size == 4 && address == second) {
    second = 0;
    return;
  }
  if ((address & 7) != 0) End(8, address, function);
  second = size == 4 ? address + 4 : 0;
}

/* LDRD and STRD as the plugin's processor, ARMv5TE, encodes them. */
static int IsPair(const struct qemu_plugin_insn *instruction) {
  const uint8_t *bytes = qemu_plugin_insn_data(instruction);
  uint32_t code = 0;
  if (qemu_plugin_insn_size(instruction) != 4) return 0;
  for (int i = 4; i-- != 0;) code = code << 8 | bytes[i];
  return code >> 28 != 15 && (code & 0x0e1000d0) == 0x000000d0;
}

static void Translated(qemu_plugin_id_t id, struct qemu_plugin_tb *block) {
  const size_t count = qemu_plugin_tb_n_insns(block);
  (void)id;
  for (size_t i = 0; i < count; ++i) {
    struct qemu_plugin_insn *instruction = qemu_plugin_tb_get_insn(block, i);
    const int pair = IsPair(instruction);
    qemu_plugin_register_vcpu_mem_cb(instruction, pair ? CheckPair : Check, kNoRegisters, kReadsAndWrites,
                                     (void *)(uintptr_t)qemu_plugin_insn_symbol(instruction));
  }
}

int qemu_plugin_install(qemu_plugin_id_t id, const qemu_info_t *info, int count, char **arguments) {
  (void)info;
  (void)count;
  (void)arguments;
  qemu_plugin_register_vcpu_tb_trans_cb(id, Translated);
  return 0;
}
