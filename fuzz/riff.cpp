// Any bytes as a chunk file: every chunk found lies inside the one around it, and one written beside them reads back.
#include "torv/files/riff.h"
#include "torv/platform/afx/mem_file.h"

#include <cstdlib>

namespace {

void Require(bool holds) {
    if (!holds)
        std::abort();
}

/// Walks the level, then goes down its first chunk, which is what Descend finds.
void Walk(CxRiff& riff, ULONGLONG begin, ULONGLONG end) {
    CHUNK_INFO info;
    CHUNK_INFO first{};
    ULONGLONG last = begin;
    int count = 0;
    for (int has = riff.FindFirstChunk(info); has; has = riff.FindNextChunk(info)) {
        Require(info.offset >= last + 8);
        last = static_cast<ULONGLONG>(info.offset) + info.size;
        Require(last <= end);
        if (count++ == 0)
            first = info;
        CExtendBuffer data(512, -1);
        riff.Seek(info.offset, CFile::begin);
        Require(riff.Read(&data, info.size) == info.size);
    }
    CHUNK_INFO entered;
    if (count == 0 || !riff.Descend(entered, first.id, first.form))
        return;
    Require(entered.offset == first.offset && entered.size == first.size);
    Walk(riff, entered.offset, static_cast<ULONGLONG>(entered.offset) + entered.size);
    Require(riff.Ascend());
    Require(riff.GetPosition() == static_cast<ULONGLONG>(entered.offset) + entered.size);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    CMemFile file(data, static_cast<UINT>(size));
    CxRiff riff(&file);
    Walk(riff, 0, size);
    Require(riff.GetError(1) == 0);

    CMemFile copy;
    CxRiff writer(&copy);
    constexpr DWORD kForm = torv::ChunkId("ANY ");
    const auto bytes = static_cast<DWORD>(size);
    Require(writer.CreateChunk(torv::ChunkId("LIST"), kForm) && writer.CreateChunk(torv::ChunkId("data"), 0));
    Require(writer.AddData(&file, 0, bytes) && writer.CloseChunk() && writer.CloseChunk());
    CHUNK_INFO info;
    Require(writer.Descend(info, torv::ChunkId("LIST"), kForm) && info.size == bytes + 8);
    Require(writer.FindFirstChunk(info) && info.size == bytes);
    Require(!writer.FindNextChunk(info));
    return 0;
}
