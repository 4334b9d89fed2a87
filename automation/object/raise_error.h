// Reports failures that have a text.
#pragma once

#include "platform.h"

namespace mirolta {

// MessageStatus returns the status of the message with a string resource's id.
constexpr HRESULT MessageStatus(UINT id) {
  return static_cast<HRESULT>(0x80040000u | id);
}

// RaiseError publishes an error description for the calling thread and returns the status that the
// calling method must return unchanged. class_id is the identifier of the class's "Both" row; the
// description registered for it becomes the source. message_id is the id of a string resource of
// `module` if below 65536, else a pointer to the text. Status 0 stands for
// MessageStatus(message_id), and for DISP_E_EXCEPTION with a text.
// Shapes: a resource of more than 1,023 characters is truncated.
// Errors: a missing resource gives the text "Unknown Error"; if nothing can be published, the
//         status is returned all the same.
HRESULT RaiseError(REFCLSID class_id, ULONG_PTR message_id, DWORD help_context,
                   const OLECHAR* help_file, REFIID interface_id, HRESULT status, HINSTANCE module);

// The same without help information.
HRESULT RaiseError(REFCLSID class_id, ULONG_PTR message_id, REFIID interface_id, HRESULT status,
                   HINSTANCE module);

}  // namespace mirolta
