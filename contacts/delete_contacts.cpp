#include "contacts/delete_contacts.h"

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "contacts/display_name.h"
#include "contacts/phone_types.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"
#include "views/view_dialog.h"

namespace kelpin::contacts {
namespace {

using platform::ContactProperty;

std::vector<int> CheckedRows(const ui::ListView& list) {
  std::vector<int> rows;
  for (int row = 0; row < list.ItemCount(); ++row) {
    if (list.Checked(row)) {
      rows.push_back(row);
    }
  }
  return rows;
}

// By what the user knows the contact: a number, else, where e-mails count, an e-mail.
std::u16string ReachedAt(ContactsConnection& connection, std::int32_t oid, bool emailsCount) {
  for (const PhoneTypeInfo& type : kPhoneTypes) {
    std::u16string number = ReadPhone(connection, oid, type);
    if (!number.empty()) {
      return number;
    }
  }
  for (const ContactProperty property : kEmailProperties) {
    std::u16string email =
        emailsCount ? ContactText(*connection.contact, property) : std::u16string();
    if (!email.empty()) {
      return email;
    }
  }
  return {};
}

}  // namespace

struct DeleteContacts::Shared {
  explicit Shared(app::AppState& theState)
      : state(theState),
        language(theState.language),
        emailsCount(theState.settings.Del_Contacts_Type != 0) {}

  EnumerationEnd Fill();
  void DeleteChecked();

  app::AppState& state;
  const std::uint32_t language;
  const bool emailsCount;
  std::shared_ptr<ui::Dialog> dialog;
  std::atomic<bool> stopFilling = false;
  std::atomic<bool> stopDeleting = false;
};

EnumerationEnd DeleteContacts::Shared::Fill() {
  ui::ListView& list = *dialog->List(res::kDeleteContactsList);
  return ForEachContact(state.ports.contacts, stopFilling,
                        [&](ContactsConnection& connection, const ContactHead& head) {
                          std::vector<std::u16string> texts = {
                              MakeDisplayName(head.first, head.last, language).text,
                              ReachedAt(connection, head.oid, emailsCount)};
                          list.InsertRow(list.ItemCount(), std::move(texts),
                                         std::make_unique<ContactDeleteRow>(head.oid));
                        });
}

void DeleteContacts::Shared::DeleteChecked() {
  const ui::ListView& list = *dialog->List(res::kDeleteContactsList);
  // What is checked from now on was not asked about; what is unchecked in time stays.
  const std::vector<int> rows = CheckedRows(list);
  state.ports.screen.SetWaitCursor(true);
  ContactsConnection connection(state.ports.contacts);
  if (connection.Open() != 0) {
    for (const int row : rows) {
      if (stopDeleting) {
        break;
      }
      if (!list.Checked(row)) {
        continue;
      }
      const std::shared_ptr<const ui::RowData> data = list.ItemData(row);
      if (data == nullptr) {
        break;
      }
      // This list's rows hold nothing else. A contact that stays, or has gone already, is not told.
      static_cast<void>(
          connection.DeleteContactByOid(static_cast<const ContactDeleteRow&>(*data).oid));
    }
    connection.Close();
  }
  state.ports.screen.SetWaitCursor(false);
}

DeleteContacts::DeleteContacts(app::AppState& state)
    : ContactListDialog(state, res::kDeleteContactsList, res::kMessageFillDeleteContacts),
      shared_(std::make_shared<Shared>(state)) {}

DeleteContacts::~DeleteContacts() = default;

void DeleteContacts::OnInit(ui::Dialog& dialog) {
  SetUp(dialog, res::kBarDeleteContacts,
        shared_->emailsCount ? res::kStringContact : res::kStringPhone);
  EnableCheckCommands(dialog, false);
  if (ui::ListView* const list = dialog.List(res::kDeleteContactsList)) {
    // Nothing here follows the changes of the rows.
    list->SetNotifying(false);
  }
  shared_->dialog = dialog.shared_from_this();
  PostFillStarts(dialog);
}

void DeleteContacts::StartFill(ui::Dialog& dialog) {
  const int started = state_.ports.kernel.CreateThread([shared = shared_] {
    PostFillEnded(*shared->dialog, res::kMessageFillDeleteContacts, shared->Fill());
  });
  if (started == 0) {
    EndFill(dialog, EnumerationEnd::kNotOpened);
  }
}

void DeleteContacts::EndFill(ui::Dialog& dialog, EnumerationEnd end) {
  dialog.List(res::kDeleteContactsList)->SetMessage(NoContactsMessage(end));
  EnableCheckCommands(dialog, true);
}

void DeleteContacts::EnableCheckCommands(ui::Dialog& dialog, bool enabled) {
  const std::shared_ptr<ui::MenuBar> bar = dialog.Bar();
  if (ui::Menu* const menu = bar == nullptr ? nullptr : bar->SubMenu(res::kDeleteContactsMenu)) {
    menu->EnableItem(res::kDeleteContactsCheckAll, enabled);
    menu->EnableItem(res::kDeleteContactsUncheckAll, enabled);
  }
}

void DeleteContacts::OnSize(ui::Dialog& dialog, ui::Size client) {
  PlaceList(dialog, {0, 0, client.width, client.height});
}

void DeleteContacts::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOk:
    case res::kDeleteContactsDelete:
      Delete(dialog);
      break;
    case res::kCancel:
    case res::kDeleteContactsCancel:
      dialog.Close();
      break;
    case res::kDeleteContactsCheckAll:
      CheckAll(dialog, true);
      break;
    case res::kDeleteContactsUncheckAll:
      CheckAll(dialog, false);
      break;
    default:
      break;
  }
}

void DeleteContacts::CheckAll(ui::Dialog& dialog, bool checked) {
  if (stage_ == Stage::kOpen) {
    dialog.List(res::kDeleteContactsList)->SetCheck(-1, checked);
  }
}

void DeleteContacts::Delete(ui::Dialog& dialog) {
  if (stage_ != Stage::kOpen) {
    return;
  }
  // What is not listed by now the user has not seen.
  shared_->stopFilling = true;
  if (CheckedRows(*dialog.List(res::kDeleteContactsList)).empty() || !Ask(dialog)) {
    dialog.Close();
    return;
  }
  stage_ = Stage::kDeleting;
  if (const std::shared_ptr<ui::MenuBar> bar = dialog.Bar()) {
    for (std::size_t key = 0; key < bar->KeyCount(); ++key) {
      bar->EnableSoftKey(key, false);
    }
  }
  const int started = state_.ports.kernel.CreateThread([shared = shared_] {
    shared->DeleteChecked();
    shared->dialog->End(ui::kDialogDone);
  });
  if (started == 0) {
    stage_ = Stage::kOpen;
    dialog.Close();
  }
}

bool DeleteContacts::Ask(const ui::Dialog& dialog) {
  stage_ = Stage::kAsking;
  const ui::BoxAnswer answer = state_.ports.screen.MessageBox(
      dialog.Handle(), res::LoadString(res::kStringDeleteFromContactsQuestion),
      res::LoadString(res::kStringWarning), ui::kBoxQuestion);
  stage_ = Stage::kOpen;
  return answer == ui::BoxAnswer::kYes && !dialog.Ended();
}

// A deletion that runs ends the dialog itself, after the contact it is at.
void DeleteContacts::OnClose(ui::Dialog& dialog) {
  shared_->stopFilling = true;
  shared_->stopDeleting = true;
  if (stage_ == Stage::kOpen) {
    dialog.DestroyMenuBar();
    dialog.End(ui::kDialogDone);
  }
}

void DeleteContacts::OnDestroy(ui::Dialog& /*dialog*/) {
  shared_->stopFilling = true;
  shared_->stopDeleting = true;
}

void ShowDeleteContacts(app::AppState& state) {
  DeleteContacts handler(state);
  views::RunDialog(state, res::kDialogDeleteContacts, state.mainDialog, handler);
}

}  // namespace kelpin::contacts
