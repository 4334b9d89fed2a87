// Prints what the registry holds of a module's classes, interfaces and type library. Built natively
// and for Windows, it must print the same after registration.
//
//   registry_listing MODULE_FILE
//
// A line is "key|value name=text"; the module's file, its folder and the system's name in the type
// library's rows are replaced by words, and so are the library's flags, to which the system's
// loader adds its own. The lines are in no order.
#include <stdio.h>
#include <string.h>

#include <initializer_list>

#include "mirolta.h"

namespace {

constexpr size_t kCapacity = 1024;

struct Text {
  OLECHAR units[kCapacity];
};

size_t LengthOf(const OLECHAR* text) {
  size_t length = 0;
  while (text[length] != 0) ++length;
  return length;
}

bool Same(const OLECHAR* a, const OLECHAR* b) {
  const size_t length = LengthOf(a);
  return length == LengthOf(b) && memcmp(a, b, length * sizeof(OLECHAR)) == 0;
}

Text Join(const OLECHAR* a, const OLECHAR* b) {
  Text joined = {};
  size_t length = 0;
  for (const OLECHAR* part : {a, b}) {
    for (; *part != 0 && length + 1 < kCapacity; ++part) joined.units[length++] = *part;
  }
  return joined;
}

Text module_file = {};
Text module_folder = {};

void Print(const OLECHAR* text) {
  for (; *text != 0; ++text) putchar(static_cast<int>(*text));
}

void PrintValueText(const OLECHAR* text) {
  if (Same(text, module_file.units)) {
    printf("<module>");
  } else if (Same(text, module_folder.units)) {
    printf("<folder>");
  } else {
    Print(text);
  }
}

bool EndsWith(const OLECHAR* text, const OLECHAR* end) {
  const size_t length = LengthOf(text);
  return length >= LengthOf(end) && Same(text + length - LengthOf(end), end);
}

void PrintKeyPath(const OLECHAR* path) {
  for (const OLECHAR* system :
       {OLESTR("\\win64"), OLESTR("\\win32"), OLESTR("\\linux64"), OLESTR("\\linux32")}) {
    if (!EndsWith(path, system)) continue;
    Text cut = Join(path, OLESTR(""));
    cut.units[LengthOf(path) - LengthOf(system)] = 0;
    Print(cut.units);
    printf("\\<system>");
    return;
  }
  Print(path);
}

void List(const OLECHAR* path) {
  HKEY key = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, path, 0, KEY_READ, &key) != ERROR_SUCCESS) return;
  PrintKeyPath(path);
  printf("\n");
  for (DWORD i = 0;; ++i) {
    OLECHAR name[MAX_PATH] = {};
    OLECHAR data[kCapacity] = {};
    DWORD length = MAX_PATH;
    DWORD size = sizeof(data) - sizeof(OLECHAR);
    DWORD type = 0;
    if (RegEnumValueW(key, i, name, &length, nullptr, &type, reinterpret_cast<BYTE*>(data),
                      &size) != ERROR_SUCCESS) {
      break;
    }
    PrintKeyPath(path);
    printf("|");
    Print(name);
    printf("=");
    if (type != REG_SZ) printf("(type %u)", static_cast<unsigned>(type));
    if (EndsWith(path, OLESTR("\\FLAGS"))) {
      printf("<flags>");
    } else {
      PrintValueText(data);
    }
    printf("\n");
  }
  for (DWORD i = 0;; ++i) {
    OLECHAR name[MAX_PATH] = {};
    DWORD length = MAX_PATH;
    if (RegEnumKeyExW(key, i, name, &length, nullptr, nullptr, nullptr, nullptr) != ERROR_SUCCESS) {
      break;
    }
    List(Join(Join(path, OLESTR("\\")).units, name).units);
  }
  RegCloseKey(key);
}

void ListId(const OLECHAR* folder, REFGUID id) {
  OLECHAR text[39] = {};
  StringFromGUID2(id, text, 39);
  List(Join(folder, text).units);
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  MultiByteToWideChar(CP_ACP, 0, arguments[1], -1, module_file.units, kCapacity);
  module_folder = module_file;
  size_t end = LengthOf(module_folder.units);
  while (end > 0 && module_folder.units[end - 1] != '/' && module_folder.units[end - 1] != '\\') {
    --end;
  }
  module_folder.units[end] = 0;

  HKEY classes = nullptr;
  if (RegOpenKeyExW(HKEY_CLASSES_ROOT, OLESTR("CLSID"), 0, KEY_READ, &classes) == ERROR_SUCCESS) {
    printf("CLSID\n");
    RegCloseKey(classes);
  }
  for (const OLECHAR* stem :
       {OLESTR("HashObject"), OLESTR("Symmetric"), OLESTR("Number"), OLESTR("RSA"),
        OLESTR("ToviStreamDigest"), OLESTR("ToviStreamCrypt")}) {
    for (const OLECHAR* end_of_name :
         {OLESTR(""), OLESTR(".1"), OLESTR(".free"), OLESTR(".free.1")}) {
      List(Join(Join(OLESTR("Vardeko.crypt."), stem).units, end_of_name).units);
    }
  }
  for (const CLSID* id :
       {&CLSID_ToviStreamDigest, &CLSID_HashObject, &CLSID_SymmetricCryptObject, &CLSID_RSACrypt,
        &CLSID_PexBigNumber, &CLSID_ToviStreamCrypt, &CLSID_ToviStreamDigestFree,
        &CLSID_HashObjectFree, &CLSID_SymmetricCryptObjectFree, &CLSID_RSACryptFree,
        &CLSID_PexBigNumberFree, &CLSID_ToviStreamCryptFree}) {
    ListId(OLESTR("CLSID\\"), *id);
  }
  for (const IID* id : {&IID_IHashObject, &IID_ISymmetricCryptObject, &IID_IPexBigNumber,
                        &IID_IRSACrypt, &IID_IToviStreamDigest, &IID_IToviStreamCrypt}) {
    ListId(OLESTR("Interface\\"), *id);
  }
  ListId(OLESTR("TypeLib\\"), LIBID_MIROLTALib);
  return 0;
}
