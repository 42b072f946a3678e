#pragma once

#include "database/fake_database/fake_database.h"
#include "platform/temp_folder.h"
#include "platform/test_registry.h"
#include "torv/database/error_report.h"
#include "torv/database/quill_db_manager.h"
#include "torv/icons/icon_dynamics.h"
#include "torv/icons/icon_factory.h"
#include "torv/icons/icon_note_attack.h"
#include "torv/icons/icon_vibrato.h"

#include "boxes.h"
#include "values.h"

#include <doctest/doctest.h>

#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

constexpr const char* kDatabaseKey = "SOFTWARE\\CANTORIS\\COMMON\\DBMANAGER";
constexpr const char* kEditorKey = "SOFTWARE\\CANTORIS\\COMMON\\VOICEEDITOR";

/// The fake external libraries, named by a registry of the test's own, and a database root without users' icons.
class FakeHost {
public:
    FakeHost() : m_module(LoadLibraryA("FAKE_DBM.dll")) {
        REQUIRE(m_module != nullptr);
        fake = torv::EntryPoint<FakeDatabaseStateProc>(m_module, "FakeDatabaseState")();
        *fake = {};
        fake->voices[0] = {0, 0, 0, 0, "First"};
        fake->voices[1] = {1, 2, 0, 0, "Second"};
        fake->voiceCount = 2;
        registry.Set(kDatabaseKey, "PATH", "FAKE_DBM.dll");
        registry.Set(kEditorKey, "PATH", "FAKE_DBM.dll");
        RemoveUserFile();
    }
    ~FakeHost() {
        manager.CloseDatabase();
        RemoveUserFile();
        FreeLibrary(m_module);
    }
    FakeHost(const FakeHost&) = delete;
    FakeHost& operator=(const FakeHost&) = delete;

    std::string UserFile() const { return CQuillDBManager::GetModuleFolderPath().GetStdString() + "User.def"; }
    void RemoveUserFile() const {
        std::error_code ignored;
        std::filesystem::remove_all(UserFile(), ignored);
    }
    /// An expression of the fake library with one preset item, whose icon file this folder holds.
    FakeDatabase::Expression& AddExpression(int kind, int low, const char* idString, uint32_t value) {
        FakeDatabase::Expression& expression = fake->expressions[fake->expressionCount++];
        expression = {{kind, kind, low, "Expression"}, {}, 1};
        expression.items[0] = {value, 0, idString, IconFile(idString), "", "Singer", "Developer"};
        return expression;
    }
    /// The path of an icon file with a length of 360 and shapes of 20 and 30; it lives as long as the host.
    const char* IconFile(const std::string& name) {
        m_paths.push_back(std::make_unique<std::string>(files.File(
            name + ".aic", "[Common]\nCaption=" + name + "\n[Parameter]\nLength=360\nDuration=20\nDepth=30\n")));
        return m_paths.back()->c_str();
    }
    std::string TakeCalls() const {
        std::string calls = fake->calls;
        fake->calls[0] = '\0';
        return calls;
    }

    void Reopen() {
        manager.CloseDatabase();
        REQUIRE(manager.OpenDatabase() == 1);
    }

    FakeDatabase* fake = nullptr;
    TestRegistry registry;
    TempFolder files;
    Boxes boxes;
    CQuillDBManager manager;

private:
    HMODULE m_module;
    std::vector<std::unique_ptr<std::string>> m_paths;
};

inline std::unique_ptr<CIconDynamics> Level(int articulation, int variation, const char* name, int level) {
    auto icon = std::make_unique<CIconDynamics>(torv::kStatusDynamics, articulation, variation);
    icon->SetIDString(name);
    icon->SetCaption(name);
    icon->SetLength(1);
    icon->SetStartDynamics(level);
    return icon;
}

/// "id name 'caption' length from original", then a level, or an expression with its number and its item's.
inline std::string About(CIconObject* icon) {
    if (!icon)
        return "none";
    CString id;
    id.Format("%08x", static_cast<unsigned>(icon->GetIconID()));
    std::string text = Values(id, icon->GetIDString(), "'" + icon->GetCaption().GetStdString() + "'", icon->GetLength(),
                              "from", icon->GetOriginalVariation());
    if (auto* const dynamics = dynamic_cast<CIconDynamics*>(icon))
        text += Values(" level", dynamics->GetStartDynamics());
    if (auto* const attack = dynamic_cast<CIconNoteAttack*>(icon))
        text += Values(" shape", attack->GetDuration(), attack->GetDepth());
    if (auto* const expression = dynamic_cast<CIconExpression*>(icon))
        text += Values(" of", expression->GetExpressionID(), expression->GetExpressionEntry()->itemValue,
                       expression->GetOriginalSingerName(), expression->GetDevelopperName());
    return text;
}

/// "width x height"
inline std::string SizeOf(HBITMAP picture) {
    BITMAP bitmap{};
    GetObjectA(picture, sizeof bitmap, &bitmap);
    return std::to_string(bitmap.bmWidth) + "x" + std::to_string(bitmap.bmHeight);
}

/// The databases open over the fake library, which has attacks 1 and 4 and a vibrato; a second attack wants to be 4.
struct OpenHost : FakeHost {
    OpenHost() {
        AddExpression(torv::kStatusAttack, 3, "plain", 1);
        FakeDatabase::Expression& soft = AddExpression(torv::kStatusAttack, 1, "soft", 4);
        soft.items[soft.itemCount++] = {4, 0, "softer", IconFile("softer"), "Softer still", "S", "D"};
        AddExpression(torv::kStatusVibrato, 0, "wave", 1);
        REQUIRE(manager.OpenDatabase() == 1);
    }
    std::string AboutModel(DWORD id) const { return About(manager.GetModelIconObject(id)); }
};
