// Decoding of text in a named character set.
#pragma once

#include <string>
#include <string_view>

namespace mirolta::host {

enum class Decoding {
  kDone,
  kUnknownSet,
  kMalformed,  // *offset: of the first byte that encodes no character
  kTruncated,  // *offset: of a character that is incomplete at the end
};

// DecodeText appends the text of `bytes` in UTF-8, on failure that before the offset. `charset` is a
// name as iconv knows it, or the number of a code page, with or without "CP".
// Errors: lone surrogates are malformed; std::bad_alloc.
Decoding DecodeText(std::string_view charset, std::string_view bytes, std::string* text,
                    size_t* offset);

// OffsetOfText returns the number of bytes that encode the first `size` bytes of the UTF-8 that
// DecodeText gave.
size_t OffsetOfText(std::string_view charset, std::string_view bytes, size_t size);

}  // namespace mirolta::host
