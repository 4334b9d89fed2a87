// The part of every automation object that does not depend on its interfaces: reference count,
// lock, outer object, life and death.
#pragma once

#include "platform.h"
#include "raise_error.h"
#include "scoped_lock.h"
#include "type_info_holder.h"

namespace mirolta {

// What all objects of a class share.
struct ClassDescription {
  const CLSID* class_id;      // of the "Both" row, whichever row made the object
  TypeInfoHolder* type_info;  // of the class's dispatch interface
};

class ObjectCore {
 public:
  ObjectCore(const ObjectCore&) = delete;
  ObjectCore& operator=(const ObjectCore&) = delete;

  // The object's own IUnknown, which never delegates: what an outer object holds, and what a
  // creator queries.
  IUnknown* Inner() { return &inner_; }

  // FinalConstruct sets up what the constructor cannot report the failure of; a failure destroys
  // the object.
  virtual HRESULT FinalConstruct() { return S_OK; }
  // Construct runs FinalConstruct while the object holds itself, so that references taken and
  // dropped there do not end it.
  HRESULT Construct();
  void Destroy();

 protected:
  // outer: the object that this one is made a part of, or null.
  explicit ObjectCore(IUnknown* outer);
  virtual ~ObjectCore();

  // FindInterface returns the object's pointer for an interface other than IUnknown, no reference
  // added; null if it has none. FirstInterface is the one that answers for IUnknown.
  virtual IUnknown* FindInterface(REFIID iid) = 0;
  virtual IUnknown* FirstInterface() = 0;

  // IUnknown as the object's interfaces offer it: the outer object's if there is one.
  HRESULT Query(REFIID iid, void** out) {
    return outer_ != nullptr ? outer_->QueryInterface(iid, out) : inner_.QueryInterface(iid, out);
  }
  ULONG Reference() { return outer_ != nullptr ? outer_->AddRef() : inner_.AddRef(); }
  ULONG Unreference() { return outer_ != nullptr ? outer_->Release() : inner_.Release(); }

  // Frame is the body of every member: the out-pointer is looked at first, then the lock is held
  // for the whole of the work, whichever way it ends. The work leaves no secrets on the stack and
  // in registers.
  template <typename Out, typename Work>
  HRESULT Frame(Out* out, Work work, StackUse use = StackUse::kShort) {
    return out == nullptr ? E_POINTER : Frame(work, use);
  }
  template <typename Work>
  HRESULT Frame(Work work, StackUse use = StackUse::kShort) {
    ScopedLock hold(lock_);
    return RunWiped(work, use);
  }

  // PlainFrame is Frame for work that meets no secrets: settings and sizes.
  template <typename Out, typename Work>
  HRESULT PlainFrame(Out* out, Work work) {
    return out == nullptr ? E_POINTER : PlainFrame(work);
  }
  template <typename Work>
  HRESULT PlainFrame(Work work) {
    ScopedLock hold(lock_);
    return work();
  }

  // Raise reports a module message with the class as its source.
  static HRESULT Raise(const ClassDescription& description, UINT message_id);

  CRITICAL_SECTION lock_;

 private:
  class InnerUnknown final : public IUnknown {
   public:
    explicit InnerUnknown(ObjectCore& core) : core_(core) {}
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID iid, void** out) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

   private:
    ObjectCore& core_;
  };

  InnerUnknown inner_;
  IUnknown* outer_;
  LONG volatile references_ = 0;
};

// FinishObject does for a new object what every creator does after the allocation: final
// construction, then the query for iid.
// Errors: those of the two steps; the object is destroyed then.
HRESULT FinishObject(ObjectCore* object, REFIID iid, void** out);

}  // namespace mirolta
