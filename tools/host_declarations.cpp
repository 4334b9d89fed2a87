#include "host_declarations.h"

#include <string>

#include "classes/class_list.h"

namespace mirolta::host {
namespace {

const HostClass* ClassNamed(std::string_view name) {
  for (const HostClass* row : AllHostClasses()) {
    if (name == row->name) return row;
  }
  return nullptr;
}

// Classes whose name has no namespace are those of the file system.
std::string QualifiedName(const HostClass& host_class) {
  const std::string name = host_class.name;
  return name.find('.') == std::string::npos ? "Scripting." + name : name;
}

struct TypeName {
  std::string_view type;
  const char* value;     // what a script finds
  const char* argument;  // what a member takes
};
constexpr TypeName kTypeNames[] = {
    {"", "void", "void"},
    {"Boolean", "boolean", "boolean"},
    {"Byte()", "ByteArray", "AnyBytes"},
    {"Date", "VarDate", "Date | VarDate"},
    {"Double", "number", "number"},
    {"Long", "number", "number"},
    {"Object", "any", "AutomationObject"},
    {"String", "string", "string"},
    {"Variant", "any", "any"},
    {"Variant()", "SafeArray", "SafeArray"},
};

class Declarations {
 public:
  explicit Declarations(FILE* out) : out_(out) {}

  void WriteClass(const HostClass& host_class) {
    const std::string name = QualifiedName(host_class);
    const size_t dot = name.rfind('.');
    fprintf(out_, "declare namespace %s {\n  /** %s */\n  interface %s extends ",
            name.substr(0, dot).c_str(), host_class.help, name.substr(dot + 1).c_str());
    WriteBase(host_class);
    fputs(" {\n", out_);
    for (const HostMember& member : host_class.members) WriteMember(member);
    fputs("  }\n}\n", out_);
  }

  bool IsComplete() const { return is_complete_; }

 private:
  void WriteBase(const HostClass& host_class) {
    for (const HostMember& member : host_class.members) {
      if (member.id != DISPID_NEWENUM) continue;
      fprintf(out_, "AutomationCollection<%s>",
              ValueName(MemberSignature(member.signature).Value()).c_str());
      return;
    }
    fputs("AutomationObject", out_);
  }

  void WriteMember(const HostMember& member) {
    if (member.id == DISPID_NEWENUM) return;
    const bool is_default = member.id == DISPID_VALUE && member.most > 0;
    if (is_default) WriteCall(member, "");
    MemberSignature signature(member.signature);
    if (signature.HasList()) {
      WriteCall(member, member.name);
      return;
    }
    WriteHelp(member);
    const bool is_read_only = member.put == nullptr;
    fprintf(out_, "    %s%s: %s;\n", is_read_only ? "readonly " : "", member.name,
            ValueName(signature.Value()).c_str());
  }

  // A method, a property with arguments, or the call of the object itself for its default member.
  void WriteCall(const HostMember& member, const char* name) {
    WriteHelp(member);
    MemberSignature signature(member.signature);
    SignatureParameter parameter;
    std::string list;
    std::string last;
    while (signature.Next(&parameter)) {
      if (!last.empty()) list += last + ", ";
      last = std::string(parameter.name);
      last += parameter.is_optional ? "?: " : ": ";
      last += ArgumentName(parameter.type);
    }
    if (signature.IsRepeated()) {
      if (!parameter.is_optional) list += last + ", ";
      last = "..." + std::string(parameter.name) + (parameter.is_optional ? ": " : "s: ") +
             ArgumentName(parameter.type) + "[]";
    }
    fprintf(out_, "    %s(%s%s): %s;\n", name, list.c_str(), last.c_str(),
            ValueName(signature.Value()).c_str());
  }

  void WriteHelp(const HostMember& member) { fprintf(out_, "    /** %s */\n", member.help); }

  std::string ValueName(std::string_view type) { return Name(type, &TypeName::value); }
  std::string ArgumentName(std::string_view type) { return Name(type, &TypeName::argument); }
  std::string Name(std::string_view type, const char* TypeName::*use) {
    for (const TypeName& row : kTypeNames) {
      if (row.type == type) return row.*use;
    }
    if (const HostClass* const row = ClassNamed(type)) return QualifiedName(*row);
    fprintf(stderr, "The host has no class %s.\n", std::string(type).c_str());
    is_complete_ = false;
    return "any";
  }

  FILE* out_;
  bool is_complete_ = true;
};

}  // namespace

void WriteHostProgIds(FILE* out) {
  for (const HostClassRow& row : HostClasses()) {
    fprintf(out, "  /** %s */\n  \"%s\": %s;\n", row.host_class->help, row.progid,
            QualifiedName(*row.host_class).c_str());
  }
}

bool WriteHostDeclarations(FILE* out) {
  Declarations declarations(out);
  for (const HostClass* row : AllHostClasses()) {
    fputs("\n", out);
    declarations.WriteClass(*row);
  }
  const size_t size = kScriptHostDeclarations.size();
  return fwrite(kScriptHostDeclarations.data(), 1, size, out) == size && declarations.IsComplete();
}

}  // namespace mirolta::host
