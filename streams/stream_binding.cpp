#include "stream_binding.h"

namespace mirolta {

HRESULT GetStreamFromObject(IUnknown* object, IStream** stream) {
  *stream = nullptr;
  if (object == nullptr) return E_POINTER;
  OwnedReference<IStream> own;
  if (SUCCEEDED(own.Query(object, IID_IStream))) {
    *stream = own.Detach();
    return S_OK;
  }
  OwnedReference<IToviStreamSource> source;
  HRESULT status = source.Query(object, IID_IToviStreamSource);
  if (FAILED(status)) return status;
  IStream* handed_out = nullptr;
  status = source->GetStream(&handed_out);
  // A failing source may leave anything in its result.
  if (SUCCEEDED(status)) *stream = handed_out;
  return status;
}

HRESULT StreamBinding::Bind(IUnknown* object) {
  object_.Reset();
  target_.Reset();
  IStream* stream = nullptr;
  const HRESULT status = GetStreamFromObject(object, &stream);
  if (FAILED(status)) return status;
  target_.Attach(stream);
  object_.Assign(object);
  return S_OK;
}

}  // namespace mirolta
