// Any stream, played from any place: what is chased and what is cut into steps are messages with a place in their step.
#include "torv/synthesis/chase.h"
#include "torv/synthesis/step_feeder.h"

#include <algorithm>
#include <cstdlib>

namespace {

void Check(const std::vector<RVEEvent>& events) {
    for (const RVEEvent& event : events)
        if (event.delta >= torv::kStepSamples)
            std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    if (size < 2)
        return 0;
    const DWORD position = data[0] * 16U + data[1]; // milliseconds, as are the times
    CQuillMidiBuffer stream;
    stream.Create(1, 0, 0);
    LONG time = -300;
    for (size_t at = 2; at + 2 < size;) {
        time += static_cast<signed char>(data[at]);
        const DWORD length = static_cast<DWORD>(std::min<size_t>(data[at + 1], size - at - 2));
        stream.AddEvent(1, data + at + 2, length, time);
        at += 2 + length;
    }
    stream.SetLast(1, 200);
    stream.SetLoopEndState(position);
    torv::IsTellingAhead(stream, position);
    torv::ChaseTable table;
    const DWORD preroll = data[1] * 100U;
    torv::ChaseEvents(stream, position + preroll, {preroll, true}, table);
    Check(table.Events());
    torv::MoveToTime(stream, position);
    torv::StepFeeder feeder;
    feeder.Begin(&stream, torv::MsToSample(position, torv::kEngineTimeBase) / torv::kStepSamples * torv::kStepSamples);
    feeder.Add(table.Events().data(), table.Events().size());
    const short silence[]{0};
    for (int step = 0; step < 10000 && !feeder.Finished(); ++step) {
        Check(feeder.NextStep());
        feeder.StepProduced(silence, 1);
    }
    if (!feeder.Finished())
        std::abort();
    return 0;
}
