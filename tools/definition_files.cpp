// Writes files other than code from the tables that the code uses: the source files of the Windows
// module, and the declarations of what scripts find.
//
//   mirolta-definitions idl FILE                   the interface definitions
//   mirolta-definitions resources FILE             the resource script
//   mirolta-definitions manifest FILE PROCESSOR    the manifest for use without registration
//   mirolta-definitions typescript FILE            the declarations for editors of scripts; not in
//                                                  a build without the script host
//
// The resource script refers to Mirolta.tlb; the resource compiler is given its folder.
#include "definition_files.h"

#include <string.h>

using namespace mirolta;

namespace {

int Usage() {
  fputs(
      "Usage: mirolta-definitions idl|resources|typescript FILE\n"
      "       mirolta-definitions manifest FILE PROCESSOR\n",
      stderr);
  return 2;
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return Usage();
  const char* const kind = arguments[1];
  const bool manifest = strcmp(kind, "manifest") == 0;
  if (count != (manifest ? 4 : 3)) return Usage();
  FILE* const out = fopen(arguments[2], "w");
  if (out == nullptr) {
    perror(arguments[2]);
    return 1;
  }
  bool complete = true;
  if (manifest) {
    WriteAssemblyManifest(out, arguments[3]);
  } else if (strcmp(kind, "idl") == 0) {
    WriteInterfaceDefinitions(out);
  } else if (strcmp(kind, "resources") == 0) {
    WriteResourceScript(out);
#ifdef MIROLTA_HOST_TABLES
  } else if (strcmp(kind, "typescript") == 0) {
    complete = WriteScriptDeclarations(out);
#endif
  } else {
    fclose(out);
    return Usage();
  }
  const bool failed = ferror(out) != 0;
  if (fclose(out) != 0 || failed) {
    perror(arguments[2]);
    return 1;
  }
  if (!complete) return 1;
  if (TextsArePlain()) return 0;
  fputs("A text of the tables has a character that needs an escape.\n", stderr);
  return 1;
}
