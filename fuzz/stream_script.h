// Scripts that open, use, share, inherit from, close and drop byte streams. A model of the open
// streams predicts what they log and what the files then contain.
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

// The files that exist when the script starts.
std::map<std::string, std::string> FilesBefore();

StreamScript MakeStreamScript(FuzzInput& in);

}  // namespace mirolta::fuzz
