// Prints the type library of a module, member by member. Built natively and for Windows, where the
// system reads the library from the file's resources, it must print the same.
//
// Left out is what does not come from the library: flags that the loader adds, and the methods that
// each interface inherits (the system lists them, the portable runtime does not).
#include <stdio.h>

#include "platform.h"

namespace {

// Members with these identifiers are inherited.
constexpr MEMBERID kFirstInherited = 0x60000000;

void PrintText(const char* what, BSTR text) {
  printf(" %s=\"", what);
  for (UINT i = 0; i < SysStringLen(text); ++i) putchar(static_cast<int>(text[i]));
  printf("\"");
  SysFreeString(text);
}

void PrintGuid(REFGUID id) {
  OLECHAR text[39] = {};
  StringFromGUID2(id, text, 39);
  for (const OLECHAR* c = text; *c != 0; ++c) putchar(static_cast<int>(*c));
}

void PrintDocumentation(ITypeInfo* info, MEMBERID id) {
  BSTR name = nullptr;
  BSTR help = nullptr;
  DWORD context = 77;
  BSTR file = nullptr;
  const HRESULT status = info->GetDocumentation(id, &name, &help, &context, &file);
  printf(" documentation=%08X", static_cast<unsigned>(status));
  PrintText("name", name);
  PrintText("help", help);
  PrintText("help file", file);
  printf(" context=%u", static_cast<unsigned>(context));
}

void PrintType(ITypeInfo* info, const TYPEDESC& type) {
  printf("%u", static_cast<unsigned>(type.vt));
  if (type.vt == VT_PTR) {
    printf(">");
    PrintType(info, *type.lptdesc);
  } else if (type.vt == VT_USERDEFINED) {
    ITypeInfo* other = nullptr;
    BSTR name = nullptr;
    if (SUCCEEDED(info->GetRefTypeInfo(type.hreftype, &other))) {
      other->GetDocumentation(-1, &name, nullptr, nullptr, nullptr);
      other->Release();
    }
    PrintText("of", name);
  }
}

void PrintParameter(ITypeInfo* info, const ELEMDESC& element) {
  printf("      parameter type=");
  PrintType(info, element.tdesc);
  printf(" flags=%X", static_cast<unsigned>(element.paramdesc.wParamFlags));
  if ((element.paramdesc.wParamFlags & PARAMFLAG_FHASDEFAULT) != 0) {
    const VARIANT& preset = element.paramdesc.pparamdescex->varDefaultValue;
    const long value = V_VT(&preset) == VT_BOOL ? long{V_BOOL(&preset)} : long{V_I4(&preset)};
    printf(" default=%u:%ld", static_cast<unsigned>(V_VT(&preset)), value);
  }
  printf("\n");
}

void PrintFunction(ITypeInfo* info, UINT index) {
  FUNCDESC* function = nullptr;
  const HRESULT status = info->GetFuncDesc(index, &function);
  if (FAILED(status)) {
    printf("    function %u: %08X\n", index, static_cast<unsigned>(status));
    return;
  }
  if (function->memid >= kFirstInherited) {
    info->ReleaseFuncDesc(function);
    return;
  }
  printf("    function id=%ld kind=%d.%d call=%d slot=%d flags=%X optional=%d result=",
         static_cast<long>(function->memid), static_cast<int>(function->funckind),
         static_cast<int>(function->invkind), static_cast<int>(function->callconv),
         static_cast<int>(function->oVft) / static_cast<int>(sizeof(void*)),
         static_cast<unsigned>(function->wFuncFlags), function->cParamsOpt);
  PrintType(info, function->elemdescFunc.tdesc);
  PrintDocumentation(info, function->memid);
  printf("\n");
  for (SHORT i = 0; i < function->cParams; ++i) {
    PrintParameter(info, function->lprgelemdescParam[i]);
  }
  BSTR names[8] = {};
  UINT count = 0;
  printf("      names %08X",
         static_cast<unsigned>(info->GetNames(function->memid, names, 8, &count)));
  for (UINT i = 0; i < count; ++i) PrintText("", names[i]);
  printf("\n");
  info->ReleaseFuncDesc(function);
}

void PrintImplemented(ITypeInfo* info, UINT index) {
  HREFTYPE reference = 0;
  ITypeInfo* other = nullptr;
  INT flags = 0;
  const HRESULT status = info->GetRefTypeOfImplType(index, &reference);
  printf("    implements %08X", static_cast<unsigned>(status));
  if (SUCCEEDED(status) && SUCCEEDED(info->GetRefTypeInfo(reference, &other))) {
    BSTR name = nullptr;
    other->GetDocumentation(-1, &name, nullptr, nullptr, nullptr);
    PrintText("", name);
    other->Release();
  }
  info->GetImplTypeFlags(index, &flags);
  printf(" flags=%d\n", flags);
}

void PrintTypeInfo(ITypeLib* library, UINT index) {
  ITypeInfo* info = nullptr;
  TYPEATTR* attributes = nullptr;
  if (FAILED(library->GetTypeInfo(index, &info)) || FAILED(info->GetTypeAttr(&attributes))) {
    printf("  type %u cannot be had\n", index);
    return;
  }
  TYPEKIND kind = TKIND_ENUM;
  library->GetTypeInfoType(index, &kind);
  printf("  type kind=%d.%d version=%d.%d flags=%X variables=%d table=%d id=",
         static_cast<int>(kind), static_cast<int>(attributes->typekind), attributes->wMajorVerNum,
         attributes->wMinorVerNum, static_cast<unsigned>(attributes->wTypeFlags), attributes->cVars,
         attributes->cbSizeVft / static_cast<int>(sizeof(void*)));
  PrintGuid(attributes->guid);
  PrintDocumentation(info, -1);
  printf("\n");
  for (UINT i = 0; i < attributes->cImplTypes; ++i) PrintImplemented(info, i);
  for (UINT i = 0; i < attributes->cFuncs; ++i) PrintFunction(info, i);
  info->ReleaseTypeAttr(attributes);
  info->Release();
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  OLECHAR file[1024] = {};
  MultiByteToWideChar(CP_ACP, 0, arguments[1], -1, file, 1024);
  ITypeLib* library = nullptr;
  const HRESULT status = LoadTypeLib(file, &library);
  if (FAILED(status)) {
    printf("LoadTypeLib: %08X\n", static_cast<unsigned>(status));
    return 1;
  }
  TLIBATTR* attributes = nullptr;
  if (FAILED(library->GetLibAttr(&attributes))) return 1;
  printf("library version=%d.%d locale=%u system=%d id=", attributes->wMajorVerNum,
         attributes->wMinorVerNum, static_cast<unsigned>(attributes->lcid),
         static_cast<int>(attributes->syskind));
  PrintGuid(attributes->guid);
  library->ReleaseTLibAttr(attributes);
  BSTR name = nullptr;
  BSTR help = nullptr;
  library->GetDocumentation(-1, &name, &help, nullptr, nullptr);
  PrintText("name", name);
  PrintText("help", help);
  printf(" types=%u\n", library->GetTypeInfoCount());
  for (UINT i = 0; i < library->GetTypeInfoCount(); ++i) PrintTypeInfo(library, i);
  library->Release();
  return 0;
}
