#pragma once

#include "torv/platform/afx/mem_file.h"
#include "torv/typed_file/typed_file.h"

#include <doctest/doctest.h>

#include <string>

inline int LoadText(CxTypedFile& file, const std::string& text) {
    return file.Load(reinterpret_cast<const unsigned char*>(text.data()), static_cast<DWORD>(text.size()));
}

/// What the file holds, compact: every section, key and value in order.
inline std::string Compact(CxTypedFile& file) {
    CMemFile out;
    CHECK(file.Save2(&out) == 1);
    return out.GetBytes();
}
