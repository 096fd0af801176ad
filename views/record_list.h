#pragma once

#include "ui/list_view.h"

namespace kelpin::views {

// At the end of the reading of a file's records into a list: the first row is selected and in
// sight, or the list says why it is empty, with the string `none` where the card did not fail. Any
// thread.
void ShowRecordsRead(ui::ListView& list, bool cardFailed, int none);

}  // namespace kelpin::views
