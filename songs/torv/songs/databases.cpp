#include "torv/songs/databases.h"

#include "torv/songs/default_registry.h"
#include "torv/songs/nearest_names.h"
#include "torv/songs/song_error.h"
#include "torv/songs/text_encoding.h"

#include <algorithm>

namespace torv::songs {

namespace {

constexpr int kMostArticulations = 3;

std::string Utf8(const CString& text) { return ToUtf8(text.GetStdString(), kShiftJis); }

int CALLBACK Collect(int status, int articulation, int variation, const char* name, LPARAM data) {
    reinterpret_cast<std::vector<Databases::Entry>*>(data)->push_back(
        {torv::MakeIconID(status, articulation, variation), Utf8(name)});
    return 1;
}

} // namespace

Databases::Databases(const MessageCatcher& messages) {
    const DefaultRegistry registry;
    if (!m_manager.OpenDatabase())
        throw SongError{"the databases of voices and expressions cannot be opened" +
                        (messages.Last().empty() ? "" : " (" + messages.Last() + ")") +
                        ": put the libraries DBM and VEDIT with their data beside the program, or see which ones the "
                        "registry names"};
}

Databases::~Databases() { m_manager.CloseDatabase(); }

std::vector<Databases::Entry> Databases::List(const IconKind& kind) const {
    std::vector<Entry> entries;
    for (int articulation = 1; articulation <= std::max(kind.status, kMostArticulations); ++articulation)
        m_manager.EnumIconVariation(kind.status, articulation, Collect, reinterpret_cast<LPARAM>(&entries));
    return entries;
}

DWORD Databases::Find(const IconKind& kind, const std::string& name) const {
    const std::vector<Entry> entries = List(kind);
    std::vector<std::string> names;
    names.reserve(entries.size());
    for (const Entry& entry : entries)
        names.push_back(entry.name);
    if (const std::optional<size_t> found = FindName(names, name))
        return entries[*found].id;
    throw NameError{"there is no " + std::string(kind.name) + " \"" + name + "\": " + SuggestNames(names, name)};
}

std::string Databases::NameOf(DWORD id) const {
    const CIconObject* const icon = m_manager.GetModelIconObject(id);
    return icon ? Utf8(icon->GetIDString()) : std::string();
}

int LanguageOfSinger(DWORD id) { return torv::VariationFromID(id) >> 8; }

const char* LanguageName(int language) {
    return language == torv::kJapanese ? "Japanese" : language == torv::kEnglish ? "English" : "of another language";
}

} // namespace torv::songs
