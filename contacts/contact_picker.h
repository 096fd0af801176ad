#pragma once

#include <atomic>
#include <functional>
#include <memory>

#include "contacts/contact_list_dialog.h"
#include "contacts/contact_picker_fill.h"

namespace kelpin::contacts {

// Dialog 205: the contacts, to choose from what goes to the card. It fills itself on a thread of
// its own while it can be scrolled, and hands what is checked to its work on another one. Screen
// thread.
class ContactPicker : public ContactListDialog {
 public:
  // Copies the checked rows. On a thread of its own; the dialog ends when it returns. `stop` is set
  // when the user, or the end of the program, asks for that; the copy ends after the row it is at.
  using Work = std::function<void(ui::Dialog& dialog, const std::atomic<bool>& stop)>;

  ContactPicker(app::AppState& state, bool move, Work work);
  ~ContactPicker() override;

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  void OnClose(ui::Dialog& dialog) override;
  void OnDestroy(ui::Dialog& dialog) override;

 private:
  enum class Stage { kFilling, kChoosing, kWorking };
  struct Shared;  // with the threads, which may outlive the dialog

  void StartFill(ui::Dialog& dialog) override;
  void EndFill(ui::Dialog& dialog, EnumerationEnd end) override;
  void StartWork(ui::Dialog& dialog);
  void CheckAll(ui::Dialog& dialog, bool checked);
  // Checked and free, in red when more are checked than fit.
  void ShowCounter(ui::Dialog& dialog);
  void EnableCheckCommands(ui::Dialog& dialog, bool enabled);

  const bool move_;
  const Work work_;
  const std::shared_ptr<Shared> shared_;
  Stage stage_ = Stage::kFilling;
  int checked_ = 0;
  bool checkingAll_ = false;  // the counter is shown when it is over
};

}  // namespace kelpin::contacts
