// A loaded module of the handheld: its image with resources and type library, attached to the
// runtime as a module of the runtime attaches itself.
#pragma once

#include <link.h>

#include <memory>
#include <string>
#include <vector>

#include "image/mapped_image.h"
#include "module/image_resources.h"

namespace mirolta::loader {

// IsImage tells an image from other files by its first two bytes.
bool IsImage(const std::string& file);

class HandheldModule {
 public:
  // Load maps a file and reads its resources. Its imports are those of the system libraries, and
  // of images in the same folder, which it loads.
  // Errors: null, with a sentence in `problem`.
  static std::unique_ptr<HandheldModule> Load(const std::string& file, std::string* problem);
  // Stops the module and unmaps it.
  ~HandheldModule();
  HandheldModule(const HandheldModule&) = delete;
  HandheldModule& operator=(const HandheldModule&) = delete;

  // Start attaches the resources to the runtime, which asks the dynamic loader for the file that
  // they belong to, and calls the entry point.
  // Errors: false, with a sentence in `problem`.
  bool Start(std::string* problem);

  const MappedImage& Image() const { return *image_; }
  const std::string& File() const { return file_; }
  HINSTANCE Handle() const { return handle_; }
  // What the dynamic loader says of a library of its own.
  link_map* Map() { return &map_; }
  // Whether an address is in the image or that of the resources that were attached.
  bool Owns(const void* address) const;

  int loads = 0;

 private:
  HandheldModule() = default;
  void* Find(const ImportName& import, std::string* problem);
  HandheldModule* Needed(const std::string& library, std::string* problem);
  bool CallEntryPoint(DWORD reason) const;

  std::string file_;
  std::vector<HandheldModule*> needed_;
  std::unique_ptr<MappedImage> image_;
  ImageResources resources_;
  HINSTANCE handle_ = nullptr;
  bool is_started_ = false;
  link_map map_{};
};

}  // namespace mirolta::loader
