// The underlying stream of a filter.
#pragma once

#include "mirolta.h"
#include "owned_value.h"
#include "platform.h"

namespace mirolta {

// GetStreamFromObject returns the stream of an object: its own IStream interface, else the stream
// that its IToviStreamSource returns.
// Errors: E_POINTER for a null object; the status of the query for IToviStreamSource; the source's
//         own. *stream is then null.
HRESULT GetStreamFromObject(IUnknown* object, IStream** stream);

// StreamBinding holds a reference to the object that a caller assigned and one to its stream.
class StreamBinding {
 public:
  // Bind releases the object and stream held, even if it then fails, and binds another object's.
  // Errors: those of GetStreamFromObject; nothing is then bound.
  HRESULT Bind(IUnknown* object);

  // The assigned object, or null. No reference is added.
  IUnknown* Object() const { return object_ ? object_.Get() : target_.Get(); }
  // The stream, or null. No reference is added.
  IStream* Target() const { return target_.Get(); }

 private:
  OwnedReference<IUnknown> object_;
  OwnedReference<IStream> target_;
};

}  // namespace mirolta
