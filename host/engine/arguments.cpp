#include "engine/arguments.h"

#include "engine/host_errors.h"

namespace mirolta::host {

double NumberWithin(duk_context* engine, duk_idx_t index, double least, double most,
                    HRESULT status) {
  const double number = duk_to_number(engine, index);
  const bool is_within = number >= least && number <= most;  // false for NaN
  if (!is_within) ThrowStatus(engine, status);
  return number;
}

std::string_view TextArgument(duk_context* engine, duk_idx_t index) {
  duk_size_t size = 0;
  const char* text = duk_to_lstring(engine, index, &size);
  return {text, size};
}

}  // namespace mirolta::host
