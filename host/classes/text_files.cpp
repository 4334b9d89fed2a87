#include "classes/text_files.h"

#include <utility>

#include "engine/file_statuses.h"
#include "engine/host_errors.h"
#include "files/file_channel.h"
#include "files/file_facts.h"

namespace mirolta::host {
namespace {

using Direction = TextStream::Direction;

void Check(HRESULT status) {
  if (FAILED(status)) Fail(status);
}

void CheckName(const std::string& path) {
  if (path.empty()) Fail(kPathNotFound);
}

// The platform lets nobody write a read-only file, the system lets root.
void RefuseReadOnly(const std::string& path) {
  struct stat facts = {};
  if (stat(path.c_str(), &facts) == 0 && S_ISREG(facts.st_mode) && IsReadOnly(facts)) {
    Fail(kPermissionDenied);
  }
}

TextStream* NewWriter(std::unique_ptr<ByteChannel> channel, TextEncoding encoding, bool is_empty) {
  if (encoding == TextEncoding::kUtf16 && is_empty) Check(channel->Write("\xFF\xFE"));
  TextStreamOptions options;
  options.encoding = encoding;
  return new TextStream(std::move(channel), Direction::kWrite, options);
}

TextStream* OpenReader(const std::string& path, int32_t format) {
  std::unique_ptr<ByteChannel> channel;
  Check(OpenForReading(path, &channel));
  TextStreamOptions options;
  options.skips_mark = true;
  options.encoding = format == kUnicode         ? TextEncoding::kUtf16
                     : format == kDefaultFormat ? TextEncoding::kDetected
                                                : TextEncoding::kSystem;
  return new TextStream(std::move(channel), Direction::kRead, options);
}

// Whether the file has the mark of UTF-16.
bool StartsWide(const std::string& path) {
  // Reading a pipe would take what is in it.
  if (KindOf(path) != PathKind::kFile || !S_ISREG(FactsOf(path).st_mode)) return false;
  std::unique_ptr<ByteChannel> channel;
  if (FAILED(OpenForReading(path, &channel))) return false;
  char bytes[2] = {};
  size_t got = 0;
  return SUCCEEDED(channel->Read(bytes, sizeof bytes, &got)) && got == 2 &&
         std::string_view(bytes, 2) == "\xFF\xFE";
}

}  // namespace

TextStream* OpenTextFile(const std::string& path, const TextFileOptions& options) {
  const int32_t format = options.format;
  if (format > kNarrow || format < kDefaultFormat) Fail(kInvalidCall);
  const bool is_unicode = format == kUnicode;
  CheckName(path);
  switch (options.mode) {
    case kForReading:
      // The platform makes the file and opens it, empty.
      if (options.creates && KindOf(path) == PathKind::kNone) {
        bool is_empty = false;
        std::unique_ptr<ByteChannel> channel;
        Check(OpenForAppending(path, true, &is_empty, &channel));
      }
      return OpenReader(path, format);
    case kForWriting:
      if (!options.creates && KindOf(path) == PathKind::kNone) Fail(MissingStatus(path));
      return CreateTextFile(path, true, is_unicode);
    case kForAppending: {
      const bool is_wide = is_unicode || (format == kDefaultFormat && StartsWide(path));
      RefuseReadOnly(path);
      bool is_empty = false;
      std::unique_ptr<ByteChannel> channel;
      Check(OpenForAppending(path, options.creates, &is_empty, &channel));
      return NewWriter(std::move(channel), is_wide ? TextEncoding::kUtf16 : TextEncoding::kSystem,
                       is_empty);
    }
    default:
      Fail(kInvalidCall);
  }
}

TextStream* CreateTextFile(const std::string& path, bool overwrites, bool is_unicode) {
  CheckName(path);
  if (overwrites) RefuseReadOnly(path);
  std::unique_ptr<ByteChannel> channel;
  Check(OpenNewFile(path, !overwrites, &channel));
  return NewWriter(std::move(channel), is_unicode ? TextEncoding::kUtf16 : TextEncoding::kSystem,
                   true);
}

}  // namespace mirolta::host
