#include "torv/songs/measure_order.h"

#include <algorithm>

namespace torv::songs {

namespace {

constexpr size_t kMostMeasures = 100000;
constexpr int kMostPasses = 32;

class Player {
public:
    explicit Player(const std::vector<MeasureSigns>& written)
        : m_written(written), m_hasJumped(written.size()), m_hasRepeated(written.size()) {}

    MeasureOrder Run() {
        std::vector<int> passes(m_written.size());
        while (m_at < m_written.size() && m_order.measures.size() < kMostMeasures) {
            const MeasureSigns& signs = m_written[m_at];
            if (signs.repeatForward && (m_repeat != m_at || !m_isRepeatMarked))
                BeginRepeat(m_at, true);
            const int endings = signs.endings.empty() ? 0 : LastEnding(m_at);
            const int ending = m_isAfterJump ? endings : std::min(m_pass, endings);
            if (endings > 0 && !IsFor(signs, m_isAfterJump ? endings : m_pass)) {
                ++m_at;
                continue;
            }
            m_order.measures.push_back({m_at, ++passes[m_at], ending, endings});
            if (m_isAfterJump && signs.fine)
                break;
            if (!Leave(signs))
                ++m_at;
        }
        return std::move(m_order);
    }

private:
    static bool IsFor(const MeasureSigns& signs, int pass) {
        return std::find(signs.endings.begin(), signs.endings.end(), pass) != signs.endings.end();
    }
    /// The last pass that the brackets around a measure name.
    int LastEnding(size_t at) const {
        int last = 1;
        while (at > 0 && !m_written[at - 1].endings.empty())
            --at;
        for (; at < m_written.size() && !m_written[at].endings.empty(); ++at)
            last = std::max(last, *std::max_element(m_written[at].endings.begin(), m_written[at].endings.end()));
        return std::min(last, kMostPasses);
    }
    void BeginRepeat(size_t at, bool isMarked) {
        m_repeat = at;
        m_isRepeatMarked = isMarked;
        m_pass = 1;
    }
    /// A later end without a start of its own leads back to the last start, past ends that are not taken again; in a
    /// song without starts to the end before.
    void EndRepeat() {
        m_hasRepeated[m_at] = true;
        BeginRepeat(m_isRepeatMarked ? m_repeat : m_at + 1, m_isRepeatMarked);
    }
    /// Whether the way leads somewhere else than to the next measure.
    bool Leave(const MeasureSigns& signs) {
        if (m_isAfterJump && !signs.toCoda.empty() && Jump(signs.toCoda, &MeasureSigns::coda, m_at + 1, "to a coda"))
            return true;
        if (signs.repeatBackward && !m_isAfterJump && !m_hasRepeated[m_at]) {
            const int times = signs.endings.empty() ? signs.repeatBackward : LastEnding(m_at);
            if (m_pass < std::min(times, kMostPasses)) {
                ++m_pass;
                m_at = m_repeat;
                return true;
            }
            EndRepeat();
        } else if (signs.endingStops && m_pass >= LastEnding(m_at)) {
            BeginRepeat(m_at + 1, false);
        }
        if (m_hasJumped[m_at] || (!signs.daCapo && signs.dalSegno.empty()))
            return false;
        m_hasJumped[m_at] = true;
        if (!signs.daCapo)
            return Jump(signs.dalSegno, &MeasureSigns::segno, 0, "to a segno") && (m_isAfterJump = true);
        m_at = 0;
        return m_isAfterJump = true;
    }
    /// To the sign of this label; where there is none, to the only one of its kind.
    bool Jump(const std::string& label, std::string MeasureSigns::*sign, size_t from, const char* where) {
        size_t target = m_written.size();
        for (size_t i = m_written.size(); i-- > from;)
            if (!(m_written[i].*sign).empty() && (m_written[i].*sign == label || target == m_written.size()))
                target = i;
        if (target == m_written.size()) {
            m_order.remarks.push_back(std::string("a jump ") + where + " that is not there is left out");
            return false;
        }
        m_at = target;
        return true;
    }

    const std::vector<MeasureSigns>& m_written;
    std::vector<bool> m_hasJumped;
    std::vector<bool> m_hasRepeated; ///< as often as it says
    MeasureOrder m_order;
    size_t m_at = 0;
    size_t m_repeat = 0; ///< where the passage at hand began
    int m_pass = 1;
    bool m_isRepeatMarked = false; ///< with a sign
    bool m_isAfterJump = false;
};

} // namespace

MeasureOrder UnfoldMeasures(const std::vector<MeasureSigns>& written) { return Player(written).Run(); }

} // namespace torv::songs
