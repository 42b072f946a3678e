/// Failures of this library are VEDIT_ statuses.
#pragma once

#include "status.h"
#include "torv/abi/vedit.h"

namespace vedit {

using companion::Fail;
using companion::Failure;
using companion::Require;

} // namespace vedit
