// Files other than code that are written from the tables that the code uses.
#pragma once

#include <stdio.h>

#include "platform.h"

namespace mirolta {

// WriteInterfaceDefinitions writes the interface definition file of the type library.
// WriteResourceScript writes the resources: texts, registry scripts, the compiled type library.
// WriteAssemblyManifest writes the manifest for use without registration; `processor` is its
// processorArchitecture.
// WriteScriptDeclarations writes what scripts find as TypeScript declarations.
// Errors: those of the file, which the caller reads by ferror; TextsArePlain.
//         WriteScriptDeclarations returns false after a message.
void WriteInterfaceDefinitions(FILE* out);
void WriteResourceScript(FILE* out);
void WriteAssemblyManifest(FILE* out, const char* processor);
[[nodiscard]] bool WriteScriptDeclarations(FILE* out);

// WriteText writes a text of the tables, WriteGuid an identifier with or without its braces.
void WriteText(FILE* out, const OLECHAR* text);
void WriteGuid(FILE* out, const GUID& id, bool braces);

// TextsArePlain is false if a text contained a character that needs an escape: no escape is valid
// in all these files.
bool TextsArePlain();

}  // namespace mirolta
