// The character sets of ADODB.Stream.
#pragma once

#include <string>
#include <string_view>

#include "platform.h"
#include "values/text_encoding.h"

namespace mirolta::host {

class TextCharset {
 public:
  // UTF-16, least significant byte first.
  TextCharset() = default;

  // Find finds a character set by its name, in any letter case.
  // Errors: returns false for a name that the system does not know, and for sets that a stream cannot
  //         read in parts: UTF-7, UTF-32 and those that are to be detected.
  [[nodiscard]] static bool Find(UnitsView name, TextCharset* charset);

  // The bytes that mark the set at the start of a stream, "" if it has none.
  std::string_view Mark() const;
  // The number of bytes that every character's length is a multiple of.
  size_t UnitSize() const { return IsUtf16() ? 2 : 1; }

  // Characters that cannot be converted become the set's default character, ill-formed bytes U+FFFD
  // or the set's own.
  // Errors: throws std::bad_alloc, also for texts beyond 2 GB.
  std::string Encode(UnitsView text) const;
  Units Decode(std::string_view bytes) const;

  // FirstCharacter returns the number of bytes of the first character, and the number of code units
  // that it is decoded to.
  // Shapes: `bytes` are not empty; the rest of the stream, or at least 4 bytes.
  size_t FirstCharacter(std::string_view bytes, size_t* units) const;

 private:
  explicit TextCharset(UINT code_page) : code_page_(code_page) {}
  bool IsUtf16() const;

  static constexpr UINT kUtf16 = 1200;
  static constexpr UINT kUtf16BigEndian = 1201;

  UINT code_page_ = kUtf16;
};

}  // namespace mirolta::host
