#include "module/handheld_module.h"

#include <fstream>
#include <iterator>

#include "image/problem.h"
#include "module/loaded_images.h"
#include "system/system_library.h"

namespace mirolta::loader {
namespace {

using EntryPoint = INT (*)(HINSTANCE instance, DWORD reason, void* reserved);

bool ReadFile(const std::string& file, std::vector<uint8_t>* bytes) {
  std::ifstream stream(file, std::ios::binary);
  bytes->assign(std::istreambuf_iterator<char>(stream), {});
  return !stream.bad() && !bytes->empty();
}

}  // namespace

bool IsImage(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  return stream.get() == 'M' && stream.get() == 'Z';
}

std::unique_ptr<HandheldModule> HandheldModule::Load(const std::string& file,
                                                     std::string* problem) {
  std::vector<uint8_t> bytes;
  if (!ReadFile(file, &bytes)) {
    Fail(problem, "the file cannot be read");
    return nullptr;
  }
  std::unique_ptr<HandheldModule> module(new HandheldModule());
  module->file_ = file;
  std::string need;
  const auto find = [&](const ImportName& import) { return module->Find(import, &need); };
  module->image_ = MappedImage::Map(ImageBytes(bytes), find, Placement::kAnywhere, problem);
  if (module->image_ == nullptr && !need.empty()) *problem = need;
  if (module->image_ == nullptr || !module->resources_.Read(*module->image_, problem)) {
    return nullptr;
  }
  // The runtime only hands it back: it finds the file by this address.
  module->map_.l_ld =
      reinterpret_cast<ElfW(Dyn)*>(reinterpret_cast<uintptr_t>(module->image_->Base()));
  return module;
}

void* HandheldModule::Find(const ImportName& import, std::string* problem) {
  const SystemLibrary* const library = FindSystemLibrary(import.library);
  if (library != nullptr) return FindSystemFunction(*library, import.name);
  const HandheldModule* const module = Needed(import.library, problem);
  if (module == nullptr) return nullptr;
  return import.name.empty() ? module->Image().Export(import.ordinal)
                             : module->Image().Export(import.name);
}

HandheldModule* HandheldModule::Needed(const std::string& library, std::string* problem) {
  const std::string file = file_.substr(0, file_.rfind('/') + 1) + library;
  for (HandheldModule* module : needed_) {
    if (module->File() == file) return module;
  }
  HandheldModule* const module = LoadHandheldModule(file, problem);
  if (module != nullptr) {
    needed_.push_back(module);
  } else {
    *problem = library + ": " + *problem;
  }
  return module;
}

bool HandheldModule::Start(std::string* problem) {
  handle_ = MiroltaAttachModule(resources_.Table());
  if (handle_ == nullptr) return Fail(problem, "the runtime does not take the resources");
  if (!CallEntryPoint(DLL_PROCESS_ATTACH)) return Fail(problem, "the entry point failed");
  is_started_ = true;
  return true;
}

bool HandheldModule::CallEntryPoint(DWORD reason) const {
  void* const entry = image_->EntryPoint();
  return entry == nullptr || reinterpret_cast<EntryPoint>(entry)(handle_, reason, nullptr) != FALSE;
}

HandheldModule::~HandheldModule() {
  if (is_started_) static_cast<void>(CallEntryPoint(DLL_PROCESS_DETACH));
  if (handle_ != nullptr) MiroltaDetachModule(handle_);
  for (HandheldModule* module : needed_) ReleaseHandheldModule(module);
}

bool HandheldModule::Owns(const void* address) const {
  return image_->Contains(address) || address == resources_.Table();
}

}  // namespace mirolta::loader
