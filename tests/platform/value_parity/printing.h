// What the program prints: one line an operation, the same in both builds where the results are the
// same. Floating point numbers are shown by their bits.
#pragma once

#include <string>

#include "platform.h"

namespace mirolta::value_parity {

// The last `width` hexadecimal digits, at most 16.
std::string Hex(ULONGLONG value, int width);
std::string Decimal(LONGLONG value);
std::string Status(HRESULT status);

// Text in double quotes; characters other than ASCII as \uXXXX.
std::string Quoted(const OLECHAR* text, size_t length);
std::string Quoted(BSTR text);

// Type and content.
std::string Show(const VARIANT& value);
std::string ShowArray(SAFEARRAY* array);

// Starts a section, whose lines are numbered from 1.
void Section(const char* name);
// Prints "section number what => result".
void Print(const std::string& what, const std::string& result);
// Prints the status and the value of an operation.
void Print(const std::string& what, HRESULT status, const VARIANT& value);

}  // namespace mirolta::value_parity
