// Reporting a failure with a text.
#pragma once

#include "messages.h"
#include "platform.h"

namespace mirolta {

// RaiseError publishes an error description for the calling thread and returns the status that the
// calling method must return unchanged.
// class_id:   the class's identifier of its "Both" row; its registered description is the source.
// message_id: a string resource of `module` below 65536, or a pointer to a ready text.
// status:     0 derives it from a resource's number (0x80040000 + id).
// Errors:     a missing resource reads "Unknown Error"; if nothing can be published the status is
//             returned all the same; a text with status 0 gives DISP_E_EXCEPTION.
HRESULT RaiseError(REFCLSID class_id, ULONG_PTR message_id, DWORD help_context,
                   const OLECHAR* help_file, REFIID interface_id, HRESULT status, HINSTANCE module);

// The same without help information.
HRESULT RaiseError(REFCLSID class_id, ULONG_PTR message_id, REFIID interface_id, HRESULT status,
                   HINSTANCE module);

}  // namespace mirolta
