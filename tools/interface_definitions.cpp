#include "definition_files.h"
#include "type_library_table.h"

namespace mirolta {

namespace {

void WriteHelp(FILE* out, const OLECHAR* help) {
  fputs("helpstring(\"", out);
  WriteText(out, help);
  fputs("\")", out);
}

void WriteType(FILE* out, ValueType type) {
  switch (type.type) {
    case VT_I4:
      fputs("long", out);
      return;
    case VT_BOOL:
      fputs("VARIANT_BOOL", out);
      return;
    case VT_BSTR:
      fputs("BSTR", out);
      return;
    case VT_VARIANT:
      fputs("VARIANT", out);
      return;
    default:  // objects name their interface
      WriteText(out, type.interface_name);
      fputs("*", out);
  }
}

const char* AttributeOf(INVOKEKIND kind) {
  switch (kind) {
    case kGet:
      return "propget, ";
    case kPut:
      return "propput, ";
    case kPutRef:
      return "propputref, ";
    default:
      return "";
  }
}

void WriteParameter(FILE* out, const ParameterRow& parameter) {
  fputs("[in", out);
  if (parameter.presence != Presence::kRequired) fputs(", optional", out);
  if (parameter.presence == Presence::kDefault) {
    fprintf(out, ", defaultvalue(%ld)", static_cast<long>(parameter.default_value));
  }
  fputs("] ", out);
  WriteType(out, parameter.type);
  fputs(" ", out);
  WriteText(out, parameter.name);
}

void WriteMember(FILE* out, const MemberRow& member) {
  fprintf(out, "    [id(%ld), %s", static_cast<long>(member.id), AttributeOf(member.kind));
  WriteHelp(out, member.help);
  fputs("]\n    HRESULT ", out);
  WriteText(out, member.name);
  fputs("(", out);
  const char* separator = "";
  for (unsigned i = 0; i < member.parameters.Count(); ++i) {
    fputs(separator, out);
    WriteParameter(out, member.parameters.rows[i]);
    separator = ", ";
  }
  if (member.result.type != VT_EMPTY) {
    fprintf(out, "%s[out, retval] ", separator);
    WriteType(out, member.result);
    fputs("* result", out);
  }
  fputs(");\n", out);
}

void WriteAttributes(FILE* out, const GUID& id, const char* more, const OLECHAR* help) {
  fputs("[uuid(", out);
  WriteGuid(out, id, false);
  fprintf(out, "), version(%d.%d), %s", kTypeLibraryTable.major, kTypeLibraryTable.minor, more);
  WriteHelp(out, help);
  fputs("]\n", out);
}

void WriteInterface(FILE* out, const InterfaceTable& table) {
  fputs("  ", out);
  WriteAttributes(out, *table.iid, "object, dual, oleautomation, ", table.help);
  fputs("  interface ", out);
  WriteText(out, table.name);
  fputs(" : IDispatch\n  {\n", out);
  for (unsigned i = 0; i < table.member_count; ++i) WriteMember(out, table.members[i]);
  fputs("  }\n", out);
}

}  // namespace

void WriteInterfaceDefinitions(FILE* out) {
  fputs("import \"automation_types.idl\";\n", out);
  WriteAttributes(out, *kTypeLibraryTable.id, "", kTypeLibraryTable.help);
  fputs("library ", out);
  WriteText(out, kTypeLibraryTable.name);
  fputs("\n{\n  importlib(\"stdole2.tlb\");\n", out);
  for (unsigned i = 0; i < kTypeLibraryTable.interface_count; ++i) {
    WriteInterface(out, *kTypeLibraryTable.interfaces[i]);
  }
  for (unsigned i = 0; i < kTypeLibraryTable.class_count; ++i) {
    const ClassTableRow& row = kTypeLibraryTable.classes[i];
    fputs("  ", out);
    WriteAttributes(out, *row.id, "", row.help);
    fputs("  coclass ", out);
    WriteText(out, row.name);
    fputs("\n  {\n    [default] interface ", out);
    WriteText(out, row.default_interface->name);
    fputs(";\n  }\n", out);
  }
  fputs("}\n", out);
}

}  // namespace mirolta
