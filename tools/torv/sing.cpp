#include "sing.h"

#include "describe.h"
#include "file_identity.h"
#include "messages.h"
#include "output_file.h"
#include "progress.h"
#include "render.h"
#include "report.h"

#include <chrono>
#include <cstdio>

void Sing(const SingOptions& options) {
    const auto begin = std::chrono::steady_clock::now();
    const bool isQuiet = options.song.quiet;
    std::vector<std::pair<const char*, std::string>> outputs{{"--output", options.output}};
    if (!options.report.empty())
        outputs.emplace_back("--report", options.report);
    RefuseOverwriting({options.song.input}, outputs);
    SongScore song = MakeSongScore(options.song);
    RenderOptions renderOptions;
    renderOptions.rate = options.rate;
    renderOptions.presend = song.presend;
    renderOptions.volume = options.volume;
    renderOptions.stereo = options.pan.has_value();
    renderOptions.pan = options.pan.value_or(0.0);
    RenderResult result;
    {
        Progress progress("singing", isQuiet);
        result = Render(song.score, options.output, renderOptions,
                        [&progress](double done, double total) { progress.Show(done, total); });
    }
    if (!options.report.empty())
        WriteReport(
            options.report, song.score,
            {options.song.input, options.output, song.voice, options.rate, result.seconds, options.song.transpose});
    if (result.clippedFrames > 0)
        Remark(isQuiet, std::to_string(result.clippedFrames) + " samples are cut at full scale: lower --volume");
    if (!isQuiet) {
        const double elapsed = std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count();
        std::fprintf(SummaryStream(options.output), "%zu notes, %s, %.0f x real time: %s\n",
                     song.score.parts.front().notes.size(), ClockText(result.seconds).c_str(),
                     elapsed > 0 ? result.seconds / elapsed : 0.0, options.output.c_str());
    }
}
