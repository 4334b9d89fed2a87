#include "classes/value_list.h"

#include <algorithm>
#include <memory>
#include <new>
#include <utility>

#include "objects/counted_object.h"

namespace mirolta::host {
namespace {

class ValueEnumerator final : public CountedObject<ValueEnumerator, IEnumVARIANT> {
 public:
  ValueEnumerator(std::shared_ptr<const ValueList> values, size_t next)
      : values_(std::move(values)), next_(next) {}

  static bool Implements(REFIID iid) { return iid == IID_IEnumVARIANT; }

  HRESULT STDMETHODCALLTYPE Next(ULONG count, VARIANT* values, ULONG* fetched) override {
    if (values == nullptr || (fetched == nullptr && count != 1)) return E_POINTER;
    ULONG done = 0;
    HRESULT status = S_OK;
    while (done < count && next_ + done < values_->Count() && SUCCEEDED(status)) {
      VariantInit(&values[done]);
      status = VariantCopy(&values[done], &values_->At(next_ + done));
      if (SUCCEEDED(status)) ++done;
    }
    if (FAILED(status)) {
      for (ULONG i = 0; i < done; ++i) VariantClear(&values[i]);
      done = 0;
    }
    next_ += done;
    if (fetched != nullptr) *fetched = done;
    if (FAILED(status)) return status;
    return done == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Skip(ULONG count) override {
    const size_t done = std::min<size_t>(count, values_->Count() - next_);
    next_ += done;
    return done == count ? S_OK : S_FALSE;
  }
  HRESULT STDMETHODCALLTYPE Reset() override {
    next_ = 0;
    return S_OK;
  }
  HRESULT STDMETHODCALLTYPE Clone(IEnumVARIANT** out) override {
    if (out == nullptr) return E_POINTER;
    *out = new (std::nothrow) ValueEnumerator(values_, next_);
    return *out != nullptr ? S_OK : E_OUTOFMEMORY;
  }

 private:
  friend CountedObject;
  ~ValueEnumerator() = default;

  std::shared_ptr<const ValueList> values_;
  size_t next_;
};

// The values that the outermost running destructor of a list has still to clear.
thread_local std::vector<VARIANT>* t_uncleared = nullptr;

// Hands values over to that destructor.
bool HandOver(const std::vector<VARIANT>& values) {
  if (t_uncleared == nullptr) return false;
  try {
    t_uncleared->insert(t_uncleared->end(), values.begin(), values.end());
    return true;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

}  // namespace

// A value may hold the last reference to an enumerator with a list of its own, and so on: a chain of
// any length takes no stack.
ValueList::~ValueList() {
  if (HandOver(values_)) return;
  std::vector<VARIANT>* const outer = t_uncleared;
  t_uncleared = &values_;
  while (!values_.empty()) {
    VARIANT value = values_.back();
    values_.pop_back();
    VariantClear(&value);
  }
  t_uncleared = outer;
}

void ValueList::Add(const VARIANT& value) {
  values_.push_back(VARIANT{});
  if (SUCCEEDED(VariantCopy(&values_.back(), &value))) return;
  values_.pop_back();
  throw std::bad_alloc();
}

void ValueList::AddObject(IDispatch* object) {
  OwnedReference<IDispatch> owner;
  owner.Attach(object);
  VARIANT value = {};
  value.vt = VT_DISPATCH;
  value.pdispVal = object;
  values_.push_back(value);
  static_cast<void>(owner.Detach());
}

IUnknown* NewEnumerator(ValueList values) {
  return new ValueEnumerator(std::make_shared<const ValueList>(std::move(values)), 0);
}

}  // namespace mirolta::host
