#include <string_view>

#include "class_table.h"
#include "definition_files.h"
#include "host_declarations.h"
#include "type_library_table.h"

namespace mirolta {

namespace {

constexpr VARTYPE kByteArray = VT_ARRAY | VT_UI1;

void WriteComment(FILE* out, const char* indent, const OLECHAR* help) {
  fprintf(out, "%s/** ", indent);
  WriteText(out, help);
  fputs(" */\n", out);
}

// What a script finds in a value of this type.
void WriteValueType(FILE* out, ValueType type) {
  switch (type.type) {
    case VT_EMPTY:
      fputs("void", out);
      return;
    case VT_I4:
      fputs("number", out);
      return;
    case VT_BOOL:
      fputs("boolean", out);
      return;
    case VT_BSTR:
      fputs("string", out);
      return;
    case VT_VARIANT:
      fputs(type.content == kByteArray ? "ByteArray"
            : type.content == VT_BSTR  ? "string"
                                       : "any",
            out);
      return;
    case VT_UNKNOWN:
      fputs("AutomationObject | null", out);
      return;
    default:  // objects name their interface
      WriteText(out, type.interface_name);
  }
}

// What a member takes as an argument of this type.
void WriteArgumentType(FILE* out, ValueType type) {
  if (type.type == VT_VARIANT) {
    fputs("Variant", out);
  } else {
    WriteValueType(out, type);
  }
}

// The parameters before `count`, in parentheses.
void WriteParameters(FILE* out, const Parameters& parameters, unsigned count) {
  const char* separator = "(";
  if (count == 0) fputs(separator, out);
  for (unsigned i = 0; i < count; ++i) {
    const ParameterRow& row = parameters.rows[i];
    fputs(separator, out);
    WriteText(out, row.name);
    fputs(row.presence == Presence::kRequired ? ": " : "?: ", out);
    WriteArgumentType(out, row.type);
    separator = ", ";
  }
  fputs(")", out);
}

void WriteMethod(FILE* out, const MemberRow& member) {
  fputs("    ", out);
  WriteText(out, member.name);
  WriteParameters(out, member.parameters, member.parameters.Count());
  fputs(": ", out);
  WriteValueType(out, member.result);
  fputs(";\n", out);
}

// A property can be read without its parameters, which all are optional, and with them.
void WriteGet(FILE* out, const MemberRow& member) {
  fputs("    get ", out);
  WriteText(out, member.name);
  fputs("(): ", out);
  WriteValueType(out, member.result);
  if (const unsigned count = member.parameters.Count(); count > 0) {
    fputs(" & (", out);
    WriteParameters(out, member.parameters, count);
    fputs(" => ", out);
    WriteValueType(out, member.result);
    fputs(")", out);
  }
  fputs(";\n", out);
}

void WritePut(FILE* out, const MemberRow& member) {
  fputs("    set ", out);
  WriteText(out, member.name);
  fputs("(value: ", out);
  WriteArgumentType(out, member.parameters.rows[member.parameters.Count() - 1].type);
  fputs(");\n", out);
}

void WriteInterface(FILE* out, const InterfaceTable& table) {
  WriteComment(out, "  ", table.help);
  fputs("  interface ", out);
  WriteText(out, table.name);
  fputs(" extends AutomationObject {\n", out);
  for (unsigned i = 0; i < table.member_count; ++i) {
    const MemberRow& member = table.members[i];
    WriteComment(out, "    ", member.help);
    if (member.kind == kMethod) {
      WriteMethod(out, member);
    } else if (member.kind == kGet) {
      WriteGet(out, member);
    } else {
      WritePut(out, member);
    }
  }
  fputs("  }\n", out);
}

void WriteClass(FILE* out, const ClassTableRow& row) {
  WriteComment(out, "  ", row.help);
  fputs("  interface ", out);
  WriteText(out, row.name);
  fputs(" extends ", out);
  WriteText(out, row.default_interface->name);
  fputs(" {}\n", out);
}

// The class of the type library: free-threaded registrations of a class have its name.
const ClassTableRow* ClassNamed(const OLECHAR* name) {
  const std::basic_string_view<OLECHAR> wanted = name;
  for (unsigned i = 0; i < kTypeLibraryTable.class_count; ++i) {
    if (wanted == kTypeLibraryTable.classes[i].name) return &kTypeLibraryTable.classes[i];
  }
  return nullptr;
}

void WriteProgIds(FILE* out) {
  for (const ClassRow* row = ClassTable(); row->id != nullptr; ++row) {
    const ClassTableRow* const described = ClassNamed(row->name);
    if (described == nullptr) continue;
    for (const OLECHAR* prog_id : {row->version_independent_prog_id, row->prog_id}) {
      WriteComment(out, "  ", described->help);
      fputs("  \"", out);
      WriteText(out, prog_id);
      fputs("\": ", out);
      WriteText(out, kTypeLibraryTable.name);
      fputs(".", out);
      WriteText(out, described->name);
      fputs(";\n", out);
    }
  }
}

}  // namespace

bool WriteScriptDeclarations(FILE* out) {
  fprintf(out,
          "// SPDX-License-Identifier: MIT\n"
          "// Mirolta %s: what scripts find, for editors and the TypeScript compiler.\n"
          "// Written by mirolta-definitions from the tables of members; do not edit.\n\n"
          "/** The classes by ProgID. */\n"
          "interface ActiveXObjectNameMap {\n",
          MIROLTA_VERSION);
  WriteProgIds(out);
  host::WriteHostProgIds(out);
  fputs("}\n\n/** ", out);
  WriteText(out, kTypeLibraryTable.help);
  fputs(" */\ndeclare namespace ", out);
  WriteText(out, kTypeLibraryTable.name);
  fputs(" {\n", out);
  for (unsigned i = 0; i < kTypeLibraryTable.interface_count; ++i) {
    WriteInterface(out, *kTypeLibraryTable.interfaces[i]);
  }
  for (unsigned i = 0; i < kTypeLibraryTable.class_count; ++i) {
    WriteClass(out, kTypeLibraryTable.classes[i]);
  }
  fputs("}\n", out);
  return host::WriteHostDeclarations(out);
}

}  // namespace mirolta
