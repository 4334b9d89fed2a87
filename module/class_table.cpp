#include "class_table.h"

#include <array>

#include "class_rows.h"

namespace mirolta {

namespace {

constinit auto table = std::to_array(kClassRows);

}  // namespace

ClassRow* ClassTable() {
  return table.data();
}

ClassRow* FindClass(REFCLSID id) {
  for (ClassRow* row = table.data(); row->id != nullptr; ++row) {
    if (row->create_factory != nullptr && *row->id == id) return row;
  }
  return nullptr;
}

}  // namespace mirolta
