#include "torv/songs/synthesis.h"

#include "torv/songs/song_error.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <numeric>
#include <thread>

namespace torv::songs {

namespace {

/// How far all jobs are together, as shares of one each.
class SharedProgress {
public:
    SharedProgress(size_t jobs, const std::function<void(double, double)>& tell) : m_shares(jobs), m_tell(tell) {}
    void Show(size_t job, double share) {
        const std::lock_guard lock(m_mutex);
        m_shares[job] = share;
        if (m_tell)
            m_tell(std::accumulate(m_shares.begin(), m_shares.end(), 0.0), static_cast<double>(m_shares.size()));
    }

private:
    std::mutex m_mutex;
    std::vector<double> m_shares;
    const std::function<void(double, double)>& m_tell;
};

void Sing(CRtSynthesis& synthesis, const SingJob& job, DWORD rate) {
    if (synthesis.DoSynthesis(job.stream, job.wave, rate))
        return;
    job.wave->Flush(); // which tells when it was the disk
    throw SongError("the voice engine RVE gave up while singing: it may be damaged or not fit this program");
}

} // namespace

void SingStreams(const std::vector<SingJob>& jobs, DWORD rate, const std::function<void(double, double)>& progress) {
    SharedProgress shared(jobs.size(), progress);
    std::atomic<bool> hasFailed = false;
    // Loaded here: what loading says is heard on one thread.
    std::vector<CRtSynthesis> engines(jobs.size());
    for (size_t i = 0; i < jobs.size(); ++i) {
        if (!engines[i].OpenSynthesizer())
            throw SongError("the voice engine RVE cannot be loaded or started: put it beside the program, or name its "
                            "folder in TORV_LIBRARY_PATH");
        engines[i].SetMasterOutputChannels(1);
        engines[i].SetProgressHandler([&shared, &hasFailed, i](DWORD done, DWORD total) {
            shared.Show(i, total ? static_cast<double>(done) / total : 1.0);
            return !hasFailed;
        });
    }
    std::vector<std::exception_ptr> failures(jobs.size());
    std::atomic<size_t> next = 0;
    const auto work = [&] {
        for (size_t i = next++; i < jobs.size() && !hasFailed; i = next++) {
            try {
                Sing(engines[i], jobs[i], rate);
            } catch (...) {
                failures[i] = std::current_exception();
                hasFailed = true;
            }
        }
    };
    {
        std::vector<std::jthread> others;
        const size_t most = std::min<size_t>(jobs.size(), std::max(1U, std::thread::hardware_concurrency()));
        while (others.size() + 1 < most)
            others.emplace_back(work);
        work();
    }
    for (CRtSynthesis& engine : engines)
        engine.CloseSynthesizer();
    for (const std::exception_ptr& failure : failures)
        if (failure)
            std::rethrow_exception(failure);
}

} // namespace torv::songs
