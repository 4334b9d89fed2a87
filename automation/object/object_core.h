// The part of every automation object that does not depend on its interfaces: reference count,
// lock, outer object, lifetime.
#pragma once

#include <type_traits>

#include "platform.h"
#include "raise_error.h"
#include "scoped_lock.h"
#include "type_info_holder.h"

namespace mirolta {

// What all objects of a class share.
struct ClassDescription {
  const CLSID* class_id;      // of the "Both" row, whichever row created the object
  TypeInfoHolder* type_info;  // of the class's dispatch interface
};

class ObjectCore {
 public:
  ObjectCore(const ObjectCore&) = delete;
  ObjectCore& operator=(const ObjectCore&) = delete;

  // The object's own, non-delegating IUnknown: an outer object holds it, and an instance creator
  // queries it.
  IUnknown* Inner() { return &inner_; }

  // FinalConstruct does the part of construction that may fail; the object is then destroyed.
  virtual HRESULT FinalConstruct() { return S_OK; }
  // Construct runs FinalConstruct with a reference held, so that references taken and released
  // there do not destroy the object.
  HRESULT Construct();
  void Destroy();

 protected:
  // outer is the object that aggregates this one, or null.
  explicit ObjectCore(IUnknown* outer);
  virtual ~ObjectCore();

  // FindInterface returns the object's pointer for an interface other than IUnknown, or null,
  // without adding a reference. FirstInterface is the one that is returned for IUnknown.
  virtual IUnknown* FindInterface(REFIID iid) = 0;
  virtual IUnknown* FirstInterface() = 0;

  // The IUnknown of the object's interfaces: the outer object's if there is one.
  HRESULT Query(REFIID iid, void** out) {
    return outer_ != nullptr ? outer_->QueryInterface(iid, out) : inner_.QueryInterface(iid, out);
  }
  ULONG Reference() { return outer_ != nullptr ? outer_->AddRef() : inner_.AddRef(); }
  ULONG Unreference() { return outer_ != nullptr ? outer_->Release() : inner_.Release(); }

  // Frame is the body of every member: it checks the out-pointer, then runs work with the lock
  // held, and wipes what work left on the stack and in registers.
  // Errors: E_POINTER for a null out; those of work.
  template <typename Out, typename Work>
  HRESULT Frame(Out* out, Work work, StackUse use = StackUse::kShort) {
    return out == nullptr ? E_POINTER : Frame(work, use);
  }
  template <typename Work>
  HRESULT Frame(Work work, StackUse use = StackUse::kShort) {
    ScopedLock hold(lock_);
    return RunWiped(work, use);
  }

  // PlainFrame is Frame for work that handles no secrets, such as settings; it does not wipe.
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

// FinishObject completes a new object: Construct, then the query for iid. constructs is false where FinalConstruct
// is known to do nothing.
// Errors: those of both; the object is then destroyed.
HRESULT FinishObject(ObjectCore* object, bool constructs, REFIID iid, void** out);

// The same for an object of a known class.
template <typename Class>
HRESULT FinishObject(Class* object, REFIID iid, void** out) {
  constexpr bool kConstructs =
      !std::is_same_v<decltype(&Class::FinalConstruct), HRESULT (ObjectCore::*)()>;
  return FinishObject(object, kConstructs, iid, out);
}

}  // namespace mirolta
