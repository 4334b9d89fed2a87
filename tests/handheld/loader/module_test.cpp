// Modules of the handheld through the portable runtime, which loads them like its own.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>
#include <string>
#include <vector>

#include "module/loaded_images.h"
#include "platform.h"
#include "temporary_folder.h"
#include "tiny_image.h"

namespace mirolta::loader {
namespace {

std::u16string Wide(const std::string& text) {
  return std::u16string(text.begin(), text.end());
}

template <typename Signature>
Signature* Entry(HMODULE module, LPCSTR name) {
  const FARPROC found = GetProcAddress(module, name);
  EXPECT_NE(found, nullptr) << name;
  return reinterpret_cast<Signature*>(reinterpret_cast<void*>(found));
}

int g_stopped = 0;

// LoadedTiny holds tiny.dll loaded.
struct LoadedTiny {
  LoadedTiny() : handle(LoadLibraryW(Wide(MIROLTA_TINY_DLL).c_str())) {}
  ~LoadedTiny() {
    if (handle != nullptr) FreeLibrary(handle);
  }
  LoadedTiny(const LoadedTiny&) = delete;
  LoadedTiny& operator=(const LoadedTiny&) = delete;
  HMODULE handle;
};

TEST(HandheldModule, IsLoadedWithWhatItNeedsAndStarted) {
  const LoadedTiny tiny;
  ASSERT_NE(tiny.handle, nullptr);
  EXPECT_EQ(Entry<unsigned()>(tiny.handle, "LastReason")(), DLL_PROCESS_ATTACH);
  EXPECT_EQ(Entry<unsigned()>(tiny.handle, "StartCount")(), 1u);
  EXPECT_EQ(Entry<double(double)>(tiny.handle, "Quarter")(5.0), 1.25);  // by numbers.dll
  EXPECT_EQ(GetProcAddress(tiny.handle, "Missing"), nullptr);
}

TEST(HandheldModule, IsLoadedOnce) {
  const LoadedTiny tiny;
  const LoadedTiny again;
  ASSERT_NE(tiny.handle, nullptr);
  EXPECT_EQ(tiny.handle, again.handle);
  EXPECT_EQ(Entry<unsigned()>(tiny.handle, "StartCount")(), 1u);
  EXPECT_EQ(Entry<int()>(tiny.handle, "Count")(), 41);
  EXPECT_EQ(Entry<int()>(again.handle, "Count")(), 42);
}

TEST(HandheldModule, BeginsAnewAfterItWasUnloaded) {
  for (int i = 0; i < 2; ++i) {
    const LoadedTiny tiny;
    ASSERT_NE(tiny.handle, nullptr);
    EXPECT_EQ(Entry<int()>(tiny.handle, "Count")(), 41);
  }
  const std::string tiny = MIROLTA_TINY_DLL;
  EXPECT_EQ(HandheldModuleNamed(tiny), nullptr);
  const std::string numbers = tiny.substr(0, tiny.rfind('/') + 1) + "numbers.dll";
  EXPECT_EQ(HandheldModuleNamed(numbers), nullptr);
}

TEST(HandheldModule, IsStoppedAtItsEnd) {
  std::string problem;
  g_stopped = 0;
  HandheldModule* const module = LoadHandheldModule(MIROLTA_TINY_DLL, &problem);
  ASSERT_NE(module, nullptr) << problem;
  Entry<void(void (*)())>(module->Handle(), "CallAtEnd")([] { ++g_stopped; });
  ReleaseHandheldModule(module);
  EXPECT_EQ(g_stopped, 1);
}

TEST(HandheldModule, HasTheNameOfItsFile) {
  const LoadedTiny tiny;
  WCHAR name[1024] = {};
  EXPECT_GT(GetModuleFileNameW(tiny.handle, name, 1024), 0u);
  EXPECT_EQ(std::u16string(name), Wide(MIROLTA_TINY_DLL));
}

TEST(HandheldModule, HasItsResources) {
  const LoadedTiny tiny;
  WCHAR text[32] = {};
  EXPECT_EQ(LoadStringW(tiny.handle, 10101, text, 32), 11);
  EXPECT_EQ(std::u16string(text), u"A sentence.");
  const HRSRC notes = FindResourceW(tiny.handle, MAKEINTRESOURCEW(7), u"NOTES");
  ASSERT_NE(notes, nullptr);
  EXPECT_EQ(SizeofResource(tiny.handle, notes), 5u);
  const auto* const bytes = static_cast<const char*>(LoadResource(tiny.handle, notes));
  EXPECT_EQ(std::string(bytes, 5), "seven");
}

// A file that the loader refuses is one that the runtime cannot load.
TEST(HandheldModule, IsRefusedByTheRuntimeWithItsReason) {
  const test::TemporaryFolder folder;
  struct Case {
    const char* name;
    void (*change)(TinyFile&);
    const char* reason;
  };
  const Case cases[] = {
      {"needs.dll", [](TinyFile&) {}, "numbers.dll"},  // which is not in this folder
      {"machine.dll", [](TinyFile& f) { f.Put16(f.Headers() + 4, 0x014C); }, "machine type"},
      {"cut.dll", [](TinyFile& f) { f.bytes.resize(1000); }, "truncated"},
      {"itself.dll", [](TinyFile& f) { f.PutText("numbers.dll", std::string("itself.dll\0", 11)); },
       "images need each other"},
  };
  for (const Case& row : cases) {
    SCOPED_TRACE(row.name);
    TinyFile file{TinyBytes()};
    row.change(file);
    const std::string path = folder.File(row.name);
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(file.bytes.data()),
               static_cast<std::streamsize>(file.bytes.size()));
    testing::internal::CaptureStderr();
    EXPECT_EQ(LoadLibraryW(Wide(path).c_str()), nullptr);
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find(row.reason), std::string::npos) << said;
  }
}

TEST(SystemLibraries, HaveOnlyWhatTheDeviceExports) {
  for (const SystemLibrary& library : SystemLibraries()) {
    const std::string name(library.name);
    std::ifstream list(std::string(MIROLTA_SYSTEM_LISTS) + "/" + name.substr(0, name.rfind('.')) +
                       ".txt");
    std::vector<std::string> exported;
    for (std::string line; std::getline(list, line);) exported.push_back(line);
    ASSERT_GT(exported.size(), 10u) << name;
    for (const SystemFunction& function : library.functions) {
      EXPECT_NE(std::find(exported.begin(), exported.end(), function.name), exported.end())
          << name << ": " << function.name;
    }
  }
}

TEST(SystemLibraries, AreFoundByAModuleLikeOthers) {
  const SystemLibrary* const base = FindSystemLibrary("COREDLL.dll");
  ASSERT_NE(base, nullptr);
  using Load = HMODULE(LPCWSTR);
  using Find = FARPROC(HMODULE, LPCWSTR);
  using Free = INT(HMODULE);
  const auto load = reinterpret_cast<Load*>(FindSystemFunction(*base, "LoadLibraryW"));
  const auto find = reinterpret_cast<Find*>(FindSystemFunction(*base, "GetProcAddressW"));
  const auto free_library = reinterpret_cast<Free*>(FindSystemFunction(*base, "FreeLibrary"));
  const HMODULE automation = load(u"oleaut32.dll");
  ASSERT_NE(automation, nullptr);
  EXPECT_NE(find(automation, u"SysAllocString"), nullptr);
  EXPECT_EQ(find(automation, u"UnRegisterTypeLib"), nullptr);  // the runtime has it, the device not
  EXPECT_EQ(free_library(automation), TRUE);
  EXPECT_EQ(load(u"missing.dll"), nullptr);
}

}  // namespace
}  // namespace mirolta::loader
