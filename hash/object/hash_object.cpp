#include "hash_object.h"

#include "byte_view.h"
#include "digest_result.h"
#include "hash_algorithms.h"
#include "key_conversion.h"
#include "messages.h"

namespace mirolta {

namespace {

TypeInfoHolder type_info(IID_IHashObject);

}  // namespace

constexpr ClassDescription kHashObjectClass = {&CLSID_HashObject, &type_info};

HRESULT CreateHashObject(IUnknown* outer, REFIID iid, void** out) {
  return CreateObject<HashObject>(outer, iid, out);
}

template <typename Work>
HRESULT HashObject::WithEngine(Work work) {
  return engine_ ? work() : Raise(kMessageNotInitialized);
}

HRESULT STDMETHODCALLTYPE HashObject::get_Value(BSTR* value) {
  // Without an engine even a null value is no error.
  return Frame([&] { return DigestToText(engine_.get(), value); });
}

HRESULT STDMETHODCALLTYPE HashObject::get_BinaryValue(VARIANT* value) {
  return Frame(value, [&] { return DigestToArray(engine_.get(), value); });
}

HRESULT STDMETHODCALLTYPE HashObject::get_HashSize(LONG* size) {
  return PlainFrame(size, [&] {
    return WithEngine([&] {
      *size = engine_->DigestSize();
      return S_OK;
    });
  });
}

HRESULT STDMETHODCALLTYPE HashObject::get_BlockSize(LONG* size) {
  return PlainFrame(size, [&] {
    return WithEngine([&] {
      *size = engine_->BlockSize();
      return S_OK;
    });
  });
}

// Plain: the engines, new and old, copy nothing secret to the stack.
HRESULT STDMETHODCALLTYPE HashObject::InitHash(BSTR bstrAlg) {
  return PlainFrame([&]() -> HRESULT {
    engine_.reset();
    HashEngine* engine = nullptr;
    if (CreateHashEngine(bstrAlg, SysStringLen(bstrAlg), &engine) < 0) {
      return Raise(kMessageAlgorithmNotFound);
    }
    // If memory runs out, the object has no engine and the call still succeeds.
    engine_.reset(engine);
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE HashObject::HashData(VARIANT vData, LONG lCP) {
  return Frame([&] {
    return WithEngine([&]() -> HRESULT {
      engine_->Start();
      ByteView data;
      HRESULT status = data.Open(vData, CodePageFor(lCP));
      if (FAILED(status)) return status;
      if (data.IsFromArray() && data.Count() == 0) return S_FALSE;
      // engine_ is checked again: reading an object runs the caller's code, which may have called
      // InitHash.
      return WithEngine([&] {
        status = engine_->Update(data.Data(), data.Count());
        return FAILED(status) ? status : engine_->Finish();
      });
    });
  });
}

HRESULT STDMETHODCALLTYPE HashObject::HashUpdate(VARIANT vData, LONG lCP) {
  return Frame([&] {
    return WithEngine([&]() -> HRESULT {
      ByteView data;
      const HRESULT status = data.Open(vData, CodePageFor(lCP));
      if (FAILED(status)) return status;
      return WithEngine([&] { return engine_->Update(data.Data(), data.Count()); });
    });
  });
}

HRESULT STDMETHODCALLTYPE HashObject::HashFinalize() {
  return Frame([&] { return WithEngine([&] { return engine_->Finish(); }); });
}

HRESULT STDMETHODCALLTYPE HashObject::get_codePage(LONG* code_page) {
  return PlainFrame(code_page, [&] {
    *code_page = code_page_;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE HashObject::put_codePage(LONG code_page) {
  return PlainFrame([&] {
    code_page_ = code_page;
    return S_OK;
  });
}

HRESULT STDMETHODCALLTYPE HashObject::get_Key(VARIANT* key) {
  return Frame(key, [&] { return WithEngine([&] { return engine_->GetKey(key); }); });
}

HRESULT STDMETHODCALLTYPE HashObject::put_Key(VARIANT key) {
  return Frame([&] {
    return WithEngine([&] {
      const PlainKey plain(*engine_, key, code_page_);
      return WithEngine([&] { return plain.GiveTo(*engine_); });
    });
  });
}

HRESULT STDMETHODCALLTYPE HashObject::Reset() {
  return Frame([&] { return WithEngine([&] { return engine_->Start(); }); });
}

HRESULT STDMETHODCALLTYPE HashObject::ResetKey() {
  return Frame([&] { return WithEngine([&] { return engine_->ResetKey(); }); });
}

}  // namespace mirolta
