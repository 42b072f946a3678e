// What a host would write itself: mix_sndfile OUTPUT (INPUT LEFT-GAIN RIGHT-GAIN)...
// Inputs of one or two channels at one rate, summed in double precision into 16-bit stereo, block by block.
#include <sndfile.h>

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace {

constexpr sf_count_t kBlock = 1024; // frames

struct Input {
    SNDFILE* file;
    int channels;
    double left;
    double right;
};

void Add(const Input& input, const double* samples, sf_count_t frames, double* sums) {
    for (sf_count_t i = 0; i < frames; ++i) {
        sums[2 * i] += input.left * samples[i * input.channels];
        sums[2 * i + 1] += input.right * samples[i * input.channels + input.channels - 1];
    }
}

} // namespace

int main(int argc, char** argv) {
    std::vector<Input> inputs;
    SF_INFO info{};
    for (int i = 2; i + 2 < argc; i += 3) {
        SNDFILE* const file = sf_open(argv[i], SFM_READ, &info);
        if (!file)
            return 1;
        inputs.push_back({file, info.channels, std::atof(argv[i + 1]), std::atof(argv[i + 2])});
    }
    if (inputs.empty())
        return 2;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* const output = sf_open(argv[1], SFM_WRITE, &info);
    sf_command(output, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    std::vector<double> samples(2 * kBlock);
    std::vector<double> sums(2 * kBlock);
    for (sf_count_t longest = kBlock; longest == kBlock;) {
        std::fill(sums.begin(), sums.end(), 0.0);
        longest = 0;
        for (const Input& input : inputs) {
            const sf_count_t got = sf_readf_double(input.file, samples.data(), kBlock);
            Add(input, samples.data(), got, sums.data());
            longest = std::max(longest, got);
        }
        if (sf_writef_double(output, sums.data(), longest) != longest)
            return 1;
    }
    for (const Input& input : inputs)
        sf_close(input.file);
    return sf_close(output);
}
