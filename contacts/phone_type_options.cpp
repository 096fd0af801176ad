#include "contacts/phone_type_options.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "app/app_state.h"
#include "app/settings.h"
#include "contacts/phone_types.h"
#include "contacts/prompt_layout.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"
#include "views/mark_editor.h"
#include "views/view_dialog.h"

namespace kelpin::contacts {
namespace {

constexpr std::size_t kEditKey = 1;  // the right one

// A row's phone type, from 1.
struct PhoneTypeRow : ui::RowData {
  explicit PhoneTypeRow(std::uint32_t typeNumber) : number(typeNumber) {}
  const std::uint32_t number;
};

// What a row's mark becomes in the settings.
std::u16string MarkOf(const ui::ListView& list, int row) {
  return list.ItemText(row, views::kPhoneTypeColumnMark).substr(0, app::kMarkLimit);
}

void SetMark(app::AppSettings& settings, std::size_t type, const std::u16string& mark) {
  const auto end = std::copy(mark.begin(), mark.end(), std::begin(settings.typeMarks[type]));
  std::fill(end, std::end(settings.typeMarks[type]), u'\0');
}

}  // namespace

void PhoneTypeOptions::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(true, true);
  dialog.SetTitle(state_.appTitle);
  ui::MenuBar* const bar = views::CreateBar(dialog, res::kBarOptions);
  if (bar != nullptr) {
    bar->EnableSoftKey(kEditKey, false);  // until a row is selected
  }
  dialog.SetText(res::kOptionsTitle, res::LoadString(res::kTextOptionsTitle));
  dialog.SetText(res::kOptionsExplanation, res::LoadString(res::kStringOptionsExplanation));
  if (ui::ListView* const list = dialog.List(res::kOptionsList)) {
    list->SetExtendedStyle(ui::kListCheckBoxes | ui::kListFullRowSelect);
    list->InsertColumn(views::kPhoneTypeColumnName, res::LoadString(res::kStringPhoneType), 0);
    list->InsertColumn(views::kPhoneTypeColumnMark, res::LoadString(res::kStringMark), 0);
  }
  dialog.PostMessage(res::kMessageFillOptions);
}

void PhoneTypeOptions::OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t /*first*/,
                                 std::uint32_t /*second*/) {
  ui::ListView* const list = dialog.List(res::kOptionsList);
  if (message == res::kMessageFillOptions && list != nullptr && list->ItemCount() == 0) {
    Fill(*list);
  }
}

void PhoneTypeOptions::Fill(ui::ListView& list) {
  for (const PhoneTypeInfo& info : kPhoneTypes) {
    const auto type = static_cast<std::size_t>(info.type);
    const bool chosen = state_.settings.typeFlags[type] == 1;
    list.InsertRow(list.ItemCount(),
                   {std::u16string(res::LoadString(info.label)), state_.settings.typeMarks[type]},
                   std::make_unique<PhoneTypeRow>(static_cast<std::uint32_t>(type) + 1),
                   chosen ? ui::kItemChecked : ui::kItemUnchecked);
  }
}

void PhoneTypeOptions::OnSize(ui::Dialog& dialog, ui::Size client) {
  const ui::Metrics metrics = state_.ports.screen.GetMetrics();
  const int header = std::min(metrics.headerHeight, client.height);
  dialog.SetBounds(res::kOptionsTitle, {0, 0, client.width, header});
  const int width = std::max(0, client.width - 2 * metrics.margin);
  const int text = TextHeight(metrics, dialog.Text(res::kOptionsExplanation), width);
  dialog.SetBounds(res::kOptionsExplanation, {metrics.margin, header, width, text});
  const int top = header + text + metrics.gap;
  dialog.SetBounds(res::kOptionsList, {0, top, client.width, std::max(0, client.height - top)});
  if (ui::ListView* const list = dialog.List(res::kOptionsList)) {
    list->SetColumnWidth(views::kPhoneTypeColumnName, client.width * 2 / 3);
    list->SetColumnWidth(views::kPhoneTypeColumnMark, client.width - client.width * 2 / 3);
  }
}

void PhoneTypeOptions::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOk:
    case res::kOptionsOk:
      Save(dialog);
      break;
    case res::kCancel:
      dialog.Close();
      break;
    case res::kOptionsEdit:
      views::EditMark(state_, dialog, res::kOptionsList);
      break;
    default:
      break;
  }
}

void PhoneTypeOptions::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  const ui::ListView* const list = dialog.List(res::kOptionsList);
  if (notification.control != res::kOptionsList || list == nullptr) {
    return;
  }
  if (notification.code == ui::NotifyCode::kItemActivated) {
    dialog.Command(res::kOptionsEdit);
  } else if (notification.code == ui::NotifyCode::kItemChanged) {
    if (const auto bar = dialog.Bar()) {
      bar->EnableSoftKey(kEditKey, list->SelectedCount() > 0);
    }
  }
}

void PhoneTypeOptions::Save(ui::Dialog& dialog) {
  const ui::ListView* const list = dialog.List(res::kOptionsList);
  // Before the rows are there nothing can have been chosen.
  if (list == nullptr || list->ItemCount() == 0) {
    dialog.Close();
    return;
  }
  ui::Screen& screen = state_.ports.screen;
  screen.SetWaitCursor(true);
  TakeChoice(*list);
  const int saved = app::SaveTypeFlagsAndMarks(state_.ports.registry, state_.settings);
  screen.SetWaitCursor(false);
  if (saved == 0) {
    screen.MessageBox(dialog.Handle(), res::LoadString(res::kTextOptionsNotStored),
                      res::LoadString(res::kStringWarning), ui::kBoxWarning);
  }
  dialog.Close();
}

void PhoneTypeOptions::TakeChoice(const ui::ListView& list) {
  app::AppSettings& settings = state_.settings;
  bool anyChosen = false;
  for (int row = 0; row < list.ItemCount(); ++row) {
    const std::shared_ptr<const ui::RowData> data = list.ItemData(row);
    if (data == nullptr) {
      continue;
    }
    // This list's rows hold nothing else.
    const std::size_t type = static_cast<const PhoneTypeRow&>(*data).number - 1;
    const bool chosen = list.Checked(row);
    settings.typeFlags[type] = chosen ? 1 : 0;
    SetMark(settings, type, MarkOf(list, row));
    anyChosen = anyChosen || chosen;
  }
  // Some number of a contact has to be copied.
  if (!anyChosen) {
    constexpr auto kMobile = static_cast<std::size_t>(app::PhoneType::kMobile);
    settings.typeFlags[kMobile] = 1;
    SetMark(settings, kMobile, MarkOf(list, 0));
  }
}

void PhoneTypeOptions::OnHelp(ui::Dialog& /*dialog*/) {
  views::ShowHelp(state_);
}

void PhoneTypeOptions::OnClose(ui::Dialog& dialog) {
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

void ShowPhoneTypeOptions(app::AppState& state) {
  PhoneTypeOptions options(state);
  views::RunDialog(state, res::kDialogOptions, state.mainDialog, options);
}

}  // namespace kelpin::contacts
