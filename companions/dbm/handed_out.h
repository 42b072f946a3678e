/// What a host gets to see: records over a copy of the texts, so that later changes do not reach them.
#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace dbm {

/// `List` is a count and a pointer to the records. An empty record stands behind the last.
template <typename List, typename Record, typename Source>
class HandedOut {
public:
    template <typename Describe>
    HandedOut(std::vector<Source> sources, Describe describe) : m_sources(std::move(sources)) {
        m_records.reserve(m_sources.size() + 1);
        for (const Source& source : m_sources)
            m_records.push_back(describe(source));
        m_records.push_back({});
        m_list = {static_cast<int32_t>(m_sources.size()), m_records.data()};
    }
    HandedOut(const HandedOut&) = delete;
    HandedOut& operator=(const HandedOut&) = delete;

    const List* Get() const { return &m_list; }
    const Record& First() const { return m_records.front(); }

private:
    std::vector<Source> m_sources;
    std::vector<Record> m_records;
    List m_list{};
};

} // namespace dbm
