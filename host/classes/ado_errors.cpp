#include "classes/ado_errors.h"

#include <string>

namespace mirolta::host {
namespace {

struct ErrorRow {
  HRESULT number;
  const char* text;
};
constexpr ErrorRow kErrors[] = {
    {kAdoBadArgument,
     "Arguments are of the wrong type, are out of acceptable range, or are in conflict with one "
     "another."},
    {kAdoCannotOpenFile, "File could not be opened."},
    {kAdoCannotReadFile, "File could not be read."},
    {kAdoCannotWriteFile, "Write to file failed."},
    {kAdoNotInThisContext, "Operation is not allowed in this context."},
    {kAdoNotCapable, "Object or provider is not capable of performing requested operation."},
    {kAdoClosed, "Operation is not allowed when the object is closed."},
    {kAdoOpen, "Operation is not allowed when the object is open."},
};

}  // namespace

void FailAdo(HRESULT number, std::string_view reason) {
  std::string text;
  for (const ErrorRow& row : kErrors) {
    if (row.number == number) text = row.text;
  }
  if (!reason.empty()) text.append(" ").append(reason);
  Fail(number, text);
}

}  // namespace mirolta::host
