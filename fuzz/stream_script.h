// Scripts that open, use, share, inherit from, close and drop byte streams, with what they must log
// and what the files must hold afterwards, from a model of which streams are open.
#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "fuzz_input.h"

namespace mirolta::fuzz {

struct StreamScript {
  std::string script;  // appends to `log`; files are in the folder `folder`
  std::string log;
  std::map<std::string, std::string> files;  // by name, at the end
};

// The files that are there when the script starts.
std::map<std::string, std::string> FilesBefore();

StreamScript MakeStreamScript(FuzzInput& in);

}  // namespace mirolta::fuzz
