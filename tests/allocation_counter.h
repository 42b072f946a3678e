#pragma once

/// Counts what chosen threads allocate with new.
namespace allocation_counter {

void WatchThisThread(bool isWatched = true);
/// What watched threads have allocated since the last question.
int Take();

} // namespace allocation_counter
