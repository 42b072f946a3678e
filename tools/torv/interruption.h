#pragma once

/// From here on a signal that ends the program, or Ctrl+C and the closing of its window on Windows, takes what is under
/// way of its files along. The exit status is the usual one: 130 for Ctrl+C, 143 for a plain end.
void LeaveNothingWhenInterrupted();
