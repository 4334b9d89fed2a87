// An image in memory as the handheld's loader makes it: sections at their addresses, relocated,
// imports bound, pages protected. No code of it has run.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "image/image_headers.h"

namespace mirolta::loader {

// What an import names: a function of a library, by name or, if that is empty, by ordinal.
struct ImportName {
  std::string library;
  std::string name;
  uint16_t ordinal = 0;
};
// Returns the address of an import, null if the library has no such function.
using FindImport = std::function<void*(const ImportName&)>;

enum class Placement : uint8_t {
  kAnywhere,   // not at the preferred base: every relocation is applied
  kPreferred,  // at the preferred base, or nowhere
};

class MappedImage {
 public:
  // Map maps a file.
  // Errors: null, with a sentence in `problem`; nothing stays mapped.
  static std::unique_ptr<MappedImage> Map(const ImageBytes& file, const FindImport& find_import,
                                          Placement placement, std::string* problem);
  ~MappedImage();
  MappedImage(const MappedImage&) = delete;
  MappedImage& operator=(const MappedImage&) = delete;

  const ImageHeaders& Headers() const { return headers_; }
  // The image up to the first section that cannot be read, by relative addresses.
  const ImageBytes& Bytes() const { return bytes_; }
  const uint8_t* Base() const { return memory_; }
  bool Contains(const void* address) const;

  // The entry point; null if there is none.
  void* EntryPoint() const;
  // Export returns an exported function's or variable's address, null if there is none.
  void* Export(const std::string& name) const;
  void* Export(uint16_t ordinal) const;

 private:
  MappedImage() = default;
  void* ExportAt(uint32_t index) const;
  bool Reserve(Placement placement, std::string* problem);
  bool Copy(const ImageBytes& file, std::string* problem);
  bool Relocate(std::string* problem);
  bool Bind(const FindImport& find_import, std::string* problem);
  bool Protect(std::string* problem);

  ImageHeaders headers_;
  uint8_t* memory_ = nullptr;
  ImageBytes bytes_;
};

}  // namespace mirolta::loader
