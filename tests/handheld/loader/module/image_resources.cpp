#include "module/image_resources.h"

#include "image/problem.h"

namespace mirolta::loader {
namespace {

constexpr uint32_t kNameFlag = 0x80000000;       // of an identifier: the offset of a name
constexpr uint32_t kDirectoryFlag = 0x80000000;  // of an entry: another directory
constexpr uint32_t kHeaderSize = 16;
constexpr uint16_t kStringType = 6;
constexpr uint32_t kBundleSize = 16;  // strings that one resource holds
constexpr uint16_t kFirstLanguage = 1;

}  // namespace

template <typename Visit>
bool ImageResources::ForEachEntry(uint32_t directory, Visit visit) const {
  uint16_t names = 0;
  uint16_t numbers = 0;
  if (!directory_.Read(uint64_t{directory} + 12, &names) ||
      !directory_.Read(uint64_t{directory} + 14, &numbers)) {
    return false;
  }
  for (uint32_t i = 0; i < uint32_t{names} + numbers; ++i) {
    const uint64_t at = uint64_t{directory} + kHeaderSize + uint64_t{i} * 8;
    uint32_t name = 0;
    uint32_t target = 0;
    Identifier identifier;
    if (!directory_.Read(at, &name) || !directory_.Read(at + 4, &target) ||
        !ReadIdentifier(name, &identifier) || !visit(identifier, target)) {
      return false;
    }
  }
  return true;
}

bool ImageResources::ReadIdentifier(uint32_t value, Identifier* out) const {
  if ((value & kNameFlag) == 0) {
    out->number = static_cast<uint16_t>(value);
    return value <= 0xFFFF;
  }
  const uint32_t at = value & ~kNameFlag;
  uint16_t length = 0;
  if (!directory_.Read(at, &length) || length == 0) return false;
  for (uint32_t i = 0; i < length; ++i) {
    uint16_t unit = 0;
    if (!directory_.Read(uint64_t{at} + 2 + uint64_t{i} * 2, &unit)) return false;
    out->name += static_cast<char16_t>(unit);
  }
  return true;
}

bool ImageResources::ReadData(uint32_t entry, ImageBytes* data) const {
  uint32_t address = 0;
  uint32_t size = 0;
  return directory_.Read(entry, &address) && directory_.Read(uint64_t{entry} + 4, &size) &&
         image_->Bytes().Part(address, size, data);
}

bool ImageResources::Read(const MappedImage& image, std::string* problem) {
  image_ = &image;
  const ImageDirectory& place = image.Headers().directories[kResourceDirectory];
  if (place.size == 0) return true;
  std::string reason = "the resource directory is malformed";
  const bool read =
      image.Bytes().Part(place.address, place.size, &directory_) &&
      ForEachEntry(0, [&](const Identifier& type, uint32_t of_type) {
        if ((of_type & kDirectoryFlag) == 0) return false;
        return ForEachEntry(of_type & ~kDirectoryFlag, [&](const Identifier& name, uint32_t named) {
          if ((named & kDirectoryFlag) == 0) return false;
          uint32_t languages = 0;
          return ForEachEntry(named & ~kDirectoryFlag, [&](const Identifier&, uint32_t entry) {
            ImageBytes data;
            if ((entry & kDirectoryFlag) != 0 || !ReadData(entry, &data)) return false;
            return ++languages != kFirstLanguage || Add(type, name, data, &reason);
          });
        });
      });
  if (!read) return Fail(problem, reason);
  table_.strings = strings_.data();
  table_.string_count = static_cast<unsigned>(strings_.size());
  table_.data = data_.data();
  table_.data_count = static_cast<unsigned>(data_.size());
  return true;
}

bool ImageResources::Add(const Identifier& type, const Identifier& name, const ImageBytes& data,
                         std::string* problem) {
  if (type.name.empty()) return type.number != kStringType || AddStrings(name.number, data);
  if (!name.name.empty()) return true;  // the runtime's resources have numbers
  texts_.push_back(type.name);
  data_.push_back(
      {texts_.back().c_str(), name.number, data.Data(), static_cast<DWORD>(data.Size())});
  if (type.name != u"TYPELIB") return true;
  if (!type_library_.Read(data, problem)) return false;
  table_.type_library = type_library_.Table();
  return true;
}

bool ImageResources::AddStrings(uint16_t bundle, const ImageBytes& data) {
  if (bundle == 0) return false;
  uint64_t at = 0;
  for (uint32_t i = 0; i < kBundleSize; ++i) {
    uint16_t length = 0;
    if (!data.Read(at, &length) || !data.Has(at + 2, uint64_t{length} * 2)) return false;
    at += 2;
    if (length == 0) continue;
    std::u16string text;
    for (uint32_t k = 0; k < length; ++k, at += 2) {
      uint16_t unit = 0;
      static_cast<void>(data.Read(at, &unit));
      text += static_cast<char16_t>(unit);
    }
    texts_.push_back(text);
    strings_.push_back({(bundle - 1u) * kBundleSize + i, texts_.back().c_str()});
  }
  return true;
}

}  // namespace mirolta::loader
