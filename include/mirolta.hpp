// SPDX-License-Identifier: MIT
// mirolta.hpp: the classes for C++17 and later, with owning types for texts, values, byte arrays and
// objects. Failures are exceptions; every operation that can fail has a second form, TryName, which
// returns a Result instead. docs/cpp.md explains both.
#pragma once

#include "mirolta/cpp/byte_span.hpp"
#include "mirolta/cpp/bytes.hpp"
#include "mirolta/cpp/cipher.hpp"
#include "mirolta/cpp/cipher_filter.hpp"
#include "mirolta/cpp/create.hpp"
#include "mirolta/cpp/digest_filter.hpp"
#include "mirolta/cpp/error.hpp"
#include "mirolta/cpp/hash.hpp"
#include "mirolta/cpp/number.hpp"
#include "mirolta/cpp/object.hpp"
#include "mirolta/cpp/rsa.hpp"
#include "mirolta/cpp/standard_stream.hpp"
#include "mirolta/cpp/stream_buffer.hpp"
#include "mirolta/cpp/text.hpp"
#include "mirolta/cpp/value.hpp"
