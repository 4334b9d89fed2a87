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

}  // namespace

ValueList::~ValueList() {
  for (VARIANT& value : values_) VariantClear(&value);
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
