// Errors that scripts see: an Error with number (signed 32 bits), description, message and source.
#pragma once

#include "engine/engine_api.h"
#include "values/text_encoding.h"

namespace mirolta::host {

// Statuses of the script host, with the platform's numbers.
inline constexpr HRESULT kInvalidCall = MIROLTA_STATUS(0x800A0005u);
inline constexpr HRESULT kOutOfStack = MIROLTA_STATUS(0x800A001Cu);
inline constexpr HRESULT kSubscriptOutOfRange = MIROLTA_STATUS(0x800A0009u);
inline constexpr HRESULT kCannotCreateObject = MIROLTA_STATUS(0x800A01ADu);
inline constexpr HRESULT kNoSuchMember = MIROLTA_STATUS(0x800A01B6u);
inline constexpr HRESULT kNoSuchAction = MIROLTA_STATUS(0x800A01BDu);
inline constexpr HRESULT kNotACollection = MIROLTA_STATUS(0x800A01C3u);
inline constexpr HRESULT kSyntaxError = MIROLTA_STATUS(0x800A03EAu);
inline constexpr HRESULT kNumberExpected = MIROLTA_STATUS(0x800A1389u);
inline constexpr HRESULT kFunctionExpected = MIROLTA_STATUS(0x800A138Au);
inline constexpr HRESULT kDateExpected = MIROLTA_STATUS(0x800A138Eu);
inline constexpr HRESULT kObjectExpected = MIROLTA_STATUS(0x800A138Fu);
inline constexpr HRESULT kUndefinedIdentifier = MIROLTA_STATUS(0x800A1391u);
inline constexpr HRESULT kArrayExpected = MIROLTA_STATUS(0x800A1395u);
inline constexpr HRESULT kEnumeratorExpected = MIROLTA_STATUS(0x800A1397u);
inline constexpr HRESULT kRegExpSyntaxError = MIROLTA_STATUS(0x800A1399u);
inline constexpr HRESULT kBadArrayLength = MIROLTA_STATUS(0x800A13A5u);
inline constexpr HRESULT kStreamClosed = MIROLTA_STATUS(0x800A0E78u);
inline constexpr HRESULT kDisconnected = MIROLTA_STATUS(0x800401FDu);
inline constexpr HRESULT kThrownValue = MIROLTA_STATUS(0x800A139Eu);

// ThrowStatus throws an Error into the script. An empty description gives the standard wording, or
// the status in hexadecimal.
[[noreturn]] void ThrowStatus(duk_context* engine, HRESULT status, UnitsView description = {},
                              UnitsView source = {});
// ThrowText throws an Error whose description is formatted as by printf.
// Shapes: text arguments are in the engine's form.
[[noreturn]] void ThrowText(duk_context* engine, HRESULT status, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// InstallErrors installs the error classes (error_class.h) and records where values are thrown. Call
// once, before any script runs.
void InstallErrors(duk_context* engine);

// What an error tells. Text is in the system's form.
struct ErrorReport {
  std::string file;  // the script's name, or the engine's for code that eval and Function compile
  int line = 0;      // 0 if unknown
  HRESULT number = 0;
  std::string description;
  std::string source;
};
// DescribeError reports the thrown value on top of the stack, which stays there. It throws no
// engine error: a longjmp would skip the destructors of automation callers.
// Errors: std::bad_alloc.
ErrorReport DescribeError(duk_context* engine);

// PushCalls pushes the engine's text of the calls that led to the error on top of the stack, or to
// the last throw of a value that is not an Error.
// Errors: the engine's.
void PushCalls(duk_context* engine);

}  // namespace mirolta::host
