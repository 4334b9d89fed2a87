#include "classes/arguments_object.h"

#include <stdio.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "engine/host_errors.h"

namespace mirolta::host {
namespace {

enum class NamedKind : uint8_t { kNothing, kText, kTrue, kFalse };

struct NamedArgument {
  Units name;
  NamedKind kind = NamedKind::kNothing;
  Units text;
};

struct ArgumentLists {
  std::vector<Units> all;
  std::vector<Units> unnamed;
  std::vector<NamedArgument> named;
  std::string script_name;
};
using SharedLists = std::shared_ptr<const ArgumentLists>;

OLECHAR LowerCase(OLECHAR unit) {
  return unit >= OLECHAR{'A'} && unit <= OLECHAR{'Z'} ? static_cast<OLECHAR>(unit + 32) : unit;
}

bool IsSameName(UnitsView a, UnitsView b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(),
                    [](OLECHAR x, OLECHAR y) { return LowerCase(x) == LowerCase(y); });
}

const NamedArgument* Find(const std::vector<NamedArgument>& named, UnitsView name) {
  for (const NamedArgument& argument : named) {
    if (IsSameName(argument.name, name)) return &argument;
  }
  return nullptr;
}

// Returns false if the argument has no name.
bool ParseNamed(UnitsView argument, NamedArgument* named) {
  if (argument.size() < 2 || argument[0] != OLECHAR{'/'}) return false;
  const size_t colon = argument.find(OLECHAR{':'});
  UnitsView name = argument.substr(1, colon == UnitsView::npos ? colon : colon - 1);
  if (name.find(OLECHAR{'/'}) != UnitsView::npos) return false;
  if (colon != UnitsView::npos) {
    named->kind = NamedKind::kText;
    named->text = argument.substr(colon + 1);
  } else if (name.back() == OLECHAR{'+'} || name.back() == OLECHAR{'-'}) {
    named->kind = name.back() == OLECHAR{'+'} ? NamedKind::kTrue : NamedKind::kFalse;
    name.remove_suffix(1);
  }
  named->name = name;
  return !name.empty();
}

SharedLists MakeLists(const std::vector<std::string>& arguments, const std::string& script_name) {
  auto lists = std::make_shared<ArgumentLists>();
  lists->script_name = script_name;
  for (const std::string& argument : arguments) {
    const Units& text = lists->all.emplace_back(UnitsFromSystem(argument));
    NamedArgument named;
    if (!ParseNamed(text, &named)) {
      lists->unnamed.push_back(text);
    } else if (Find(lists->named, named.name) == nullptr) {
      lists->named.push_back(std::move(named));
    }
  }
  return lists;
}

const Units& ItemOf(const std::vector<Units>& texts, const HostCall& call) {
  const int32_t index = call.Integer(0);
  if (index < 0 || static_cast<size_t>(index) >= texts.size()) Fail(kSubscriptOutOfRange);
  return texts[static_cast<size_t>(index)];
}

void ReturnCount(size_t count, HostCall& call) {
  call.ReturnInteger(static_cast<int32_t>(count));
}

void AddText(UnitsView text, ValueList* values) {
  ScopedVariant value;
  value.bstrVal = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  if (value.bstrVal == nullptr) throw std::bad_alloc();
  value.vt = VT_BSTR;
  values->Add(value);
}

void ReturnEnumerator(const std::vector<Units>& texts, HostCall& call) {
  ValueList values;
  for (const Units& text : texts) AddText(text, &values);
  call.ReturnUnknown(NewEnumerator(std::move(values)));
}

class UnnamedArguments final : public HostObject {
 public:
  explicit UnnamedArguments(SharedLists lists) : lists_(std::move(lists)) {}
  const HostClass& Class() const override { return kUnnamedArgumentsClass; }

  void Item(HostCall& call) const { call.ReturnText(ItemOf(lists_->unnamed, call)); }
  void Count(HostCall& call) const { ReturnCount(lists_->unnamed.size(), call); }
  void Enumerate(HostCall& call) const { ReturnEnumerator(lists_->unnamed, call); }

 private:
  SharedLists lists_;
};

class NamedArguments final : public HostObject {
 public:
  explicit NamedArguments(SharedLists lists) : lists_(std::move(lists)) {}
  const HostClass& Class() const override { return kNamedArgumentsClass; }

  void Item(HostCall& call) const {
    const NamedArgument* argument = Find(lists_->named, call.Text(0));
    if (argument == nullptr || argument->kind == NamedKind::kNothing) return;
    if (argument->kind == NamedKind::kText) {
      call.ReturnText(argument->text);
    } else {
      call.ReturnTruth(argument->kind == NamedKind::kTrue);
    }
  }
  void Exists(HostCall& call) const {
    call.ReturnTruth(Find(lists_->named, call.Text(0)) != nullptr);
  }
  void Count(HostCall& call) const { ReturnCount(lists_->named.size(), call); }
  void Enumerate(HostCall& call) const {
    ValueList names;
    for (const NamedArgument& argument : lists_->named) AddText(argument.name, &names);
    call.ReturnUnknown(NewEnumerator(std::move(names)));
  }

 private:
  SharedLists lists_;
};

class Arguments final : public HostObject {
 public:
  explicit Arguments(SharedLists lists) : lists_(std::move(lists)) {}
  const HostClass& Class() const override { return kArgumentsClass; }

  void Item(HostCall& call) const { call.ReturnText(ItemOf(lists_->all, call)); }
  void Count(HostCall& call) const { ReturnCount(lists_->all.size(), call); }
  void Enumerate(HostCall& call) const { ReturnEnumerator(lists_->all, call); }

  // With an argument, as in Arguments.Named("x"), its item.
  void Named(HostCall& call) const {
    OwnedReference<NamedArguments> named;
    named.Attach(new NamedArguments(lists_));
    if (call.Has(0)) return named->Item(call);
    call.ReturnObject(named.Detach());
  }
  void Unnamed(HostCall& call) const {
    OwnedReference<UnnamedArguments> unnamed;
    unnamed.Attach(new UnnamedArguments(lists_));
    if (call.Has(0)) return unnamed->Item(call);
    call.ReturnObject(unnamed.Detach());
  }

  void ShowUsage(HostCall&) const {
    if (fprintf(stdout, "Usage: mirolta-host %s [ARGUMENTS...]\n", lists_->script_name.c_str()) <
        0) {
      Fail(STG_E_WRITEFAULT, "The output cannot be written");
    }
  }

 private:
  SharedLists lists_;
};

constexpr HostMember kArgumentsMembers[] = {
    {"Item", DISPID_VALUE, MemberKind::kProperty, 1, 1, CallMember<&Arguments::Item>, nullptr,
     "(index As Long) As String", "The argument at the index, from 0; also as Arguments(index)."},
    {"Count", 1, MemberKind::kProperty, 0, 0, CallMember<&Arguments::Count>, nullptr, "() As Long",
     "The number of arguments; Count() is the same."},
    {"length", 2, MemberKind::kProperty, 0, 0, CallMember<&Arguments::Count>, nullptr, " As Long",
     "The number of arguments."},
    {"Named", 3, MemberKind::kProperty, 0, 1, CallMember<&Arguments::Named>, nullptr,
     " As WScript.Arguments.Named",
     "The arguments of the form /name, /name:value, /name+ and /name-; with a name, its value."},
    {"Unnamed", 4, MemberKind::kProperty, 0, 1, CallMember<&Arguments::Unnamed>, nullptr,
     " As WScript.Arguments.Unnamed", "The other arguments; with an index, one of them."},
    {"ShowUsage", 5, MemberKind::kMethod, 0, 0, CallMember<&Arguments::ShowUsage>, nullptr, "()",
     "Prints how the script is called."},
    {"_NewEnum", DISPID_NEWENUM, MemberKind::kProperty, 0, 0, CallMember<&Arguments::Enumerate>,
     nullptr, " As String", "The arguments, for Enumerator."},
};
static_assert(IsWellFormed(kArgumentsMembers));

constexpr HostMember kNamedMembers[] = {
    {"Item", DISPID_VALUE, MemberKind::kProperty, 1, 1, CallMember<&NamedArguments::Item>, nullptr,
     "(name As String) As Variant",
     "The text of /name:value, true for /name+, false for /name-, undefined for /name and for a "
     "name that was not given."},
    {"Exists", 1, MemberKind::kMethod, 1, 1, CallMember<&NamedArguments::Exists>, nullptr,
     "(name As String) As Boolean", "Whether an argument has the name."},
    {"Count", 2, MemberKind::kProperty, 0, 0, CallMember<&NamedArguments::Count>, nullptr,
     "() As Long", "The number of names; Count() is the same."},
    {"length", 3, MemberKind::kProperty, 0, 0, CallMember<&NamedArguments::Count>, nullptr,
     " As Long", "The number of names."},
    {"_NewEnum", DISPID_NEWENUM, MemberKind::kProperty, 0, 0,
     CallMember<&NamedArguments::Enumerate>, nullptr, " As String", "The names, for Enumerator."},
};
static_assert(IsWellFormed(kNamedMembers));

constexpr HostMember kUnnamedMembers[] = {
    {"Item", DISPID_VALUE, MemberKind::kProperty, 1, 1, CallMember<&UnnamedArguments::Item>,
     nullptr, "(index As Long) As String", "The argument at the index, from 0."},
    {"Count", 1, MemberKind::kProperty, 0, 0, CallMember<&UnnamedArguments::Count>, nullptr,
     "() As Long", "The number of arguments without a name; Count() is the same."},
    {"length", 2, MemberKind::kProperty, 0, 0, CallMember<&UnnamedArguments::Count>, nullptr,
     " As Long", "The number of arguments without a name."},
    {"_NewEnum", DISPID_NEWENUM, MemberKind::kProperty, 0, 0,
     CallMember<&UnnamedArguments::Enumerate>, nullptr, " As String",
     "The arguments without a name, for Enumerator."},
};
static_assert(IsWellFormed(kUnnamedMembers));

}  // namespace

constexpr HostClass kArgumentsClass = {"WScript.Arguments", "The arguments of the script.",
                                       kArgumentsMembers};
constexpr HostClass kNamedArgumentsClass = {
    "WScript.Arguments.Named", "The arguments of the form /name:value.", kNamedMembers};
constexpr HostClass kUnnamedArgumentsClass = {"WScript.Arguments.Unnamed",
                                              "The arguments without a name.", kUnnamedMembers};

HostObject* NewArguments(const std::vector<std::string>& arguments,
                         const std::string& script_name) {
  return new Arguments(MakeLists(arguments, script_name));
}

}  // namespace mirolta::host
