#pragma once

/// Counts what this program allocates with new, between a start and a stop.
namespace allocation_counter {

void Start();
int Stop();

} // namespace allocation_counter
