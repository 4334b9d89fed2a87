// The line and column of a text stream, both from 1.
#pragma once

#include "values/text_encoding.h"

namespace mirolta::host {

struct TextPosition {
  int32_t line = 1;
  int32_t column = 1;

  // A line ends with its line feed.
  void Advance(UnitsView text) {
    for (const OLECHAR unit : text) {
      if (unit == OLECHAR{'\n'}) {
        if (line < INT32_MAX) ++line;
        column = 1;
      } else if (column < INT32_MAX) {
        ++column;
      }
    }
  }
};

}  // namespace mirolta::host
