#pragma once

#include <string>
#include <vector>

#include "app/secret_code.h"
#include "platform/card_lock.h"
#include "ui/dialog.h"
#include "ui/screen.h"

namespace kelpin::app {

// Asks for the PIN, or for the PUK and a new PIN where the PIN is blocked. Takes digits alone and
// ends with kSent when they have the right number, else says what is missing. Sends nothing itself.
class CardCodeDialog : public ui::DialogHandler {
 public:
  static constexpr int kSent = 1;

  // `problem`: a text that says why it is asked again, 0 when there is none.
  CardCodeDialog(ui::Screen& screen, const platform::CardLockState& state, int problem);

  // Shows it and waits for its end; true when the codes are there. Any thread.
  bool Ask(ui::WindowHandle owner);
  // The PIN, or the PUK of a blocked card.
  const SecretCode& Code() const { return code_; }
  const SecretCode& NewPin() const { return newPin_; }

  void OnInit(ui::Dialog& dialog) override;
  void OnCommand(ui::Dialog& dialog, int command) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnClose(ui::Dialog& dialog) override;

 private:
  std::vector<int> Fields() const;
  void Place(ui::Dialog& dialog, ui::Size client);
  void ShowProblem(ui::Dialog& dialog, int text);
  void Send(ui::Dialog& dialog);
  void SendPuk(ui::Dialog& dialog);
  // Takes the codes off the screen, then ends.
  void Finish(ui::Dialog& dialog, int result);

  ui::Screen& screen_;
  const platform::CardLockState state_;
  const int problem_;
  SecretCode code_;
  SecretCode newPin_;
};

}  // namespace kelpin::app
