#pragma once

#include <memory>

#include "ui/dialog.h"
#include "views/double_press.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// The card's service dialling numbers (EF_SDN), to be called.
class ServiceNumbersDialog : public ui::DialogHandler {
 public:
  explicit ServiceNumbersDialog(app::AppState& state);
  ~ServiceNumbersDialog() override;

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  bool OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) override;
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;
  void OnDestroy(ui::Dialog& dialog) override;

 private:
  struct Reader;  // what the fill thread works with; outlives the dialog where it has to

  void Call(ui::Dialog& dialog);
  void CloseClients();

  app::AppState& state_;
  const int unit_;  // what the columns are measured by
  std::shared_ptr<Reader> reader_;
  DoublePress press_;
  ui::Size size_;  // as last laid out
};

void ShowServiceNumbers(app::AppState& state);

}  // namespace kelpin::views
