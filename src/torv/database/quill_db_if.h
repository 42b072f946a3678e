#pragma once

#include "torv/database/button_bitmap.h"
#include "torv/icons/icon_object.h"
#include "torv/platform/platform.h"

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

/// What enumerations call: 0 ends them. Names are the callback's to read while it runs.
using QuillEnumStatusProc = int(CALLBACK*)(int status, const char* name, LPARAM data);
using QuillEnumArticulationProc = int(CALLBACK*)(int status, int articulation, const char* name, LPARAM data);
using QuillEnumVariationProc = int(CALLBACK*)(int status, int articulation, int variation, const char* name,
                                              LPARAM data);

/// What one of the databases behind CQuillDBManager has in common with the others: model icons by id, with their
/// buttons. Models belong to the database; they stay where they are until it closes or they are removed.
class TORV_API CQuillDBIF : public CObject {
public:
    CQuillDBIF() = default;
    CQuillDBIF(const CQuillDBIF&) = delete;
    CQuillDBIF& operator=(const CQuillDBIF&) = delete;
    ~CQuillDBIF() override;

    /// Whether icons of this kind may be here, as far as the database knows.
    virtual bool HasArticulation(int status, int articulation) const = 0;
    /// Calls back for each articulation of the status, ascending. 0, and no call, for a status that has none here; else
    /// 1 with a null callback, and the last call's answer.
    int EnumIconArticulation(int status, QuillEnumArticulationProc callback, LPARAM data) const;

    /// The model with this id, or null.
    CIconObject* GetModelIconObject(DWORD id) const;
    /// The models of one articulation, by ascending variation.
    std::vector<CIconObject*> GetModels(int status, int articulation) const;
    int CountModels(int status, int articulation) const;
    /// The place of the model with this ID string among those of its articulation, counted from 1; 0 when there is
    /// none. Takes constant time once it has been asked for since the last change.
    int IndexOf(int status, int articulation, const char* idString) const;
    /// The button that was loaded with the model; null when there is none. It stays the database's.
    HBITMAP GetButtonBitmap(DWORD id) const;

protected:
    bool Contains(DWORD id) const { return m_models.contains(id); }
    /// Takes the icon under its id, which must be free.
    CIconObject* AddModel(std::unique_ptr<CIconObject> icon);
    std::unique_ptr<CIconObject> TakeModel(DWORD id);
    void RemoveModels();
    /// A model's ID string may have changed.
    void ForgetPlaces() { m_shelves.clear(); }

    /// Fills a model from the icon file of its name in a folder, with its button and its ID string. What is wrong is
    /// told when `report` is set.
    int LoadPresetModelIcon(CIconObject* icon, const char* folder, const char* name, bool report);
    /// The same from any file; `function` is told as the one that failed.
    int LoadModelIconFile(CIconObject* icon, const char* path, const char* idString, bool report, const char* function);

private:
    struct Shelf {
        int count = 0;
        std::unordered_map<std::string, int> places; ///< by ID string
    };
    const Shelf& ShelfOf(int status, int articulation) const;

    std::map<DWORD, std::unique_ptr<CIconObject>> m_models;
    std::map<DWORD, torv::ButtonBitmap> m_buttons;
    mutable std::map<DWORD, Shelf> m_shelves; ///< made on demand, dropped at a change
};
