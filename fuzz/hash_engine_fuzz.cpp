// Digest engines with updates of any size, keys, restarts and reads in any order and with failing
// allocations, against one-shot digests of everything absorbed, by another library and by the
// engine itself.
#include <openssl/evp.h>

#include <cstring>
#include <memory>

#include "fuzz_values.h"
#include "hash_algorithms.h"
#include "hash_engine.h"
#include "memory_watch.h"

using namespace mirolta;
using namespace mirolta::fuzz;

namespace {

std::unique_ptr<HashEngine> MakeEngine(int algorithm) {
  HashEngine* engine = nullptr;
  CreateHashEngine(reinterpret_cast<const OLECHAR*>(&kHashAlgorithms[algorithm]), &engine);
  FUZZ_CHECK(engine != nullptr);
  return std::unique_ptr<HashEngine>(engine);
}

// A whole digest in one call each.
Bytes OneShot(int algorithm, const Bytes& data) {
  static EVP_MD* const peers[] = {EVP_MD_fetch(nullptr, "MD5", nullptr),
                                  EVP_MD_fetch(nullptr, "SHA1", nullptr),
                                  EVP_MD_fetch(nullptr, "SHA256", nullptr)};
  Bytes digest(EVP_MAX_MD_SIZE);
  unsigned size = 0;
  FUZZ_CHECK(
      EVP_Digest(data.data(), data.size(), digest.data(), &size, peers[algorithm], nullptr) == 1);
  digest.resize(size);
  const std::unique_ptr<HashEngine> own = MakeEngine(algorithm);
  own->Update(data.data(), static_cast<uint32_t>(data.size()));
  FUZZ_CHECK(own->Final() == S_OK && own->DigestSize() == static_cast<LONG>(size));
  FUZZ_CHECK(std::memcmp(own->RawDigest(), digest.data(), size) == 0);
  return digest;
}

// What an engine has absorbed since its last initialisation, including HMAC pads, and its key.
struct Model {
  int algorithm = 0;
  bool has_key = false;
  Bytes key;
  Bytes absorbed;
  bool open = true;
  // A computation that continues after its end, or is ended again, gives no meaningful digest.
  bool known = true;
  Bytes digest;  // while not open

  bool IsKeyed() const { return has_key && !key.empty(); }
  Bytes Pad(uint8_t byte) const {
    Bytes pad = key.size() > 64 ? OneShot(algorithm, key) : key;
    pad.resize(64);
    for (uint8_t& one : pad) one = static_cast<uint8_t>(one ^ byte);
    return pad;
  }
  void Restart(Bytes begun) {
    absorbed = std::move(begun);
    open = known = true;
  }
  void BeginKeyed() { Restart(Pad(0x36)); }
  void Finish() {
    known = known && open;
    open = false;
    if (!known) return;
    digest = OneShot(algorithm, absorbed);
    if (!IsKeyed()) return;
    Bytes outer = Pad(0x5C);
    outer.insert(outer.end(), digest.begin(), digest.end());
    digest = OneShot(algorithm, outer);
  }
};

void CheckKey(HashEngine& engine, const Model& model) {
  VARIANT key;
  FUZZ_CHECK(engine.GetKey(&key) == S_OK);
  FUZZ_CHECK(V_VT(&key) == (model.has_key ? VT_ARRAY | VT_UI1 : VT_EMPTY));
  if (model.has_key) {
    FUZZ_CHECK(key.parray->rgsabound[0].cElements == model.key.size());
    FUZZ_CHECK(model.key.empty() ||
               std::memcmp(key.parray->pvData, model.key.data(), model.key.size()) == 0);
  }
  VariantClear(&key);
}

void SetKey(HashEngine& engine, Model& model, FuzzInput& in) {
  FuzzValues values;
  VARIANT given;
  VARIANT bytes = {};
  if (in.Byte() % 2 == 0) {
    given = values.Next(in);
  } else {
    const Bytes key = in.Some(200);
    SAFEARRAYBOUND bound = {static_cast<ULONG>(key.size()), 0};
    V_VT(&bytes) = VT_ARRAY | VT_UI1;
    bytes.parray = SafeArrayCreate(VT_UI1, 1, &bound);
    if (!key.empty()) std::memcpy(bytes.parray->pvData, key.data(), key.size());
    given = bytes;
  }
  const LONG code_page = NextCodePage(in);
  HRESULT status = S_OK;
  if (in.Byte() % 4 == 0) {
    const test::FailOneAllocation fail(in.Byte() % 3);
    status = engine.SetKey(given, code_page);
  } else {
    status = engine.SetKey(given, code_page);
  }
  // An invalid key discards the old one and does not affect the computation.
  model.has_key = false;
  model.key.clear();
  if (SUCCEEDED(status)) {
    VARIANT key;
    FUZZ_CHECK(engine.GetKey(&key) == S_OK && V_VT(&key) == (VT_ARRAY | VT_UI1));
    const uint8_t* const data = static_cast<const uint8_t*>(key.parray->pvData);
    model.has_key = true;
    model.key.assign(data, data + key.parray->rgsabound[0].cElements);
    VariantClear(&key);
    model.BeginKeyed();
  }
  VariantClear(&bytes);
  CheckKey(engine, model);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  Model model;
  model.algorithm = in.Byte() % kHashAlgorithmCount;
  const std::unique_ptr<HashEngine> engine = MakeEngine(model.algorithm);
  for (int steps = 0; steps < 100 && !in.IsEmpty(); ++steps) {
    const uint8_t what = in.Byte();
    switch (what % 16) {
      default: {
        // At any alignment, and sometimes many blocks at once.
        Bytes piece(what % 8u);
        const size_t front = piece.size();
        const Bytes given = in.Take(in.Byte() % 80u);
        piece.insert(piece.end(), given.begin(), given.end());
        if (what >= 0xF8) piece.resize(piece.size() + in.Word() % 2000, 0x5A);
        const uint32_t count = static_cast<uint32_t>(piece.size() - front);
        FUZZ_CHECK(engine->Update(piece.data() + front, count) == (count == 0 ? S_FALSE : S_OK));
        model.absorbed.insert(model.absorbed.end(), piece.begin() + static_cast<ptrdiff_t>(front),
                              piece.end());
        break;
      }
      case 10:
        SetKey(*engine, model, in);
        break;
      case 11:
        FUZZ_CHECK(engine->ResetKey() == S_OK);
        model.has_key = false;
        model.key.clear();
        model.Restart({});
        break;
      case 12:
        FUZZ_CHECK(engine->Start() == S_OK);
        if (model.IsKeyed()) {
          model.BeginKeyed();
        } else {
          model.Restart({});
        }
        break;
      case 13:
        FUZZ_CHECK(engine->Finish() == S_OK);
        model.Finish();
        break;
      case 14:
        CheckKey(*engine, model);
        FUZZ_CHECK(engine->BeginKeyed() == (model.has_key ? S_OK : E_UNEXPECTED));
        if (model.has_key) model.BeginKeyed();
        break;
      case 15: {
        if (model.open) model.Finish();
        const uint8_t* const digest = engine->Digest();
        FUZZ_CHECK(digest != nullptr);
        FUZZ_CHECK(!model.known ||
                   std::memcmp(digest, model.digest.data(), model.digest.size()) == 0);
        break;
      }
    }
  }
  if (model.open) model.Finish();
  const uint8_t* const digest = engine->Digest();
  FUZZ_CHECK(digest != nullptr);
  FUZZ_CHECK(!model.known || std::memcmp(digest, model.digest.data(), model.digest.size()) == 0);
  return 0;
}
