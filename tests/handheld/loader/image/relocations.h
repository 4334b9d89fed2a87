// Base relocations: what to add where when an image is not at its preferred base.
#pragma once

#include <span>
#include <string>

#include "image/image_headers.h"

namespace mirolta::loader {

// ApplyRelocations adds `delta` to every place that the image's relocations name. The types that
// the system knows for this processor are ABSOLUTE (padding), HIGHLOW (a word) and THUMB_MOV32 (a
// MOVW and a MOVT).
// Shapes: image[headers.image_size], by relative addresses
// Errors: false, with a sentence in `problem`, for another type, a block outside the directory, a
//         place outside the sections, and a THUMB_MOV32 where these instructions are not.
bool ApplyRelocations(const ImageHeaders& headers, std::span<uint8_t> image, uint32_t delta,
                      std::string* problem);

}  // namespace mirolta::loader
