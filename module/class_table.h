// The twelve rows of creatable classes: six classes, each for any threading model and
// free-threaded.
#pragma once

#include "platform.h"

namespace mirolta {

using InstanceCreator = HRESULT (*)(IUnknown* outer, REFIID iid, void** out);
using FactoryCreator = HRESULT (*)(InstanceCreator create_instance, REFIID iid, void** out);

struct ClassRow {
  const CLSID* id;  // null in the row that ends the table
  HRESULT (*update_registry)(const ClassRow& row, bool registers);
  FactoryCreator create_factory;
  InstanceCreator create_instance;
  IUnknown* factory;  // null until the first request
  DWORD cookie;       // always 0: no class is in a running-object table
  const OLECHAR* (*object_description)();
  const void* (*category_map)();
  void (*init_term)(bool loads);

  // What registration writes.
  const OLECHAR* name;
  const OLECHAR* prog_id;
  const OLECHAR* version_independent_prog_id;
  const OLECHAR* description;
  const OLECHAR* threading_model;
  WORD registry_script;
};

// The table. Its cached factories are module state; only the entry points write them.
ClassRow* ClassTable();

// FindClass returns the row of a class identifier, null if there is none.
ClassRow* FindClass(REFCLSID id);

}  // namespace mirolta
