// The resources of a mapped image as the table that a module attaches to the runtime: strings, data
// by type and number, the type library.
#pragma once

#include <deque>
#include <string>
#include <vector>

#include "image/mapped_image.h"
#include "module/type_library_reader.h"
#include "portable/module_resources.h"

namespace mirolta::loader {

class ImageResources {
 public:
  // Read reads the image's resource directory; without one there are no resources. Data stays in
  // the image, strings are copied.
  // Errors: false, with a sentence in `problem`, for a malformed directory or type library.
  bool Read(const MappedImage& image, std::string* problem);

  const ModuleResources* Table() const { return &table_; }

 private:
  struct Identifier {
    uint16_t number = 0;
    std::u16string name;  // empty: the number
  };
  template <typename Visit>
  bool ForEachEntry(uint32_t directory, Visit visit) const;
  bool ReadIdentifier(uint32_t value, Identifier* out) const;
  bool ReadData(uint32_t entry, ImageBytes* data) const;
  bool Add(const Identifier& type, const Identifier& name, const ImageBytes& data,
           std::string* problem);
  bool AddStrings(uint16_t bundle, const ImageBytes& data);

  const MappedImage* image_ = nullptr;
  ImageBytes directory_;
  std::deque<std::u16string> texts_;  // whose addresses the rows contain
  std::vector<StringResource> strings_;
  std::vector<DataResource> data_;
  TypeLibraryReader type_library_;
  ModuleResources table_ = {};
};

}  // namespace mirolta::loader
