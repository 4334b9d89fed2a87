// Reads characters and lines from a byte channel. Lines end with LF or CR LF.
#pragma once

#include <string>

#include "files/byte_channel.h"
#include "files/text_position.h"

namespace mirolta::host {

enum class TextEncoding : uint8_t {
  kSystem,    // UTF-8; other bytes survive (text_encoding.h)
  kUtf16,     // least significant byte first
  kDetected,  // kUtf16 if the file starts with its byte order mark, else kSystem
};

// All members but Position throw CallError for a failed read and std::bad_alloc; they wait for no
// more bytes than they need.
class TextReader {
 public:
  // A text returned at once has at most so many units.
  static constexpr size_t kMostUnits = size_t{256} << 20;

  // With `skips_mark` a byte order mark at the start is not part of the text.
  TextReader(ByteChannel* channel, TextEncoding encoding, bool skips_mark)
      : channel_(channel), encoding_(encoding), skips_mark_(skips_mark) {}

  bool IsAtEnd() { return !HasUnits(1); }
  // Whether a line end or the end of the text is next.
  bool IsAtLineEnd();

  // Read and Skip stop at the end of the text.
  // Errors: kPastEndOfFile if the text ends here and `count` is not 0.
  Units Read(size_t count);
  void Skip(size_t count);
  // ReadLine returns the text up to the line end, which is skipped.
  // Errors: kPastEndOfFile if the text ends here.
  Units ReadLine();
  void SkipLine();
  Units ReadAll() { return Read(SIZE_MAX); }

  const TextPosition& Position() const { return position_; }

 private:
  // Whether the buffer holds that many units, after reading on if necessary.
  bool HasUnits(size_t count);
  // Decodes at least one unit more; false at the end.
  bool Fill();
  void Decode(bool is_last);
  // Moves units from the buffer to `text`, if that is not null.
  void Take(size_t count, Units* text);
  void TakeMany(size_t count, Units* text);
  void TakeLine(Units* text);

  ByteChannel* channel_;
  TextEncoding encoding_;
  bool skips_mark_;
  bool is_ended_ = false;
  std::string bytes_;  // not decoded yet
  Units units_;        // the buffer, from at_
  size_t at_ = 0;
  TextPosition position_;
};

}  // namespace mirolta::host
