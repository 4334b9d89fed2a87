// The Windows form: resources are those of the program's file.
#pragma once

#include "platform.h"
