#include "image/mapped_image.h"

#include <sys/mman.h>

#include <cstring>

#include "image/problem.h"
#include "image/relocations.h"

namespace mirolta::loader {
namespace {

constexpr uint32_t kOrdinalFlag = 0x80000000;

uint32_t PageEnd(uint32_t size) {
  return (size + kPageSize - 1) & ~(kPageSize - 1);
}

// An address as the image has it. Addresses of this processor have 32 bits; elsewhere, where the
// tests of hostile images may run too, what does not fit is cut.
uint32_t AddressWord(const void* address) {
  return static_cast<uint32_t>(reinterpret_cast<uintptr_t>(address));
}

// Stricter than the system, which leaves discardable sections readable: nothing may read relocations
// once they are applied.
int Protection(uint32_t characteristics) {
  if ((characteristics & kSectionDiscardable) != 0) return PROT_NONE;
  return ((characteristics & kSectionRead) != 0 ? PROT_READ : 0) |
         ((characteristics & kSectionWrite) != 0 ? PROT_WRITE : 0) |
         ((characteristics & kSectionExecute) != 0 ? PROT_EXEC : 0);
}

}  // namespace

std::unique_ptr<MappedImage> MappedImage::Map(const ImageBytes& file, const FindImport& find_import,
                                              Placement placement, std::string* problem) {
  std::unique_ptr<MappedImage> image(new MappedImage());
  if (!ReadHeaders(file, &image->headers_, problem) || !image->Reserve(placement, problem) ||
      !image->Copy(file, problem) || !image->Relocate(problem) ||
      !image->Bind(find_import, problem) || !image->Protect(problem)) {
    return nullptr;
  }
  return image;
}

MappedImage::~MappedImage() {
  if (memory_ != nullptr) munmap(memory_, headers_.image_size);
}

bool MappedImage::Reserve(Placement placement, std::string* problem) {
  const auto wanted = reinterpret_cast<void*>(uintptr_t{headers_.preferred_base});
  const bool fixed = placement == Placement::kPreferred;
  void* memory = mmap(fixed ? wanted : nullptr, headers_.image_size, PROT_READ | PROT_WRITE,
                      MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (memory == MAP_FAILED) return Fail(problem, "no memory for the image");
  memory_ = static_cast<uint8_t*>(memory);
  bytes_ = ImageBytes({memory_, headers_.image_size});
  if (fixed && memory != wanted) return Fail(problem, "the preferred base is not free");
  if (memory != wanted && !headers_.has_relocations) {
    return Fail(problem, "the image has no relocations and is not at its preferred base");
  }
  return true;
}

bool MappedImage::Copy(const ImageBytes& file, std::string*) {
  std::memcpy(memory_, file.Data(), headers_.headers_size);
  for (const ImageSection& section : headers_.sections) {
    const uint32_t size = std::min(section.file_size, section.memory_size);
    if (size != 0) {
      std::memcpy(memory_ + section.address, file.Data() + section.file_offset, size);
    }
  }
  return true;
}

bool MappedImage::Relocate(std::string* problem) {
  return ApplyRelocations(headers_, {memory_, headers_.image_size},
                          AddressWord(memory_) - headers_.preferred_base, problem);
}

bool MappedImage::Bind(const FindImport& find_import, std::string* problem) {
  const ImageDirectory& directory = headers_.directories[kImportDirectory];
  if (directory.size == 0) return true;
  for (uint64_t at = directory.address;; at += 20) {
    uint32_t lookup = 0;
    uint32_t name = 0;
    uint32_t addresses = 0;
    if (!bytes_.Read(at, &lookup) || !bytes_.Read(at + 12, &name) ||
        !bytes_.Read(at + 16, &addresses)) {
      return Fail(problem, "the imports have no end");
    }
    if (name == 0 && addresses == 0) return true;
    ImportName import;
    if (!bytes_.Text(name, &import.library)) {
      return Fail(problem, "the name of an imported library is outside the image");
    }
    if (lookup == 0) lookup = addresses;
    for (uint64_t i = 0;; i += 4) {
      uint32_t thunk = 0;
      uint32_t bound = 0;
      if (!bytes_.Read(lookup + i, &thunk) || !bytes_.Read(addresses + i, &bound)) {
        return Fail(problem, "the imports of ", import.library, " are outside the image");
      }
      if (thunk == 0) break;
      import.name.clear();
      import.ordinal = 0;
      if ((thunk & kOrdinalFlag) != 0) {
        import.ordinal = static_cast<uint16_t>(thunk);
      } else if (!bytes_.Text(uint64_t{thunk} + 2, &import.name) || import.name.empty()) {
        return Fail(problem, "the name of an import of ", import.library, " is outside the image");
      }
      void* const found = find_import(import);
      if (found == nullptr) {
        return import.name.empty()
                   ? Fail(problem, import.library, " has no function with ordinal ", import.ordinal)
                   : Fail(problem, import.library, " has no function ", import.name);
      }
      const uint32_t word = AddressWord(found);
      for (uint32_t k = 0; k < 4; ++k) {
        memory_[addresses + i + k] = static_cast<uint8_t>(word >> 8 * k);
      }
    }
  }
}

bool MappedImage::Protect(std::string* problem) {
  bool done = mprotect(memory_, headers_.image_size, PROT_NONE) == 0 &&
              mprotect(memory_, PageEnd(headers_.headers_size), PROT_READ) == 0;
  for (const ImageSection& section : headers_.sections) {
    if (section.memory_size == 0) continue;
    done = done && mprotect(memory_ + section.address, PageEnd(section.memory_size),
                            Protection(section.characteristics)) == 0;
  }
  if (!done) return Fail(problem, "the pages cannot be protected");
  char* const start = reinterpret_cast<char*>(memory_);
  __builtin___clear_cache(start, start + headers_.image_size);
  // Whatever is read later lies in front of the first page that cannot be read.
  uint32_t readable = PageEnd(headers_.headers_size);
  for (const ImageSection& section : headers_.sections) {
    const bool follows = section.address == readable;
    if (!follows || (Protection(section.characteristics) & PROT_READ) == 0) break;
    readable = section.address + PageEnd(section.memory_size);
  }
  bytes_ = ImageBytes({memory_, std::min(readable, headers_.image_size)});
  return true;
}

bool MappedImage::Contains(const void* address) const {
  const auto* const byte = static_cast<const uint8_t*>(address);
  return byte >= memory_ && byte < memory_ + headers_.image_size;
}

void* MappedImage::EntryPoint() const {
  return headers_.entry_point == 0 ? nullptr : memory_ + headers_.entry_point;
}

// The export with an index into the table of addresses. One that lies in the directory itself is a
// text that forwards to another library, of which the handheld's libraries make no use.
void* MappedImage::ExportAt(uint32_t index) const {
  const ImageDirectory& directory = headers_.directories[kExportDirectory];
  uint32_t count = 0;
  uint32_t addresses = 0;
  uint32_t address = 0;
  if (directory.size == 0 || !bytes_.Read(uint64_t{directory.address} + 20, &count) ||
      !bytes_.Read(uint64_t{directory.address} + 28, &addresses) || index >= count ||
      !bytes_.Read(addresses + uint64_t{index} * 4, &address)) {
    return nullptr;
  }
  if (address == 0 || address >= headers_.image_size) return nullptr;
  if (address - directory.address < directory.size) return nullptr;
  return memory_ + address;
}

void* MappedImage::Export(const std::string& name) const {
  const uint64_t directory = headers_.directories[kExportDirectory].address;
  uint32_t count = 0;
  uint32_t names = 0;
  uint32_t indices = 0;
  if (headers_.directories[kExportDirectory].size == 0 || !bytes_.Read(directory + 24, &count) ||
      !bytes_.Read(directory + 32, &names) || !bytes_.Read(directory + 36, &indices)) {
    return nullptr;
  }
  for (uint64_t i = 0; i < count; ++i) {
    uint32_t at = 0;
    uint16_t index = 0;
    std::string text;
    if (!bytes_.Read(names + i * 4, &at) || !bytes_.Text(at, &text)) return nullptr;
    if (text == name) return bytes_.Read(indices + i * 2, &index) ? ExportAt(index) : nullptr;
  }
  return nullptr;
}

void* MappedImage::Export(uint16_t ordinal) const {
  uint32_t first = 0;
  const uint64_t directory = headers_.directories[kExportDirectory].address;
  if (headers_.directories[kExportDirectory].size == 0 || !bytes_.Read(directory + 16, &first) ||
      ordinal < first) {
    return nullptr;
  }
  return ExportAt(ordinal - first);
}

}  // namespace mirolta::loader
