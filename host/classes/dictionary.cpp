#include "classes/dictionary.h"

#include <new>
#include <utility>

#include "classes/dictionary_key.h"
#include "engine/host_errors.h"

namespace mirolta::host {
namespace {

constexpr HRESULT kKeyExists = MIROLTA_STATUS(0x800A01C9u);
constexpr HRESULT kElementNotFound = MIROLTA_STATUS(0x800A802Bu);

[[noreturn]] void FailForExistingKey() {
  Fail(kKeyExists, "This key is already associated with an element of this collection");
}

// Copies a value, following references.
void CopyInto(ScopedVariant* to, const VARIANT& from) {
  const HRESULT status = VariantCopyInd(to, &from);
  if (status == E_OUTOFMEMORY) throw std::bad_alloc();
  if (FAILED(status)) Fail(status);
}

// The old value is cleared with `from`: its release may run other code.
void Swap(ScopedVariant* value, ScopedVariant* from) {
  std::swap(static_cast<VARIANT&>(*value), static_cast<VARIANT&>(*from));
}

}  // namespace

Units Dictionary::FormOf(const VARIANT& key) const {
  ScopedVariant value;
  CopyInto(&value, key);
  return ComparisonForm(value, compare_mode_ != 0);
}

Dictionary::Entry& Dictionary::AddEntry(Units form, const VARIANT& key) {
  Entries added;
  added.emplace_back();
  CopyInto(&added.back().key, key);
  by_form_.emplace(std::move(form), added.begin());
  entries_.splice(entries_.end(), added);
  return entries_.back();
}

Dictionary::Entry& Dictionary::FindOrAdd(const VARIANT& key) {
  Units form = FormOf(key);
  const auto found = by_form_.find(form);
  return found != by_form_.end() ? *found->second : AddEntry(std::move(form), key);
}

ValueList Dictionary::AllKeys() const {
  ValueList keys;
  for (const Entry& entry : entries_) keys.Add(entry.key);
  return keys;
}

void Dictionary::Add(HostCall& call) {
  ScopedVariant item;
  CopyInto(&item, call.At(1));
  Units form = FormOf(call.At(0));
  if (by_form_.contains(form)) FailForExistingKey();
  Entry& entry = AddEntry(std::move(form), call.At(0));
  Swap(&entry.item, &item);
}

void Dictionary::GetCompareMode(HostCall& call) const {
  call.ReturnInteger(compare_mode_);
}

void Dictionary::PutCompareMode(HostCall& call) {
  const int32_t mode = HostCall::IntegerOf(call.Value());
  if (mode < 0 || !entries_.empty()) Fail(kInvalidCall);
  compare_mode_ = mode;
}

void Dictionary::GetCount(HostCall& call) const {
  call.ReturnInteger(static_cast<int32_t>(entries_.size()));
}

void Dictionary::Exists(HostCall& call) const {
  call.ReturnTruth(by_form_.contains(FormOf(call.At(0))));
}

void Dictionary::GetItem(HostCall& call) {
  call.Return(FindOrAdd(call.At(0)).item);
}

void Dictionary::PutItem(HostCall& call) {
  ScopedVariant item;
  CopyInto(&item, call.Value());
  Entry& entry = FindOrAdd(call.At(0));
  Swap(&entry.item, &item);
}

void Dictionary::Items(HostCall& call) const {
  ValueList items;
  for (const Entry& entry : entries_) items.Add(entry.item);
  call.ReturnArray(items);
}

// The entry keeps its place. A key that does not exist is added, with the item Empty.
void Dictionary::PutKey(HostCall& call) {
  const VARIANT& key = call.Value();
  Units form = FormOf(key);
  if (by_form_.contains(form)) FailForExistingKey();
  const auto found = by_form_.find(FormOf(call.At(0)));
  if (found == by_form_.end()) {
    AddEntry(std::move(form), key);
    return;
  }
  Entry& entry = *found->second;
  ScopedVariant copy;
  CopyInto(&copy, key);
  auto node = by_form_.extract(found);
  node.key().swap(form);
  by_form_.insert(std::move(node));
  Swap(&entry.key, &copy);
}

void Dictionary::Keys(HostCall& call) const {
  call.ReturnArray(AllKeys());
}

// Values are released when nothing refers to the entry any more: that may run other code.
void Dictionary::Remove(HostCall& call) {
  const auto found = by_form_.find(FormOf(call.At(0)));
  if (found == by_form_.end()) Fail(kElementNotFound, "Element not found");
  Entries removed;
  removed.splice(removed.begin(), entries_, found->second);
  by_form_.erase(found);
}

void Dictionary::RemoveAll(HostCall&) {
  by_form_.clear();
  Entries removed;
  removed.swap(entries_);
}

void Dictionary::NewEnum(HostCall& call) const {
  call.ReturnUnknown(NewEnumerator(AllKeys()));
}

namespace {

constexpr auto kMethod = MemberKind::kMethod;
constexpr auto kProperty = MemberKind::kProperty;

constexpr HostMember kMembers[] = {
    {"Item", DISPID_VALUE, kProperty, 1, 1, CallMember<&Dictionary::GetItem>,
     CallMember<&Dictionary::PutItem>, "(key As Variant) As Variant",
     "The item of a key. Reading or assigning a key that does not exist adds it."},
    {"Add", 1, kMethod, 2, 2, CallMember<&Dictionary::Add>, nullptr,
     "(key As Variant, item As Variant)",
     "Adds a key with its item; a key that exists is the error 457."},
    {"Count", 2, kProperty, 0, 0, CallMember<&Dictionary::GetCount>, nullptr, " As Long",
     "The number of keys."},
    {"Exists", 3, kMethod, 1, 1, CallMember<&Dictionary::Exists>, nullptr,
     "(key As Variant) As Boolean", "Whether the key exists."},
    {"Items", 4, kMethod, 0, 0, CallMember<&Dictionary::Items>, nullptr, "() As Variant()",
     "An array of all items."},
    {"Key", 5, kProperty, 1, 1, nullptr, CallMember<&Dictionary::PutKey>,
     "(key As Variant) As Variant",
     "Assigning it replaces a key by another one; the item and its place stay."},
    {"Keys", 6, kMethod, 0, 0, CallMember<&Dictionary::Keys>, nullptr, "() As Variant()",
     "An array of all keys, in the order in which they were added."},
    {"Remove", 7, kMethod, 1, 1, CallMember<&Dictionary::Remove>, nullptr, "(key As Variant)",
     "Removes a key; one that does not exist is the error 32811."},
    {"RemoveAll", 8, kMethod, 0, 0, CallMember<&Dictionary::RemoveAll>, nullptr, "()",
     "Removes all keys."},
    {"CompareMode", 9, kProperty, 0, 0, CallMember<&Dictionary::GetCompareMode>,
     CallMember<&Dictionary::PutCompareMode>, " As Long",
     "How texts are compared: 0 by their units, other modes without letter case. It cannot change "
     "while there are keys."},
    {"_NewEnum", DISPID_NEWENUM, kProperty, 0, 0, CallMember<&Dictionary::NewEnum>, nullptr,
     " As Variant", "Enumerates the keys."},
};
static_assert(IsWellFormed(kMembers));

}  // namespace

constexpr HostClass kDictionaryClass = {
    "Scripting.Dictionary", "Items by key, in the order in which they were added.", kMembers};

const HostClass& Dictionary::Class() const {
  return kDictionaryClass;
}

HostObject* NewDictionary() {
  return new Dictionary;
}

}  // namespace mirolta::host
