// WScript.Arguments and its Named and Unnamed, automation collections.
//
// /name:value   the text "value"; "" without anything after the colon
// /name         undefined
// /name+        true
// /name-        false
//
// Names are compared without regard to the case of the letters A to Z; of arguments with the same
// name the first counts. An argument with another slash in its name is a path: it has no name.
#pragma once

#include <string>
#include <vector>

#include "classes/host_object.h"

namespace mirolta::host {

// NewArguments returns the collection of the arguments; ShowUsage names `script_name`.
// Shapes: texts are in the system's form.
// Errors: throws std::bad_alloc.
HostObject* NewArguments(const std::vector<std::string>& arguments, const std::string& script_name);

// For the help: the tables of the three classes.
extern const HostClass kArgumentsClass;
extern const HostClass kNamedArgumentsClass;
extern const HostClass kUnnamedArgumentsClass;

}  // namespace mirolta::host
