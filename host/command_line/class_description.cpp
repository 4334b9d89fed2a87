#include "command_line/class_description.h"

#include <stdio.h>
#include <strings.h>

#include "classes/class_list.h"
#include "classes/object_creation.h"
#include "command_line/member_descriptions.h"
#include "command_line/module_registration.h"
#include "command_line/registered_classes.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

// A type's name and help text.
struct TypeHelp {
  std::string name;
  std::string help;
};

std::string Taken(BSTR text) {
  std::string taken;
  try {
    taken = SystemFromUnits({text, SysStringLen(text)});
  } catch (...) {
    SysFreeString(text);
    throw;
  }
  SysFreeString(text);
  return taken;
}

TypeHelp HelpOf(ITypeInfo* info) {
  BSTR name = nullptr;
  BSTR help = nullptr;
  if (FAILED(info->GetDocumentation(MEMBERID{-1}, &name, &help, nullptr, nullptr))) return {};
  TypeHelp found;
  found.help = Taken(help);
  found.name = Taken(name);
  return found;
}

// The class of an interface in its type library: the one with this CLSID, else the first one with
// the interface.
OwnedReference<ITypeInfo> ClassOf(ITypeInfo* info, const CLSID& id) {
  OwnedReference<ITypeLib> library;
  OwnedReference<ITypeInfo> found;
  UINT index = 0;
  if (FAILED(info->GetContainingTypeLib(library.Put(), &index))) return found;
  if (SUCCEEDED(library->GetTypeInfoOfGuid(id, found.Put()))) return found;
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) {
    TYPEKIND kind = TKIND_ALIAS;
    HREFTYPE type = 0;
    OwnedReference<ITypeInfo> interface;
    if (FAILED(library->GetTypeInfoType(i, &kind)) || kind != TKIND_COCLASS ||
        FAILED(library->GetTypeInfo(i, found.Put())) ||
        FAILED(found->GetRefTypeOfImplType(0, &type)) ||
        FAILED(found->GetRefTypeInfo(type, interface.Put()))) {
      continue;
    }
    UINT place = 0;
    OwnedReference<ITypeLib> same;
    if (SUCCEEDED(interface->GetContainingTypeLib(same.Put(), &place)) && place == index) {
      return found;
    }
  }
  found.Reset();
  return found;
}

void WriteMembers(const std::vector<MemberDescription>& members) {
  for (const bool wants_methods : {false, true}) {
    bool is_first = true;
    for (const MemberDescription& member : members) {
      if ((member.kind == "method") != wants_methods) continue;
      if (is_first) puts(wants_methods ? "\nMethods" : "\nProperties");
      is_first = false;
      const bool says_kind = member.kind != "method" && member.kind != "property";
      printf("  %s%s\n", member.signature.c_str(),
             says_kind ? ("  (" + member.kind.substr(0, member.kind.find(' ')) + ")").c_str() : "");
      if (!member.help.empty()) printf("      %s\n", member.help.c_str());
    }
  }
}

void WriteTitle(const std::string& name, const TypeHelp& help) {
  printf("%s%s%s\n", name.c_str(), help.help.empty() ? "" : ": ", help.help.c_str());
}

// Where the class comes from.
void WritePlace(const CLSID& id) {
  RegisteredClass registered;
  if (FindClass(id, &registered) != ERROR_SUCCESS) return;
  const bool is_own = IsOwnModuleRegistered() && registered.file == OwnModulePath();
  printf(
      "  in %s, %s\n", registered.file.c_str(),
      is_own ? "beside the host" : ("registered in " + RegistryFileOf(registered.layer)).c_str());
}

int Describe(const std::string& name, IDispatch* object) {
  CLSID id = CLSID_NULL;
  (void)CLSIDFromProgID(UnitsFromSystem(name).c_str(), &id);
  OwnedReference<ITypeInfo> info;
  if (FAILED(object->GetTypeInfo(0, 0, info.Put())) || !info) {
    fprintf(stderr, "mirolta-host: %s: the class has no type information\n", name.c_str());
    return 1;
  }
  const OwnedReference<ITypeInfo> class_info = ClassOf(info.Get(), id);
  WriteTitle(name, class_info ? HelpOf(class_info.Get()) : TypeHelp());
  WritePlace(id);
  TypeHelp interface = HelpOf(info.Get());
  if (class_info && HelpOf(class_info.Get()).help == interface.help) interface.help.clear();
  WriteTitle("  interface " + interface.name, interface);
  WriteMembers(DescribeTypeMembers(info.Get()));
  return 0;
}

}  // namespace

int DescribeClass(const std::string& prog_id) {
  OwnedReference<IDispatch> object;
  std::string problem;
  const HRESULT status = CreateObject(UnitsFromSystem(prog_id), &object, &problem);
  if (FAILED(status)) {
    const bool is_missing = status == CO_E_CLASSSTRING;
    fprintf(stderr, "mirolta-host: %s %s\n", prog_id.c_str(),
            is_missing ? "is not the name of a class; mirolta-host --list prints the names"
                       : ("cannot be created " + problem).c_str());
    return 1;
  }
  const HostObject* const host_object = HostObjectOf(object.Get());
  if (host_object == nullptr) return Describe(prog_id, object.Get());
  const HostClass& host_class = host_object->Class();
  WriteTitle(host_class.name, {.name = host_class.name, .help = host_class.help});
  puts("  a class of the host itself");
  WriteMembers(DescribeHostMembers(host_class));
  return 0;
}

}  // namespace mirolta::host
