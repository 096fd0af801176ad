#include "contacts/contact_list_dialog.h"

#include <algorithm>

#include "app/app_state.h"
#include "app/list_message.h"
#include "res/strings.h"
#include "views/view_dialog.h"

namespace kelpin::contacts {
namespace {

constexpr int kColumnShift = 10;  // the name's column is wider by it, the other one narrower
// What the private message says: the fill is to start, or how it ended.
constexpr std::uint32_t kFillStarts = 0;
constexpr std::uint32_t kFillEnded = 1;

}  // namespace

void ContactListDialog::OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                                  std::uint32_t second) {
  if (message != fillMessage_) {
    return;
  }
  if (first == kFillStarts) {
    StartFill(dialog);
  } else {
    EndFill(dialog, static_cast<EnumerationEnd>(second));
  }
}

void ContactListDialog::OnHelp(ui::Dialog& /*dialog*/) {
  views::ShowHelp(state_);
}

void ContactListDialog::SetUp(ui::Dialog& dialog, int bar, int reach) const {
  dialog.SetFullScreen(false, true);
  dialog.SetTitle(state_.appTitle);
  views::CreateBar(dialog, bar);
  if (ui::ListView* const list = dialog.List(list_)) {
    list->SetExtendedStyle(ui::kListCheckBoxes | ui::kListFullRowSelect);
    list->InsertColumn(kContactColumnName, res::LoadString(res::kStringName), 0);
    list->InsertColumn(kContactColumnReach, res::LoadString(reach), 0);
    list->SetMessage(app::MakeListMessage(res::kTextReadingContacts));
  }
}

void ContactListDialog::PlaceList(ui::Dialog& dialog, const ui::Rect& bounds) const {
  dialog.SetBounds(list_, bounds);
  if (ui::ListView* const list = dialog.List(list_)) {
    list->SetColumnWidth(kContactColumnName, bounds.width / 2 + kColumnShift);
    list->SetColumnWidth(kContactColumnReach, std::max(0, bounds.width / 2 - kColumnShift));
  }
}

void ContactListDialog::PostFillStarts(ui::Dialog& dialog) const {
  dialog.PostMessage(fillMessage_, kFillStarts);
}

void ContactListDialog::PostFillEnded(ui::Dialog& dialog, std::uint32_t fillMessage,
                                      EnumerationEnd end) {
  dialog.PostMessage(fillMessage, kFillEnded, static_cast<std::uint32_t>(end));
}

ui::ListMessage NoContactsMessage(EnumerationEnd end) {
  return end == EnumerationEnd::kNotOpened
             ? app::MakeListMessage(res::kTextContactsNotOpened, res::kTextContactsNotOpenedHint)
             : app::MakeListMessage(res::kTextNoContacts, res::kTextNoContactsHint);
}

}  // namespace kelpin::contacts
