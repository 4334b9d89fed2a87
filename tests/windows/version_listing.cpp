// Prints the version resource of a file as the system reads it, a line a value.
//
//   version_listing FILE
#include <stdio.h>
#include <windows.h>

#include <initializer_list>
#include <vector>

namespace {

void PrintText(const void* information, const wchar_t* name) {
  wchar_t path[64];
  swprintf(path, 64, L"\\StringFileInfo\\040904B0\\%ls", name);
  void* text = nullptr;
  UINT length = 0;
  if (!VerQueryValueW(information, path, &text, &length)) return;
  // The length counts the zero at the end.
  const wchar_t* const units = static_cast<const wchar_t*>(text);
  const bool ends = length > 0 && units[length - 1] == 0;
  printf("%ls=%ls%s\n", name, units, ends && wcslen(units) == length - 1 ? "" : " (bad length)");
}

unsigned High(DWORD number) {
  return number >> 16;
}

unsigned Low(DWORD number) {
  return number & 0xFFFF;
}

}  // namespace

int main(int count, char** arguments) {
  if (count != 2) return 2;
  wchar_t file[MAX_PATH] = {};
  MultiByteToWideChar(CP_ACP, 0, arguments[1], -1, file, MAX_PATH);
  const DWORD size = GetFileVersionInfoSizeW(file, nullptr);
  std::vector<BYTE> information(size);
  if (size == 0 || !GetFileVersionInfoW(file, 0, size, information.data())) {
    printf("no version\n");
    return 1;
  }
  void* place = nullptr;
  UINT length = 0;
  if (!VerQueryValueW(information.data(), L"\\", &place, &length) ||
      length != sizeof(VS_FIXEDFILEINFO)) {
    printf("no fixed information\n");
    return 1;
  }
  const VS_FIXEDFILEINFO& fixed = *static_cast<const VS_FIXEDFILEINFO*>(place);
  printf("signature %lX, flags %lX, system %lX, type %lX\n", fixed.dwSignature, fixed.dwFileFlags,
         fixed.dwFileOS, fixed.dwFileType);
  printf("file %u.%u.%u.%u\n", High(fixed.dwFileVersionMS), Low(fixed.dwFileVersionMS),
         High(fixed.dwFileVersionLS), Low(fixed.dwFileVersionLS));
  printf("product %u.%u.%u.%u\n", High(fixed.dwProductVersionMS), Low(fixed.dwProductVersionMS),
         High(fixed.dwProductVersionLS), Low(fixed.dwProductVersionLS));
  if (VerQueryValueW(information.data(), L"\\VarFileInfo\\Translation", &place, &length) &&
      length == 4) {
    const WORD* const words = static_cast<const WORD*>(place);
    printf("translation %04X%04X\n", words[0], words[1]);
  }
  for (const wchar_t* name :
       {L"CompanyName", L"FileDescription", L"FileVersion", L"InternalName", L"LegalCopyright",
        L"OriginalFilename", L"ProductName", L"ProductVersion"}) {
    PrintText(information.data(), name);
  }
  return 0;
}
