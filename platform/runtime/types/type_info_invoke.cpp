#include "types/type_info_invoke.h"

#include "errors/error_slot.h"

namespace mirolta::runtime {

namespace {

constexpr WORD kCallKinds =
    DISPATCH_METHOD | DISPATCH_PROPERTYGET | DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF;

const MemberRow* FindRow(const InterfaceTable& table, DISPID id, WORD flags) {
  for (unsigned i = 0; i < table.member_count; ++i) {
    const MemberRow& row = table.members[i];
    if (row.id == id && (row.kind & flags & kCallKinds) != 0) return &row;
  }
  return nullptr;
}

// The arguments of one call: borrowed from the caller where the type already fits, converted copies
// otherwise.
class CallArguments {
 public:
  ~CallArguments() {
    for (unsigned i = 0; owned_ >> i != 0; ++i) {
      if ((owned_ >> i & 1) != 0) VariantClear(&values_[i]);
    }
  }

  VARIANT* Values() { return values_; }

  HRESULT Prepare(const MemberRow& row, const DISPPARAMS& params, UINT* bad_argument) {
    const unsigned wanted = row.parameters.Count();
    if (params.cArgs > 0 && params.rgvarg == nullptr) return E_INVALIDARG;
    if (params.cNamedArgs > 0 && params.rgdispidNamedArgs == nullptr) return E_INVALIDARG;
    if (IsPut(row) && !NamesItsValue(params)) return DISP_E_PARAMNOTFOUND;
    if (params.cArgs > wanted) return DISP_E_BADPARAMCOUNT;
    if (params.cNamedArgs > params.cArgs) return DISP_E_BADPARAMCOUNT;

    const VARIANT* given[kMaxParameters] = {};
    HRESULT status = Arrange(row, params, wanted, given, bad_argument);
    if (FAILED(status)) return status;
    for (unsigned i = 0; i < wanted; ++i) {
      const bool takes_any = row.parameters.rows[i].type.type == VT_VARIANT;
      status = given[i] == nullptr || IsMissing(*given[i], !takes_any)
                   ? UseDefault(row.parameters.rows[i], given[i] != nullptr, i)
                   : Bring(row.parameters.rows[i], *given[i], i);
      if (FAILED(status)) {
        if (bad_argument != nullptr && given[i] != nullptr) {
          *bad_argument = static_cast<UINT>(given[i] - params.rgvarg);
        }
        return status;
      }
    }
    return S_OK;
  }

 private:
  static bool IsPut(const MemberRow& row) { return row.kind == kPut || row.kind == kPutRef; }

  // The value of a put is the first argument, named DISPID_PROPERTYPUT.
  static bool NamesItsValue(const DISPPARAMS& params) {
    return params.cNamedArgs > 0 && params.rgdispidNamedArgs[0] == DISPID_PROPERTYPUT;
  }

  static bool IsMissing(const VARIANT& argument, bool follows) {
    const bool refers =
        follows && argument.vt == (VT_BYREF | VT_VARIANT) && argument.pvarVal != nullptr;
    const VARIANT& value = refers ? *argument.pvarVal : argument;
    return value.vt == VT_ERROR && value.scode == DISP_E_PARAMNOTFOUND;
  }

  // Sorts the arguments to their parameters: named ones first, then the rest in reverse.
  static HRESULT Arrange(const MemberRow& row, const DISPPARAMS& params, unsigned wanted,
                         const VARIANT** given, UINT* bad_argument) {
    const bool puts = IsPut(row);
    for (UINT i = 0; i < params.cNamedArgs; ++i) {
      DISPID target = params.rgdispidNamedArgs[i];
      if (puts && target == DISPID_PROPERTYPUT) target = static_cast<DISPID>(wanted) - 1;
      if (target < 0 || static_cast<unsigned>(target) >= wanted || given[target] != nullptr) {
        if (bad_argument != nullptr) *bad_argument = i;
        return DISP_E_PARAMNOTFOUND;
      }
      given[target] = &params.rgvarg[i];
    }
    const UINT positional = params.cArgs - params.cNamedArgs;
    for (UINT i = 0; i < positional; ++i) {
      if (given[i] != nullptr) return DISP_E_BADPARAMCOUNT;
      given[i] = &params.rgvarg[params.cArgs - 1 - i];
    }
    return S_OK;
  }

  HRESULT UseDefault(const ParameterRow& parameter, bool given_as_missing, unsigned index) {
    VARIANT& value = values_[index];
    if (parameter.presence == Presence::kDefault) {
      value.vt = parameter.type.type;
      if (parameter.type.type == VT_BOOL) {
        value.boolVal = static_cast<VARIANT_BOOL>(parameter.default_value);
      } else {
        value.lVal = parameter.default_value;
      }
      return S_OK;
    }
    const bool takes_missing = parameter.presence == Presence::kOptional ||
                               (given_as_missing && parameter.type.type == VT_VARIANT);
    if (!takes_missing) {
      return given_as_missing ? DISP_E_PARAMNOTOPTIONAL : DISP_E_BADPARAMCOUNT;
    }
    value.vt = VT_ERROR;
    value.scode = DISP_E_PARAMNOTFOUND;
    return S_OK;
  }

  HRESULT Bring(const ParameterRow& parameter, const VARIANT& from, unsigned index) {
    VARIANT& value = values_[index];
    const VARTYPE type = parameter.type.type;
    if (type == VT_VARIANT) {
      // Passed unchanged: the member resolves references.
      value = from;
      return S_OK;
    }
    if (from.vt == (VT_BYREF | VT_VARIANT) && from.pvarVal == nullptr) return E_INVALIDARG;
    const bool is_object = from.vt == VT_UNKNOWN || from.vt == VT_DISPATCH;
    if (type == VT_UNKNOWN && is_object) {
      value.vt = VT_UNKNOWN;
      value.punkVal = from.vt == VT_UNKNOWN ? from.punkVal : from.pdispVal;
      return S_OK;
    }
    if (from.vt == type) {
      // Copies the number only: copying the whole VARIANT would stall on store forwarding.
      if (type == VT_I4) {
        value.vt = type;
        value.lVal = from.lVal;
      } else {
        value = from;
      }
      return S_OK;
    }
    VariantInit(&value);
    const HRESULT status = VariantChangeType(&value, &from, 0, type);
    if (SUCCEEDED(status)) owned_ |= 1u << index;
    return status;
  }

  VARIANT values_[kMaxParameters];  // set for the member's parameters only
  unsigned owned_ = 0;              // a bit for each value to clear
};

void FillException(EXCEPINFO* exception, HRESULT status, IErrorInfo* info) {
  *exception = EXCEPINFO{};
  exception->scode = status;
  if (info == nullptr) return;
  info->GetSource(&exception->bstrSource);
  info->GetDescription(&exception->bstrDescription);
  info->GetHelpFile(&exception->bstrHelpFile);
  info->GetHelpContext(&exception->dwHelpContext);
}

// Empties the thread's error slot for one call, so that an error that the member publishes can be
// distinguished from an earlier one. The earlier one is restored unless the member published its
// own.
class ErrorSlotScope {
 public:
  ErrorSlotScope() : slot_(ThreadErrorSlot()), before_(*slot_) { *slot_ = nullptr; }
  ~ErrorSlotScope() {
    if (before_ == nullptr) return;
    if (published_) {
      before_->Release();
    } else {
      *slot_ = before_;
    }
  }
  ErrorSlotScope(const ErrorSlotScope&) = delete;
  ErrorSlotScope& operator=(const ErrorSlotScope&) = delete;

  // Ends the call with a status. The description of a failure moves to `exception` if there is one;
  // otherwise it stays in the slot.
  void Finish(HRESULT status, EXCEPINFO* exception) {
    IErrorInfo* const info = *slot_;
    published_ = info != nullptr;
    if (SUCCEEDED(status) || exception == nullptr) return;
    *slot_ = nullptr;
    FillException(exception, status, info);
    if (info != nullptr) info->Release();
  }

 private:
  IErrorInfo** const slot_;
  IErrorInfo* const before_;
  bool published_ = false;
};

}  // namespace

HRESULT InvokeMember(const InterfaceTable& table, void* instance, DISPID id, WORD flags,
                     DISPPARAMS* params, VARIANT* result, EXCEPINFO* exception,
                     UINT* bad_argument) {
  if (instance == nullptr || params == nullptr) return E_INVALIDARG;
  const MemberRow* row = FindRow(table, id, flags);
  if (row == nullptr) return DISP_E_MEMBERNOTFOUND;

  CallArguments arguments;
  HRESULT status = arguments.Prepare(*row, *params, bad_argument);
  if (FAILED(status)) return status;

  ErrorSlotScope slot;
  VARIANT value = {};
  status = row->call(instance, arguments.Values(), &value);
  if (row->result.type != VT_EMPTY && row->result.type != VT_VARIANT) value.vt = row->result.type;
  slot.Finish(status, exception);
  if (FAILED(status)) {
    VariantClear(&value);
    if (result != nullptr) VariantInit(result);
    return DISP_E_EXCEPTION;
  }
  if (result != nullptr) {
    *result = value;
  } else if (value.vt != VT_EMPTY) {
    VariantClear(&value);
  }
  return S_OK;
}

}  // namespace mirolta::runtime
