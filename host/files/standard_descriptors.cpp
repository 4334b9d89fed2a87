#include "files/standard_descriptors.h"

#include <fcntl.h>
#include <unistd.h>

namespace mirolta::host {

void HoldStandardDescriptors() {
  for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file) {
    if (fcntl(file, F_GETFD) != -1) continue;
    // The lowest free number is this one; the wrong mode makes every use fail with EBADF.
    static_cast<void>(open("/dev/null", file == STDIN_FILENO ? O_WRONLY : O_RDONLY));
  }
}

}  // namespace mirolta::host
