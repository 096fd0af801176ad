#pragma once

#include <memory>

#include "ui/dialog.h"
#include "views/own_number_reader.h"

namespace kelpin::views {

// The card's own numbers (EF_MSISDN), to be edited and erased.
class OwnNumbersDialog : public ui::DialogHandler {
 public:
  OwnNumbersDialog(app::AppState& state, std::shared_ptr<OwnNumberWatcher> watcher);
  ~OwnNumbersDialog() override;

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  bool ReadOnly() const;
  void Place(ui::Dialog& dialog, int width, int listHeight);
  // The first selected row of a card that answers; -1 when there is none, or the reason was shown.
  int RowToChange(ui::Dialog& dialog);
  void Edit(ui::Dialog& dialog);
  void Erase(ui::Dialog& dialog);
  void ResolveDoubts(ui::Dialog& dialog);
  void Leave(ui::Dialog& dialog);

  app::AppState& state_;
  const std::shared_ptr<OwnNumberWatcher> watcher_;
  const std::shared_ptr<OwnNumberReader> reader_;
  int recordWidth_ = 0;   // of the column of record numbers
  int listHeight_ = 0;    // the least
  bool changed_ = false;  // an edit or an erasure was asked for
  ui::Size size_;         // as last laid out
};

// Once the card answers.
void ShowOwnNumbers(app::AppState& state, ui::WindowHandle owner,
                    const std::shared_ptr<OwnNumberWatcher>& watcher);

}  // namespace kelpin::views
