#include "dictionary.h"

#include <memory>
#include <mutex>
#include <string>

extern "C" {
#include <flite/flite.h>
cst_lexicon* cmu_lex_init(void);
}

namespace g2pa_eng {
namespace {

class FliteDictionary : public Dictionary {
public:
    Phones Pronounce(std::string_view letters) const override {
        const std::string word(letters);
        Phones phones;
        const std::lock_guard lock(m_mutex);
        const std::unique_ptr<cst_val, decltype(&delete_val)> names(
            lex_lookup(m_lexicon, word.c_str(), nullptr, nullptr), delete_val);
        for (const cst_val* each = names.get(); each; each = val_cdr(each))
            AppendPhones(phones, val_string(val_car(each)));
        return phones;
    }
    bool Has(std::string_view letters) const override {
        const std::string word(letters);
        const std::lock_guard lock(m_mutex);
        return in_lex(m_lexicon, word.c_str(), nullptr, nullptr) != 0;
    }

private:
    mutable std::mutex m_mutex;
    cst_lexicon* m_lexicon = cmu_lex_init(); // one static table of the library, never freed
};

} // namespace

const Dictionary& LibraryDictionary() {
    static const FliteDictionary dictionary; // made once, whichever thread asks first
    return dictionary;
}

} // namespace g2pa_eng
