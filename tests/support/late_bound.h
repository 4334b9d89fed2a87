// Members of an object called late-bound, as script hosts call them.
#pragma once

#include <initializer_list>
#include <iterator>
#include <vector>

#include "platform.h"
#include "test_values.h"
#include "text.h"

namespace mirolta::test {

// LateBound calls members by name or id and keeps what the last call gave. It holds no reference.
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
  // The status of the call; of the member itself if it failed. The names, if any, belong to the
  // last arguments.
  HRESULT Call(DISPID id, WORD flags, std::initializer_list<VARIANT> arguments = {},
               std::vector<DISPID> names = {}) {
    std::vector<VARIANT> reversed(std::rbegin(arguments), std::rend(arguments));
    DISPPARAMS params = {reversed.data(), names.data(), static_cast<UINT>(reversed.size()),
                         static_cast<UINT>(names.size())};
    Forget();
    VariantClear(&result);
    const HRESULT status = object_->Invoke(id, IID_NULL, LOCALE_USER_DEFAULT, flags, &params,
                                           &result, &exception, &bad_argument);
    has_description = exception.bstrDescription != nullptr;
    has_source = exception.bstrSource != nullptr;
    description = TextOf(exception.bstrDescription);
    source = TextOf(exception.bstrSource);
    raised = status == DISP_E_EXCEPTION;
    return raised ? exception.scode : status;
  }
  HRESULT Method(DISPID id, std::initializer_list<VARIANT> arguments = {}) {
    return Call(id, DISPATCH_METHOD, arguments);
  }
  HRESULT Get(DISPID id, std::initializer_list<VARIANT> arguments = {}) {
    return Call(id, DISPATCH_PROPERTYGET, arguments);
  }
  HRESULT Put(DISPID id, std::initializer_list<VARIANT> arguments,
              WORD flags = DISPATCH_PROPERTYPUT) {
    return Call(id, flags, arguments, {DISPID_PROPERTYPUT});
  }
  HRESULT Method(const OLECHAR* name, std::initializer_list<VARIANT> arguments = {}) {
    return Method(IdOf(name), arguments);
  }
  HRESULT Get(const OLECHAR* name, std::initializer_list<VARIANT> arguments = {}) {
    return Get(IdOf(name), arguments);
  }
  HRESULT Put(const OLECHAR* name, std::initializer_list<VARIANT> arguments) {
    return Put(IdOf(name), arguments);
  }
  VARTYPE Type() { return V_VT(&result); }
  Bytes ResultBytes() { return BytesOfArray(result); }
  Text ResultText() { return TextOf(result); }

  static constexpr UINT kNoArgument = 99;

  TestValue result;
  UINT bad_argument = kNoArgument;
  EXCEPINFO exception = {};
  bool raised = false;  // the member failed, and reported:
  bool has_description = false;
  bool has_source = false;
  Text description;
  Text source;

 private:
  void Forget() {
    bad_argument = kNoArgument;
    SysFreeString(exception.bstrDescription);
    SysFreeString(exception.bstrSource);
    SysFreeString(exception.bstrHelpFile);
    exception = {};
  }

  IDispatch* object_;
};

}  // namespace mirolta::test
