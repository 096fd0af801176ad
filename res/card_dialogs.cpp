#include "res/card_dialogs.h"

#include "res/ids.h"
#include "res/string_table.h"
#include "res/translation.h"

namespace kelpin::res {
namespace {

using ui::ControlKind;
using ui::ControlTemplate;
using ui::DialogTemplate;

consteval ControlTemplate Label(int id, int text, std::uint32_t style = ui::kStyleNone) {
  return {id, ControlKind::kLabel, TemplateText(text), style, 0, 0};
}

consteval ControlTemplate Code(int id, int label) {
  return {id, ControlKind::kEdit, {}, ui::kStyleSecret, label, 0};
}

constexpr ControlTemplate kProblem = {kCardCodeProblem, ControlKind::kLabel, {}, ui::kStyleHidden};

constexpr ControlTemplate kPinControls[] = {
    Label(kCardCodeTitle, kTextPinTitle, ui::kStyleHeader),
    Label(kCardCodeText, kTextPinWanted),
    kProblem,
    Label(kCardPinLabel, kTextPinLabel),
    Code(kCardPin, kCardPinLabel),
};

constexpr ControlTemplate kPukControls[] = {
    Label(kCardCodeTitle, kTextPukTitle, ui::kStyleHeader),
    Label(kCardCodeText, kTextPukWanted),
    kProblem,
    Label(kCardPukLabel, kTextPukLabel),
    Code(kCardPuk, kCardPukLabel),
    Label(kNewPinLabel, kTextNewPinLabel),
    Code(kNewPin, kNewPinLabel),
    Label(kNewPinAgainLabel, kTextNewPinAgainLabel),
    Code(kNewPinAgain, kNewPinAgainLabel),
};

constexpr ControlTemplate kOpeningControls[] = {
    Label(kOpeningTitle, kTextOpeningCard, ui::kStyleHeader),
    Label(kOpeningText, kTextOpeningCardSlow),
};

constexpr DialogTemplate kPinDialog = {kDialogCardPin, kPinControls, u"card-pin"};
constexpr DialogTemplate kPukDialog = {kDialogCardPuk, kPukControls, u"card-pin"};
constexpr DialogTemplate kOpeningDialog = {kDialogOpeningCard, kOpeningControls, u"main-list"};

constexpr ui::SoftKeyTemplate kCodeKeys[] = {
    {kCardCodeSend, TemplateText(kTextKeyOk), {}, {}},
    {kCardCodeCancel, TemplateText(kTextKeyCancel), {}, {}}};
constexpr ui::SoftKeyTemplate kOpeningKeys[] = {
    {kOpeningCancel, TemplateText(kTextKeyCancel), {}, {}}};
constexpr ui::MenuBarTemplate kCodeBar = {kBarCardCode, kCodeKeys};
constexpr ui::MenuBarTemplate kOpeningBar = {kBarOpeningCard, kOpeningKeys};

}  // namespace

const DialogTemplate& CardPinDialog() {
  return Translated(kPinDialog);
}

const DialogTemplate& CardPukDialog() {
  return Translated(kPukDialog);
}

const DialogTemplate& OpeningCardDialog() {
  return Translated(kOpeningDialog);
}

const ui::MenuBarTemplate& CardCodeBar() {
  return Translated(kCodeBar);
}

const ui::MenuBarTemplate& OpeningCardBar() {
  return Translated(kOpeningBar);
}

}  // namespace kelpin::res
