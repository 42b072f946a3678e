/// Failures of this library are DBM_ statuses.
#pragma once

#include "status.h"
#include "torv/abi/dbm.h"

namespace dbm {

using companion::Fail;
using companion::Failure;
using companion::Require;

} // namespace dbm
