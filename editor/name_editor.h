#pragma once

#include "app/edit_context_menu.h"
#include "editor/name_family.h"
#include "editor/name_list_state.h"
#include "ui/dialog.h"

namespace kelpin::editor {

// One name of a list that is open: the record and the name of `listState`. Screen thread.
class NameEditor : public ui::DialogHandler {
 public:
  // All of it outlives the dialog.
  NameEditor(app::AppState& state, NameListState& listState, const NameFamily& family);

  void OnInit(ui::Dialog& dialog) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  bool OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  void Save(ui::Dialog& dialog);
  // In UCS-2 the name and the byte before it have to fit.
  bool Fits(const std::u16string& name) const;
  void ShowInList() const;

  app::AppState& state_;
  NameListState& names_;
  const NameFamily& family_;
  app::EditContextMenu menu_;
};

}  // namespace kelpin::editor
