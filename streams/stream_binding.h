// The stream that a filter stands in front of.
#pragma once

#include "mirolta.h"
#include "owned_value.h"
#include "platform.h"

namespace mirolta {

// GetStreamFromObject gives the stream of an object: its own IStream interface, or else what its
// IToviStreamSource hands out.
// Errors: E_POINTER for a null object; the status of the query for IToviStreamSource; the source's
//         own. *stream is null then.
HRESULT GetStreamFromObject(IUnknown* object, IStream** stream);

// StreamBinding counts a reference to the object that a caller assigned and one to its stream.
class StreamBinding {
 public:
  // Bind releases the object and stream held, even if it then fails, and binds another object's.
  // Errors: those of GetStreamFromObject; nothing is bound then.
  HRESULT Bind(IUnknown* object);

  // The object as it was assigned, or null. No reference is added.
  IUnknown* Object() const { return object_ ? object_.Get() : target_.Get(); }
  // The stream, or null. No reference is added.
  IStream* Target() const { return target_.Get(); }

 private:
  OwnedReference<IUnknown> object_;
  OwnedReference<IStream> target_;
};

}  // namespace mirolta
