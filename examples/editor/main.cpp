#include "view/colors.h"
#include "view/commands.h"
#include "view/curve_lane.h"
#include "view/dialogs.h"
#include "view/mixer.h"
#include "view/palette.h"
#include "view/renderer.h"
#include "view/transport.h"

#include <torv/songs/song_error.h>

#include <backends/imgui_impl_sdl.h>
#include <cstdio>
#include <filesystem>
#include <imgui.h>

/// The window: SDL brings events and a renderer, Dear ImGui draws, and every frame shows the song as it is. Here is
/// only what any such program has; the editor is in view/ and, without any drawing, in model/.
namespace {

using namespace editor;

constexpr float kLaneHeight = 150;
constexpr float kStatusHeight = 26;
constexpr int kIdle = 50; // milliseconds from frame to frame while nothing happens

/// A font with the letters of the languages that are sung; without any Dear ImGui's own will do, which is plain ASCII.
void LoadFonts() {
    ImFontAtlas& fonts = *ImGui::GetIO().Fonts;
    const auto add = [&fonts](std::initializer_list<const char*> files, const ImFontConfig& config,
                              const ImWchar* range) {
        for (const char* const file : files)
            if (std::filesystem::exists(file))
                return fonts.AddFontFromFileTTF(file, 15, &config, range) != nullptr;
        return false;
    };
    ImFontConfig config;
    add({"/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", "/usr/share/fonts/truetype/freefont/FreeSans.ttf",
         "C:\\Windows\\Fonts\\segoeui.ttf"},
        config, nullptr);
    config.MergeMode = !fonts.ConfigData.empty();
    add({"/usr/share/fonts/opentype/noto/NotoSansCJK-Regular.ttc", "/usr/share/fonts/opentype/ipafont-gothic/ipag.ttf",
         "/usr/share/fonts/truetype/freefont/FreeSerif.ttf", "C:\\Windows\\Fonts\\msgothic.ttc"},
        config, fonts.GetGlyphRangesJapanese());
}

/// An event goes to what is in front: a dialog, lyrics that are typed, else the table of keys.
void TakeEvent(Desk& desk, const SDL_Event& event) {
    ImGui_ImplSDL2_ProcessEvent(&event);
    if (event.type == SDL_QUIT)
        desk.dialogs.AskToLeave([](Desk& d) { d.editor.wantsQuit = true; });
    if (desk.editor.IsExporting())
        return;
    if (event.type == SDL_TEXTINPUT && desk.typing.IsOn())
        desk.typing.TakeText(desk.editor, event.text.text);
    if (event.type != SDL_KEYDOWN)
        return;
    if (desk.dialogs.IsOpen())
        desk.dialogs.TakeKey(event.key.keysym.sym);
    else if (desk.typing.IsOn())
        desk.typing.TakeKey(desk.editor, event.key.keysym);
    else if (!desk.editor.isNaming)
        RunKey(desk, event.key.keysym);
}

/// The mouse as the window's events tell it. The backend asks the display, and some displays do not answer anew while a
/// button is held.
void TakeMouse() {
    int x = 0;
    int y = 0;
    SDL_GetMouseState(&x, &y);
    if (SDL_GetMouseFocus())
        ImGui::GetIO().MousePos = {static_cast<float>(x), static_cast<float>(y)};
}

struct Panels {
    explicit Panels(SDL_Renderer* renderer) : palette(renderer) {}
    Palette palette;
    RollView roll;
    CurveLane lane;
    Mixer mixer;
};

void DrawWindow(Desk& desk, Panels& panels) {
    Editor& editor = desk.editor;
    const ImGuiViewport& viewport = *ImGui::GetMainViewport();
    ImGui::SetNextWindowPos(viewport.WorkPos);
    ImGui::SetNextWindowSize(viewport.WorkSize);
    ImGui::Begin("editor", nullptr,
                 ImGuiWindowFlags_NoDecoration | ImGuiWindowFlags_MenuBar | ImGuiWindowFlags_NoMove |
                     ImGuiWindowFlags_NoBringToFrontOnFocus | ImGuiWindowFlags_NoSavedSettings);
    DrawMenus(desk);
    DrawTransport(editor);
    const float height = ImGui::GetContentRegionAvail().y - kStatusHeight;
    ImGui::BeginChild("middle", {0, height});
    panels.palette.Draw(editor);
    ImGui::SameLine();
    ImGui::BeginChild("time", {ImGui::GetContentRegionAvail().x - 258, 0});
    panels.roll.Draw(editor, desk.typing, ImGui::GetContentRegionAvail().y - kLaneHeight - 4);
    panels.lane.Draw(editor, kLaneHeight);
    ImGui::EndChild();
    ImGui::SameLine();
    panels.mixer.Draw(editor);
    ImGui::EndChild();
    if (editor.IsExporting())
        ImGui::ProgressBar(static_cast<float>(editor.ExportShare()), {200, 0}, "singing"), ImGui::SameLine();
    ImGui::TextUnformatted(editor.status.c_str());
    ImGui::End();
    desk.dialogs.Draw(desk);
}

/// "hymn.torv* - 24 notes": what a window's title is for.
void ShowTitle(SDL_Window* window, const Editor& editor) {
    const std::string name = editor.path.empty() ? "unnamed" : std::filesystem::path(editor.path).filename().string();
    const std::string title = name + (editor.history.IsModified() ? "*" : "") + " - " +
                              std::to_string(editor.CurrentTrack().notes.size()) + " notes" +
                              (editor.player.IsPlaying() ? ", playing"
                               : editor.IsExporting()    ? ", singing"
                                                         : "") +
                              " - TORV editor";
    if (title != SDL_GetWindowTitle(window))
        SDL_SetWindowTitle(window, title.c_str());
}

void Run(SDL_Window* window, SDL_Renderer* renderer, const char* file) {
    Editor editor;
    Dialogs dialogs;
    LyricTyping typing;
    Desk desk{editor, dialogs, typing};
    Panels panels(renderer);
    Renderer drawing(renderer);
    if (file)
        editor.Open(file);
    for (int awake = 3; !editor.wantsQuit;) {
        // While nothing moves the processor rests; after an event some frames follow, since widgets settle in two.
        SDL_Event event;
        const bool isMoving = editor.player.IsPlaying() || editor.IsExporting();
        if (SDL_WaitEventTimeout(&event, isMoving || awake > 0 ? 1 : kIdle)) {
            do
                TakeEvent(desk, event);
            while (SDL_PollEvent(&event));
            awake = 3;
        }
        awake = std::max(awake - 1, 0);
        editor.Refresh(panels.roll.IsDragging() || panels.lane.IsDragging());
        ImGui_ImplSDL2_NewFrame();
        TakeMouse();
        ImGui::NewFrame();
        ImGui::BeginDisabled(editor.IsExporting());
        DrawWindow(desk, panels);
        ImGui::EndDisabled();
        ImGui::Render();
        ShowTitle(window, editor);
        SDL_SetRenderDrawColor(renderer, 24, 25, 29, 255);
        SDL_RenderClear(renderer);
        drawing.Draw(*ImGui::GetDrawData());
        SDL_RenderPresent(renderer);
    }
}

int Fail(const char* what) {
    std::fprintf(stderr, "torv-editor: %s\n", what);
    SDL_ShowSimpleMessageBox(SDL_MESSAGEBOX_ERROR, "TORV editor", what, nullptr);
    return 1;
}

} // namespace

int main(int count, char** arguments) {
    if (SDL_Init(SDL_INIT_VIDEO) != 0)
        return Fail(SDL_GetError());
    SDL_Window* const window = SDL_CreateWindow("TORV editor", SDL_WINDOWPOS_CENTERED, SDL_WINDOWPOS_CENTERED, 1280,
                                                800, SDL_WINDOW_RESIZABLE | SDL_WINDOW_ALLOW_HIGHDPI);
    SDL_Renderer* const renderer = window ? SDL_CreateRenderer(window, -1, SDL_RENDERER_PRESENTVSYNC) : nullptr;
    if (!renderer)
        return Fail(SDL_GetError());
    ImGui::CreateContext();
    ImGui::GetIO().IniFilename = nullptr;
    ImGui::StyleColorsDark();
    ImGui::GetStyle().FrameRounding = 3;
    LoadFonts();
    ImGui_ImplSDL2_InitForSDLRenderer(window);
    int result = 0;
    try {
        Run(window, renderer, count > 1 ? arguments[1] : nullptr);
    } catch (const torv::songs::SongError& error) {
        result = Fail(error.what()); // no databases: nothing can be sung here
    }
    ImGui_ImplSDL2_Shutdown();
    ImGui::DestroyContext();
    SDL_DestroyRenderer(renderer);
    SDL_DestroyWindow(window);
    SDL_Quit();
    return result;
}
