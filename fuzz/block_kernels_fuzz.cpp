// AES and DES by each kernel that the processor has, the blocks split at any place, against the portable kernel;
// each schedule against the portable one.
#include <algorithm>

#include "aes_kernels.h"
#include "des_kernels.h"
#include "fuzz_input.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

template <typename Function>
Function Portable(const KernelList<Function>& list) {
  return list[list.size() - 1].function;
}

template <typename List, typename Schedule>
Bytes Transformed(const List& list, const Schedule& schedule, const Bytes& in, uint32_t block,
                  FuzzInput split) {
  const uint32_t count = static_cast<uint32_t>(in.size()) / block;
  Bytes expected(in.size());
  Portable(list)(schedule, in.data(), expected.data(), count);
  for (const auto& kernel : list) {
    if ((kernel.needs & ~ProcessorFeatures()) != 0) continue;
    Bytes out = in;
    FuzzInput at = split;
    const bool in_place = at.Byte() % 2 != 0;
    for (uint32_t done = 0; done < count;) {
      const uint32_t part = at.IsEmpty() ? count - done : std::min(at.Byte() % 40u, count - done);
      kernel.function(schedule, (in_place ? out : in).data() + done * block,
                      out.data() + done * block, part);
      done += part;
    }
    FUZZ_CHECK(out == expected);
  }
  return expected;
}

Bytes Blocks(FuzzInput& in, uint32_t block) {
  const uint32_t count = in.Byte() % 72u;
  Bytes bytes = in.Take(count * block);
  // Long runs from short input.
  for (size_t i = bytes.size(); i < count * block; ++i) {
    bytes.push_back(static_cast<uint8_t>(i * 29));
  }
  return bytes;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const bool aes = in.Byte() % 2 != 0;
  const uint32_t parts = in.Byte() % 3;
  Bytes key = in.Take(aes ? 16 + 8 * parts : 8 + 8 * parts);
  key.resize(aes ? 16 + 8 * parts : 8 + 8 * parts);
  const uint32_t key_size = static_cast<uint32_t>(key.size());
  const FuzzInput split(in);
  if (!aes) {
    const Bytes plain = Blocks(in, 8);
    DesSchedule schedule;
    FUZZ_CHECK(ExpandDesKey(key.data(), key_size, &schedule));
    const Bytes cipher = Transformed(kDesEncryptKernels, schedule, plain, 8, split);
    FUZZ_CHECK(Transformed(kDesDecryptKernels, schedule, cipher, 8, split) == plain);
    return 0;
  }
  const Bytes plain = Blocks(in, 16);
  AesSchedule schedule;
  FUZZ_CHECK(ExpandAesKey(key.data(), key_size, &schedule));
  const AesTransform encrypt = Portable(kAesEncryptKernels);
  const AesTransform decrypt = Portable(kAesDecryptKernels);
  uint8_t expected[16], made[16];
  encrypt(schedule, key.data(), expected, 1);
  for (const auto& kernel : kAesExpansionKernels) {
    if ((kernel.needs & ~ProcessorFeatures()) != 0) continue;
    AesSchedule other = {};
    kernel.function(key.data(), key_size, &other);
    encrypt(other, key.data(), made, 1);
    FUZZ_CHECK(std::equal(made, made + 16, expected));
    decrypt(other, made, made, 1);
    FUZZ_CHECK(std::equal(made, made + 16, key.data()));
  }
  const Bytes cipher = Transformed(kAesEncryptKernels, schedule, plain, 16, split);
  FUZZ_CHECK(Transformed(kAesDecryptKernels, schedule, cipher, 16, split) == plain);
  return 0;
}
