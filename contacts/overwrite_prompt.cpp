#include "contacts/overwrite_prompt.h"

#include "app/app_state.h"
#include "contacts/prompt_layout.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "ui/screen.h"
#include "views/view_dialog.h"

namespace kelpin::contacts {

void OverwritePrompt::Reset(PromptDirection into) {
  applyToAll = 0;
  applyAnswer = 0;
  direction = into;
}

void OverwritePromptDialog::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(true, true);
  dialog.SetTitle(state_.appTitle);
  views::CreateBar(dialog, res::kBarOverwritePrompt);
  const int question = prompt_.direction == PromptDirection::kIntoSim
                           ? res::kStringOverwriteSimQuestion
                           : res::kStringOverwriteContactQuestion;
  dialog.SetText(res::kOverwriteText, res::Format(res::LoadString(question), {prompt_.name}));
  dialog.SetText(res::kOverwriteApplyToAll, res::LoadString(res::kStringApplyToAll));
}

void OverwritePromptDialog::OnSize(ui::Dialog& dialog, ui::Size client) {
  PlacePrompt(dialog, state_.ports.screen.GetMetrics(), client, res::kOverwriteText,
              res::kOverwriteApplyToAll);
}

void OverwritePromptDialog::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOk:
    case res::kOverwriteYes:
      Answer(dialog, 1);
      break;
    case res::kCancel:
    case res::kOverwriteNo:
      Answer(dialog, 0);
      break;
    default:
      break;
  }
}

void OverwritePromptDialog::Answer(ui::Dialog& dialog, int answer) {
  prompt_.applyAnswer = answer;
  prompt_.applyToAll = dialog.Checked(res::kOverwriteApplyToAll) ? 1 : 0;
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

void OverwritePromptDialog::OnHelp(ui::Dialog& /*dialog*/) {
  views::ShowHelp(state_);
}

void OverwritePromptDialog::OnClose(ui::Dialog& dialog) {
  Answer(dialog, 0);
}

int AskOverwrite(app::AppState& state, ui::WindowHandle owner, std::u16string_view name,
                 OverwritePrompt& prompt) {
  if (!name.empty()) {
    name = name.substr(0, kPromptNameLimit);
    const bool halfPair =
        name.size() == kPromptNameLimit && name.back() >= 0xD800 && name.back() <= 0xDBFF;
    prompt.name = halfPair ? name.substr(0, name.size() - 1) : name;
  }
  // An answer that never comes, since the program ends, is No.
  prompt.applyAnswer = 0;
  state.ports.screen.SetWaitCursor(false);
  OverwritePromptDialog dialog(state, prompt);
  views::RunDialog(state, res::kDialogOverwritePrompt, owner, dialog);
  state.ports.screen.SetWaitCursor(true);
  return prompt.applyAnswer;
}

}  // namespace kelpin::contacts
