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

}  // namespace

void WriteResourceScript(FILE* out) {
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
