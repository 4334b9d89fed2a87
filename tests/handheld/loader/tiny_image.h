// tiny.dll as bytes, and mapped.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#include "image/mapped_image.h"
#include "system/system_library.h"

namespace mirolta::loader {

// TinyBytes returns the file's content; a test that changes it has a copy.
inline std::vector<uint8_t> TinyBytes() {
  std::ifstream stream(MIROLTA_TINY_DLL, std::ios::binary);
  std::vector<uint8_t> bytes(std::istreambuf_iterator<char>(stream), {});
  EXPECT_FALSE(bytes.empty()) << MIROLTA_TINY_DLL;
  return bytes;
}

inline double Half(double value) {
  return value / 2;
}

// The function of numbers.dll, which has no names, and the system libraries.
inline void* FindTinyImport(const ImportName& import) {
  const SystemLibrary* const library = FindSystemLibrary(import.library);
  if (library != nullptr) return FindSystemFunction(*library, import.name);
  if (import.library != "numbers.dll") return nullptr;
  return import.name.empty() && import.ordinal == 7 ? reinterpret_cast<void*>(&Half) : nullptr;
}

inline std::unique_ptr<MappedImage> MapTiny(const std::vector<uint8_t>& bytes, std::string* problem,
                                            Placement placement = Placement::kAnywhere) {
  return MappedImage::Map(ImageBytes(bytes), FindTinyImport, placement, problem);
}

// Call calls an exported function.
template <typename Signature, typename... Argument>
auto Call(const MappedImage& image, const char* name, Argument... argument) {
  return reinterpret_cast<Signature*>(image.Export(name))(argument...);
}

// The places of a good file's headers and tables.
struct TinyFile {
  std::vector<uint8_t> bytes;

  uint32_t Get32(size_t at) const {
    uint32_t value = 0;
    EXPECT_TRUE(ImageBytes(bytes).Read(at, &value)) << at;
    return value;
  }
  void Put16(size_t at, uint32_t value) {
    bytes.at(at) = static_cast<uint8_t>(value);
    bytes.at(at + 1) = static_cast<uint8_t>(value >> 8);
  }
  void Put32(size_t at, uint32_t value) {
    Put16(at, value);
    Put16(at + 2, value >> 16);
  }
  // Replaces a text by another of its length.
  void PutText(const std::string& from, const std::string& to) {
    const auto found = std::search(bytes.begin(), bytes.end(), from.begin(), from.end());
    ASSERT_NE(found, bytes.end()) << from;
    std::copy(to.begin(), to.end(), found);
  }

  uint32_t Headers() const { return Get32(0x3C); }
  uint32_t Optional() const { return Headers() + 24; }
  uint32_t Directory(uint32_t index) const { return Optional() + 96 + index * 8; }
  void PutDirectory(uint32_t index, uint32_t address, uint32_t size) {
    Put32(Directory(index), address);
    Put32(Directory(index) + 4, size);
  }
  // The header of a section.
  uint32_t Section(const std::string& name) const {
    uint32_t at = Optional() + 224 - 40;
    for (std::string found; found.c_str() != name; at += 40) {
      found.assign(bytes.data() + at + 40, bytes.data() + at + 48);
    }
    return at;
  }
  uint32_t FileOffset(const std::string& name) const { return Get32(Section(name) + 20); }
  // Where the file has what the image has at an address of a section.
  uint32_t Place(const std::string& section, uint32_t address) const {
    return address - Get32(Section(section) + 12) + FileOffset(section);
  }
  uint32_t Relocations() const { return FileOffset(".reloc"); }
  uint32_t ImportTable() const { return Place(".rdata", Get32(Directory(1))); }
  // An entry of a library's look-up table.
  uint32_t Import(uint32_t library, uint32_t index) const {
    return Place(".rdata", Get32(ImportTable() + library * 20)) + index * 4;
  }
};

}  // namespace mirolta::loader
