#pragma once

#include "ui/list_view.h"

namespace kelpin::app {

// What a list without rows says, and what can be done about it: string ids, the hint's 0 for none.
ui::ListMessage MakeListMessage(int text, int hint = 0);

}  // namespace kelpin::app
