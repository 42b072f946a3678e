#pragma once

#include <string>
#include <vector>

/// Prints rows as columns of the width that they need.
void PrintTable(const std::vector<std::vector<std::string>>& rows);
