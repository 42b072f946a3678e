#include "torv/platform/afx/wnd.h"

CWnd::~CWnd() = default;
