// Byte channels of files.
#pragma once

#include <memory>
#include <string>

#include "files/byte_channel.h"

namespace mirolta::host {

// OpenForReading opens a file.
// Errors: kFileNotFound, kPathNotFound, kPermissionDenied for a folder, the system's.
[[nodiscard]] HRESULT OpenForReading(const std::string& path,
                                     std::unique_ptr<ByteChannel>* channel);
// OpenForAppending opens a file whose end each write extends, in place and at once. With `creates`
// a missing file is made. *is_empty says whether it has no bytes yet.
// Errors: as OpenForReading.
[[nodiscard]] HRESULT OpenForAppending(const std::string& path, bool creates, bool* is_empty,
                                       std::unique_ptr<ByteChannel>* channel);
// OpenNewFile makes a file, which replaces an existing one when the channel is closed or the script
// ends well (output_file.h). Pipes and devices are written in place.
// Errors: kFileExists if it must be new and is not; as OpenForReading.
[[nodiscard]] HRESULT OpenNewFile(const std::string& path, bool must_be_new,
                                  std::unique_ptr<ByteChannel>* channel);

}  // namespace mirolta::host
