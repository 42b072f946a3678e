#include "torv/encoding/kel_controller_buffer.h"

#include "torv/stream/chart_record.h"

CKelControllerBuffer::~CKelControllerBuffer() = default;

int CKelControllerBuffer::Create() {
    return CStreamBuffer::Create(sizeof(tagKelControllerEntry), torv::kStreamBlockSize, torv::kHeapBlocks);
}

DWORD CKelControllerBuffer::SeekNext() { return ReadNextEntry(nullptr) ? m_header.tag : torv::kEventEnd; }
DWORD CKelControllerBuffer::SeekPrev() { return ReadPrevEntry(nullptr) ? m_header.tag : torv::kEventTop; }
