#pragma once

#include "app/edit_context_menu.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

class OwnNumberReader;

// One own number: a row of `list`'s list and the record it shows.
class OwnNumberEditor : public ui::DialogHandler {
 public:
  // `row` is 0-based. All of it outlives the editor.
  OwnNumberEditor(app::AppState& state, OwnNumberReader& reader, ui::Dialog& list, int row);

  void OnInit(ui::Dialog& dialog) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  bool OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  void Save(ui::Dialog& dialog);
  void Refuse(ui::Dialog& dialog, int text, int control);

  app::AppState& state_;
  OwnNumberReader& reader_;
  ui::Dialog& list_;
  const int row_;
  app::EditContextMenu nameMenu_;
  app::EditContextMenu numberMenu_;
};

}  // namespace kelpin::views
