/// Failures of this library are DBM_ statuses.
#pragma once

#include "dbm_abi.h"
#include "status.h"

namespace dbm {

using companion::Fail;
using companion::Failure;
using companion::Require;

} // namespace dbm
