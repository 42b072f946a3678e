#include "report.h"

#include "output_file.h"

#include <torv/songs/report_writers.h>

#include <algorithm>
#include <cctype>

using namespace torv::songs;

namespace {

bool EndsIn(const std::string& path, const std::string& ending) {
    return path.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), path.rbegin(),
                      [](char a, char b) { return a == std::tolower(static_cast<unsigned char>(b)); });
}

std::string ReportFor(const std::string& path, const Performance& performance) {
    if (EndsIn(path, ".html") || EndsIn(path, ".htm"))
        return ToPage(performance);
    if (EndsIn(path, ".lab"))
        return ToLabelTrack(performance);
    return EndsIn(path, ".lrc") ? ToKaraokeLines(performance) : ToJsonReport(performance);
}

} // namespace

void WriteReport(const std::string& path, const Performance& performance) {
    OutputFile file(path);
    file.Write(ReportFor(path, performance));
    file.Commit();
}
