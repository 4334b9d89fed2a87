#include "files/byte_channel.h"

#include <errno.h>
#include <poll.h>
#include <unistd.h>

#include "engine/file_statuses.h"
#include "engine/interruption.h"

namespace mirolta::host {
namespace {

class InputChannel final : public ByteChannel {
 public:
  HRESULT Read(char* bytes, size_t size, size_t* got) override {
    // A failure is reported when the script ends.
    static_cast<void>(fflush(stdout));
    return ReadDescriptor(STDIN_FILENO, bytes, size, got);
  }
  bool IsTerminal() const override { return isatty(STDIN_FILENO) != 0; }
};

class OutputChannel final : public ByteChannel {
 public:
  explicit OutputChannel(FILE* file) : file_(file) {}

  HRESULT Write(std::string_view bytes) override {
    if (file_ == stderr) static_cast<void>(fflush(stdout));
    const bool written = fwrite(bytes.data(), 1, bytes.size(), file_) == bytes.size();
    return written ? S_OK : STG_E_WRITEFAULT;
  }
  HRESULT Close() override { return fflush(file_) == 0 ? S_OK : STG_E_WRITEFAULT; }
  const char* WriteFailure() const override { return "The output cannot be written"; }
  bool IsTerminal() const override { return isatty(fileno(file_)) != 0; }

 private:
  FILE* const file_;
};

}  // namespace

HRESULT ReadDescriptor(int file, char* bytes, size_t size, size_t* got) {
  *got = 0;
  for (;;) {
    const ssize_t count = read(file, bytes, size);
    if (count >= 0) {
      *got = static_cast<size_t>(count);
      return S_OK;
    }
    if (IsInterrupted()) return E_ABORT;
    if (errno == EAGAIN) {
      pollfd wait = {file, POLLIN, 0};
      static_cast<void>(poll(&wait, 1, -1));
    } else if (errno != EINTR) {
      return FileStatusOf(errno);
    }
  }
}

HRESULT ByteChannel::Read(char*, size_t, size_t* got) {
  *got = 0;
  return kBadFileMode;
}

HRESULT ByteChannel::Write(std::string_view) {
  return kBadFileMode;
}

std::unique_ptr<ByteChannel> StandardInput() {
  return std::make_unique<InputChannel>();
}

std::unique_ptr<ByteChannel> StandardOutput(FILE* file) {
  return std::make_unique<OutputChannel>(file);
}

}  // namespace mirolta::host
