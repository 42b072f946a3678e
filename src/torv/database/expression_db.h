#pragma once

#include "torv/database/quill_db_if.h"

#include <set>
#include <vector>

class CIconExpression;
struct DBMExpItem;
struct DBMExpItems;
struct DBMExpression;

namespace torv {

class DatabaseLibrary;

} // namespace torv

/// The note and vibrato expressions of the external database library, as icons of statuses 1 to 4, each with the one
/// articulation of the same number. Users' expressions are kept by that library too: it holds their icon files.
class TORV_API CExpressionDB : public CQuillDBIF {
public:
    /// Not open.
    CExpressionDB();
    ~CExpressionDB() override;

    /// Reads every expression's items. 0, after a message, when the library does not tell them; it must stay loaded
    /// until the database closes. An item whose icon file cannot be read is told and passed over.
    int OpenDatabase(torv::DatabaseLibrary* library);
    /// Forgets every icon; the library is not called any more.
    void CloseDatabase();

    bool HasArticulation(int status, int articulation) const override;

    /// Joins the user's icons with the items that the library keeps of them: an icon gets its item's identity and
    /// names, and an item that no icon stands for becomes one.
    void BindUserItems();
    // Each has the library keep or drop the item too. What it refuses is told, and nothing has changed then.
    CIconObject* Register(std::unique_ptr<CIconObject>& icon) override;
    std::unique_ptr<CIconObject> Unregister(DWORD id) override;
    int Replace(const CIconObject& icon) override;
    int Restore(std::unique_ptr<CIconObject>& icon) override;
    /// Changes the caption of the user's icon of the same id, here, in the library and in the icon given; 0 when there
    /// is none, or the library or memory refuses: then it is as it was.
    int SetUserItemCaption(CIconExpression& icon, const char* caption);

    /// What the library answered last.
    int GetLastStatus() const { return m_status; }

    /// The name, without folder and extension, of the file by which a user's expression is handed over: a code of its
    /// status and articulation, and its ID string with every byte inverted, in hexadecimal digits.
    static CString UserExpressionFileName(int status, int articulation, const char* idString);

private:
    /// An expression of the library, by what names it there.
    struct Expression {
        int database;
        int kind;
        int high;
        int low;
    };
    /// A user's item that no icon stands for yet. Its icon has no parameters when its file could not be read.
    struct UserItem {
        std::unique_ptr<CIconObject> icon;
        bool isRead;
    };

    bool Ask(int status);
    void ReadExpression(const Expression& expression, torv::ReportLimit& reports);
    void ReadItem(const Expression& expression, const DBMExpItem& item, torv::ReportLimit& reports);
    /// The items of one expression. One list is held at a time: the next query gives it back.
    const DBMExpItems* QueryItems(const Expression& expression);
    void ReleaseItems();
    int LastPreset(int status) const;
    bool CompleteEntry(CIconExpression& icon) const;
    bool IsTaken(DWORD id) const override { return Contains(id) || m_itemNumbers.contains(id); }
    /// Looks again at what the library keeps of a kind, as others may have added to it.
    void SeeUserItems(int kind);
    /// Hands the icon over. False when there is nothing to hand over or no way to, which is told; what the library
    /// answers is in m_status.
    bool HandOver(CIconExpression& icon);
    bool CreateUserItem(CIconExpression& icon);
    bool DeleteUserItem(CIconExpression& icon);
    /// Takes an icon whose item the library keeps; null, and the item is dropped again, when memory is refused.
    CIconObject* AddKept(std::unique_ptr<CIconObject>& icon);

    torv::DatabaseLibrary* m_library = nullptr;
    const DBMExpItems* m_items = nullptr;
    std::vector<Expression> m_expressions;
    std::vector<UserItem> m_userItems; ///< read, and not bound yet
    std::set<DWORD> m_itemNumbers;     ///< as icon ids: what the library keeps under them, readable or not
    int m_status = 0;
};
