#pragma once

#include "torv/database/button_bitmap.h"
#include "torv/icons/icon_object.h"
#include "torv/platform/platform.h"

#include <map>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

class CxTypedFile;

namespace torv {

class ReportLimit;

} // namespace torv

/// What enumerations call: 0 ends them. Names are the callback's to read while it runs.
/// @{
using QuillEnumStatusProc = int(CALLBACK*)(int status, const char* name, LPARAM data);
using QuillEnumArticulationProc = int(CALLBACK*)(int status, int articulation, const char* name, LPARAM data);
using QuillEnumVariationProc = int(CALLBACK*)(int status, int articulation, int variation, const char* name,
                                              LPARAM data);
/// @}

/// What one of the databases behind CQuillDBManager has in common with the others: model icons by id, with their
/// buttons, the presets' and the users'. Models belong to the database; they stay where they are until it closes or
/// they are removed.
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
    /// The models of one articulation by ascending variation: the presets, then the user's.
    std::vector<CIconObject*> GetModels(int status, int articulation) const;
    /// The place of the model with this ID string among those of its articulation, counted from 1; 0 when there is
    /// none. Takes constant time once it has been asked for since the last change.
    int IndexOf(int status, int articulation, const char* idString) const;
    /// The button that was loaded with the model; null when there is none. It stays the database's.
    HBITMAP GetButtonBitmap(DWORD id) const;

    // The user's icons. What is refused leaves the database as it was.

    /// The lowest variation, with the user bit, that is free in the articulation; 0 when there is none.
    int GetNewVariation(int status, int articulation) const;
    /// Takes the icon as a new one and gives it its variation and a form that files can hold. Null when it is refused:
    /// without a variation for it the icon is destroyed, else it stays the caller's.
    virtual CIconObject* Register(std::unique_ptr<CIconObject>& icon);
    /// Gives the user's icon away; null when there is none, or when it cannot go.
    virtual std::unique_ptr<CIconObject> Unregister(DWORD id);
    /// Gives the user's icon of the same id and class the parameters of this one.
    virtual int Replace(const CIconObject& icon);
    /// Takes the icon under the id that it has, a user's one that must be free; refused, it stays the caller's.
    virtual int Restore(std::unique_ptr<CIconObject>& icon);

    /// Whether a user's icon came, went or changed.
    bool IsModified() const { return m_isModified; }
    /// Takes over the user's icons of its own kinds from another database, as they are. None of the ids may be here.
    void TakeUserIcons(CQuillDBIF& from);

protected:
    bool Contains(DWORD id) const { return m_models.contains(id); }
    /// Whether a new icon must not have this id of a user's.
    virtual bool IsTaken(DWORD id) const { return Contains(id); }
    /// Takes the icon under its id, which must be free. When memory is refused nothing has changed.
    CIconObject* AddModel(std::unique_ptr<CIconObject>& icon);
    std::unique_ptr<CIconObject> TakeModel(DWORD id);
    void RemoveModels();
    void SetModified() { m_isModified = true; }

    /// The user's icon of the same id and class, or null.
    CIconObject* UserIconLike(const CIconObject& icon) const;
    /// Whether a user's icon can come in under its id, of the class that its status says.
    bool MayRestore(const CIconObject& icon) const;
    /// Gives the icon a new variation; without one it is destroyed.
    bool GiveNewVariation(std::unique_ptr<CIconObject>& icon) const;

    /// Opens an icon file. What is wrong is told as far as the limit goes; `function` as the one that failed.
    static bool OpenIconFile(CxTypedFile& file, const char* path, torv::ReportLimit& reports, const char* function);
    /// Fills a model from the icon file of its name in a folder, with its button and its ID string.
    int LoadPresetModelIcon(CIconObject* icon, const char* folder, const char* name, torv::ReportLimit& reports);
    /// Fills a model from an open icon file, whose button lies in `folder`.
    int LoadModelIcon(CIconObject* icon, const CxTypedFile& file, const char* folder, const char* path);

private:
    struct Shelf {
        std::unordered_map<std::string, int> places; ///< by ID string
    };
    const Shelf& ShelfOf(int status, int articulation) const;

    std::map<DWORD, std::unique_ptr<CIconObject>> m_models;
    std::map<DWORD, torv::ButtonBitmap> m_buttons;
    mutable std::map<DWORD, Shelf> m_shelves;  ///< by articulation; made on demand, dropped at a change
    mutable std::map<DWORD, int> m_lowestFree; ///< by articulation: every user's number below is taken
    bool m_isModified = false;
};
