#include "objects/dispatch_object.h"

#include <string_view>

#include "engine/host_errors.h"
#include "engine/properties.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "objects/member_call.h"
#include "objects/object_handle.h"
#include "source/call_assignment.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr char kOwnerKey[] = DUK_HIDDEN_SYMBOL("owner");
constexpr char kIdKey[] = DUK_HIDDEN_SYMBOL("id");
constexpr char kArgumentsKey[] = DUK_HIDDEN_SYMBOL("arguments");
constexpr char kHandler[] = "dispatch.handler";
constexpr char kAssignment[] = "dispatch.assignment";
constexpr WORD kCallFlags = DISPATCH_METHOD | DISPATCH_PROPERTYGET;

std::string_view KeyAt(duk_context* engine, duk_idx_t index) {
  duk_size_t size = 0;
  const char* text = duk_get_lstring(engine, index, &size);
  return text == nullptr ? std::string_view() : std::string_view(text, size);
}

// Pushes a native function bound to an object and a member of it.
void PushMemberFunction(duk_context* engine, duk_c_function function, duk_idx_t owner, DISPID id) {
  owner = duk_normalize_index(engine, owner);
  duk_push_c_function(engine, function, DUK_VARARGS);
  duk_dup(engine, owner);
  duk_put_prop_string(engine, -2, kOwnerKey);
  duk_push_int(engine, id);
  duk_put_prop_string(engine, -2, kIdKey);
}

// Binds the call to the object of the running native function and returns the id of its member.
DISPID BindFunction(duk_context* engine, MemberCall* call) {
  duk_push_current_function(engine);
  duk_get_prop_string(engine, -1, kOwnerKey);
  call->Bind(engine, -1);
  duk_get_prop_string(engine, -2, kIdKey);
  const DISPID id = duk_get_int(engine, -1);
  duk_pop_3(engine);
  return id;
}

// Pushes the elements of the array at `list` and returns their number.
duk_idx_t PushElements(duk_context* engine, duk_idx_t list) {
  const auto count = static_cast<duk_idx_t>(duk_get_length(engine, list));
  duk_require_stack(engine, count + 8);
  for (duk_idx_t i = 0; i < count; ++i) {
    duk_get_prop_index(engine, list, static_cast<duk_uarridx_t>(i));
  }
  return count;
}

// obj.Name(arguments)
struct CallFunction {
  MemberCall call;
  duk_ret_t Run(duk_context* engine) {
    const duk_idx_t count = duk_get_top(engine);
    const DISPID id = BindFunction(engine, &call);
    call.TakeArguments(engine, 0, count);
    return call.Call(engine, id, kCallFlags);
  }
};

// obj(arguments), by the proxy trap apply(target, this, list of arguments)
struct DefaultCallFunction {
  MemberCall call;
  duk_ret_t Run(duk_context* engine) {
    constexpr duk_idx_t kList = 2;
    call.Bind(engine, 0);
    const duk_idx_t first = duk_get_top(engine);
    call.TakeArguments(engine, first, PushElements(engine, kList));
    return call.Call(engine, DISPID_VALUE, kCallFlags);
  }
};

// valueOf and toString of an object that has no members of that name.
struct DefaultValueFunction {
  MemberCall call;
  duk_ret_t Run(duk_context* engine) {
    duk_push_this(engine);
    call.Bind(engine, -1);
    return call.Call(engine, DISPID_VALUE, DISPATCH_PROPERTYGET);
  }
};
struct DefaultTextFunction : DefaultValueFunction {
  duk_ret_t Run(duk_context* engine) {
    DefaultValueFunction::Run(engine);
    duk_to_string(engine, -1);
    return 1;
  }
};

// obj["Name()="](arguments) returns an object whose `value` is the property with those arguments.
duk_ret_t MakeAssignment(duk_context* engine) {
  const duk_idx_t count = duk_get_top(engine);
  const duk_idx_t list = duk_push_array(engine);
  for (duk_idx_t i = 0; i < count; ++i) {
    duk_dup(engine, i);
    duk_put_prop_index(engine, list, static_cast<duk_uarridx_t>(i));
  }
  duk_push_object(engine);
  PushKept(engine, kAssignment);
  duk_set_prototype(engine, -2);
  duk_push_current_function(engine);
  for (const char* key : {kOwnerKey, kIdKey}) {
    duk_get_prop_string(engine, -1, key);
    duk_put_prop_string(engine, -3, key);
  }
  duk_pop(engine);
  duk_dup(engine, list);
  duk_put_prop_string(engine, -2, kArgumentsKey);
  return 1;
}

struct AssignmentFunction {
  MemberCall call;
  DISPID id = 0;

  // Binds the call to the object and member of `this` and pushes its arguments; returns their
  // number.
  duk_idx_t Open(duk_context* engine) {
    duk_push_this(engine);
    const duk_idx_t self = duk_get_top_index(engine);
    if (!PushOwn(engine, self, kOwnerKey)) ThrowStatus(engine, kNoSuchMember);
    call.Bind(engine, -1);
    duk_get_prop_string(engine, self, kIdKey);
    id = duk_get_int(engine, -1);
    duk_get_prop_string(engine, self, kArgumentsKey);
    return PushElements(engine, duk_get_top_index(engine));
  }
};
struct AssignmentGetFunction : AssignmentFunction {
  duk_ret_t Run(duk_context* engine) {
    const duk_idx_t count = Open(engine);
    call.TakeArguments(engine, duk_get_top(engine) - count, count);
    return call.Call(engine, id, kCallFlags);
  }
};
struct AssignmentPutFunction : AssignmentFunction {
  duk_ret_t Run(duk_context* engine) {
    const duk_idx_t count = Open(engine);
    duk_dup(engine, 0);
    call.TakeArguments(engine, duk_get_top(engine) - count - 1, count + 1);
    call.Put(engine, id);
    return 0;
  }
};

bool IsReadableOnlyByCall(HRESULT status) {
  return status == DISP_E_MEMBERNOTFOUND || status == DISP_E_BADPARAMCOUNT ||
         status == DISP_E_PARAMNOTOPTIONAL;
}

// The proxy trap get(target, name)
struct GetFunction {
  MemberCall call;
  duk_ret_t Run(duk_context* engine) {
    constexpr duk_idx_t kTarget = 0, kName = 1;
    if (!duk_is_string(engine, kName) || duk_is_symbol(engine, kName)) return 0;
    const bool is_call = ContextOf(engine).call_sites.IsCall(engine);
    call.Bind(engine, kTarget);
    std::string_view name = KeyAt(engine, kName);
    DISPID id = DISPID_VALUE;
    if (name.ends_with(kAssignmentSuffix)) {
      name.remove_suffix(kAssignmentSuffix.size());
      duk_push_lstring(engine, name.data(), name.size());
      if (!name.empty() && !call.FindId(engine, -1, &id)) ThrowStatus(engine, kNoSuchMember);
      PushMemberFunction(engine, MakeAssignment, kTarget, id);
      return 1;
    }
    if (!call.FindId(engine, kName, &id)) return PushBuiltIn(engine, name, is_call);
    if (is_call) {
      PushMemberFunction(engine, RunProtected<CallFunction>, kTarget, id);
      return 1;
    }
    const HRESULT status = call.Invoke(engine, id, DISPATCH_PROPERTYGET);
    if (IsReadableOnlyByCall(status)) {
      PushMemberFunction(engine, RunProtected<CallFunction>, kTarget, id);
    } else if (FAILED(status)) {
      call.Throw(engine, status);
    } else {
      call.PushResult(engine);
    }
    return 1;
  }

  static duk_ret_t PushBuiltIn(duk_context* engine, std::string_view name, bool is_call) {
    if (name == "valueOf") {
      duk_push_c_function(engine, RunProtected<DefaultValueFunction>, 0);
    } else if (name == "toString" || name == "toLocaleString") {
      duk_push_c_function(engine, RunProtected<DefaultTextFunction>, 0);
    } else if (is_call) {
      ThrowStatus(engine, kNoSuchMember);
    } else {
      duk_push_undefined(engine);
    }
    return 1;
  }
};

// The proxy trap set(target, name, value)
struct SetFunction {
  MemberCall call;
  duk_ret_t Run(duk_context* engine) {
    constexpr duk_idx_t kTarget = 0, kName = 1, kValue = 2;
    call.Bind(engine, kTarget);
    DISPID id = DISPID_UNKNOWN;
    if (duk_is_symbol(engine, kName) || !call.FindId(engine, kName, &id)) {
      ThrowStatus(engine, kNoSuchMember);
    }
    call.TakeArguments(engine, kValue, 1);
    call.Put(engine, id);
    duk_push_true(engine);
    return 1;
  }
};

// "Name" in obj, by the proxy trap has(target, name)
struct HasFunction {
  MemberCall call;
  duk_ret_t Run(duk_context* engine) {
    call.Bind(engine, 0);
    DISPID id = DISPID_UNKNOWN;
    duk_push_boolean(engine, !duk_is_symbol(engine, 1) && call.FindId(engine, 1, &id));
    return 1;
  }
};

duk_ret_t RefuseAction(duk_context* engine) {
  ThrowStatus(engine, kNoSuchAction);
}

duk_ret_t ListNothing(duk_context* engine) {
  duk_push_array(engine);
  return 1;
}

constexpr duk_function_list_entry kTraps[] = {
    {"get", RunProtected<GetFunction>, 3},
    {"set", RunProtected<SetFunction>, 4},
    {"has", RunProtected<HasFunction>, 2},
    {"apply", RunProtected<DefaultCallFunction>, 3},
    {"construct", RefuseAction, 3},
    {"deleteProperty", RefuseAction, 2},
    {"defineProperty", RefuseAction, 3},
    {"ownKeys", ListNothing, 1},
    {nullptr, nullptr, 0},
};

// The target of the proxy; the engine calls a proxy only if its target is a function.
duk_ret_t NeverCalled(duk_context*) {
  return 0;
}

}  // namespace

void PushDispatch(duk_context* engine, IDispatch* object) {
  VARIANT value = {};
  value.vt = VT_DISPATCH;
  value.pdispVal = object;
  PushSlotObject(engine, SlotKind::kDispatch, value, [](duk_context* inner, SlotNumber number) {
    duk_push_c_function(inner, NeverCalled, 0);
    for (const char* own : {"length", "name"}) duk_del_prop_string(inner, -1, own);
    AttachHandle(inner, number);
    WrapInProxy(inner, kHandler);
  });
}

void InstallDispatchObjects(duk_context* engine) {
  duk_push_bare_object(engine);
  duk_put_function_list(engine, -1, kTraps);
  KeepValue(engine, kHandler);

  duk_push_bare_object(engine);
  DefineAccessor(engine, "value", RunProtected<AssignmentGetFunction>,
                 RunProtected<AssignmentPutFunction>, 0);
  KeepValue(engine, kAssignment);
}

}  // namespace mirolta::host
