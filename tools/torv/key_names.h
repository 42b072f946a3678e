#pragma once

#include <string>

/// Scientific pitch names: note 60 is C4.
std::string NameOfKey(int key);
