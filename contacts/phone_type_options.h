#pragma once

#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

// Dialog 206: which of a contact's numbers are copied to the card, and the mark that tells each of
// them apart there. Screen thread.
class PhoneTypeOptions : public ui::DialogHandler {
 public:
  explicit PhoneTypeOptions(app::AppState& state) : state_(state) {}

  void OnInit(ui::Dialog& dialog) override;
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  void Fill(ui::ListView& list);
  void Save(ui::Dialog& dialog);
  // Takes flags and marks from the rows.
  void TakeChoice(const ui::ListView& list);

  app::AppState& state_;
};

void ShowPhoneTypeOptions(app::AppState& state);

}  // namespace kelpin::contacts
