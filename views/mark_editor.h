#pragma once

#include <string>

#include "app/edit_context_menu.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// The columns of the phone types' list.
inline constexpr int kPhoneTypeColumnName = 0;
inline constexpr int kPhoneTypeColumnMark = 1;

// Dialog 211: the mark of one phone type, the row of a list in the dialog that opened it. Screen
// thread.
class MarkEditor : public ui::DialogHandler {
 public:
  // `options` has the list and outlives the editor.
  MarkEditor(app::AppState& state, ui::Dialog& options, int list, int row);

  void OnInit(ui::Dialog& dialog) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  bool OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  void Save(ui::Dialog& dialog);

  app::AppState& state_;
  ui::Dialog& options_;
  const int list_;
  const int row_;
  app::EditContextMenu menu_;
  std::u16string type_;
  std::u16string mark_;
};

// Opens the editor on the selected row of the list; nothing when no row is selected.
void EditMark(app::AppState& state, ui::Dialog& options, int list);

}  // namespace kelpin::views
