// Files other than code that are written from the tables that the code uses.
#pragma once

#include <stdio.h>

#include "platform.h"

namespace mirolta {

// The version of the whole system, such as 1.0.0.
struct Version {
  const char* text;
  unsigned major;
  unsigned minor;
  unsigned patch;
};

// ReadVersion returns false unless `text` is three decimal numbers below 65536 with points between
// them: a file's version has 16 bits for each.
bool ReadVersion(const char* text, Version* version);

// The module's file in an installer.
struct InstalledModule {
  const char* system;  // win32 or win64
  const char* file;    // the identifiers of the file and of its folder
  const char* folder;
};

// WriteInterfaceDefinitions writes the interface definition file of the type library.
// WriteResourceScript writes the resources: version, texts, registry scripts, the compiled type
// library.
// WriteAssemblyManifest writes the manifest for use without registration; `processor` is its
// processorArchitecture.
// WriteInstallerRegistration writes what DllRegisterServer registers as elements of an installer's
// component. False if a registry script is malformed.
// WriteScriptDeclarations writes what scripts find as TypeScript declarations.
// Errors: those of the file, which the caller reads by ferror; TextsArePlain.
//         WriteScriptDeclarations returns false after a message.
void WriteInterfaceDefinitions(FILE* out);
void WriteResourceScript(FILE* out, const Version& version);
void WriteAssemblyManifest(FILE* out, const Version& version, const char* processor);
bool WriteInstallerRegistration(FILE* out, const InstalledModule& module);
[[nodiscard]] bool WriteScriptDeclarations(FILE* out);

// WriteText writes a text of the tables, WriteGuid an identifier with or without its braces.
void WriteText(FILE* out, const OLECHAR* text);
void WriteGuid(FILE* out, const GUID& id, bool braces);

// ClearTypeLibraryTimes overwrites the time of compilation, which widl writes into a type library
// twice: the same definitions give the same bytes.
// Shapes: `library` is open for reading and writing.
// Errors: false if it is not a type library of widl's format, or tells the time in another form;
//         those of the file, which the caller reads by ferror.
// Source: the format as Wine reads it, dlls/oleaut32/typelib.h.
bool ClearTypeLibraryTimes(FILE* library);

// TextsArePlain is false if a text contained a character that needs an escape: no escape is valid
// in all these files.
bool TextsArePlain();

}  // namespace mirolta
