#include "command_line/member_descriptions.h"

#include <utility>

#include "classes/host_object.h"
#include "values/scoped_variant.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

constexpr UINT kMostNames = 64;

struct OwnedText {
  OwnedText() = default;
  OwnedText(const OwnedText&) = delete;
  OwnedText& operator=(const OwnedText&) = delete;
  ~OwnedText() { SysFreeString(text); }
  std::string Get() const { return SystemFromUnits({text, SysStringLen(text)}); }
  BSTR text = nullptr;
};

// The type information of an interface, with its descriptions.
class Described {
 public:
  explicit Described(ITypeInfo* info) : info_(info) {}
  Described(const Described&) = delete;
  Described& operator=(const Described&) = delete;
  ~Described() {
    if (function_ != nullptr) info_->ReleaseFuncDesc(function_);
  }

  // The next member function; null at the end.
  const FUNCDESC* Next() {
    if (function_ != nullptr) info_->ReleaseFuncDesc(function_);
    function_ = nullptr;
    return SUCCEEDED(info_->GetFuncDesc(index_++, &function_)) ? function_ : nullptr;
  }

  // The names of a member and its parameters.
  std::vector<std::string> NamesOf(MEMBERID id) const {
    BSTR names[kMostNames] = {};
    UINT count = 0;
    std::vector<std::string> texts;
    if (FAILED(info_->GetNames(id, names, kMostNames, &count))) return texts;
    OwnedText owners[kMostNames];
    for (UINT i = 0; i < count; ++i) owners[i].text = names[i];
    for (UINT i = 0; i < count; ++i) texts.push_back(owners[i].Get());
    return texts;
  }

  std::string HelpOf(MEMBERID id) const {
    OwnedText help;
    (void)info_->GetDocumentation(id, nullptr, &help.text, nullptr, nullptr);
    return help.Get();
  }

  std::string TypeName(const TYPEDESC& type) const {
    struct Row {
      VARTYPE type;
      const char* name;
    };
    constexpr Row kNames[] = {
        {VT_I2, "Integer"},      {VT_I4, "Long"},         {VT_R4, "Single"},
        {VT_R8, "Double"},       {VT_CY, "Currency"},     {VT_DATE, "Date"},
        {VT_BSTR, "String"},     {VT_BOOL, "Boolean"},    {VT_DISPATCH, "Object"},
        {VT_UNKNOWN, "Unknown"}, {VT_VARIANT, "Variant"}, {VT_DECIMAL, "Decimal"},
        {VT_UI1, "Byte"},
    };
    if (type.vt == VT_PTR && type.lptdesc != nullptr) return TypeName(*type.lptdesc);
    if (type.vt == VT_USERDEFINED) return UserTypeName(type.hreftype);
    for (const Row& row : kNames) {
      if (row.type == type.vt) return row.name;
    }
    return "Variant";
  }

 private:
  std::string UserTypeName(HREFTYPE type) const {
    OwnedReference<ITypeInfo> info;
    OwnedText name;
    if (SUCCEEDED(info_->GetRefTypeInfo(type, info.Put()))) {
      (void)info->GetDocumentation(MEMBERID{-1}, &name.text, nullptr, nullptr, nullptr);
    }
    const std::string text = name.Get();
    return text.empty() ? "Object" : text;
  }

  ITypeInfo* info_;
  FUNCDESC* function_ = nullptr;
  UINT index_ = 0;
};

std::string DefaultText(const VARIANT& value) {
  if (value.vt == VT_BOOL) return value.boolVal != VARIANT_FALSE ? "true" : "false";
  ScopedVariant text;
  if (FAILED(VariantChangeType(&text, &value, 0, VT_BSTR))) return "?";
  const std::string plain = SystemFromUnits({text.bstrVal, SysStringLen(text.bstrVal)});
  return value.vt == VT_BSTR ? "\"" + plain + "\"" : plain;
}

std::string ParameterText(const Described& described, const std::string& name,
                          const ELEMDESC& element) {
  std::string text = name + " As " + described.TypeName(element.tdesc);
  const PARAMDESC& parameter = element.paramdesc;
  if ((parameter.wParamFlags & PARAMFLAG_FHASDEFAULT) != 0 && parameter.pparamdescex != nullptr) {
    text += " = " + DefaultText(parameter.pparamdescex->varDefaultValue);
  }
  return (parameter.wParamFlags & PARAMFLAG_FOPT) != 0 ? "[" + text + "]" : text;
}

bool IsPut(const FUNCDESC& function) {
  return (function.invkind & (INVOKE_PROPERTYPUT | INVOKE_PROPERTYPUTREF)) != 0;
}

std::string SignatureOf(const Described& described, const std::vector<std::string>& names,
                        const FUNCDESC& function) {
  // The last parameter of a put is the value.
  const bool is_put = IsPut(function) && function.cParams > 0;
  const SHORT count = static_cast<SHORT>(function.cParams - (is_put ? 1 : 0));
  std::string text = names.empty() ? "?" : names[0];
  if (count > 0 || function.invkind == INVOKE_FUNC) {
    text += '(';
    for (SHORT i = 0; i < count; ++i) {
      const size_t place = static_cast<size_t>(i) + 1;
      if (i > 0) text += ", ";
      text += ParameterText(described, place < names.size() ? names[place] : "?",
                            function.lprgelemdescParam[i]);
    }
    text += ')';
  }
  const TYPEDESC& result =
      is_put ? function.lprgelemdescParam[count].tdesc : function.elemdescFunc.tdesc;
  if (result.vt != VT_VOID) text += " As " + described.TypeName(result);
  return text;
}

// What the rows of one member say together.
struct MemberUse {
  MEMBERID id = 0;
  bool is_method = false;
  bool is_read = false;
  bool is_written = false;
};

const char* KindOf(const MemberUse& use) {
  if (use.is_method) return "method";
  if (!use.is_written) return "read-only property";
  return use.is_read ? "property" : "write-only property";
}

}  // namespace

std::vector<MemberDescription> DescribeTypeMembers(ITypeInfo* info) {
  std::vector<MemberDescription> members;
  std::vector<MemberUse> uses;
  Described described(info);
  while (const FUNCDESC* function = described.Next()) {
    if (function->memid == DISPID_NEWENUM) continue;  // how loops reach the elements
    size_t place = 0;
    while (place < uses.size() && uses[place].id != function->memid) ++place;
    const bool is_new = place == uses.size();
    if (is_new) {
      uses.push_back({.id = function->memid});
      members.emplace_back();
    }
    MemberUse& use = uses[place];
    MemberDescription& member = members[place];
    const bool is_put = IsPut(*function);
    use.is_method = use.is_method || function->invkind == INVOKE_FUNC;
    // A property's get says the most: its type is that of the value.
    if (is_new || (!is_put && !use.is_read)) {
      const std::vector<std::string> names = described.NamesOf(function->memid);
      if (!names.empty()) member.name = names[0];
      member.signature = SignatureOf(described, names, *function);
    }
    use.is_read = use.is_read || !is_put;
    use.is_written = use.is_written || is_put;
    if (member.help.empty()) member.help = described.HelpOf(function->memid);
    member.kind = KindOf(use);
  }
  return members;
}

std::vector<MemberDescription> DescribeHostMembers(const HostClass& host_class) {
  std::vector<MemberDescription> members;
  for (const HostMember& row : host_class.members) {
    if (row.id == DISPID_NEWENUM) continue;
    const MemberUse use = {.id = row.id,
                           .is_method = row.kind == MemberKind::kMethod,
                           .is_read = row.get != nullptr,
                           .is_written = row.put != nullptr};
    members.push_back({.name = row.name,
                       .kind = KindOf(use),
                       .signature = std::string(row.name) + row.signature,
                       .help = row.help});
  }
  return members;
}

std::vector<MemberDescription> DescribeMembers(IDispatch* object) {
  if (const HostObject* const host_object = HostObjectOf(object)) {
    return DescribeHostMembers(host_object->Class());
  }
  OwnedReference<ITypeInfo> info;
  if (FAILED(object->GetTypeInfo(0, 0, info.Put())) || !info) return {};
  return DescribeTypeMembers(info.Get());
}

}  // namespace mirolta::host
