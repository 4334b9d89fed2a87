#include "definition_files.h"
#include "messages.h"
#include "registry_resources.h"

namespace mirolta {

namespace {

// Writes a text as raw data, one string for each line.
void WriteLines(FILE* out, const BYTE* text, DWORD length) {
  const char* separator = "  \"";
  for (DWORD i = 0; i < length; ++i) {
    fputs(separator, out);
    separator = "";
    if (text[i] == '\n') {
      fputs("\\n\"", out);
      separator = ",\n  \"";
    } else if (text[i] == '\t') {
      fputs("\\t", out);
    } else {
      const OLECHAR c[] = {text[i], 0};
      WriteText(out, c);
    }
  }
  fputs("\n", out);
}

// The texts of the version resource beside the version itself.
constexpr struct {
  const char* name;
  const char* text;
} kVersionTexts[] = {
    {"CompanyName", "The Mirolta authors"},
    {"FileDescription", "Mirolta cryptography components"},
    {"InternalName", "Mirolta"},
    {"LegalCopyright", "Copyright (c) 2026 The Mirolta authors"},
    {"OriginalFilename", "Mirolta.dll"},
    {"ProductName", "Mirolta"},
};

// The resource compiler ends the text with a zero.
void WriteVersionText(FILE* out, const char* name, const char* text) {
  fprintf(out, "      VALUE \"%s\", \"%s\"\n", name, text);
}

// Constants are written as numbers, so that the script includes no header of the system. The block
// and the translation name United States English in UTF-16.
void WriteVersionInformation(FILE* out, const Version& version) {
  fprintf(out,
          "1 VERSIONINFO\n"
          "FILEVERSION %u,%u,%u,0\n"
          "PRODUCTVERSION %u,%u,%u,0\n"
          "FILEFLAGSMASK 0x3F\n"  // VS_FFI_FILEFLAGSMASK
          "FILEFLAGS 0\n"
          "FILEOS 0x40004\n"  // VOS_NT_WINDOWS32
          "FILETYPE 2\n"      // VFT_DLL
          "BEGIN\n"
          "  BLOCK \"StringFileInfo\"\n"
          "  BEGIN\n"
          "    BLOCK \"040904B0\"\n"
          "    BEGIN\n",
          version.major, version.minor, version.patch, version.major, version.minor, version.patch);
  for (const auto& row : kVersionTexts) WriteVersionText(out, row.name, row.text);
  WriteVersionText(out, "FileVersion", version.text);
  WriteVersionText(out, "ProductVersion", version.text);
  fputs(
      "    END\n"
      "  END\n"
      "  BLOCK \"VarFileInfo\"\n"
      "  BEGIN\n"
      "    VALUE \"Translation\", 0x409, 1200\n"
      "  END\n"
      "END\n",
      out);
}

}  // namespace

void WriteResourceScript(FILE* out, const Version& version) {
  WriteVersionInformation(out, version);
  fputs("STRINGTABLE\nBEGIN\n", out);
  for (const Message& message : kMessages) {
    fprintf(out, "  %u L\"", message.id);
    WriteText(out, message.text);
    fputs("\"\n", out);
  }
  fputs("END\n1 TYPELIB \"Mirolta.tlb\"\n", out);
  for (const DataResource& script : kRegistryScripts) {
    fprintf(out, "%u ", script.id);
    WriteText(out, script.type);
    fputs("\nBEGIN\n", out);
    WriteLines(out, script.bytes, script.size);
    fputs("END\n", out);
  }
}

}  // namespace mirolta
