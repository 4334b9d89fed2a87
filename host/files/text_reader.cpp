#include "files/text_reader.h"

#include <algorithm>

#include "classes/host_call.h"
#include "engine/file_statuses.h"

namespace mirolta::host {
namespace {

constexpr size_t kBlock = 65536;
constexpr OLECHAR kByteOrderMark = 0xFEFF;
constexpr OLECHAR kReplacement = 0xFFFD;
constexpr OLECHAR kLineFeed = '\n';
constexpr OLECHAR kReturn = '\r';

uint8_t ByteAt(std::string_view bytes, size_t index) {
  return static_cast<uint8_t>(bytes[index]);
}

// The number of bytes at the end that may start a longer UTF-8 sequence.
size_t UnfinishedBytes(std::string_view bytes) {
  for (size_t back = 1; back <= std::min<size_t>(3, bytes.size()); ++back) {
    const uint8_t byte = ByteAt(bytes, bytes.size() - back);
    if ((byte & 0xC0u) == 0x80) continue;
    const size_t length = byte >= 0xF0 ? 4 : byte >= 0xE0 ? 3 : byte >= 0xC2 ? 2 : 1;
    return byte <= 0xF4 && length > back ? back : 0;
  }
  return 0;
}

void AppendUtf16(std::string_view bytes, Units* units) {
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    units->push_back(static_cast<OLECHAR>(ByteAt(bytes, i) | (ByteAt(bytes, i + 1) << 8)));
  }
}

}  // namespace

void TextReader::Decode(bool is_last) {
  if (encoding_ == TextEncoding::kDetected) {
    if (bytes_.size() < 2 && !is_last) return;
    encoding_ = bytes_.starts_with("\xFF\xFE") ? TextEncoding::kUtf16 : TextEncoding::kSystem;
  }
  const bool is_wide = encoding_ == TextEncoding::kUtf16;
  const size_t unfinished = is_wide ? bytes_.size() % 2 : is_last ? 0 : UnfinishedBytes(bytes_);
  const std::string_view whole(bytes_.data(), bytes_.size() - unfinished);
  if (is_wide) {
    AppendUtf16(whole, &units_);
    if (is_last && unfinished != 0) units_ += kReplacement;
  } else {
    units_ += UnitsFromSystem(whole);
  }
  bytes_.erase(0, is_last ? bytes_.size() : whole.size());
  if (skips_mark_ && !units_.empty()) {
    if (units_[0] == kByteOrderMark) units_.erase(0, 1);
    skips_mark_ = false;
  }
}

bool TextReader::Fill() {
  units_.erase(0, at_);
  at_ = 0;
  const size_t before = units_.size();
  while (!is_ended_ && units_.size() == before) {
    const size_t kept = bytes_.size();
    bytes_.resize(kept + kBlock);
    size_t got = 0;
    const HRESULT status = channel_->Read(bytes_.data() + kept, kBlock, &got);
    bytes_.resize(kept + got);
    if (FAILED(status)) Fail(status);
    is_ended_ = got == 0;
    Decode(is_ended_);
  }
  return units_.size() != before;
}

bool TextReader::HasUnits(size_t count) {
  while (units_.size() - at_ < count) {
    if (!Fill()) return false;
  }
  return true;
}

bool TextReader::IsAtLineEnd() {
  if (!HasUnits(1) || units_[at_] == kLineFeed) return true;
  return units_[at_] == kReturn && HasUnits(2) && units_[at_ + 1] == kLineFeed;
}

void TextReader::Take(size_t count, Units* text) {
  const UnitsView taken = UnitsView(units_).substr(at_, count);
  if (text != nullptr) {
    if (text->size() + taken.size() > kMostUnits) {
      Fail(E_OUTOFMEMORY, "The text is longer than 268,435,456 characters");
    }
    text->append(taken);
  }
  position_.Advance(taken);
  at_ += taken.size();
}

void TextReader::TakeMany(size_t count, Units* text) {
  if (count == 0) return;
  if (IsAtEnd()) Fail(kPastEndOfFile);
  while (count != 0 && HasUnits(1)) {
    const size_t part = std::min(count, units_.size() - at_);
    Take(part, text);
    count -= part;
  }
}

void TextReader::TakeLine(Units* text) {
  if (IsAtEnd()) Fail(kPastEndOfFile);
  while (HasUnits(1)) {
    const size_t end = units_.find(kLineFeed, at_);
    if (end == Units::npos) {
      Take(units_.size() - at_, text);
      continue;
    }
    Take(end - at_, text);
    if (text != nullptr && text->ends_with(kReturn)) text->pop_back();
    Take(1, nullptr);
    return;
  }
}

Units TextReader::Read(size_t count) {
  Units text;
  TakeMany(count, &text);
  return text;
}

void TextReader::Skip(size_t count) {
  TakeMany(count, nullptr);
}

Units TextReader::ReadLine() {
  Units text;
  TakeLine(&text);
  return text;
}

void TextReader::SkipLine() {
  TakeLine(nullptr);
}

}  // namespace mirolta::host
