#include "wave_writer.h"

#include "errors.h"

#include <torv/audio/sample.h>

#include <bit>
#include <utility>

namespace {

constexpr unsigned kFloatBits = 32;
constexpr uint64_t kMostDataBytes = 0xFFFFFFFF - 64; // what a header's sizes can tell

void Put(std::string& bytes, uint32_t value, unsigned width) {
    for (unsigned i = 0; i < width; ++i)
        bytes += static_cast<char>(value >> 8 * i);
}

} // namespace

WaveWriter::WaveWriter(OutputFile& file, std::string path, const SoundFormat& format)
    : m_file(file), m_path(std::move(path)), m_format(format) {
    m_file.Write(Header()); // its sizes are put right at the end
}

std::string WaveWriter::Header() const {
    const bool isFloat = m_format.bits == kFloatBits;
    const uint32_t frameBytes = m_format.channels * m_format.bits / 8;
    const auto dataBytes = static_cast<uint32_t>(m_dataBytes);
    std::string format;
    Put(format, isFloat ? 3 : 1, 2);
    Put(format, m_format.channels, 2);
    Put(format, m_format.rate, 4);
    Put(format, m_format.rate * frameBytes, 4);
    Put(format, frameBytes, 2);
    Put(format, m_format.bits, 2);
    if (isFloat)
        Put(format, 0, 2); // bytes that follow
    std::string chunks = "WAVEfmt ";
    Put(chunks, static_cast<uint32_t>(format.size()), 4);
    chunks += format;
    if (isFloat) {
        chunks += "fact";
        Put(chunks, 4, 4);
        Put(chunks, dataBytes / frameBytes, 4);
    }
    chunks += "data";
    Put(chunks, dataBytes, 4);
    std::string header = "RIFF";
    Put(header, static_cast<uint32_t>(chunks.size()) + dataBytes + dataBytes % 2, 4);
    return header + chunks;
}

/// The frames' values, one behind the other; `storeAt` puts one there and tells whether it was cut. The width is known
/// to the loop, as it runs over every sample. Returns how many frames were cut.
template <unsigned width, class Store>
size_t WaveWriter::StoreFrames(const double* frames, size_t count, Store storeAt) {
    m_bytes.resize(count * m_format.channels * width);
    auto* at = reinterpret_cast<BYTE*>(m_bytes.data());
    size_t cutFrames = 0;
    for (size_t i = 0; i < count; ++i) {
        bool isCut = false;
        for (unsigned channel = 0; channel < m_format.channels; ++channel, at += width)
            storeAt(at, *frames++, isCut);
        cutFrames += isCut;
    }
    return cutFrames;
}

template <unsigned width>
size_t WaveWriter::StoreWhole(const double* frames, size_t count) {
    return StoreFrames<width>(frames, count, [](BYTE* at, double sample, bool& isCut) {
        torv::StoreValue(at, width, static_cast<DWORD>(WholeSample(sample, 8 * width, isCut)));
    });
}

void WaveWriter::Append(const double* frames, size_t count) {
    if (m_format.bits == kFloatBits)
        StoreFrames<4>(frames, count, [](BYTE* at, double sample, bool&) {
            torv::StoreValue(at, 4, std::bit_cast<DWORD>(static_cast<float>(sample)));
        });
    else
        m_cutFrames += m_format.bits == 24 ? StoreWhole<3>(frames, count) : StoreWhole<2>(frames, count);
    m_dataBytes += m_bytes.size();
    if (m_dataBytes > kMostDataBytes)
        throw InputError{m_path +
                         ": is more than a wave file can hold (4 GB): choose fewer --bits, or sing it in parts"};
    m_file.Write(m_bytes);
}

void WaveWriter::Finish() {
    if (m_dataBytes % 2 == 1)
        m_file.Write(std::string(1, '\0')); // chunks have even lengths
    m_file.Seek(0);
    m_file.Write(Header());
}
