// Writes files other than code from the tables that the code uses: the source files of the Windows
// module, and the declarations of what scripts find.
//
//   mirolta-definitions idl FILE                           the interface definitions
//   mirolta-definitions resources FILE VERSION             the resource script
//   mirolta-definitions manifest FILE VERSION PROCESSOR    the manifest for use without registration
//   mirolta-definitions registration FILE SYSTEM MODULE FOLDER
//                                                          the registration, for an installer
//   mirolta-definitions untimed FILE                       clears the times in a type library
//   mirolta-definitions typescript FILE                    the declarations for editors of scripts; not
//                                                          in a build without the script host
//
// The resource script refers to Mirolta.tlb; the resource compiler is given its folder. SYSTEM is
// win32 or win64, MODULE and FOLDER are the identifiers that the installer's source has for the
// module's file and its folder.
#include "definition_files.h"

#include <string.h>

using namespace mirolta;

namespace {

int Usage() {
  fputs(
      "Usage: mirolta-definitions idl|untimed|typescript FILE\n"
      "       mirolta-definitions resources FILE VERSION\n"
      "       mirolta-definitions manifest FILE VERSION PROCESSOR\n"
      "       mirolta-definitions registration FILE SYSTEM MODULE FOLDER\n",
      stderr);
  return 2;
}

struct Kind {
  const char* name;
  const char* mode;
  int argument_count;  // after FILE
  bool (*run)(FILE* file, char** arguments);
};

const Kind kKinds[] = {
    {"idl", "w", 0,
     [](FILE* file, char**) {
       WriteInterfaceDefinitions(file);
       return true;
     }},
    {"resources", "w", 1,
     [](FILE* file, char** arguments) {
       Version version;
       if (!ReadVersion(arguments[0], &version)) return false;
       WriteResourceScript(file, version);
       return true;
     }},
    {"manifest", "w", 2,
     [](FILE* file, char** arguments) {
       Version version;
       if (!ReadVersion(arguments[0], &version)) return false;
       WriteAssemblyManifest(file, version, arguments[1]);
       return true;
     }},
    {"registration", "w", 3,
     [](FILE* file, char** arguments) {
       return WriteInstallerRegistration(file, {arguments[0], arguments[1], arguments[2]});
     }},
    {"untimed", "r+b", 0, [](FILE* file, char**) { return ClearTypeLibraryTimes(file); }},
#ifdef MIROLTA_HOST_TABLES
    {"typescript", "w", 0, [](FILE* file, char**) { return WriteScriptDeclarations(file); }},
#endif
};

const Kind* FindKind(const char* name) {
  for (const Kind& kind : kKinds) {
    if (strcmp(kind.name, name) == 0) return &kind;
  }
  return nullptr;
}

}  // namespace

int main(int count, char** arguments) {
  const Kind* const kind = count < 3 ? nullptr : FindKind(arguments[1]);
  if (kind == nullptr || count != kind->argument_count + 3) return Usage();
  FILE* const file = fopen(arguments[2], kind->mode);
  if (file == nullptr) {
    perror(arguments[2]);
    return 1;
  }
  const bool done = kind->run(file, arguments + 3);
  const bool failed = ferror(file) != 0;
  if (fclose(file) != 0 || failed) {
    perror(arguments[2]);
    return 1;
  }
  if (!done) {
    fprintf(stderr, "mirolta-definitions %s failed for %s\n", kind->name, arguments[2]);
    return 1;
  }
  if (TextsArePlain()) return 0;
  fputs("A text of the tables has a character that needs an escape.\n", stderr);
  return 1;
}
