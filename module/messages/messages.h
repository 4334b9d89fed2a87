// The module's messages: string resources of the module, raised by its classes. Their statuses
// follow from their ids (raise_error.h).
#pragma once

#include "platform.h"

namespace mirolta {

struct Message {
  UINT id;
  const OLECHAR* text;
};

inline constexpr UINT kMessageNoStreamInterface = 10101;
inline constexpr UINT kMessageNoStream = 10102;
inline constexpr UINT kMessageAlgorithmNotFound = 10103;
inline constexpr UINT kMessageNotInitialized = 10104;
inline constexpr UINT kMessageKeyNotSet = 10105;
inline constexpr UINT kMessageTooMuchData = 10106;

inline constexpr Message kMessages[] = {
    {100, OLESTR("Mirolta")},
    {kMessageNoStreamInterface,
     OLESTR("The object does not support IStream interface nor it is a ToviStream object.")},
    {kMessageNoStream, OLESTR("No stream has been set yet.")},
    {kMessageAlgorithmNotFound, OLESTR("Algorithm not found.")},
    {kMessageNotInitialized, OLESTR("Not initialized.")},
    {kMessageKeyNotSet, OLESTR("Key not set.")},
    {kMessageTooMuchData, OLESTR("Too much data.")},
};

}  // namespace mirolta
