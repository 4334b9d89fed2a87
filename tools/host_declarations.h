// Declarations of what the script host itself offers scripts: its classes, from their tables of
// members, and the text that declares the rest.
#pragma once

#include <stdio.h>

#include <string_view>

namespace mirolta::host {

// tools/declarations/script_host.d.ts
extern const std::string_view kScriptHostDeclarations;

// WriteHostProgIds writes the rows of ActiveXObjectNameMap.
void WriteHostProgIds(FILE* out);

// WriteHostDeclarations writes the classes and the text.
// Errors: false, after a message, if a signature names a class that the host does not have.
[[nodiscard]] bool WriteHostDeclarations(FILE* out);

}  // namespace mirolta::host
