#pragma once

#include "view/editor.h"

namespace editor {

/// A strip for every track: its name, who sings it, how loud and where it is heard, and a meter.
class Mixer {
public:
    void Draw(Editor& editor);

private:
    void DrawStrip(Editor& editor, size_t place);
    void DrawMeter(Editor& editor, size_t place);

    float m_levels[kMostTracks] = {}; ///< as shown: they fall slowly, so that peaks can be read
};

} // namespace editor
