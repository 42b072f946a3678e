#pragma once

#include <CLI/CLI.hpp>

/// Numbers from one to another, both included.
CLI::Validator NumberFrom(double least, double most);
