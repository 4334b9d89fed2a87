#include "objects/enumerator.h"

#include "engine/host_errors.h"
#include "engine/properties.h"
#include "engine/protected_call.h"
#include "engine/script_context.h"
#include "objects/member_call.h"
#include "objects/member_function.h"
#include "objects/object_handle.h"
#include "values/scoped_variant.h"
#include "values/value_marshal.h"

namespace mirolta::host {
namespace {

constexpr char kPrototype[] = "Enumerator.prototype";
// Own properties of an enumerator: the collection's IEnumVARIANT, undefined without a collection,
// and the current item, missing at the end.
constexpr char kValuesKey[] = DUK_HIDDEN_SYMBOL("values");
constexpr char kItemKey[] = DUK_HIDDEN_SYMBOL("item");

// The base of the native functions; their enumerator is on top of the stack.
struct EnumeratorFunction {
  OwnedReference<IEnumVARIANT> values;
  ScopedVariant item;

  // Takes the IEnumVARIANT of the script object on top of the stack, if it has one.
  bool Take(duk_context* engine) {
    SlotNumber number = kNoSlot;
    if (!HandleAt(engine, -1, &number)) return false;
    const ObjectSlot* slot = ContextOf(engine).objects.Find(number);
    if (slot == nullptr) ThrowStatus(engine, kDisconnected);
    if (slot->kind != SlotKind::kUnknown && slot->kind != SlotKind::kDispatch) return false;
    return SUCCEEDED(values.Query(slot->value.punkVal, IID_IEnumVARIANT));
  }

  // Pushes `this`, which must be an enumerator.
  void Open(duk_context* engine) {
    duk_push_this(engine);
    if (!PushOwn(engine, -1, kValuesKey)) ThrowStatus(engine, kEnumeratorExpected);
    Take(engine);
    duk_pop(engine);
  }

  // Reads the next item.
  void Advance(duk_context* engine) {
    duk_del_prop_string(engine, -1, kItemKey);
    if (!values) return;
    ULONG fetched = 0;
    const HRESULT status = values->Next(1, &item, &fetched);
    if (FAILED(status)) ThrowStatus(engine, status);
    if (status != S_OK || fetched == 0) return;
    PushVariant(engine, item);
    duk_put_prop_string(engine, -2, kItemKey);
  }
};

// new Enumerator([collection])
struct ConstructFunction : EnumeratorFunction {
  MemberCall call;

  duk_ret_t Run(duk_context* engine) {
    constexpr duk_idx_t kCollection = 0;
    const bool is_given = duk_get_top(engine) > kCollection;
    duk_push_object(engine);
    PushKept(engine, kPrototype);
    duk_set_prototype(engine, -2);
    if (is_given) {
      PushValues(engine, kCollection);
    } else {
      duk_push_undefined(engine);
    }
    duk_put_prop_string(engine, -2, kValuesKey);
    Advance(engine);
    return 1;
  }

  // Pushes the IEnumVARIANT of the collection at `index`, which may itself be one.
  void PushValues(duk_context* engine, duk_idx_t index) {
    ThrowIfClosed(engine, index);
    duk_dup(engine, index);
    if (Take(engine)) return;
    SlotNumber number = kNoSlot;
    if (!HandleAt(engine, -1, &number)) ThrowStatus(engine, kNotACollection);
    const ObjectSlot* slot = ContextOf(engine).objects.Find(number);
    if (slot == nullptr || slot->kind != SlotKind::kDispatch) {
      ThrowStatus(engine, kNotACollection);
    }
    call.Bind(*slot);
    const HRESULT status = call.Invoke(engine, DISPID_NEWENUM, kCallFlags);
    if (status == DISP_E_MEMBERNOTFOUND) ThrowStatus(engine, kNotACollection);
    if (FAILED(status)) call.Throw(engine, status);
    call.PushResult(engine);
    if (!Take(engine)) ThrowStatus(engine, kNotACollection);
    duk_remove(engine, -2);
  }
};

struct AtEndFunction : EnumeratorFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    duk_push_boolean(engine, !duk_has_prop_string(engine, -1, kItemKey));
    return 1;
  }
};

// The current item, undefined at the end.
struct ItemFunction : EnumeratorFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    duk_get_prop_string(engine, -1, kItemKey);
    return 1;
  }
};

struct MoveFirstFunction : EnumeratorFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    if (values) {
      const HRESULT status = values->Reset();
      if (FAILED(status)) ThrowStatus(engine, status);
    }
    Advance(engine);
    return 0;
  }
};

struct MoveNextFunction : EnumeratorFunction {
  duk_ret_t Run(duk_context* engine) {
    Open(engine);
    // At the end it stays there.
    if (duk_has_prop_string(engine, -1, kItemKey)) Advance(engine);
    return 0;
  }
};

constexpr duk_function_list_entry kMembers[] = {
    {"atEnd", RunProtected<AtEndFunction>, 0},
    {"item", RunProtected<ItemFunction>, 0},
    {"moveFirst", RunProtected<MoveFirstFunction>, 0},
    {"moveNext", RunProtected<MoveNextFunction>, 0},
    {nullptr, nullptr, 0},
};

}  // namespace

void InstallEnumerator(duk_context* engine) {
  duk_push_c_function(engine, RunProtected<ConstructFunction>, DUK_VARARGS);
  duk_push_object(engine);
  duk_put_function_list(engine, -1, kMembers);
  duk_dup(engine, -2);
  DefineHidden(engine, "constructor");
  duk_dup_top(engine);
  KeepValue(engine, kPrototype);
  duk_put_prop_string(engine, -2, "prototype");
  duk_put_global_string(engine, "Enumerator");
}

}  // namespace mirolta::host
