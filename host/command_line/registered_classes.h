// What the registry says of classes, in the system's form of texts.
#pragma once

#include <string>
#include <vector>

#include "platform.h"

namespace mirolta::host {

struct RegisteredClass {
  CLSID id = {};
  std::string prog_id;  // the one without a version if there is one; may be empty
  std::string file;     // of the module
  DWORD layer = 0;      // of the registry in which the file is named
};

// FindClass reads the registration of one class.
// Errors: ERROR_FILE_NOT_FOUND if it has no module; those of reading the registry.
LONG FindClass(const CLSID& id, RegisteredClass* found);

// ReadClasses returns all classes that have a module, in the order of the registry.
// Errors: those of reading the registry.
LONG ReadClasses(std::vector<RegisteredClass>* classes);

// RemoveClassesOf deletes what names a module: its classes with their ProgIDs, and its type
// libraries. The module need not exist. Call it within a batch.
// Errors: ERROR_FILE_NOT_FOUND if nothing names the module; those of the registry.
LONG RemoveClassesOf(const std::string& file);

// A key of the registry that names a module, and its layer.
struct KeyOfModule {
  std::string path;
  DWORD layer = 0;
};
// FindKeysOf returns the keys of classes and type libraries that name a module by any path.
// Errors: those of reading the registry.
LONG FindKeysOf(const std::string& file, std::vector<KeyOfModule>* keys);
// FindKeysOfOthers returns those that name any other module.
// Errors: those of reading the registry.
LONG FindKeysOfOthers(const std::string& file, std::vector<KeyOfModule>* keys);

// The name of the file of a layer.
std::string RegistryFileOf(DWORD layer);
// A sentence about a failure to read the registry: it names the file, and the line or the remedy.
std::string RegistryReadProblem(LONG error);
// How the entries of a module in a layer are removed.
std::string RemovalAdvice(const std::string& file, DWORD layer);

}  // namespace mirolta::host
