#include "objects/member_function.h"

#include "engine/host_errors.h"
#include "engine/properties.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "objects/member_call.h"
#include "objects/object_handle.h"

namespace mirolta::host {
namespace {

constexpr char kOwnerKey[] = DUK_HIDDEN_SYMBOL("owner");
constexpr char kIdKey[] = DUK_HIDDEN_SYMBOL("id");
constexpr char kArgumentsKey[] = DUK_HIDDEN_SYMBOL("arguments");
constexpr char kAssignment[] = "member.assignment";
constexpr char kShared[] = "member.shared";
constexpr size_t kMostShared = 32768;  // the engine has 15 bits for a function's number

// Pushes a native function bound to a member of an object.
void PushBound(duk_context* engine, duk_c_function function, duk_idx_t owner, DISPID id) {
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

// obj.Name(arguments) by the function that all objects of a type share
struct SharedCallFunction {
  MemberCall call;
  bool is_invoked = false;
  HRESULT status = S_OK;

  bool RunUnprotected(duk_context* engine, VARIANT* left) noexcept {
    const duk_idx_t count = duk_get_top(engine);
    const DescribedTables::Shared shared = Shared(engine);
    const ObjectSlot* slot = This(engine);
    if (slot == nullptr || slot->described != shared.described) return false;
    call.Bind(*slot);
    if (!call.TakePlainArguments(engine, 0, count)) return false;
    is_invoked = true;
    status = call.Invoke(engine, shared.id, kCallFlags);
    return SUCCEEDED(status) && call.PushOrLeave(engine, left);
  }

  duk_ret_t Run(duk_context* engine) {
    if (!is_invoked) {
      const duk_idx_t count = duk_get_top(engine);
      const DescribedTables::Shared shared = Shared(engine);
      const ObjectSlot* slot = This(engine);
      if (slot == nullptr || slot->described != shared.described) {
        ThrowStatus(engine, kNoSuchMember);
      }
      call.Bind(*slot);
      call.TakeArguments(engine, 0, count);
      status = call.Invoke(engine, shared.id, kCallFlags);
    }
    if (FAILED(status)) call.Throw(engine, status);
    call.PushResult(engine);
    return 1;
  }

  DescribedTables::Shared Shared(duk_context* engine) {
    const auto number = static_cast<size_t>(duk_get_current_magic(engine));
    return call.Context(engine).described.shared[number];
  }

  // The slot of `this`; null if it is no automation object, or its slot was freed.
  const ObjectSlot* This(duk_context* engine) {
    duk_push_this(engine);
    SlotNumber number = kNoSlot;
    const bool is_handle = HandleAt(engine, -1, &number);
    duk_pop(engine);
    return is_handle ? call.Context(engine).objects.Find(number) : nullptr;
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

}  // namespace

void PushBoundFunction(duk_context* engine, duk_idx_t owner, DISPID id) {
  PushBound(engine, RunProtected<CallFunction>, owner, id);
}

bool PushSharedFunction(duk_context* engine, Member* member) {
  if (member->function == nullptr) {
    auto& shared = ContextOf(engine).described.shared;
    const size_t number = shared.size();
    if (number >= kMostShared) return false;
    shared.push_back({member->described, member->id});
    PushKept(engine, kShared);
    duk_push_c_function(engine, RunProtected<SharedCallFunction>, DUK_VARARGS);
    duk_set_magic(engine, -1, static_cast<duk_int_t>(number));
    void* function = duk_get_heapptr(engine, -1);
    duk_put_prop_index(engine, -2, static_cast<duk_uarridx_t>(number));
    duk_pop(engine);
    member->function = function;
  }
  duk_push_heapptr(engine, member->function);
  return true;
}

void PushAssignmentFunction(duk_context* engine, duk_idx_t owner, DISPID id) {
  PushBound(engine, MakeAssignment, owner, id);
}

duk_idx_t PushElements(duk_context* engine, duk_idx_t list) {
  const auto count = static_cast<duk_idx_t>(duk_get_length(engine, list));
  duk_require_stack(engine, count + 8);
  for (duk_idx_t i = 0; i < count; ++i) {
    duk_get_prop_index(engine, list, static_cast<duk_uarridx_t>(i));
  }
  return count;
}

void InstallMemberFunctions(duk_context* engine) {
  duk_push_array(engine);
  KeepValue(engine, kShared);

  duk_push_bare_object(engine);
  DefineAccessor(engine, "value", RunProtected<AssignmentGetFunction>,
                 RunProtected<AssignmentPutFunction>, 0);
  KeepValue(engine, kAssignment);
}

}  // namespace mirolta::host
