// The result of GetDocumentation.
#pragma once

#include "mirolta/variant.h"

namespace mirolta::runtime {

// CopyDocumentation sets the outputs of GetDocumentation of a type, member or library that has
// these texts. A null text is returned as null, and so is every help file.
// Alias:  the outputs may be null.
// Errors: E_OUTOFMEMORY; all outputs are then null.
HRESULT CopyDocumentation(const OLECHAR* name_text, const OLECHAR* help_text, BSTR* name,
                          BSTR* help, DWORD* help_context, BSTR* help_file);

}  // namespace mirolta::runtime
