#pragma once

#include "torv/database/quill_db_if.h"

#include <vector>

class CIconExpression;
class CUserDB;
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
    CExpressionDB();
    ~CExpressionDB() override;

    /// Reads every expression's items. 0, after a message, when the library does not tell them; it must stay loaded
    /// until the database closes. An item whose icon file cannot be read is told and passed over.
    int OpenDatabase(torv::DatabaseLibrary* library);
    void CloseDatabase();

    bool HasArticulation(int status, int articulation) const override;

    /// Joins the users' icons with the items that the library keeps of them: an icon gets its item's identity and
    /// names, and an item that no icon stands for becomes one.
    void BindUserIcons(CUserDB& users);
    /// Has the library keep a user's icon, which learns its item's identity. 0, after a message, when it does not.
    int CreateUserItem(CIconExpression& icon);
    /// Has the library drop the item; an icon without one succeeds. 0, after a message, when it does not.
    int DeleteUserItem(CIconExpression& icon);
    /// Changes the caption of a user's item.
    int SetUserItemCaption(CIconExpression& icon, const char* caption);

    /// What the library answered last.
    int GetLastStatus() const { return m_status; }

    /// The name, without folder and extension, of the file by which a user's expression is handed over: a code of its
    /// status and articulation, and its ID string with every byte inverted, in hexadecimal digits.
    static CString UserExpressionFileName(int status, int articulation, const char* idString);

private:
    bool Ask(int status);
    void ReadExpression(int database, const DBMExpression& expression);
    void ReadItem(int database, const DBMExpression& expression, const DBMExpItem& item);
    /// The items of one expression. One list is held at a time: the next query gives it back.
    const DBMExpItems* QueryItems(int database, int high, int low);
    void ReleaseItems();
    int LastPreset(int status) const;
    bool CompleteEntry(CIconExpression& icon) const;

    torv::DatabaseLibrary* m_library = nullptr;
    const DBMExpItems* m_items = nullptr;
    std::vector<std::unique_ptr<CIconObject>> m_userItems; ///< read, and not bound yet
    int m_status = 0;
    int m_reports = 0;
};
