// Mapping images: a good one, and hostile variants of it, each refused with its reason.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <vector>

#include "image/mapped_image.h"
#include "module/image_resources.h"
#include "system/system_library.h"
#include "tiny_image.h"

namespace mirolta::loader {
namespace {

constexpr uint32_t kPreferredBase = 0x10000000;

TEST(MappedImage, RunsWhereverItIsMapped) {
  for (const Placement placement : {Placement::kAnywhere, Placement::kPreferred}) {
    std::string problem;
    const auto image = MapTiny(TinyBytes(), &problem, placement);
    ASSERT_NE(image, nullptr) << problem;
    const bool is_preferred =
        reinterpret_cast<uintptr_t>(image->Base()) == uintptr_t{kPreferredBase};
    EXPECT_EQ(is_preferred, placement == Placement::kPreferred);
    EXPECT_EQ(Call<int()>(*image, "Count"), 41);
    EXPECT_EQ(Call<int()>(*image, "Count"), 42);
    EXPECT_EQ((Call<int(int, int)>(*image, "CallThrough", 0, 21)), 42);
    EXPECT_EQ((Call<int(int, int)>(*image, "CallThrough", 1, 21)), -21);
  }
}

TEST(MappedImage, BindsImportsByNameAndByOrdinal) {
  std::string problem;
  const auto image = MapTiny(TinyBytes(), &problem);
  ASSERT_NE(image, nullptr) << problem;
  EXPECT_EQ(Call<int()>(*image, "TextLength"), 4);
  EXPECT_EQ((Call<double(double)>(*image, "Quarter", 5.0)), 1.25);
}

TEST(MappedImage, DividesByTheBaseLibrary) {
  std::string problem;
  const auto image = MapTiny(TinyBytes(), &problem);
  ASSERT_NE(image, nullptr) << problem;
  EXPECT_EQ((Call<int(int, int)>(*image, "DivideSigned", 47, 5)), 9002);
  EXPECT_EQ((Call<int(int, int)>(*image, "DivideSigned", -47, 5)), -9002);
  EXPECT_EQ((Call<unsigned(unsigned, unsigned)>(*image, "DivideUnsigned", 0xFFFFFFFFu, 10u)),
            0x19999999u + 5);
}

TEST(MappedImage, FindsExportsByNameAndByOrdinal) {
  std::string problem;
  const auto image = MapTiny(TinyBytes(), &problem);
  ASSERT_NE(image, nullptr) << problem;
  EXPECT_EQ(image->Export(uint16_t{1}), image->Export("CallAtEnd"));  // the first by name
  EXPECT_EQ(image->Export("callthrough"), nullptr);
  EXPECT_EQ(image->Export("Missing"), nullptr);
  EXPECT_EQ(image->Export(uint16_t{0}), nullptr);
  EXPECT_EQ(image->Export(uint16_t{1000}), nullptr);
}

TEST(MappedImage, RunsNoCodeOfItsOwnAccord) {
  std::string problem;
  const auto image = MapTiny(TinyBytes(), &problem);
  ASSERT_NE(image, nullptr) << problem;
  EXPECT_EQ(Call<unsigned()>(*image, "StartCount"), 0u);
  EXPECT_NE(image->EntryPoint(), nullptr);
}

TEST(MappedImage, IsUnmappedAtItsEnd) {
  for (int i = 0; i < 3; ++i) {  // the same place is free again
    std::string problem;
    EXPECT_NE(MapTiny(TinyBytes(), &problem, Placement::kPreferred), nullptr) << problem;
  }
}

TEST(MappedImage, IsRefusedWhereThePreferredBaseIsTaken) {
  std::string problem;
  const auto first = MapTiny(TinyBytes(), &problem, Placement::kPreferred);
  ASSERT_NE(first, nullptr) << problem;
  EXPECT_EQ(MapTiny(TinyBytes(), &problem, Placement::kPreferred), nullptr);
  EXPECT_EQ(problem, "the preferred base is not free");
}

using MappedImageDeathTest = testing::Test;

TEST(MappedImageDeathTest, PagesAreProtectedAsTheirSectionsSay) {
  std::string problem;
  const auto image = MapTiny(TinyBytes(), &problem);
  ASSERT_NE(image, nullptr) << problem;
  const auto section = [&](const char* name) {
    for (const ImageSection& one : image->Headers().sections) {
      if (one.name == name) return const_cast<uint8_t*>(image->Base()) + one.address;
    }
    ADD_FAILURE() << name;
    return const_cast<uint8_t*>(image->Base());
  };
  const auto write = [](volatile uint8_t* at) { *at = *at; };
  const auto run = [](uint8_t* at) { reinterpret_cast<void (*)()>(at + 1)(); };
  write(section(".data"));
  const auto faults = testing::KilledBySignal(SIGSEGV);
  EXPECT_EXIT(write(const_cast<uint8_t*>(image->Base())), faults, "");
  EXPECT_EXIT(write(section(".text")), faults, "");
  EXPECT_EXIT(write(section(".rdata")), faults, "");
  EXPECT_EXIT(run(section(".data")), faults, "");
  EXPECT_EXIT(static_cast<void>(*static_cast<volatile uint8_t*>(section(".reloc"))), faults, "");
}

TEST(ImageResources, AreThoseOfTheFile) {
  std::string problem;
  const auto image = MapTiny(TinyBytes(), &problem);
  ASSERT_NE(image, nullptr) << problem;
  ImageResources resources;
  ASSERT_TRUE(resources.Read(*image, &problem)) << problem;
  const ModuleResources& table = *resources.Table();
  ASSERT_EQ(table.string_count, 2u);
  EXPECT_EQ(table.strings[0].id, 100u);
  EXPECT_EQ(std::u16string(table.strings[0].text), u"Tiny");
  EXPECT_EQ(table.strings[1].id, 10101u);
  EXPECT_EQ(std::u16string(table.strings[1].text), u"A sentence.");
  ASSERT_EQ(table.data_count, 1u);
  EXPECT_EQ(std::u16string(table.data[0].type), u"NOTES");
  EXPECT_EQ(table.data[0].id, 7);
  EXPECT_EQ(std::string(table.data[0].bytes, table.data[0].bytes + table.data[0].size), "seven");
  EXPECT_TRUE(image->Contains(table.data[0].bytes));
  EXPECT_EQ(table.type_library, nullptr);
}

// A change of the good image, and what the loader says then.
struct HostileCase {
  const char* name;
  std::function<void(TinyFile&)> change;
  const char* problem;
};

const HostileCase kHostile[] = {
    {"another file", [](TinyFile& f) { f.bytes[0] = 0x7F; }, "does not begin with MZ"},
    {"empty", [](TinyFile& f) { f.bytes.clear(); }, "does not begin with MZ"},
    {"headers beyond the end", [](TinyFile& f) { f.Put32(0x3C, 0x7FFFFFF0); }, "truncated"},
    {"headers at the largest offset", [](TinyFile& f) { f.Put32(0x3C, 0xFFFFFFFF); }, "truncated"},
    {"no signature", [](TinyFile& f) { f.Put32(f.Headers(), 0x4550 + 1); }, "no PE signature"},
    {"a desktop's processor", [](TinyFile& f) { f.Put16(f.Headers() + 4, 0x014C); },
     "machine type 0x14C, not ARM Thumb-2"},
    {"64-bit ARM", [](TinyFile& f) { f.Put16(f.Headers() + 4, 0xAA64); }, "machine type 0xAA64"},
    {"a desktop's subsystem", [](TinyFile& f) { f.Put16(f.Optional() + 68, 2); },
     "subsystem 2, not Windows CE (9)"},
    {"a program", [](TinyFile& f) { f.Put16(f.Headers() + 22, 0x0002); }, "not a DLL"},
    {"64 bits", [](TinyFile& f) { f.Put16(f.Optional(), 0x020B); }, "not a 32-bit image"},
    {"no sections", [](TinyFile& f) { f.Put16(f.Headers() + 6, 0); }, "0 sections"},
    {"more sections than the table has", [](TinyFile& f) { f.Put16(f.Headers() + 6, 90); },
     "truncated: the headers' size"},
    {"a short optional header", [](TinyFile& f) { f.Put16(f.Headers() + 20, 40); },
     "the optional header is incomplete"},
    {"too many directories", [](TinyFile& f) { f.Put32(f.Optional() + 92, 1000); },
     "1000 data directories"},
    {"unaligned sections", [](TinyFile& f) { f.Put32(f.Optional() + 32, 0x800); },
     "sections are aligned to 0x800"},
    {"an image of 4 GB", [](TinyFile& f) { f.Put32(f.Optional() + 56, 0xFFFFF000); },
     "the image's size is 0xFFFFF000"},
    {"an image that is smaller than its sections",
     [](TinyFile& f) { f.Put32(f.Optional() + 56, 0x3000); }, "is outside the image"},
    {"overlapping sections", [](TinyFile& f) { f.Put32(f.Section(".data") + 12, 0x2000); },
     "section .data overlaps what is before it"},
    {"a section on the headers", [](TinyFile& f) { f.Put32(f.Section(".text") + 12, 0); },
     "section .text overlaps what is before it"},
    {"a section that is not aligned", [](TinyFile& f) { f.Put32(f.Section(".data") + 12, 0x3010); },
     "section .data is not aligned"},
    {"a section of 4 GB", [](TinyFile& f) { f.Put32(f.Section(".reloc") + 8, 0xFFFFFFF0); },
     "section .reloc is outside the image"},
    {"a section beyond the file", [](TinyFile& f) { f.Put32(f.Section(".text") + 20, 0x10000); },
     "truncated: section .text is beyond the end of the file"},
    {"a truncated file", [](TinyFile& f) { f.bytes.resize(f.bytes.size() - 1); },
     "truncated: section .reloc is beyond the end of the file"},
    {"thread-local storage", [](TinyFile& f) { f.PutDirectory(9, 0x2000, 24); },
     "data directory 9, which the system does not know"},
    {"delayed imports", [](TinyFile& f) { f.PutDirectory(13, 0x2000, 32); },
     "data directory 13, which the system does not know"},
    {"imports outside the image", [](TinyFile& f) { f.PutDirectory(1, 0xFFFFFFF0, 40); },
     "data directory 1 is outside the image"},
    {"an entry point in the data", [](TinyFile& f) { f.Put32(f.Optional() + 16, 0x3001); },
     "the entry point is outside the code"},
    {"an entry point of ARM code", [](TinyFile& f) { f.Put32(f.Optional() + 16, 0x1000); },
     "the entry point is not Thumb code"},
    {"no relocations", [](TinyFile& f) { f.Put16(f.Headers() + 22, 0x2103); },
     "the image has no relocations"},
    {"an unknown relocation", [](TinyFile& f) { f.Put16(f.Relocations() + 8, 0x5000); },
     "relocation type 5, which the system does not know"},
    {"a relocation of 64 bits", [](TinyFile& f) { f.Put16(f.Relocations() + 8, 0xA000); },
     "relocation type 10, which the system does not know"},
    {"a relocation out of range", [](TinyFile& f) { f.Put32(f.Relocations(), 0x7FFFF000); },
     "a relocation is outside the sections"},
    {"a relocation of the headers", [](TinyFile& f) { f.Put32(f.Relocations(), 0); },
     "a relocation is outside the sections"},
    {"a relocation past a section's end",
     [](TinyFile& f) {
       f.Put32(f.Relocations(), 0x3000);
       f.Put16(f.Relocations() + 8, 0x3FFF);
     },
     "a relocation is outside the sections"},
    {"a relocation of other instructions",
     [](TinyFile& f) { f.Put16(f.Relocations() + 8, 0x7000 | 0x011); }, "not at such instructions"},
    {"an endless block of relocations", [](TinyFile& f) { f.Put32(f.Relocations() + 4, 0); },
     "a block of relocations is outside their directory"},
    {"a block of relocations beyond their directory",
     [](TinyFile& f) { f.Put32(f.Relocations() + 4, 0x1000); },
     "a block of relocations is outside their directory"},
    {"a missing function", [](TinyFile& f) { f.PutText("wcslen", "wcsLen"); },
     "coredll.dll has no function wcsLen"},
    {"a missing ordinal", [](TinyFile& f) { f.Put32(f.Import(0, 0), 0x80000008); },
     "numbers.dll has no function with ordinal 8"},
    {"a missing library", [](TinyFile& f) { f.PutText("coredll.dll", "coredlx.dll"); },
     "coredlx.dll has no function"},
    {"an import's name outside the image", [](TinyFile& f) { f.Put32(f.Import(1, 0), 0x7FFFFFF0); },
     "the name of an import of coredll.dll is outside the image"},
    {"a library's name outside the image",
     [](TinyFile& f) { f.Put32(f.ImportTable() + 12, 0x7FFFFFF0); },
     "the name of an imported library is outside the image"},
    {"addresses of imports outside the image",
     [](TinyFile& f) { f.Put32(f.ImportTable() + 16, 0x7FFFFFF0); },
     "the imports of numbers.dll are outside the image"},
};

TEST(HostileImage, IsRefusedWithItsReason) {
  for (const HostileCase& row : kHostile) {
    SCOPED_TRACE(row.name);
    TinyFile file{TinyBytes()};
    row.change(file);
    std::string problem;
    EXPECT_EQ(MapTiny(file.bytes, &problem), nullptr);
    EXPECT_NE(problem.find(row.problem), std::string::npos) << problem;
  }
}

TEST(HostileImage, IsRefusedTruncatedAnywhere) {
  const std::vector<uint8_t> whole = TinyBytes();
  for (size_t length = 0; length < whole.size(); length += length < 0x400 ? 1 : 61) {
    std::string problem;
    const std::vector<uint8_t> part(whole.begin(), whole.begin() + static_cast<ptrdiff_t>(length));
    EXPECT_EQ(MapTiny(part, &problem), nullptr) << length;
    EXPECT_FALSE(problem.empty()) << length;
  }
}

// Mapped or refused with a reason, whatever one byte says: of the headers, of the directories that
// the loader reads, of the resources. Nothing of the image runs.
TEST(HostileImage, DoesNoHarmWithAnyByteChanged) {
  const std::vector<uint8_t> whole = TinyBytes();
  unsigned mapped = 0;
  unsigned refused = 0;
  const uint32_t text = TinyFile{whole}.FileOffset(".text");
  const uint32_t text_size = TinyFile{whole}.Get32(TinyFile{whole}.Section(".text") + 16);
  for (size_t at = 0; at < whole.size(); ++at) {
    if (at >= text && at < text + text_size) continue;
    for (const uint8_t value : {uint8_t{0}, uint8_t{0x7F}, uint8_t{0x80}, uint8_t{0xFF}}) {
      if (whole[at] == value) continue;
      std::vector<uint8_t> changed = whole;
      changed[at] = value;
      std::string problem;
      const auto image = MapTiny(changed, &problem);
      if (image == nullptr) {
        EXPECT_FALSE(problem.empty()) << at;
        ++refused;
        continue;
      }
      ++mapped;
      static_cast<void>(image->Export("Count"));
      static_cast<void>(image->Export("Missing"));
      static_cast<void>(image->Export(uint16_t{3}));
      ImageResources resources;
      if (!resources.Read(*image, &problem)) {
        EXPECT_FALSE(problem.empty()) << at;
      }
    }
  }
  EXPECT_GT(mapped, 100u);
  EXPECT_GT(refused, 100u);
}

}  // namespace
}  // namespace mirolta::loader
