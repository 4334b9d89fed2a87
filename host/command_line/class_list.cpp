#include "command_line/class_list.h"

#include <errno.h>
#include <unistd.h>

#include <algorithm>

#include "classes/class_list.h"
#include "command_line/module_registration.h"
#include "command_line/registered_classes.h"
#include "values/text_encoding.h"

namespace mirolta::host {
namespace {

std::string IdentifierOf(const CLSID& id) {
  OLECHAR text[40];
  const INT length = StringFromGUID2(id, text, 40);
  return SystemFromUnits({text, static_cast<size_t>(length) - 1});
}

bool HaveOnePlace(const RegisteredClass& a, const RegisteredClass& b) {
  return a.file == b.file && a.layer == b.layer;
}

// The module and the registry of a group.
void WritePlace(const RegisteredClass& first, FILE* output) {
  const bool is_missing = first.file.starts_with('/') && access(first.file.c_str(), F_OK) != 0 &&
                          (errno == ENOENT || errno == ENOTDIR);
  fprintf(output, "%s%s\n", first.file.c_str(), is_missing ? " (does not exist)" : "");
  if (first.layer == 0 && IsOwnModuleRegistered() && first.file == OwnModulePath()) {
    fputs("  not registered, used because it lies beside the host\n", output);
    return;
  }
  fprintf(output, "  registered in %s\n", RegistryFileOf(first.layer).c_str());
  if (is_missing) fprintf(output, "  %s\n", RemovalAdvice(first.file, first.layer).c_str());
}

void WriteGroup(const std::vector<RegisteredClass>& classes, const RegisteredClass& first,
                int width, FILE* output) {
  WritePlace(first, output);
  for (const RegisteredClass& row : classes) {
    if (!HaveOnePlace(row, first)) continue;
    const char* const name = row.prog_id.empty() ? "(no ProgID)" : row.prog_id.c_str();
    fprintf(output, "    %-*s  %s\n", width, name, IdentifierOf(row.id).c_str());
  }
  fputc('\n', output);
}

}  // namespace

int ListClasses(FILE* output) {
  std::vector<RegisteredClass> classes;
  RegisterOwnModule();
  const LONG error = ReadClasses(&classes);
  if (error != ERROR_SUCCESS) {
    fprintf(stderr, "mirolta-host: %s\n", RegistryReadProblem(error).c_str());
    return 1;
  }
  size_t width = 0;
  for (const RegisteredClass& row : classes) width = std::max(width, row.prog_id.size());
  for (size_t i = 0; i < classes.size(); ++i) {
    const auto end = classes.begin() + static_cast<std::ptrdiff_t>(i);
    const bool is_first = std::none_of(classes.begin(), end, [&](const RegisteredClass& other) {
      return HaveOnePlace(other, classes[i]);
    });
    if (is_first) WriteGroup(classes, classes[i], static_cast<int>(width), output);
  }
  fputs("The host itself, where no registered class has the name\n", output);
  for (const HostClassRow& row : HostClasses()) fprintf(output, "    %s\n", row.progid);
  return 0;
}

}  // namespace mirolta::host
