#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

/// Numbers from one to another, both included.
CLI::Validator NumberFrom(double least, double most);
/// One of these; --help and completion name them as "{a,b}".
CLI::Validator OneOf(const std::vector<std::string>& values);
