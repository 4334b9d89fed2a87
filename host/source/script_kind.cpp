#include "source/script_kind.h"

#include <strings.h>

namespace mirolta::host {
namespace {

// Names of files that end like this are in another language or form. Other names say nothing.
struct Kind {
  const char* extension;
  const char* what;
};
constexpr Kind kRefused[] = {
    {".vbs", "a VBScript script"},
    {".vbe", "an encoded VBScript script"},
    {".vb", "a Visual Basic source file"},
    {".bas", "a BASIC source file"},
    {".jse", "an encoded script"},
    {".wsf", "a script in XML, which may mix languages"},
    {".wsc", "a script component in XML"},
    {".sct", "a script component in XML"},
    {".wsh", "a file of script settings"},
    {".hta", "an HTML application"},
    {".htm", "an HTML page"},
    {".html", "an HTML page"},
    {".xml", "an XML file"},
    {".json", "JSON data"},
    {".mjs", "an ECMAScript module"},
    {".ts", "a TypeScript source file"},
    {".py", "a Python script"},
    {".pl", "a Perl script"},
    {".rb", "a Ruby script"},
    {".lua", "a Lua script"},
    {".php", "a PHP script"},
    {".sh", "a shell script"},
    {".ps1", "a PowerShell script"},
    {".bat", "a batch file"},
    {".cmd", "a batch file"},
    {".exe", "a program"},
    {".dll", "a library"},
    {".so", "a library"},
};

// The start of scripts that the platform's script encoder wrote.
constexpr std::string_view kEncodedStart = "#@~^";

std::string Extension(std::string_view path) {
  const size_t name = path.rfind('/') + 1;
  const size_t dot = path.rfind('.');
  // A name that starts with its only dot has no extension.
  return dot == std::string_view::npos || dot <= name ? std::string()
                                                      : std::string(path.substr(dot));
}

}  // namespace

std::string RefusalOf(std::string_view path, std::string_view bytes) {
  const char* what = bytes.starts_with(kEncodedStart) ? "an encoded script" : nullptr;
  const std::string extension = Extension(path);
  for (const Kind& kind : kRefused) {
    if (strcasecmp(kind.extension, extension.c_str()) == 0) what = kind.what;
  }
  if (what == nullptr) return {};
  return std::string("this is ") + what + "; mirolta-host runs JScript (ECMAScript 5) in .js files";
}

}  // namespace mirolta::host
