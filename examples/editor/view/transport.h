#pragma once

#include "view/editor.h"

namespace editor {

/// The row above all: play, position, tempo and meter, grid, output.
void DrawTransport(Editor& editor);

} // namespace editor
