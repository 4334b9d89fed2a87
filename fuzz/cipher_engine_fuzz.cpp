// The cipher engine with updates, finals, keys, pads and output taken in any order, up to its
// queues' limit and past it and with failing allocations, against a model that transforms single
// blocks by another library.
#define OPENSSL_SUPPRESS_DEPRECATED
#include <openssl/aes.h>
#include <openssl/des.h>

#include <algorithm>

#include "cipher_algorithms.h"
#include "cipher_model.h"
#include "fuzz_values.h"
#include "key_conversion.h"
#include "memory_watch.h"
#include "value_conversion.h"

using namespace mirolta;
using namespace mirolta::fuzz;
using mirolta::test::ModelChannel;

namespace {

using FuzzBytes = mirolta::fuzz::Bytes;

// Single blocks by the peer.
class PeerBlocks {
 public:
  PeerBlocks(bool aes, const FuzzBytes& key) : aes_(aes) {
    if (aes) {
      const int bits = static_cast<int>(key.size() * 8);
      AES_set_encrypt_key(key.data(), bits, &aes_encryption_);
      AES_set_decrypt_key(key.data(), bits, &aes_decryption_);
      return;
    }
    // Triple DES keys: one part three times, two parts, or three.
    for (size_t i = 0; i < 3; ++i) {
      DES_cblock part;
      std::memcpy(part, key.data() + i % (key.size() / 8) * 8, 8);
      DES_set_key_unchecked(&part, &des_[i]);
    }
  }
  ModelChannel::Block Transform(bool encrypts) {
    return [this, encrypts](const uint8_t* from, uint8_t* to) {
      if (aes_) {
        if (encrypts) {
          AES_encrypt(from, to, &aes_encryption_);
        } else {
          AES_decrypt(from, to, &aes_decryption_);
        }
        return;
      }
      DES_cblock in, out;
      std::memcpy(in, from, 8);
      DES_ecb3_encrypt(&in, &out, &des_[0], &des_[1], &des_[2],
                       encrypts ? DES_ENCRYPT : DES_DECRYPT);
      std::memcpy(to, out, 8);
    };
  }

 private:
  bool aes_;
  AES_KEY aes_encryption_ = {};
  AES_KEY aes_decryption_ = {};
  DES_key_schedule des_[3] = {};
};

bool Same(const ByteBuffer& queue, const FuzzBytes& expected) {
  return queue.Length() == expected.size() &&
         (expected.empty() || std::memcmp(queue.Data(), expected.data(), expected.size()) == 0);
}

class Run {
 public:
  explicit Run(FuzzInput& in) : in_(in), aes_(in.Byte() % 2 != 0) {
    engine_ = CreateCipherEngine(aes_ ? kCipherAes : kCipherDes);
    FUZZ_CHECK(engine_ != nullptr);
    block_ = engine_->BlockSize();
    FUZZ_CHECK(block_ == (aes_ ? 16u : 8u));
    Reinit(256);
  }

  void SetGoodKey() {
    constexpr uint8_t kSizes[2][3] = {{8, 16, 24}, {16, 24, 32}};
    FuzzBytes key = in_.Take(kSizes[aes_ ? 1 : 0][in_.Byte() % 3]);
    SetKey(std::move(key));
  }

  void Step() {
    const uint8_t what = in_.Byte();
    const bool encrypts = what % 2 != 0;
    switch (what / 2 % 12) {
      case 0:
      case 1:
      case 2:
        Update(encrypts, false);
        break;
      case 3:
        Update(encrypts, true);
        break;
      case 4:
        Final(encrypts, false);
        break;
      case 5:
        Final(encrypts, true);
        break;
      case 6:
      case 7:
        Take(encrypts);
        break;
      case 8:
        Unqueued(encrypts);
        break;
      case 9:
        if (in_.Byte() % 4 == 0) SetGoodKey();
        break;
      case 10:
        if (in_.Byte() % 4 == 0) SetAnyKey();
        break;
      default:
        Reset();
        break;
    }
    CheckAll();
  }

 private:
  ModelChannel& Model(bool encrypts) { return encrypts ? encrypt_ : decrypt_; }
  ByteBuffer& Out(bool encrypts) {
    return encrypts ? engine_->EncryptOut() : engine_->DecryptOut();
  }
  const ByteBuffer& In(bool encrypts) {
    return encrypts ? engine_->EncryptIn() : engine_->DecryptIn();
  }

  void Reinit(uint32_t step) {
    encrypt_.Reinit(CipherEngine::kQueueLimit, step);
    decrypt_.Reinit(CipherEngine::kQueueLimit, step);
  }

  void CheckAll() {
    for (const bool encrypts : {false, true}) {
      FUZZ_CHECK(Same(In(encrypts), Model(encrypts).in));
      FUZZ_CHECK(Same(Out(encrypts), Model(encrypts).out));
    }
    FUZZ_CHECK(engine_->HasKey() == (peer_ != nullptr));
  }

  // A call that ran out of memory has changed nothing, or has taken `added` and transformed some of
  // the blocks, in order.
  void Adopt(bool encrypts, const FuzzBytes& added) {
    ModelChannel& model = Model(encrypts);
    if (Same(In(encrypts), model.in) && Same(Out(encrypts), model.out)) return;
    model.in.insert(model.in.end(), added.begin(), added.end());
    FUZZ_CHECK(In(encrypts).Length() <= model.in.size());
    const size_t consumed = model.in.size() - In(encrypts).Length();
    FUZZ_CHECK(consumed % block_ == 0);
    const auto transform = peer_->Transform(encrypts);
    for (size_t at = 0; at < consumed; at += block_) {
      model.out.resize(model.out.size() + block_);
      transform(&model.in[at], &model.out[model.out.size() - block_]);
    }
    model.in.erase(model.in.begin(), model.in.begin() + static_cast<ptrdiff_t>(consumed));
    FUZZ_CHECK(model.out.size() <= model.maximum);
  }

  void Update(bool encrypts, bool failing) {
    FuzzBytes bytes = in_.Some(100);
    const uint8_t how = in_.Byte();
    // At most twice, and rarely, a large part of the queues' limit.
    if (how == 0xFF && large_ < 2 && in_.Byte() == 0xF0) {
      ++large_;
      bytes.resize(bytes.size() + in_.Word() * 17u, 0x3C);
    }
    const uint32_t count = static_cast<uint32_t>(bytes.size());
    const uint8_t* const data = how % 16 != 1 ? bytes.data() : nullptr;
    if (data == nullptr) bytes.clear();
    const auto call = [&] {
      return encrypts ? engine_->EncryptUpdate(data, count) : engine_->DecryptUpdate(data, count);
    };
    if (failing) {
      const long allowed = in_.Byte() % 4;
      const bool once = in_.Byte() % 2 != 0;
      HRESULT status = S_OK;
      if (once) {
        const test::FailOneAllocation fail(allowed);
        status = call();
      } else {
        const test::FailAllocationsAfter fail(allowed);
        status = call();
      }
      // Without allocation, or without a result.
      if (status == E_OUTOFMEMORY && peer_ != nullptr) {
        Adopt(encrypts, bytes);
        return;
      }
      if (status == E_OUTOFMEMORY) return;  // without a key nothing is taken that cannot be held
      FUZZ_CHECK(status == ModelUpdate(encrypts, bytes));
      return;
    }
    FUZZ_CHECK(call() == ModelUpdate(encrypts, bytes));
  }

  HRESULT ModelUpdate(bool encrypts, const FuzzBytes& bytes) {
    ModelChannel& model = Model(encrypts);
    const uint32_t count = static_cast<uint32_t>(bytes.size());
    if (peer_ != nullptr) {
      return model.Update(block_, peer_->Transform(encrypts), bytes.data(), count);
    }
    if (count != 0 && !model.Append(bytes.data(), count)) return E_OUTOFMEMORY;
    return model.in.size() >= block_ ? E_FAIL : S_OK;
  }

  void Final(bool encrypts, bool failing) {
    // Mostly valid pads; a random one waits for the clock.
    LONG pad = static_cast<int16_t>(in_.Word());
    if (pad == kRandomPad && in_.Byte() % 16 != 0) pad = 0;
    engine_->SetPadType(pad);
    FUZZ_CHECK(engine_->PadType() == pad);
    const size_t pending = Model(encrypts).in.size();
    const uint32_t pad_count = block_ - static_cast<uint32_t>(pending % block_);
    const auto call = [&] { return encrypts ? engine_->EncryptFinal() : engine_->DecryptFinal(); };
    if (peer_ == nullptr) return;  // keyless engines are the owners' to keep from this
    HRESULT status = S_OK;
    if (failing) {
      const test::FailAllocationsAfter fail(in_.Byte() % 2);
      status = call();
    } else {
      status = call();
    }
    const bool pads = encrypts && pending != 0;
    if (status == E_OUTOFMEMORY && (failing || pad == kRandomPad)) {
      FuzzBytes added(pads && pad >= 0 ? pad_count : 0, static_cast<uint8_t>(pad));
      if (pads && pad == kRandomPad) added = RandomPad(pending, pad_count);
      Adopt(encrypts, added);
      return;
    }
    ModelChannel& model = Model(encrypts);
    if (pads && pad == kRandomPad) {
      // Random pad bytes: read from the output.
      FUZZ_CHECK(status == S_OK && Out(true).Length() >= block_);
      FuzzBytes last(block_);
      peer_->Transform(false)(Out(true).Data() + Out(true).Length() - block_, last.data());
      FUZZ_CHECK(model.Append(&last[block_ - pad_count], pad_count));
      FUZZ_CHECK(model.TransformQueued(block_, peer_->Transform(true)) == S_OK);
      return;
    }
    FUZZ_CHECK(status == (encrypts ? model.EncryptFinal(block_, peer_->Transform(true), pad)
                                   : model.DecryptFinal(block_, peer_->Transform(false))));
  }

  // The random pad that a final queued before the output was full, if it did.
  FuzzBytes RandomPad(size_t pending, uint32_t count) {
    const ByteBuffer& queue = In(true);
    const size_t produced = Out(true).Length() - Model(true).out.size();
    if (queue.Length() + produced != pending + count) return {};
    return FuzzBytes(queue.Data() + queue.Length() - count, queue.Data() + queue.Length());
  }

  void Take(bool encrypts) {
    ByteBuffer& out = Out(encrypts);
    ModelChannel& model = Model(encrypts);
    const uint32_t count = in_.Byte() % 4 == 0 ? out.Length() : in_.Word();
    const size_t taken = std::min<size_t>(count, model.out.size());
    FUZZ_CHECK(out.Consume(count) == taken);
    model.out.erase(model.out.begin(), model.out.begin() + static_cast<ptrdiff_t>(taken));
  }

  // Direct transformation by the owner gives what an update would have queued.
  void Unqueued(bool encrypts) {
    const FuzzBytes bytes = in_.Some(200);
    const uint32_t count = static_cast<uint32_t>(bytes.size());
    const BlockTransform unqueued = encrypts ? engine_->UnqueuedEncryptTransform(count)
                                             : engine_->UnqueuedDecryptTransform(count);
    const ModelChannel& model = Model(encrypts);
    if (unqueued.run == nullptr) return;
    FUZZ_CHECK(peer_ != nullptr && model.in.empty() && model.out.empty());
    FUZZ_CHECK(count != 0 && count % block_ == 0);
    FuzzBytes out(count);
    unqueued.run(unqueued.schedule, bytes.data(), out.data(), count / block_);
    FuzzBytes expected(count);
    const auto transform = peer_->Transform(encrypts);
    for (size_t at = 0; at < count; at += block_) transform(&bytes[at], &expected[at]);
    FUZZ_CHECK(out == expected);
  }

  void SetKey(FuzzBytes bytes) {
    VARIANT key;
    FUZZ_CHECK(BytesToVariant(bytes.data(), static_cast<uint32_t>(bytes.size()), &key) == S_OK);
    AfterKey(engine_->SetKey(key, 0), key, 0);
    VariantClear(&key);
  }

  void SetAnyKey() {
    FuzzValues values;
    const VARIANT key = values.Next(in_);
    const LONG code_page = NextCodePage(in_);
    HRESULT status = S_OK;
    if (in_.Byte() % 2 == 0) {
      const test::FailOneAllocation fail(in_.Byte() % 3);
      status = engine_->SetKey(key, code_page);
    } else {
      status = engine_->SetKey(key, code_page);
    }
    AfterKey(status, key, code_page);
  }

  bool TakesKey(uint32_t size) const {
    if (aes_) return size == 16 || size == 24 || size == 32;
    return size == 8 || size == 16 || size == 24;
  }

  // A key of wrong length discards the key and the queues; a value that is not a key, or a failed
  // allocation, only the old key.
  void AfterKey(HRESULT status, const VARIANT& value, LONG code_page) {
    peer_.reset();
    ByteString key;
    const HRESULT read =
        status == E_OUTOFMEMORY ? E_OUTOFMEMORY : KeyFromVariant(value, code_page, &key);
    const bool good = SUCCEEDED(read) && TakesKey(key.Count());
    FUZZ_CHECK(status == (FAILED(read) ? read : (good ? S_OK : E_INVALIDARG)));
    if (SUCCEEDED(read)) Reinit(256);
    VARIANT held;
    FUZZ_CHECK(engine_->GetKey(&held) == S_OK);
    FUZZ_CHECK(V_VT(&held) == (good ? VT_ARRAY | VT_UI1 : VT_EMPTY));
    if (good) {
      const FuzzBytes bytes(key.Data(), key.Data() + key.Count());
      FUZZ_CHECK(held.parray->rgsabound[0].cElements == bytes.size());
      FUZZ_CHECK(std::memcmp(held.parray->pvData, bytes.data(), bytes.size()) == 0);
      peer_ = std::make_unique<PeerBlocks>(aes_, bytes);
    }
    VariantClear(&held);
  }

  void Reset() {
    const uint8_t how = in_.Byte();
    if (how % 8 == 0) {
      const uint32_t step = in_.Word() * 2u;
      FUZZ_CHECK(engine_->ResetBuffers(step) == S_OK);
      Reinit(step < 256 || step > 65536 ? 256 : step);
    } else if (how % 8 == 1) {
      FUZZ_CHECK(engine_->ClearKey() == S_OK);
      peer_.reset();
      for (ModelChannel* model : {&encrypt_, &decrypt_}) {
        model->in.clear();
        model->out.clear();
      }
    }
  }

  FuzzInput& in_;
  bool aes_;
  std::unique_ptr<CipherEngine> engine_;
  std::unique_ptr<PeerBlocks> peer_;
  uint32_t block_ = 0;
  int large_ = 0;
  ModelChannel encrypt_, decrypt_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzInput in(data, size);
  Run run(in);
  run.SetGoodKey();
  for (int steps = 0; steps < 60 && !in.IsEmpty(); ++steps) run.Step();
  return 0;
}
