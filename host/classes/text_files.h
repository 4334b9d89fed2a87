// Text streams of files.
#pragma once

#include <string>

#include "classes/text_stream.h"

namespace mirolta::host {

enum : int32_t { kForReading = 1, kForWriting = 2, kForAppending = 8 };
// Formats: UTF-8, UTF-16 least significant byte first, or what the file starts with.
enum : int32_t { kNarrow = 0, kUnicode = -1, kDefaultFormat = -2 };

struct TextFileOptions {
  int32_t mode = kForReading;
  bool creates = false;
  int32_t format = kNarrow;
};

// Shapes: system paths.
// Errors: throw CallError and std::bad_alloc.
TextStream* OpenTextFile(const std::string& path, const TextFileOptions& options);
TextStream* CreateTextFile(const std::string& path, bool overwrites, bool is_unicode);

}  // namespace mirolta::host
