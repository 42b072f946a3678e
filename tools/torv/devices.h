#pragma once

/// Prints the wave outputs, the first of which is used when none is asked for, and the MIDI outputs, by the names that
/// the system gives them.
void ListDevices(bool json);
