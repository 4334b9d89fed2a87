// Members of an object called late-bound, as script hosts call them.
#pragma once

#include <initializer_list>
#include <iterator>
#include <string>
#include <vector>

#include "platform.h"
#include "test_values.h"

namespace mirolta::test {

// LateBound calls members by name and keeps what the last call gave. It holds no reference.
class LateBound {
 public:
  explicit LateBound(IDispatch* object) : object_(object) {}
  LateBound(const LateBound&) = delete;
  LateBound& operator=(const LateBound&) = delete;
  ~LateBound() { Forget(); }

  // DISPID_UNKNOWN for a name that the object does not know.
  DISPID IdOf(const OLECHAR* name) const {
    LPOLESTR text = const_cast<LPOLESTR>(name);
    DISPID id = -99;
    object_->GetIDsOfNames(IID_NULL, &text, 1, LOCALE_USER_DEFAULT, &id);
    return id;
  }
  // The status of the call; of the member itself if it failed.
  HRESULT Call(DISPID id, WORD flags, std::initializer_list<VARIANT> arguments = {}) {
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    DISPID named = DISPID_PROPERTYPUT;
    const bool puts = flags == DISPATCH_PROPERTYPUT;
    DISPPARAMS params = {reversed.data(), puts ? &named : nullptr,
                         static_cast<UINT>(reversed.size()), puts ? 1u : 0u};
    Forget();
    VariantClear(&result);
    EXCEPINFO exception = {};
    const HRESULT status = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                           &result, &exception, nullptr);
    has_description = exception.bstrDescription != nullptr;
    has_source = exception.bstrSource != nullptr;
    if (has_description) description = exception.bstrDescription;
    if (has_source) source = exception.bstrSource;
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrHelpFile);
    raised = status == DISP_E_EXCEPTION;
    return raised ? exception.scode : status;
  }
  HRESULT Method(const OLECHAR* name, std::initializer_list<VARIANT> arguments = {}) {
    return Call(IdOf(name), DISPATCH_METHOD, arguments);
  }
  HRESULT Get(const OLECHAR* name, std::initializer_list<VARIANT> arguments = {}) {
    return Call(IdOf(name), DISPATCH_PROPERTYGET, arguments);
  }
  HRESULT Put(const OLECHAR* name, std::initializer_list<VARIANT> arguments) {
    return Call(IdOf(name), DISPATCH_PROPERTYPUT, arguments);
  }
  VARTYPE Type() { return V_VT(&result); }
  Bytes ResultBytes() { return BytesOfArray(result); }

  TestValue result;
  bool raised = false;  // the member failed, and reported:
  bool has_description = false;
  bool has_source = false;
  std::basic_string<OLECHAR> description;
  std::basic_string<OLECHAR> source;

 private:
  void Forget() {
    raised = has_description = has_source = false;
    description.clear();
    source.clear();
  }

  IDispatch* object_;
};

}  // namespace mirolta::test
