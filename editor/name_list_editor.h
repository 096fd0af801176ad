#pragma once

#include <memory>

#include "editor/name_family.h"
#include "editor/name_list_fill.h"
#include "editor/name_list_state.h"
#include "ui/dialog.h"

namespace kelpin::editor {

// One of the card's lists of names, to be edited and erased. A row is the card's record of that
// number, also while the list is being filled. Screen thread.
class NameListEditor : public ui::DialogHandler {
 public:
  // All of it outlives the dialog.
  NameListEditor(app::AppState& state, NameListState& listState, const NameFamily& family)
      : state_(state), names_(listState), family_(family) {}
  ~NameListEditor() override { Release(); }

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  // A row is selected and the card answers.
  bool MayChange(ui::Dialog& dialog) const;
  void Edit(ui::Dialog& dialog);
  void Erase(ui::Dialog& dialog);
  bool EraseRecord(ui::Dialog& dialog, std::uint32_t record) const;
  void EnableKeys(ui::Dialog& dialog) const;
  void Release();

  app::AppState& state_;
  NameListState& names_;
  const NameFamily& family_;
  std::shared_ptr<NameListFill> fill_;
};

// The command: once the card is ready.
void OpenNameList(app::AppState& state, NameListState& listState, const NameFamily& family);

}  // namespace kelpin::editor
