// Where text streams read and write bytes: files and the standard streams.
#pragma once

#include <stdio.h>

#include <memory>
#include <string>
#include <string_view>

#include "platform.h"

namespace mirolta::host {

class ByteChannel {
 public:
  ByteChannel() = default;
  ByteChannel(const ByteChannel&) = delete;
  ByteChannel& operator=(const ByteChannel&) = delete;
  virtual ~ByteChannel() = default;

  // Read waits for one byte and returns what there is then; *got is 0 at the end.
  // Errors: kBadFileMode if the channel is for writing, the system's otherwise.
  [[nodiscard]] virtual HRESULT Read(char* bytes, size_t size, size_t* got);
  // Write may keep the bytes until Close or the end of the script.
  // Errors: kBadFileMode if the channel is for reading, the system's otherwise.
  [[nodiscard]] virtual HRESULT Write(std::string_view bytes);
  // Close writes what was kept; a new file is moved into place. Call it at most once.
  [[nodiscard]] virtual HRESULT Close() { return S_OK; }
  // A channel that is destroyed before Keep discards a new file, afterwards it leaves the file to the
  // end of the script.
  virtual void Keep() {}
  // The text of a failed write, "" for the status's own.
  virtual const char* WriteFailure() const { return ""; }
  virtual bool IsTerminal() const { return false; }
};

// ReadDescriptor is Read of an open file.
[[nodiscard]] HRESULT ReadDescriptor(int file, char* bytes, size_t size, size_t* got);

// Standard input; what the script printed is flushed before each read.
std::unique_ptr<ByteChannel> StandardInput();
// stdout or stderr; what was printed on stdout comes before what is written to stderr.
std::unique_ptr<ByteChannel> StandardOutput(FILE* file);

}  // namespace mirolta::host
