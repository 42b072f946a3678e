#pragma once

#include "torv/platform/export.h"

/// The root of the class hierarchy. Copyable: classes that must not be copied say so themselves.
class TORV_API CObject {
public:
    CObject() = default;
    CObject(const CObject&) = default;
    CObject& operator=(const CObject&) = default;
    virtual ~CObject();
};
