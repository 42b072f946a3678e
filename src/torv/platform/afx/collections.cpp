#include "torv/platform/afx/array.h"
#include "torv/platform/afx/list.h"
#include "torv/platform/afx/map.h"

CObList::~CObList() = default;
CPtrList::~CPtrList() = default;
CStringList::~CStringList() = default;
CObArray::~CObArray() = default;
CPtrArray::~CPtrArray() = default;
CStringArray::~CStringArray() = default;
CMapWordToOb::~CMapWordToOb() = default;
