// The cipher engine's queues against a model that takes one block after the other, to their limit
// and past it.
#include "cipher_algorithms.h"
#include "cipher_model.h"
#include "fuzz_values.h"
#include "value_conversion.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

using FuzzBytes = mirolta::fuzz::Bytes;

void CheckQueue(ByteBuffer& queue, const FuzzBytes& expected) {
  FUZZ_CHECK(queue.Length() == expected.size());
  FUZZ_CHECK(expected.empty() || std::memcmp(queue.Data(), expected.data(), expected.size()) == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const LONG algorithm = in.Byte() % 2 != 0 ? kCipherAes : kCipherDes;
  const std::unique_ptr<CipherEngine> engine = CreateCipherEngine(algorithm);
  // Single blocks by an engine of its own.
  const std::unique_ptr<CipherEngine> single = CreateCipherEngine(algorithm);
  constexpr uint32_t kSizes[2][3] = {{16, 24, 32}, {8, 16, 24}};
  FuzzBytes key_bytes = in.Take(kSizes[algorithm == kCipherAes ? 0 : 1][in.Byte() % 3]);
  VARIANT key;
  BytesToVariant(key_bytes.data(), static_cast<uint32_t>(key_bytes.size()), &key);
  const HRESULT keyed = engine->SetKey(key, 0);
  FUZZ_CHECK(single->SetKey(key, 0) == keyed);
  VariantClear(&key);
  if (FAILED(keyed)) return 0;
  const uint32_t block = engine->BlockSize();
  const auto transform = [&](bool encrypts) {
    return [&single, block, encrypts](const uint8_t* from, uint8_t* to) {
      ByteBuffer& out = encrypts ? single->EncryptOut() : single->DecryptOut();
      const HRESULT status =
          encrypts ? single->EncryptUpdate(from, block) : single->DecryptUpdate(from, block);
      FUZZ_CHECK(status == S_OK && out.Take(to, block) == block);
    };
  };
  ModelChannel encrypt, decrypt;
  encrypt.Reinit(0x100000, 256);
  decrypt.Reinit(0x100000, 256);
  for (int steps = 0; steps < 40 && !in.IsEmpty(); ++steps) {
    const uint8_t what = in.Byte();
    const bool encrypts = what % 2 != 0;
    ModelChannel& model = encrypts ? encrypt : decrypt;
    ByteBuffer& out = encrypts ? engine->EncryptOut() : engine->DecryptOut();
    switch (what / 2 % 8) {
      case 0:
      case 1:
      case 2: {
        FuzzBytes bytes = in.Some(100);
        if (what >= 0xF0) bytes.resize(bytes.size() + in.Word() * 20u, 0x3C);
        const uint32_t count = static_cast<uint32_t>(bytes.size());
        const HRESULT status = encrypts ? engine->EncryptUpdate(bytes.data(), count)
                                        : engine->DecryptUpdate(bytes.data(), count);
        FUZZ_CHECK(status == model.Update(block, transform(encrypts), bytes.data(), count));
        break;
      }
      case 3: {
        const LONG pad = static_cast<int16_t>(in.Word());
        if (pad == -1) break;  // random
        engine->SetPadType(pad);
        if (encrypts) {
          FUZZ_CHECK(engine->EncryptFinal() == model.EncryptFinal(block, transform(true), pad));
        } else {
          FUZZ_CHECK(engine->DecryptFinal() == model.DecryptFinal(block, transform(false)));
        }
        break;
      }
      case 4:
      case 5: {
        const uint32_t count = in.Byte() % 4 == 0 ? out.Length() : in.Word();
        const size_t taken = std::min<size_t>(count, model.out.size());
        FUZZ_CHECK(out.Consume(count) == taken);
        model.out.erase(model.out.begin(), model.out.begin() + static_cast<ptrdiff_t>(taken));
        break;
      }
      default: {
        if (in.Byte() % 8 != 0) break;
        const uint32_t step = in.Word() * 2u;
        FUZZ_CHECK(engine->ResetBuffers(step) == S_OK);
        const uint32_t used = step < 256 || step > 65536 ? 256 : step;
        encrypt.Reinit(0x100000, used);
        decrypt.Reinit(0x100000, used);
        break;
      }
    }
    CheckQueue(engine->EncryptOut(), encrypt.out);
    CheckQueue(engine->DecryptOut(), decrypt.out);
    FUZZ_CHECK(engine->EncryptIn().Length() == encrypt.in.size());
    FUZZ_CHECK(engine->DecryptIn().Length() == decrypt.in.size());
  }
  return 0;
}
