// Digests of any split of the data, keyed and plain, against one call with all of it.
#include <cstring>
#include <memory>

#include "fuzz_values.h"
#include "hash_algorithms.h"
#include "hash_engine.h"

using namespace mirolta;
using namespace mirolta::fuzz;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  const NameSlot& name = kHashAlgorithms[in.Byte() % kHashAlgorithmCount];
  HashEngine* made[2] = {};
  for (HashEngine*& engine : made) {
    CreateHashEngine(reinterpret_cast<const OLECHAR*>(&name), &engine);
    FUZZ_CHECK(engine != nullptr);
  }
  const std::unique_ptr<HashEngine> split(made[0]), whole(made[1]);
  if (in.Byte() % 2 != 0) {
    FuzzValues values;
    const VARIANT key = values.Next(in);
    const LONG code_page = NextCodePage(in);
    const HRESULT status = split->SetKey(key, code_page);
    FUZZ_CHECK(whole->SetKey(key, code_page) == status);
  }
  Bytes all;
  FUZZ_CHECK(split->Start() == whole->Start());
  const uint8_t cuts = in.Byte();
  while (!in.IsEmpty()) {
    Bytes piece = in.Take(1u + in.Byte() % (cuts + 1u));
    if (in.Byte() % 64 == 0) piece.resize(piece.size() + in.Word() % 5000, 0x5A);
    all.insert(all.end(), piece.begin(), piece.end());
    split->Update(piece.data(), static_cast<uint32_t>(piece.size()));
  }
  whole->Update(all.data(), static_cast<uint32_t>(all.size()));
  FUZZ_CHECK(split->Finish() == whole->Finish());
  FUZZ_CHECK(
      std::memcmp(split->Digest(), whole->Digest(), static_cast<size_t>(whole->DigestSize())) == 0);
  return 0;
}
