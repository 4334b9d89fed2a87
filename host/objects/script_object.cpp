#include "objects/script_object.h"

#include <mutex>
#include <new>
#include <unordered_map>
#include <vector>

#include "engine/host_errors.h"
#include "engine/script_context.h"
#include "objects/counted_object.h"
#include "platform.h"
#include "values/value_marshal.h"

namespace mirolta::host {

class ScriptObject;

struct ScriptLink {
  LONG references = 1;
  duk_context* engine = nullptr;  // null once cut
  DWORD thread = 0;
  uint32_t last_key = 0;
  bool has_pending_error = false;
  int calls_running = 0;
  // The automation objects by the engine's objects, which they keep. An object has one at a time:
  // automation compares objects by identity. Other threads may release the last reference.
  std::mutex wrappers_lock;
  std::unordered_map<const void*, ScriptObject*> wrappers;
};

namespace {

constexpr IID kScriptObjectId = {
    0x5C7A9E21, 0x0D3B, 0x4F66, {0x9A, 0x47, 0x3E, 0x81, 0x2B, 0xC5, 0x70, 0x1D}};
constexpr HRESULT kWrongThread = MIROLTA_STATUS(0x8001010Eu);
constexpr int kMostCalls = 64;  // the most nested calls of script objects
// Engine stack that a call needs before it is protected.
constexpr duk_idx_t kNeededStack = 16;
constexpr char kWrapped[] = "wrapped";
constexpr char kPendingError[] = "pendingError";
constexpr char kPendingNumber[] = "pendingNumber";

void DropLink(ScriptLink* link) {
  if (InterlockedDecrement(&link->references) == 0) delete link;
}

// A call from automation into the script: the data of the protected call.
struct ScriptCall {
  uint32_t key = 0;
  const Units* name = nullptr;  // null for the object itself
  WORD flags = 0;
  DISPPARAMS* params = nullptr;
  VARIANT* result = nullptr;
  HRESULT status = S_OK;
};

void PushTarget(duk_context* engine, uint32_t key) {
  PushKept(engine, kWrapped);
  duk_get_prop_index(engine, -1, key);
  duk_remove(engine, -2);
}

// Pushes the arguments, first one first, and returns their number.
duk_idx_t PushArguments(duk_context* engine, const DISPPARAMS& params) {
  for (UINT i = params.cArgs; i > 0; --i) PushVariant(engine, params.rgvarg[i - 1]);
  return static_cast<duk_idx_t>(params.cArgs);
}

// Leaves the result on the stack.
void RunCall(duk_context* engine, const ScriptCall& call) {
  PushTarget(engine, call.key);
  const bool is_put = (call.flags & (DISPATCH_PROPERTYPUT | DISPATCH_PROPERTYPUTREF)) != 0;
  const bool may_call = (call.flags & DISPATCH_METHOD) != 0;
  if (call.name == nullptr) {
    if (is_put) ThrowStatus(engine, DISP_E_MEMBERNOTFOUND);
    const bool is_read = (call.flags & DISPATCH_PROPERTYGET) != 0 && call.params->cArgs == 0;
    if (is_read || !may_call || !duk_is_callable(engine, -1)) {
      duk_to_primitive(engine, -1, DUK_HINT_NONE);
    } else {
      duk_call(engine, PushArguments(engine, *call.params));
    }
    return;
  }
  PushUnits(engine, *call.name);
  if (is_put) {
    if (call.params->cArgs != 1) ThrowStatus(engine, DISP_E_BADPARAMCOUNT);
    PushVariant(engine, call.params->rgvarg[0]);
    duk_put_prop(engine, -3);
    duk_push_undefined(engine);
    return;
  }
  duk_dup_top(engine);
  duk_get_prop(engine, -3);
  if (may_call && duk_is_callable(engine, -1)) {
    duk_pop(engine);
    duk_call_prop(engine, -2 - PushArguments(engine, *call.params),
                  static_cast<duk_idx_t>(call.params->cArgs));
  } else if (call.params->cArgs != 0) {
    ThrowStatus(engine, DISP_E_BADPARAMCOUNT);
  }
}

duk_ret_t ProtectedCall(duk_context* engine, void* data) {
  auto* call = static_cast<ScriptCall*>(data);
  duk_require_stack(engine, static_cast<duk_idx_t>(call->params->cArgs) + 16);
  RunCall(engine, *call);
  if (call->result != nullptr) call->status = VariantFromScript(engine, -1, call->result);
  return 0;
}

// Keeps the error on top of the stack and the number reported for it.
duk_ret_t KeepError(duk_context* engine, void* number) {
  KeepValue(engine, kPendingError);
  duk_push_int(engine, *static_cast<HRESULT*>(number));
  KeepValue(engine, kPendingNumber);
  return 0;
}

// Reports the error on top of the stack to the automation caller and pops it. No engine error may
// leave this function: a longjmp would skip the caller's destructors.
HRESULT ReportError(duk_context* engine, EXCEPINFO* exception) {
  const ErrorReport report = DescribeError(engine);
  HRESULT number = FAILED(report.number) ? report.number : E_FAIL;
  ContextOf(engine).link->has_pending_error = true;
  // Only for want of memory it cannot be kept.
  if (duk_safe_call(engine, KeepError, &number, 1, 1) != DUK_EXEC_SUCCESS) return E_OUTOFMEMORY;
  if (exception == nullptr) return number;
  *exception = {};
  const Units description = UnitsFromSystem(report.description);
  const Units source = UnitsFromSystem(report.source);
  exception->scode = number;
  exception->bstrDescription =
      SysAllocStringLen(description.data(), static_cast<UINT>(description.size()));
  exception->bstrSource = SysAllocStringLen(source.data(), static_cast<UINT>(source.size()));
  return DISP_E_EXCEPTION;
}

duk_ret_t ForgetTarget(duk_context* engine, void* key) {
  PushKept(engine, kWrapped);
  duk_del_prop_index(engine, -1, *static_cast<uint32_t*>(key));
  return 0;
}

struct NameQuestion {
  uint32_t key;
  UnitsView name;
  bool found;
};
duk_ret_t FindName(duk_context* engine, void* data) {
  auto* question = static_cast<NameQuestion*>(data);
  PushTarget(engine, question->key);
  PushUnits(engine, question->name);
  question->found = duk_has_prop(engine, -2) != 0;
  return 0;
}

// Returns the status of `work`, E_OUTOFMEMORY for std::bad_alloc.
template <typename Work>
HRESULT StatusOf(Work work) {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  }
}

}  // namespace

class ScriptObject final : public CountedObject<ScriptObject, IDispatch> {
 public:
  // `target` is the engine's object, null for a function that is no object.
  ScriptObject(ScriptLink* link, uint32_t key, const void* target)
      : link_(link), key_(key), target_(target) {
    InterlockedIncrement(&link_->references);
  }

  // AddReference adds a reference unless the last one was released.
  bool AddReference() {
    ULONG count = references_.load();
    while (count != 0) {
      if (references_.compare_exchange_weak(count, count + 1)) return true;
    }
    return false;
  }

  static bool Implements(REFIID iid) { return iid == IID_IDispatch || iid == kScriptObjectId; }

  HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* count) override {
    if (count == nullptr) return E_POINTER;
    *count = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT, LCID, ITypeInfo** out) override {
    if (out != nullptr) *out = nullptr;
    return DISP_E_BADINDEX;
  }

  HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID,
                                          DISPID* ids) override {
    if (names == nullptr || ids == nullptr) return E_POINTER;
    const HRESULT status = CheckAlive();
    if (FAILED(status)) return status;
    for (UINT i = 0; i < count; ++i) ids[i] = DISPID_UNKNOWN;
    if (count == 0) return S_OK;
    NameQuestion question = {key_, names[0], false};
    const duk_int_t failed = duk_safe_call(link_->engine, FindName, &question, 0, 1);
    duk_pop(link_->engine);
    if (failed != DUK_EXEC_SUCCESS || !question.found) return DISP_E_UNKNOWNNAME;
    return StatusOf([&] {
      ids[0] = IdOf(question.name);
      return count == 1 ? S_OK : DISP_E_UNKNOWNNAME;
    });
  }

  HRESULT STDMETHODCALLTYPE Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* params,
                                   VARIANT* result, EXCEPINFO* exception, UINT*) override {
    const HRESULT alive = CheckAlive();
    if (FAILED(alive)) return alive;
    DISPPARAMS none = {};
    ScriptCall call;
    call.key = key_;
    call.flags = flags;
    call.params = params != nullptr ? params : &none;
    call.result = result;
    if (id != DISPID_VALUE) {
      if (id < 1 || static_cast<size_t>(id) > names_.size()) return DISP_E_MEMBERNOTFOUND;
      call.name = &names_[static_cast<size_t>(id - 1)];
    }
    if (link_->calls_running >= kMostCalls) return kOutOfStack;
    if (result != nullptr) VariantInit(result);
    // The script may release the last other reference during the call.
    OwnedReference<IDispatch> self;
    self.Assign(this);
    duk_context* engine = link_->engine;
    ++link_->calls_running;
    const duk_int_t failed = duk_safe_call(engine, ProtectedCall, &call, 0, 1);
    --link_->calls_running;
    HRESULT status = call.status;
    if (failed != DUK_EXEC_SUCCESS) {
      const duk_idx_t top = duk_get_top(engine);
      status = StatusOf([&] { return ReportError(engine, exception); });
      duk_set_top(engine, top);
    }
    duk_pop(engine);
    return status;
  }

  const ScriptLink* Link() const { return link_; }
  uint32_t Key() const { return key_; }

 private:
  friend CountedObject;

  ~ScriptObject() {
    Delist();
    if (SUCCEEDED(CheckAlive())) {
      duk_safe_call(link_->engine, ForgetTarget, &key_, 0, 1);
      duk_pop(link_->engine);
    }
    DropLink(link_);
  }

  HRESULT CheckAlive() const {
    if (GetCurrentThreadId() != link_->thread) return kWrongThread;
    if (link_->engine == nullptr) return kDisconnected;
    return duk_check_stack(link_->engine, kNeededStack) ? S_OK : E_OUTOFMEMORY;
  }

  // Removes this object from the list, unless another one took its place.
  void Delist() {
    const std::lock_guard<std::mutex> lock(link_->wrappers_lock);
    const auto found = link_->wrappers.find(target_);
    if (found != link_->wrappers.end() && found->second == this) link_->wrappers.erase(found);
  }

  // DISPIDs are 1, 2, 3 ... in the order of the look-ups.
  DISPID IdOf(UnitsView name) {
    for (size_t i = 0; i < names_.size(); ++i) {
      if (names_[i] == name) return static_cast<DISPID>(i + 1);
    }
    names_.emplace_back(name);
    return static_cast<DISPID>(names_.size());
  }

  ScriptLink* link_;
  uint32_t key_;
  const void* target_;
  std::vector<Units> names_;
};

namespace {

// The automation object that a script object has, with a reference; null if it has none.
ScriptObject* FindWrapper(ScriptLink* link, const void* target) {
  const std::lock_guard<std::mutex> lock(link->wrappers_lock);
  const auto found = link->wrappers.find(target);
  return found != link->wrappers.end() && found->second->AddReference() ? found->second : nullptr;
}

// Makes an automation object and lists it; null if memory runs out.
ScriptObject* MakeWrapper(ScriptLink* link, uint32_t key, const void* target) {
  OwnedReference<ScriptObject> wrapper;
  wrapper.Attach(new (std::nothrow) ScriptObject(link, key, target));
  if (!wrapper || target == nullptr) return wrapper.Detach();
  try {
    const std::lock_guard<std::mutex> lock(link->wrappers_lock);
    link->wrappers[target] = wrapper.Get();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return wrapper.Detach();
}

}  // namespace

void MakeLink(duk_context* engine) {
  auto* link = new (std::nothrow) ScriptLink;
  // Kept before a call into the engine that may throw.
  ContextOf(engine).link = link;
  if (link == nullptr) return;
  link->engine = engine;
  link->thread = GetCurrentThreadId();
  duk_push_object(engine);
  KeepValue(engine, kWrapped);
}

void CutLink(ScriptLink* link) {
  link->engine = nullptr;
  DropLink(link);
}

IDispatch* WrapScriptObject(duk_context* engine, duk_idx_t index) {
  ScriptLink* link = ContextOf(engine).link;
  index = duk_normalize_index(engine, index);
  const void* const target = duk_get_heapptr(engine, index);
  if (ScriptObject* const wrapper = FindWrapper(link, target)) return wrapper;
  const uint32_t key = ++link->last_key;
  PushKept(engine, kWrapped);
  duk_dup(engine, index);
  duk_put_prop_index(engine, -2, key);
  duk_pop(engine);
  ScriptObject* const wrapper = MakeWrapper(link, key, target);
  if (wrapper == nullptr) {
    PushKept(engine, kWrapped);
    duk_del_prop_index(engine, -1, key);
    duk_pop(engine);
  }
  return wrapper;
}

bool IsWrappedObject(IUnknown* object) {
  void* found = nullptr;
  if (FAILED(object->QueryInterface(kScriptObjectId, &found))) return false;
  static_cast<IDispatch*>(found)->Release();
  return true;
}

bool PushWrappedObject(duk_context* engine, IUnknown* object) {
  void* found = nullptr;
  if (FAILED(object->QueryInterface(kScriptObjectId, &found))) return false;
  auto* wrapper = static_cast<ScriptObject*>(static_cast<IDispatch*>(found));
  const uint32_t key = wrapper->Key();
  // A script object of another engine is an automation object like any other.
  const bool is_ours = wrapper->Link() == ContextOf(engine).link;
  wrapper->Release();
  if (!is_ours) return false;
  PushTarget(engine, key);
  return true;
}

bool HasScriptError(const ScriptContext& context) {
  return context.link->has_pending_error;
}

bool TakeScriptError(duk_context* engine, HRESULT status) {
  if (!HasScriptError(ContextOf(engine))) return false;
  PushKept(engine, kPendingNumber);
  const bool pending = duk_is_number(engine, -1) &&
                       (status == DISP_E_EXCEPTION || status == duk_get_int(engine, -1));
  duk_pop(engine);
  if (pending) PushKept(engine, kPendingError);
  ForgetScriptError(engine);
  return pending;
}

void ForgetScriptError(duk_context* engine) {
  bool& is_pending = ContextOf(engine).link->has_pending_error;
  if (!is_pending) return;
  duk_push_heap_stash(engine);
  duk_del_prop_string(engine, -1, kPendingError);
  duk_del_prop_string(engine, -1, kPendingNumber);
  duk_pop(engine);
  is_pending = false;
}

}  // namespace mirolta::host
