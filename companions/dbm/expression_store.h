/// The expression databases as a host changes them. A change is made to what stands on disk, which other processes may
/// have changed since. What fails leaves all as it was.
#pragma once

#include "expressions.h"
#include "user_file.h"

#include <string>
#include <vector>

namespace dbm {

class ExpressionStore {
public:
    ExpressionStore(const std::string& ownFolder, std::string userFolder);

    const std::vector<Database>& All() const { return m_databases; }

    void AddDatabase(const std::string& definitionFile);
    void DeleteDatabase(int32_t number);
    /// `item.file` is the icon file to copy.
    void Create(int32_t database, Item item);
    void Delete(int32_t database, int32_t high, int32_t low, uint32_t value);
    void SetCaption(int32_t database, int32_t high, int32_t low, uint32_t value, const std::string& caption);

private:
    /// Takes over what others wrote.
    void Read();
    template <typename Edit>
    void Change(Edit edit);

    std::string m_userFolder;
    Database m_own;                    ///< as it came with the library
    std::vector<Database> m_databases; ///< by number
    UserFile m_file;
};

} // namespace dbm
