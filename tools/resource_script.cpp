#include "class_table.h"
#include "definition_files.h"
#include "messages.h"

namespace mirolta {

void WriteResourceScript(FILE* out) {
  fputs("STRINGTABLE\nBEGIN\n", out);
  for (const Message& message : kMessages) {
    fprintf(out, "  %u L\"", message.id);
    WriteText(out, message.text);
    fputs("\"\n", out);
  }
  fputs("END\n1 TYPELIB \"Mirolta.tlb\"\n", out);
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    // Both rows of a class name the same script.
    bool repeats = false;
    for (const ClassRow* other = ClassTable(); other != row; ++other) {
      repeats = repeats || other->registry_script == row->registry_script;
    }
    if (repeats) continue;
    fprintf(out, "%u REGISTRY \"", row->registry_script);
    WriteText(out, row->name);
    fputs(".rgs\"\n", out);
  }
}

}  // namespace mirolta
