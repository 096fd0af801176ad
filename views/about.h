#pragma once

#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

// The program's name, platform, version and picture.
class AboutDialog : public ui::DialogHandler {
 public:
  explicit AboutDialog(app::AppState& state) : state_(state) {}

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnSettingsChange(ui::Dialog& dialog) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  app::AppState& state_;
  ui::Size size_;  // as last laid out
};

void ShowAbout(app::AppState& state);

}  // namespace kelpin::views
