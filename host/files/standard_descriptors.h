// The descriptors 0, 1 and 2.
#pragma once

namespace mirolta::host {

// HoldStandardDescriptors keeps those that are closed from becoming another file's: using them
// stays an error. Call once, before any file is opened.
void HoldStandardDescriptors();

}  // namespace mirolta::host
