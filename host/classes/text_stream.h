// The automation class TextStream: text in files, and the standard streams.
#pragma once

#include <memory>
#include <optional>

#include "classes/host_object.h"
#include "files/byte_channel.h"
#include "files/text_reader.h"

namespace mirolta::host {

struct TextStreamOptions {
  TextEncoding encoding = TextEncoding::kSystem;
  bool skips_mark = false;        // a byte order mark at the start of what is read
  const char* line_end = "\r\n";  // of WriteLine
};

class TextStream final : public HostObject {
 public:
  enum class Direction : uint8_t { kRead, kWrite };

  TextStream(std::unique_ptr<ByteChannel> channel, Direction direction,
             const TextStreamOptions& options);

  static const HostClass kClass;
  const HostClass& Class() const override { return kClass; }

  void Read(HostCall& call);
  void ReadLine(HostCall& call);
  void ReadAll(HostCall& call);
  void Skip(HostCall& call);
  void SkipLine(HostCall& call);
  void Write(HostCall& call);
  void WriteLine(HostCall& call);
  void WriteBlankLines(HostCall& call);
  void Close(HostCall& call);
  void GetAtEndOfStream(HostCall& call);
  void GetAtEndOfLine(HostCall& call);
  void GetLine(HostCall& call);
  void GetColumn(HostCall& call);
  void GetIsTerminal(HostCall& call);

 private:
  ~TextStream() override;

  // Errors: kStreamGone after Close, kBadFileMode for the other direction.
  TextReader& Reader();
  ByteChannel& Writer();
  const TextPosition& Position() const;
  void Put(UnitsView text);
  HRESULT PutEncoded(UnitsView text);

  std::unique_ptr<ByteChannel> channel_;  // null after Close
  TextStreamOptions options_;
  std::optional<TextReader> reader_;  // of a stream for reading
  TextPosition written_;
  Units half_;  // a high surrogate whose other half may be written next
};

enum class StandardStreamNumber : uint8_t { kInput, kOutput, kError };

// StandardStream returns the process's stream, always the same object, with a reference of the
// caller's.
// Errors: throws std::bad_alloc.
TextStream* StandardStream(StandardStreamNumber number);

}  // namespace mirolta::host
