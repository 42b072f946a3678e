#pragma once

/// From here on bytes go through standard input or output as they are, whatever the system makes of line ends else.
void MakeStandardInputBinary();
void MakeStandardOutputBinary();
