#include "views/about.h"

#include "app/app_state.h"
#include "app/start_up.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "views/view_dialog.h"

namespace kelpin::views {
namespace {

constexpr int kTop = 12;
constexpr int kIconSize = 32;
constexpr ui::Size kPictureSize = {240, 120};
constexpr ui::MenuBarTemplate kEmptyBar = {};

// Above and below the picture, in their order.
constexpr int kUpperLines[] = {res::kAboutTitle, res::kAboutPlatform, res::kAboutVersion};
constexpr int kLowerLines[] = {res::kAboutPurpose, res::kAboutCopyright, res::kAboutLicense};

// Room for a text that is broken where the line would be too wide: a letter takes two fifths of the
// line's height, and a bold one is somewhat higher.
int Height(const ui::Dialog& dialog, int control, int width, int line) {
  const int needed = static_cast<int>(dialog.Text(control).size()) * line * 2 / 5;
  return needed > width ? line * 5 / 2 : line;
}

}  // namespace

void AboutDialog::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(true, true);
  dialog.SetTitle(state_.appTitle);
  const bool smartphone = state_.isSmartphone != 0;
  if (smartphone) {
    CreateBar(dialog, res::kBarAbout);
  } else {
    dialog.CreateMenuBar(kEmptyBar);
  }
  dialog.SetText(res::kAboutTitle, res::LoadString(res::kStringAppTitle));
  dialog.SetText(res::kAboutPlatform,
                 res::LoadString(smartphone ? res::kStringForSmartphone : res::kStringForPocketPc));
  dialog.SetText(res::kAboutVersion,
                 res::Format(res::LoadString(res::kStringVersion), {app::kVersion}));
  dialog.SetBold(res::kAboutTitle, true);
  dialog.SetBold(res::kAboutCopyright, true);
  const int margin = state_.ports.screen.GetMetrics().margin;
  dialog.SetBounds(res::kAboutIcon, {margin, kTop, kIconSize, kIconSize});
}

void AboutDialog::OnSize(ui::Dialog& dialog, ui::Size client) {
  if (client.width == size_.width || client.height == size_.height) {
    return;
  }
  const int line = state_.ports.screen.GetMetrics().textLineHeight;
  int y = kTop;
  for (const int control : kUpperLines) {
    dialog.SetBounds(control, {0, y, client.width, line});
    y += line;
  }
  dialog.SetBounds(res::kAboutPicture, {(client.width - kPictureSize.width) / 2, y,
                                        kPictureSize.width, kPictureSize.height});
  y += kPictureSize.height;
  for (const int control : kLowerLines) {
    const int height = Height(dialog, control, client.width, line);
    dialog.SetBounds(control, {0, y, client.width, height});
    y += height;
  }
  size_ = client;
}

void AboutDialog::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOk:
    case res::kCancel:
    case res::kAboutDone:
      dialog.Close();
      break;
    default:
      break;
  }
}

void AboutDialog::OnSettingsChange(ui::Dialog& dialog) {
  dialog.ScrollIntoView(res::kAboutTitle);
}

void AboutDialog::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

void AboutDialog::OnClose(ui::Dialog& dialog) {
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

void ShowAbout(app::AppState& state) {
  AboutDialog about(state);
  RunDialog(state, res::kDialogAbout, state.mainDialog, about);
}

}  // namespace kelpin::views
