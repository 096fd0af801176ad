#pragma once

#include "app/commands.h"
#include "app/list_loader.h"
#include "app/wiring.h"
#include "ui/dialog.h"

namespace kelpin::app {

struct AppState;

// The main window: the header with the card's own number, and the list of its entries. Its opening
// opens the card, and its end closes it and ends the program. Outlives the dialog.
class MainDialog : public ui::DialogHandler {
 public:
  MainDialog(AppState& state, const Wiring& wiring);

  void OnInit(ui::Dialog& dialog) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnActivate(ui::Dialog& dialog, bool active) override;
  bool OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) override;
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;
  void OnDestroy(ui::Dialog& dialog) override;

 private:
  void SetUpWindow(ui::Dialog& dialog);
  void OpenSessions();
  void AskAboutNewSim();
  void TellPhonebookChanged();
  void CloseSessions();

  AppState& state_;
  const Wiring wiring_;
  Commands commands_;
  ListLoader loader_;
  ui::Size size_;  // the list was last placed for
};

}  // namespace kelpin::app
