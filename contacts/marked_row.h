#pragma once

namespace kelpin::ui {
class ListView;
}

namespace kelpin::contacts {

// After a run: selects and focuses the row at the list's selection mark and scrolls it into view.
void SelectMarkedRow(ui::ListView& list);

}  // namespace kelpin::contacts
