// Late-bound calls through an interface table.
#pragma once

#include "seam/type_tables.h"

namespace mirolta::runtime {

// InvokeMember finds the member by id and kind, converts the arguments to the declared types, fills
// in defaults, calls the member and returns its result.
// Errors: E_INVALIDARG for null pointers; DISP_E_MEMBERNOTFOUND; DISP_E_BADPARAMCOUNT,
//         DISP_E_PARAMNOTFOUND, DISP_E_PARAMNOTOPTIONAL and VariantChangeType's for arguments, with
//         *bad_argument set where one is to blame; DISP_E_EXCEPTION for a member that fails, with
//         its status in *exception.
HRESULT InvokeMember(const InterfaceTable& table, void* instance, DISPID id, WORD flags,
                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception, UINT* bad_argument);

}  // namespace mirolta::runtime
