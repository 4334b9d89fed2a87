#include "objects/dispatch_object.h"

#include <string_view>

#include "classes/host_object.h"
#include "engine/host_errors.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "objects/member_call.h"
#include "objects/member_function.h"
#include "objects/object_handle.h"
#include "objects/script_object.h"
#include "source/call_assignment.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr char kHandler[] = "dispatch.handler";

std::string_view KeyAt(duk_context* engine, duk_idx_t index) {
  duk_size_t size = 0;
  const char* text = duk_get_lstring(engine, index, &size);
  return text == nullptr ? std::string_view() : std::string_view(text, size);
}

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

bool IsReadableOnlyByCall(HRESULT status) {
  return status == DISP_E_MEMBERNOTFOUND || status == DISP_E_BADPARAMCOUNT ||
         status == DISP_E_PARAMNOTOPTIONAL;
}

enum class Access { kCall, kRead, kUnknown };

// What the text of the script says about an access to a member.
Access AccessOf(const CallSites& call_sites, const Member& member) {
  if (!call_sites.KnowsAllCode()) return Access::kUnknown;
  const NameUse& use = *member.use;
  if (use.is_read && !use.is_called && !call_sites.CallsComputed()) return Access::kRead;
  // A computed key reads a property, hardly ever a method.
  const bool may_be_read = use.is_read || (call_sites.ReadsComputed() && !member.is_method);
  if (use.is_called && !may_be_read) return Access::kCall;
  return Access::kUnknown;
}

// A member that was looked up before.
struct KnownMember {
  ScriptContext* context = nullptr;
  const ObjectSlot* slot = nullptr;
  Member* member = nullptr;
  Access access = Access::kUnknown;
};

// The proxy trap get(target, name)
struct GetFunction {
  explicit GetFunction(const KnownMember& found) : known(found), call(found.context) {}

  KnownMember known;
  MemberCall call;
  bool is_invoked = false;
  HRESULT status = S_OK;

  static constexpr duk_idx_t kTarget = 0, kName = 1;

  duk_ret_t Run(duk_context* engine) {
    if (is_invoked) return EndRead(engine, known.member->id);
    call.Bind(engine, kTarget);
    const std::string_view name = KeyAt(engine, kName);
    if (name.ends_with(kAssignmentSuffix)) return PushAssignment(engine, name);
    const CallSites& call_sites = call.Context(engine).call_sites;
    Member* member = call.FindMember(engine, kName);
    if (member == nullptr) return PushBuiltIn(engine, name, call_sites.IsCall(engine));
    const Access access = AccessOf(call_sites, *member);
    if (access == Access::kCall || (access == Access::kUnknown && call_sites.IsCall(engine))) {
      return PushCallee(engine, member, access);
    }
    return Read(engine, member->id);
  }

  bool RunUnprotected(duk_context* engine, VARIANT* left) noexcept {
    if (known.access != Access::kRead || HasScriptError(call.Context(engine))) return false;
    call.Bind(*known.slot);
    is_invoked = true;
    status = call.Invoke(engine, known.member->id, DISPATCH_PROPERTYGET);
    return SUCCEEDED(status) && call.PushOrLeave(engine, left);
  }

  duk_ret_t Read(duk_context* engine, DISPID id) {
    status = call.Invoke(engine, id, DISPATCH_PROPERTYGET);
    return EndRead(engine, id);
  }

  duk_ret_t EndRead(duk_context* engine, DISPID id) {
    if (IsReadableOnlyByCall(status)) {
      PushBoundFunction(engine, kTarget, id);
    } else if (FAILED(status)) {
      call.Throw(engine, status);
    } else {
      call.PushResult(engine);
    }
    return 1;
  }

  duk_ret_t PushCallee(duk_context* engine, Member* member, Access access) {
    const bool is_shared = access == Access::kCall && member->described != nullptr;
    if (is_shared && PushSharedFunction(engine, member)) return 1;
    PushBoundFunction(engine, kTarget, member->id);
    return 1;
  }

  // obj["Name()="], for an assignment to a call.
  duk_ret_t PushAssignment(duk_context* engine, std::string_view name) {
    name.remove_suffix(kAssignmentSuffix.size());
    duk_push_lstring(engine, name.data(), name.size());
    DISPID id = DISPID_VALUE;
    if (!name.empty()) {
      const Member* member = call.FindMember(engine, -1);
      if (member == nullptr) ThrowStatus(engine, kNoSuchMember);
      id = member->id;
    }
    PushAssignmentFunction(engine, kTarget, id);
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

// Finds the member of the name at index 1 in the object at 0, if it was looked up before.
KnownMember FindKnown(duk_context* engine) {
  ScriptContext& context = ContextOf(engine);
  KnownMember known;
  known.context = &context;
  ObjectSlot* slot = context.objects.Find(SlotOfBlock(duk_get_heapptr(engine, 0)));
  if (slot == nullptr) return known;
  known.slot = slot;
  known.member = slot->FindMember(duk_get_heapptr(engine, 1));
  if (known.member != nullptr) known.access = AccessOf(context.call_sites, *known.member);
  return known;
}

duk_ret_t Get(duk_context* engine) {
  const KnownMember known = FindKnown(engine);
  if (known.member == nullptr && (!duk_is_string(engine, 1) || duk_is_symbol(engine, 1))) return 0;
  if (known.access == Access::kCall && known.member->function != nullptr) {
    duk_push_heapptr(engine, known.member->function);
    return 1;
  }
  return RunProtectedIn<GetFunction>(*known.context, engine, known);
}

// The proxy trap set(target, name, value)
struct SetFunction {
  explicit SetFunction(const KnownMember& found) : known(found), call(found.context) {}

  KnownMember known;
  MemberCall call;
  bool is_invoked = false;
  HRESULT status = S_OK;

  static constexpr duk_idx_t kTarget = 0, kName = 1, kValue = 2;

  bool RunUnprotected(duk_context* engine, VARIANT*) noexcept {
    if (known.member == nullptr || !call.TakePlainArguments(engine, kValue, 1)) return false;
    call.Bind(*known.slot);
    is_invoked = true;
    status = call.InvokePut(engine, known.member->id);
    if (SUCCEEDED(status)) duk_push_true(engine);
    return SUCCEEDED(status);
  }

  duk_ret_t Run(duk_context* engine) {
    if (!is_invoked) {
      call.Bind(engine, kTarget);
      const Member* member =
          duk_is_symbol(engine, kName) ? nullptr : call.FindMember(engine, kName);
      if (member == nullptr) ThrowStatus(engine, kNoSuchMember);
      call.TakeArguments(engine, kValue, 1);
      status = call.InvokePut(engine, member->id);
    }
    if (FAILED(status)) call.Throw(engine, status);
    duk_push_true(engine);
    return 1;
  }
};

duk_ret_t Set(duk_context* engine) {
  const KnownMember known = FindKnown(engine);
  return RunProtectedIn<SetFunction>(*known.context, engine, known);
}

// "Name" in obj, by the proxy trap has(target, name)
struct HasFunction {
  MemberCall call;
  duk_ret_t Run(duk_context* engine) {
    call.Bind(engine, 0);
    duk_push_boolean(engine, !duk_is_symbol(engine, 1) && call.FindMember(engine, 1) != nullptr);
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
    {"get", Get, 3},
    {"set", Set, 4},
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

// Whether obj(arguments) may be possible: only the host's own classes tell.
bool MayBeCalled(IDispatch* object) {
  const HostObject* own = HostObjectOf(object);
  return own == nullptr || HasDefaultMember(own->Class());
}

void FinishProxy(duk_context* engine, SlotNumber number) {
  AttachToProxy(engine, number, ContextOf(engine).dispatch_handler);
}

void MakeCallable(duk_context* engine, SlotNumber number) {
  duk_push_c_function(engine, NeverCalled, 0);
  FinishProxy(engine, number);
}

void MakePlain(duk_context* engine, SlotNumber number) {
  duk_push_object(engine);
  FinishProxy(engine, number);
}

}  // namespace

void PushDispatch(duk_context* engine, IDispatch* object) {
  VARIANT value = {};
  value.vt = VT_DISPATCH;
  value.pdispVal = object;
  PushSlotObject(engine, SlotKind::kDispatch, value,
                 MayBeCalled(object) ? MakeCallable : MakePlain);
}

void InstallDispatchObjects(duk_context* engine) {
  duk_push_bare_object(engine);
  duk_put_function_list(engine, -1, kTraps);
  ContextOf(engine).dispatch_handler = KeepValue(engine, kHandler);
}

}  // namespace mirolta::host
