#include "model/editor_error.h"
#include "model/edits.h"
#include "model/history.h"
#include "model/project_file.h"
#include "platform/temp_folder.h"

#include <doctest/doctest.h>

using namespace editor;

namespace {

/// Nothing in it has its usual value.
Document FullDocument() {
    Document document;
    document.title = "Ｈ\"ymn\n";
    document.tempos = {{0, 600000}, {960, 0xFFFFFF}};
    document.meters = {{0, 3, 2}, {1440, 6, 3}};
    Track track{.name = "Alto", .voice = "Susan", .volume = -6.25, .pan = 0.1, .isMuted = true, .isSolo = true};
    track.notes = {{480, 1, 0, 1, "さ", {"a", "r", "t", "v"}}, {480, 240, 127, 127, "night[n aI t]", {}}};
    track.marks = {{0, "mf"}, {30, "Crescendo"}};
    track.curves = {Curve{{0, 127}, {30, 0}}, Curve{{60, -200}}};
    document.tracks = {track, Track{}};
    return document;
}

std::string ErrorOf(std::string_view text) {
    try {
        ReadProject(text, "song.torv");
    } catch (const EditorError& error) {
        return error.what();
    }
    return {};
}

std::string Replaced(std::string text, std::string_view what, std::string_view by) {
    REQUIRE(text.find(what) != std::string::npos);
    return text.replace(text.find(what), what.size(), by);
}

} // namespace

TEST_CASE("project: what is saved comes back, and a damaged file is refused in one line") {
    const std::string text = ProjectText(FullDocument());
    CHECK(ReadProject(text, "") == FullDocument());
    CHECK(ProjectText(ReadProject(text, "")) == text);

    // Broken off anywhere it is an error; but for the line end, without which it is whole.
    for (size_t n = 0; n + 2 < text.size(); ++n)
        CHECK_MESSAGE(ErrorOf(text.substr(0, n)).starts_with("song.torv: "), n);
    // Any byte changed: an error or another song, and nothing else.
    for (size_t n = 0; n < text.size(); ++n)
        for (const char c : {'\0', '9', '"', '\x80', '-'}) {
            std::string changed = text;
            changed[n] = c;
            CHECK(ErrorOf(changed).find('\n') == std::string::npos);
        }
    const struct {
        const char* what;
        const char* by;
        const char* told;
    } faults[] = {
        {"\"key\": 127", "\"key\": 128", "tracks[0].notes[1].key is not a number from 0 to 127"},
        {"\"tick\": 480", "\"tick\": 18446744073709551615", "tracks[0].notes[0].tick is not a number"},
        {"\"length\": 1", "\"length\": 0", "tracks[0].notes[0].length is not a number from 1"},
        {"\"pan\": 0.1", "\"pan\": 1e999", "beyond all bounds"},
        {"\"velocity\": 1,", "", "tracks[0].notes[0] has no \"velocity\""},
        {"-200", "-201", "tracks[0].pitch[0][1]"},
        {"   960", "   0", "tempos[1] does not lie behind"},
        {"\"torv-editor\": 1", "\"torv-editor\": 2", "later editor"},
    };
    for (const auto& fault : faults)
        CHECK_MESSAGE(ErrorOf(Replaced(text, fault.what, fault.by)).find(fault.told) != std::string::npos,
                      ErrorOf(Replaced(text, fault.what, fault.by)));
    CHECK(ErrorOf(std::string(1 << 20, '[')).find("at byte") != std::string::npos);
}

TEST_CASE("project: a file that cannot be replaced stays, and another song is not half read") {
    const TempFolder folder;
    const std::string path = folder.Path("song.torv");
    SaveProject(FullDocument(), path);
    CHECK(LoadProject(path) == FullDocument());
    CHECK_THROWS_AS(SaveProject({}, path + "/inside"), EditorError);
    CHECK_THROWS_AS(LoadProject(folder.Path("none")), EditorError);
    CHECK(LoadProject(path) == FullDocument());
}

TEST_CASE("edits: notes keep their order, and the selection its notes") {
    Track track;
    for (const uint32_t key : {60, 67, 64})
        CHECK(AddNote(track, {.tick = (key - 60) * 120, .key = static_cast<int>(key)}) == (key > 60));
    Selection selection{0, 2};
    MoveNotes(track, selection, 500, -70); // keys go down by 60 at most
    CHECK(selection == Selection{1, 2});
    CHECK(track.notes[1].tick == 500);
    CHECK(track.notes[1].key == 0);
    CHECK(track.notes[2].key == 7);
    MoveNotes(track, selection, -100000, 200);
    CHECK(track.notes[0].tick == 0);
    CHECK(track.notes[2].key == 127);
    CHECK(selection == Selection{0, 2});

    StretchNotes(track, selection, -1000, 60);
    CHECK(track.notes[0].length == 60);
    track.notes[0] = {.lyric = "la", .icons = {"a", "r", "", "v"}};
    CHECK_FALSE(CutNote(track, 0, 480));
    REQUIRE(CutNote(track, 0, 180));
    CHECK(track.notes[0] == Note{.length = 180, .lyric = "la", .icons = {"a", "", "", "v"}});
    CHECK(track.notes[1] == Note{.tick = 180, .length = 300, .icons = {"", "r", "", "v"}});

    selection = {0, 1};
    const std::vector<Note> copied = CopyNotes(track, selection);
    PasteNotes(track, selection, copied, 480);
    CHECK(selection == Selection{2, 4}); // on both sides of the third note, which begins at 480 too
    CHECK(track.notes[4].tick == 660);
    EraseNotes(track, selection);
    CHECK(track.notes.size() == 4);
}

TEST_CASE("edits: a line of words is parted as it is sung") {
    CHECK(SyllablesOf(" Twin-kle  star[s t A:] - oh") ==
          std::vector<std::string>{"Twin-", "kle", "star[s t A:]", "", "oh"});
    Track track;
    track.notes.resize(2);
    CHECK(TypeLyrics(track, 1, "one two") == 2);
    CHECK(track.notes[0].lyric.empty());
    CHECK(track.notes[1].lyric == "one");
}

TEST_CASE("edits: a curve is drawn between its ends and is as it was elsewhere") {
    Curve curve;
    DrawCurve(curve, kPitch, {300, 90}, {210, 0}); // from right to left
    CHECK(curve == Curve{{240, 30}, {270, 60}, {300, 90}, {330, 0}});
    DrawCurve(curve, kPitch, {250, 500}, {250, 500});
    CHECK(curve == Curve{{240, 200}, {270, 60}, {300, 90}, {330, 0}});
    EraseCurve(curve, kPitch, 260, 300);
    CHECK(curve.empty());
}

TEST_CASE("history: a gesture is one step, and undoing and redoing come back to the same song") {
    History history;
    history.Begin(FullDocument());
    history.Step("Drag").title = "one";
    history.Again().tracks.pop_back();
    CHECK(history.Current().title == FullDocument().title); // from the gesture's beginning
    history.Further().title = "two";
    const Document changed = history.Current();
    history.Settle();
    CHECK(history.IsModified());
    history.Undo();
    CHECK(history.Current() == FullDocument());
    CHECK_FALSE(history.IsModified());
    CHECK(history.RedoName() == "Drag");
    history.Redo();
    CHECK(history.Current() == changed);
    history.Step("Nothing");
    history.Settle();
    CHECK(history.UndoName() == "Drag");
}
