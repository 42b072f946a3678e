#pragma once

#include "sound_writer.h"

#include <cstdint>

/// A RIFF wave: PCM of 16 or 24 bits with the plain header of 44 bytes, or floats with the header that these need.
class WaveWriter : public SoundWriter {
public:
    WaveWriter(OutputFile& file, std::string path, const SoundFormat& format);
    void Append(const double* frames, size_t count) override;
    void Finish() override;

private:
    std::string Header() const;
    template <unsigned width, class Store>
    size_t StoreFrames(const double* frames, size_t count, Store storeAt);
    template <unsigned width>
    size_t StoreWhole(const double* frames, size_t count);

    OutputFile& m_file;
    const std::string m_path;
    const SoundFormat m_format;
    uint64_t m_dataBytes = 0;
    std::string m_bytes; ///< of the frames being written
};
