#pragma once

#include "torv/platform/platform.h"

#include <functional>
#include <string>
#include <utility>
#include <vector>

using Texts = std::vector<std::string>;

/// Records what the library shows while it lives.
class Boxes {
public:
    Boxes()
        : m_box(torv::SetMessageBoxHandler([this](HWND, const char* text, const char*, UINT type) {
              texts.emplace_back(text);
              types.push_back(type);
              std::exchange(atBox, [] {})();
              return answer;
          })),
          m_beep(torv::SetBeepHandler([this](UINT type) { beeps.push_back(type); })) {}
    ~Boxes() {
        torv::SetMessageBoxHandler(m_box);
        torv::SetBeepHandler(m_beep);
    }
    Boxes(const Boxes&) = delete;
    Boxes& operator=(const Boxes&) = delete;

    /// What was shown since the last call.
    Texts Take() { return std::exchange(texts, {}); }

    Texts texts;
    std::vector<UINT> types;
    std::vector<UINT> beeps;
    int answer = IDOK;
    std::function<void()> atBox = [] {}; ///< what the host does while the next one is shown

private:
    torv::MessageBoxHandler m_box;
    torv::BeepHandler m_beep;
};
