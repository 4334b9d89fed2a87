#include "classes/environment_collection.h"

#include <stdlib.h>
#include <string.h>
#include <strings.h>
#include <unistd.h>

#include <new>

#include "engine/host_errors.h"

namespace mirolta::host {
namespace {

using Compare = int (*)(const char*, const char*, size_t);

// The variable with this name, "NAME=value", null if there is none.
const char* FindEntry(const std::string& name, Compare compare) {
  for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
    if (compare(*entry, name.c_str(), name.size()) == 0 && (*entry)[name.size()] == '=') {
      return *entry;
    }
  }
  return nullptr;
}

const char* FindEntry(const std::string& name) {
  if (name.empty() || name.find_first_of(std::string_view("=\0", 2)) != std::string::npos) {
    return nullptr;
  }
  const char* const exact = FindEntry(name, strncmp);
  return exact != nullptr ? exact : FindEntry(name, strncasecmp);
}

class EnvironmentCollection final : public HostObject {
 public:
  const HostClass& Class() const override;

  void GetItem(HostCall& call) {
    const char* const value = FindVariable(SystemFromUnits(call.Text(0)));
    call.ReturnText(UnitsFromSystem(value != nullptr ? value : ""));
  }

  void PutItem(HostCall& call) {
    std::string name = SystemFromUnits(call.Text(0));
    const std::string value = SystemFromUnits(HostCall::TextOf(call.Value()));
    if (name.empty() || name.find_first_of(std::string_view("=\0", 2)) != std::string::npos ||
        value.find('\0') != std::string::npos) {
      Fail(kInvalidCall);
    }
    if (const char* const entry = FindEntry(name)) name.assign(entry, name.size());
    if (setenv(name.c_str(), value.c_str(), 1) != 0) throw std::bad_alloc();
  }

  void GetCount(HostCall& call) const {
    int32_t count = 0;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) ++count;
    call.ReturnInteger(count);
  }

  // A variable that does not exist need not be removed.
  void Remove(HostCall& call) {
    const std::string name = SystemFromUnits(call.Text(0));
    const char* const entry = FindEntry(name);
    if (entry == nullptr) return;
    if (unsetenv(std::string(entry, name.size()).c_str()) != 0) throw std::bad_alloc();
  }

  void NewEnum(HostCall& call) const {
    ValueList entries;
    for (char** entry = environ; entry != nullptr && *entry != nullptr; ++entry) {
      const Units text = UnitsFromSystem(*entry);
      ScopedVariant value;
      value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
      if (value.bstrVal == nullptr) throw std::bad_alloc();
      value.vt = VT_BSTR;
      entries.Add(value);
    }
    call.ReturnUnknown(NewEnumerator(std::move(entries)));
  }

 private:
  ~EnvironmentCollection() override = default;
};

constexpr auto kMethod = MemberKind::kMethod;
constexpr auto kProperty = MemberKind::kProperty;

constexpr HostMember kMembers[] = {
    {"Item", DISPID_VALUE, kProperty, 1, 1, CallMember<&EnvironmentCollection::GetItem>,
     CallMember<&EnvironmentCollection::PutItem>, "(name As String) As String",
     "The value of a variable, \"\" if there is none."},
    {"Count", 1, kMethod, 0, 0, CallMember<&EnvironmentCollection::GetCount>, nullptr, "() As Long",
     "The number of variables."},
    {"length", 2, kProperty, 0, 0, CallMember<&EnvironmentCollection::GetCount>, nullptr,
     " As Long", "The number of variables."},
    {"Remove", 3, kMethod, 1, 1, CallMember<&EnvironmentCollection::Remove>, nullptr,
     "(name As String)", "Removes a variable from the process's environment."},
    {"_NewEnum", DISPID_NEWENUM, kProperty, 0, 0, CallMember<&EnvironmentCollection::NewEnum>,
     nullptr, " As String", "Enumerates texts of the form NAME=value."},
};
static_assert(IsWellFormed(kMembers));

const HostClass& EnvironmentCollection::Class() const {
  return kEnvironmentClass;
}

}  // namespace

constexpr HostClass kEnvironmentClass = {"WScript.Shell.Environment",
                                         "The environment variables of the process.", kMembers};

const char* FindVariable(const std::string& name) {
  const char* const entry = FindEntry(name);
  return entry != nullptr ? entry + name.size() + 1 : nullptr;
}

HostObject* NewEnvironmentCollection() {
  return new EnvironmentCollection;
}

}  // namespace mirolta::host
