#include "torv/platform/afx/object.h"

CObject::~CObject() = default;
