#pragma once

#include <memory>

#include "contacts/contact_list_dialog.h"

namespace kelpin::contacts {

// What a row of the list holds.
struct ContactDeleteRow : ui::RowData {
  explicit ContactDeleteRow(std::int32_t contactOid) : oid(contactOid) {}
  const std::int32_t oid;
};

// Dialog 212: takes the checked contacts out of Contacts, after a question. Filling and deleting
// each have a thread of their own. Screen thread.
class DeleteContacts : public ContactListDialog {
 public:
  explicit DeleteContacts(app::AppState& state);
  ~DeleteContacts() override;

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnClose(ui::Dialog& dialog) override;
  void OnDestroy(ui::Dialog& dialog) override;

 private:
  enum class Stage { kOpen, kAsking, kDeleting };
  struct Shared;  // with the threads, which may outlive the dialog

  void StartFill(ui::Dialog& dialog) override;
  void EndFill(ui::Dialog& dialog, EnumerationEnd end) override;
  void EnableCheckCommands(ui::Dialog& dialog, bool enabled);
  void CheckAll(ui::Dialog& dialog, bool checked);
  void Delete(ui::Dialog& dialog);
  bool Ask(const ui::Dialog& dialog);

  const std::shared_ptr<Shared> shared_;
  Stage stage_ = Stage::kOpen;
};

void ShowDeleteContacts(app::AppState& state);

}  // namespace kelpin::contacts
