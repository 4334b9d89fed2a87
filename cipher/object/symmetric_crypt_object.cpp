#include "symmetric_crypt_object.h"

#include "array_bytes.h"
#include "byte_view.h"
#include "cipher_algorithms.h"
#include "key_conversion.h"
#include "messages.h"
#include "owned_value.h"
#include "value_conversion.h"

namespace mirolta {

namespace {

TypeInfoHolder type_info(IID_ISymmetricCryptObject);

}  // namespace

constexpr ClassDescription kSymmetricCryptClass = {&CLSID_SymmetricCryptObject, &type_info};

HRESULT CreateSymmetricCryptObject(IUnknown* outer, REFIID iid, void** out) {
  return CreateObject<SymmetricCryptObject>(outer, iid, out);
}

void SymmetricCryptObject::DropEngine() {
  pad_.EngineGone();
  engine_.reset();
}

template <typename Work>
HRESULT SymmetricCryptObject::WithEngine(Work work) {
  return engine_ ? work() : Raise(kMessageNotInitialized);
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::Init(VARIANT vAlg) {
  return Frame([&]() -> HRESULT {
    DropEngine();
    OwnedVariant name;
    HRESULT status = CopyReferent(vAlg, name.Get());
    if (SUCCEEDED(status)) status = CoerceToText(name.Get());
    // Again: reading an object runs the caller's code, which may have called Init meanwhile.
    DropEngine();
    if (FAILED(status)) return status;
    const BSTR text = V_BSTR(name.Get());
    const LONG algorithm = FindCipherAlgorithm(text, SysStringLen(text));
    if (algorithm < 0) return Raise(kMessageAlgorithmNotFound);
    // If memory runs out, the object has no engine and the call still succeeds.
    engine_ = CreateCipherEngine(algorithm);
    if (engine_) pad_.EngineMade();
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::get_Key(VARIANT* key) {
  return Frame(key, [&] { return WithEngine([&] { return engine_->GetKey(key); }); });
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::put_Key(VARIANT key) {
  return Frame([&] {
    return WithEngine([&] {
      const PlainKey plain(*engine_, key, code_page_);
      return WithEngine([&] { return plain.GiveTo(*engine_); });
    });
  });
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::get_BlockSize(LONG* size) {
  return PlainFrame(size, [&] {
    return WithEngine([&] {
      *size = static_cast<LONG>(engine_->BlockSize());
      return S_OK;
    });
  });
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::get_codePage(LONG* code_page) {
  return PlainFrame(code_page, [&] {
    *code_page = code_page_;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::put_codePage(LONG code_page) {
  return PlainFrame([&] {
    code_page_ = code_page;
    return S_OK;
  });
}

namespace {

// Transforms bytes, whole blocks, to a new byte array. Ciphertext is no secret.
// Errors: E_OUTOFMEMORY; the status of locking the array.
HRESULT TransformToArray(const BlockTransform& transform, const ByteView& bytes,
                         bool gives_ciphertext, VARIANT* out) {
  VariantInit(out);
  SAFEARRAY* const array = CreateByteArray(bytes.Count());
  if (array == nullptr) return E_OUTOFMEMORY;
  void* data = nullptr;
  const HRESULT status = SafeArrayAccessData(array, &data);
  if (FAILED(status)) {
    SafeArrayDestroy(array);
    return status;
  }
  transform.run(transform.schedule, bytes.Data(), static_cast<uint8_t*>(data),
                bytes.Count() / transform.block_size);
  SafeArrayUnaccessData(array);
  if (gives_ciphertext) MarkPublic(array);
  V_VT(out) = kByteArrayType;
  V_ARRAY(out) = array;
  return S_OK;
}

}  // namespace

HRESULT SymmetricCryptObject::Transform(const CipherOperation& operation, const VARIANT& data,
                                        bool finalize, VARIANT* result) {
  if (!engine_->HasKey()) return Raise(kMessageNotInitialized);
  ByteView bytes;
  HRESULT status = bytes.OpenUnresolved(data, code_page_);
  if (FAILED(status)) return status;
  // Again: reading an object runs the caller's code, which may have dropped the engine or the key.
  if (!engine_ || !engine_->HasKey()) return Raise(kMessageNotInitialized);
  CipherEngine& engine = *engine_;
  // Where the queues would be empty before and after, the blocks go from array to array. If that
  // array cannot be made, the output is queued instead, and the call fails.
  HRESULT array_status = S_OK;
  const BlockTransform unqueued = (engine.*operation.unqueued_transform)(bytes.Count());
  if (unqueued.run != nullptr) {
    const bool encrypts = &operation == &kEncryption;
    array_status = TransformToArray(unqueued, bytes, encrypts, result);
    if (SUCCEEDED(array_status)) {
      if (finalize) pad_.ApplyTo(engine);
      return S_OK;
    }
  }
  status = (engine.*operation.update)(bytes.Data(), bytes.Count());
  if (FAILED(status)) return status;
  if (finalize) {
    pad_.ApplyTo(engine);
    status = (engine.*operation.final)();
    if (FAILED(status)) return status;
  }
  // Output stays queued until it is in the caller's array.
  if (FAILED(array_status)) return array_status;
  ByteBuffer& out = (engine.*operation.out)();
  status = BytesToVariant(out.Data(), out.Length(), result);
  if (FAILED(status)) return status;
  out.Consume(out.Length());
  return S_OK;
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::Encrypt(VARIANT vData, VARIANT_BOOL bFinalize,
                                                        VARIANT* pvResult) {
  return Frame(pvResult, [&] {
    return WithEngine([&] { return Transform(kEncryption, vData, bFinalize != 0, pvResult); });
  });
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::Decrypt(VARIANT vData, VARIANT_BOOL bFinalize,
                                                        VARIANT* pvResult) {
  return Frame(pvResult, [&] {
    return WithEngine([&] { return Transform(kDecryption, vData, bFinalize != 0, pvResult); });
  });
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::Reset(LONG) {
  return Frame([&] {
    return WithEngine([&] { return engine_->ResetBuffers(CipherEngine::kDefaultGrowStep); });
  });
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::ResetKey() {
  return Frame([&] {
    return WithEngine([&] {
      engine_->ClearKey();
      return engine_->ResetBuffers(CipherEngine::kDefaultGrowStep);
    });
  });
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::get_PadType(LONG* pad_type) {
  if (pad_type == nullptr) return E_POINTER;
  if (!pad_.IsPresent()) return Raise(kMessageNotInitialized);
  *pad_type = pad_.Value();
  return S_OK;
}

HRESULT STDMETHODCALLTYPE SymmetricCryptObject::put_PadType(LONG pad_type) {
  if (!pad_.IsPresent()) return Raise(kMessageNotInitialized);
  pad_.Set(pad_type);
  return S_OK;
}

}  // namespace mirolta
