// The instance creators of the six classes; each stands with its class. All take an outer object or
// null, the interface wanted first, and the place for it.
#pragma once

#include "platform.h"

namespace mirolta {

HRESULT CreateHashObject(IUnknown* outer, REFIID iid, void** out);
HRESULT CreateSymmetricCryptObject(IUnknown* outer, REFIID iid, void** out);
HRESULT CreatePexBigNumber(IUnknown* outer, REFIID iid, void** out);
HRESULT CreateRSACrypt(IUnknown* outer, REFIID iid, void** out);
HRESULT CreateToviStreamDigest(IUnknown* outer, REFIID iid, void** out);
HRESULT CreateToviStreamCrypt(IUnknown* outer, REFIID iid, void** out);

}  // namespace mirolta
