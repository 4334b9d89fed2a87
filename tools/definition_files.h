// What the Windows module is made of besides code, written from the tables that the code uses.
#pragma once

#include <stdio.h>

#include "platform.h"

namespace mirolta {

// WriteInterfaceDefinitions writes the interface definition file of the type library.
// WriteResourceScript writes the resources: texts, registry scripts, the compiled type library.
// WriteAssemblyManifest writes the manifest for use without registration; `processor` is its
// processorArchitecture.
// Errors: those of the file, which the caller asks for; TextsArePlain.
void WriteInterfaceDefinitions(FILE* out);
void WriteResourceScript(FILE* out);
void WriteAssemblyManifest(FILE* out, const char* processor);

// WriteText writes a text of the tables, WriteGuid an identifier with or without its braces.
void WriteText(FILE* out, const OLECHAR* text);
void WriteGuid(FILE* out, const GUID& id, bool braces);

// TextsArePlain is false once a text had characters that would need escapes, which differ from one
// kind of file to another.
bool TextsArePlain();

}  // namespace mirolta
