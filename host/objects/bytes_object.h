// The global object Bytes: lib/bytes.js, built in, with native functions for what takes long.
#pragma once

#include <string_view>

#include "engine/engine_api.h"

namespace mirolta::host {

// The text of lib/bytes.js.
extern const std::string_view kBytesScript;

// InstallBytes defines the global Bytes, whose script is compiled at its first use.
void InstallBytes(duk_context* engine);

}  // namespace mirolta::host
