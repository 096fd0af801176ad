#include "app/card_code_dialog.h"

#include <algorithm>
#include <iterator>
#include <string_view>

#include "res/card_dialogs.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"

namespace kelpin::app {
namespace {

constexpr std::size_t kShortestPin = 4;
constexpr int kLongTextLines = 4;  // on a narrow screen; of a text that warns or explains the PUK
constexpr int kShortTextLines = 2;
constexpr int kProblemLines = 2;  // the same of a problem

bool IsDigit(char16_t unit) {
  return unit >= u'0' && unit <= u'9';
}

// What is asked for, and how often it may be wrong.
std::u16string Text(const platform::CardLockState& state) {
  std::u16string text(res::LoadString(state.blocked ? res::kTextPukWanted : res::kTextPinWanted));
  const int tries = state.blocked ? state.unblockTriesLeft : state.triesLeft;
  if (tries == 1) {
    text += u' ';
    text += res::LoadString(state.blocked ? res::kTextPukOneTryLeft : res::kTextPinOneTryLeft);
  } else if (tries > 1) {
    text += u' ';
    text +=
        res::Format(res::LoadString(res::kTextPinTriesLeft), {static_cast<std::uint32_t>(tries)});
  }
  return text;
}

bool Take(const ui::Dialog& dialog, int control, std::size_t shortest, SecretCode& code) {
  std::u16string typed = dialog.Text(control);
  const bool fits = code.Set<char16_t>(typed, shortest);
  std::fill(typed.begin(), typed.end(), u'\0');
  return fits;
}

}  // namespace

CardCodeDialog::CardCodeDialog(ui::Screen& screen, const platform::CardLockState& state,
                               int problem)
    : screen_(screen), state_(state), problem_(problem) {}

bool CardCodeDialog::Ask(ui::WindowHandle owner) {
  return screen_.DialogBox(state_.blocked ? res::CardPukDialog() : res::CardPinDialog(), owner,
                           *this) == kSent;
}

std::vector<int> CardCodeDialog::Fields() const {
  return state_.blocked ? std::vector<int>{res::kCardPuk, res::kNewPin, res::kNewPinAgain}
                        : std::vector<int>{res::kCardPin};
}

void CardCodeDialog::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(true, false);
  dialog.SetTitle(res::LoadString(res::kStringAppTitle));
  dialog.CreateMenuBar(res::CardCodeBar());
  dialog.SetText(res::kCardCodeText, Text(state_));
  for (const int field : Fields()) {
    dialog.SetLimit(field, static_cast<int>(SecretCode::kLongest));
    dialog.SetInputMode(field, ui::InputMode::kNumbers);
  }
  dialog.SetColor(res::kCardCodeProblem, ui::TextColor::kError);
  if (problem_ != 0) {
    ShowProblem(dialog, problem_);
  }
  dialog.SetFocus(Fields().front());
}

void CardCodeDialog::OnSize(ui::Dialog& dialog, ui::Size client) {
  Place(dialog, client);
}

void CardCodeDialog::Place(ui::Dialog& dialog, ui::Size client) {
  const ui::Metrics metrics = screen_.GetMetrics();
  const int width = std::max(0, client.width - 2 * metrics.margin);
  dialog.SetBounds(res::kCardCodeTitle, {0, 0, client.width, metrics.headerHeight});
  int y = metrics.headerHeight + metrics.gap;
  const auto put = [&](int control, int height, int gap) {
    dialog.SetBounds(control, {metrics.margin, y, width, height});
    y += height + gap;
  };
  const bool isLong = state_.blocked || state_.triesLeft == 1;
  put(res::kCardCodeText, (isLong ? kLongTextLines : kShortTextLines) * metrics.textLineHeight,
      metrics.gap);
  if (dialog.Shown(res::kCardCodeProblem)) {
    put(res::kCardCodeProblem, kProblemLines * metrics.textLineHeight, metrics.gap);
  }
  const std::vector<int> labels =
      state_.blocked
          ? std::vector<int>{res::kCardPukLabel, res::kNewPinLabel, res::kNewPinAgainLabel}
          : std::vector<int>{res::kCardPinLabel};
  const std::vector<int> fields = Fields();
  for (std::size_t at = 0; at < fields.size(); ++at) {
    put(labels[at], metrics.labelHeight, 0);
    put(fields[at], metrics.fieldHeight, metrics.gap);
  }
}

void CardCodeDialog::ShowProblem(ui::Dialog& dialog, int text) {
  dialog.SetText(res::kCardCodeProblem, res::LoadString(text));
  dialog.Show(res::kCardCodeProblem, true);
  if (dialog.ClientSize().width > 0) {
    Place(dialog, dialog.ClientSize());
  }
}

void CardCodeDialog::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  if (notification.code != ui::NotifyCode::kEditUpdate) {
    return;
  }
  const std::u16string typed = dialog.Text(notification.control);
  if (std::all_of(typed.begin(), typed.end(), IsDigit)) {
    return;
  }
  std::u16string digits;
  std::copy_if(typed.begin(), typed.end(), std::back_inserter(digits), IsDigit);
  dialog.SetText(notification.control, digits);
  const int end = static_cast<int>(digits.size());
  dialog.SetSelection(notification.control, end, end);
}

void CardCodeDialog::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOk:
    case res::kCardCodeSend:
      if (state_.blocked) {
        SendPuk(dialog);
      } else {
        Send(dialog);
      }
      break;
    case res::kCancel:
    case res::kCardCodeCancel:
      Finish(dialog, ui::kDialogDone);
      break;
    default:
      break;
  }
}

void CardCodeDialog::OnClose(ui::Dialog& dialog) {
  Finish(dialog, ui::kDialogDone);
}

void CardCodeDialog::Send(ui::Dialog& dialog) {
  if (!Take(dialog, res::kCardPin, kShortestPin, code_)) {
    ShowProblem(dialog, res::kTextPinDigits);
    dialog.SetFocus(res::kCardPin);
    return;
  }
  Finish(dialog, kSent);
}

void CardCodeDialog::SendPuk(ui::Dialog& dialog) {
  int problem = 0;
  int field = 0;
  SecretCode again;
  if (!Take(dialog, res::kCardPuk, SecretCode::kLongest, code_)) {
    problem = res::kTextPukDigits;
    field = res::kCardPuk;
  } else if (!Take(dialog, res::kNewPin, kShortestPin, newPin_)) {
    problem = res::kTextPinDigits;
    field = res::kNewPin;
  } else if (!Take(dialog, res::kNewPinAgain, kShortestPin, again) ||
             again.Digits() != newPin_.Digits()) {
    problem = res::kTextNewPinsDiffer;
    field = res::kNewPinAgain;
  }
  if (problem == 0) {
    Finish(dialog, kSent);
    return;
  }
  ShowProblem(dialog, problem);
  dialog.SetFocus(field);
  dialog.SetSelection(field, 0, -1);
}

void CardCodeDialog::Finish(ui::Dialog& dialog, int result) {
  for (const int field : Fields()) {
    dialog.SetText(field, u"");
  }
  dialog.End(result);
}

}  // namespace kelpin::app
