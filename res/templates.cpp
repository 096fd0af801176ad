#include "res/templates.h"

#include <algorithm>
#include <array>
#include <cstddef>

#include "res/ids.h"
#include "res/string_table.h"
#include "res/translation.h"

namespace kelpin::res {
namespace {

using ui::ControlKind;
using ui::ControlTemplate;
using ui::DialogTemplate;

constexpr std::uint32_t kCenteredBold = ui::kStyleCentered | ui::kStyleBold;

consteval ControlTemplate Label(int id, int text, std::uint32_t style = ui::kStyleNone) {
  return {id, ControlKind::kLabel, TemplateText(text), style, 0, 0};
}

consteval ControlTemplate BlankLabel(int id, std::uint32_t style = ui::kStyleNone) {
  return {id, ControlKind::kLabel, {}, style, 0, 0};
}

consteval ControlTemplate Value(int id, int label, std::uint32_t style = ui::kStyleNone) {
  return {id, ControlKind::kLabel, {}, style | ui::kStyleValue, label, 0};
}

consteval ControlTemplate Edit(int id, int label, std::uint32_t style = ui::kStyleNone) {
  return {id, ControlKind::kEdit, {}, style, label, 0};
}

consteval ControlTemplate SelectButton(int id, int label) {
  return {id, ControlKind::kButton, TemplateText(kStringEllipsis), ui::kStyleNone, label, 0};
}

consteval ControlTemplate CheckBox(int id, int text) {
  return {id, ControlKind::kCheckBox, TemplateText(text), ui::kStyleNone, 0, 0};
}

consteval ControlTemplate List(int id, int label, std::uint32_t style = ui::kStyleNone) {
  return {id, ControlKind::kList, {}, style, label, 0};
}

consteval ControlTemplate Progress(int id, int label) {
  return {id, ControlKind::kProgress, {}, ui::kStyleNone, label, 0};
}

consteval ControlTemplate Drawing(int id, ControlKind kind, int resource) {
  return {id, kind, {}, ui::kStyleNone, 0, resource};
}

constexpr ControlTemplate kGroupPicker[] = {
    Label(kGroupPickerLabel, kTextGroups, ui::kStyleHidden),
    List(kGroupPickerList, kGroupPickerLabel),
};

constexpr ControlTemplate kMain[] = {
    Label(kMainHeader, kTextMyNoTemplate, ui::kStyleHeader | ui::kStyleValue),
    List(kMainList, kMainHeader),
};

constexpr ControlTemplate kNewEntry[] = {
    Label(kNewNameLabel, kStringNameLabel),
    Edit(kNewName, kNewNameLabel),
    Label(kNewNicknameLabel, kStringNicknameLabel),
    Edit(kNewNickname, kNewNicknameLabel),
    Label(kNewNumberLabel, kStringNumberLabel),
    Edit(kNewNumber, kNewNumberLabel),
    Label(kNewNumber2Label, kStringNumber2Label),
    Edit(kNewNumber2, kNewNumber2Label),
    SelectButton(kNewNumber2Button, kNewNumber2Label),
    Label(kNewNumber3Label, kStringNumber3Label),
    Edit(kNewNumber3, kNewNumber3Label),
    SelectButton(kNewNumber3Button, kNewNumber3Label),
    Label(kNewEmailLabel, kStringEmailLabel),
    Edit(kNewEmail, kNewEmailLabel),
    Label(kNewGroupLabel, kStringGroupLabel),
    Edit(kNewGroup, kNewGroupLabel, ui::kStyleReadOnly),
    SelectButton(kNewGroupButton, kNewGroupLabel),
};

constexpr ControlTemplate kEditEntry[] = {
    Label(kEditLocationLabel, kStringLocationLabel),
    Edit(kEditLocation, kEditLocationLabel, ui::kStyleDisabled),
    Label(kEditNameLabel, kStringNameLabel),
    Edit(kEditName, kEditNameLabel),
    Label(kEditNicknameLabel, kStringNicknameLabel),
    Edit(kEditNickname, kEditNicknameLabel),
    Label(kEditNumberLabel, kStringNumberLabel),
    Edit(kEditNumber, kEditNumberLabel),
    Label(kEditNumber2Label, kStringNumber2Label),
    Edit(kEditNumber2, kEditNumber2Label),
    SelectButton(kEditNumber2Button, kEditNumber2Label),
    Label(kEditNumber3Label, kStringNumber3Label),
    Edit(kEditNumber3, kEditNumber3Label),
    SelectButton(kEditNumber3Button, kEditNumber3Label),
    Label(kEditEmailLabel, kStringEmailLabel),
    Edit(kEditEmail, kEditEmailLabel),
    Label(kEditGroupLabel, kStringGroupLabel),
    Edit(kEditGroup, kEditGroupLabel, ui::kStyleReadOnly),
    SelectButton(kEditGroupButton, kEditGroupLabel),
};

constexpr ControlTemplate kAbout[] = {
    Drawing(kAboutIcon, ControlKind::kIcon, kIconApplication),
    Label(kAboutTitle, kStringAppTitle, kCenteredBold),
    Label(kAboutPlatform, kStringForPocketPc, ui::kStyleCentered),
    BlankLabel(kAboutVersion, ui::kStyleCentered),
    Drawing(kAboutPicture, ControlKind::kPicture, kPictureAbout),
    Label(kAboutPurpose, kTextAboutPurpose, ui::kStyleCentered),
    Label(kAboutCopyright, kTextAboutCopyright, kCenteredBold),
    Label(kAboutLicense, kTextAboutLicense, ui::kStyleCentered),
};

constexpr ControlTemplate kContactPicker[] = {
    Label(kContactPickerCounter, kTextCounterTemplate),
    List(kContactPickerList, kContactPickerCounter),
};

constexpr ControlTemplate kOptions[] = {
    Label(kOptionsTitle, kTextOptionsTitle, ui::kStyleHeader),
    Label(kOptionsExplanation, kStringOptionsExplanation),
    List(kOptionsList, kOptionsTitle),
};

constexpr ControlTemplate kSimInformationList[] = {
    Label(kInformationHeader, kStringSimInformation, ui::kStyleHeader),
    List(kInformationList, kInformationHeader),
    BlankLabel(kInformationEntriesText),
    Progress(kInformationEntriesBar, kInformationEntriesText),
    BlankLabel(kInformationMessagesText),
    Progress(kInformationMessagesBar, kInformationMessagesText),
};

constexpr ControlTemplate kOwnNumbers[] = {
    Label(kOwnNumbersHeader, kStringOwnNumbersHeader, ui::kStyleHeader),
    List(kOwnNumbersList, kOwnNumbersHeader),
};

// The capacity pairs take the place of the length pairs where the settings say so.
constexpr ControlTemplate kSimInformationPage[] = {
    Label(kInformationTotalLabel, kStringTotalSize),
    Value(kInformationTotal, kInformationTotalLabel),
    Label(kInformationEntriesLabel, kStringEntryCount),
    Value(kInformationEntries, kInformationEntriesLabel),
    Label(kInformationNameLabel, kStringMaxNameLength),
    Value(kInformationName, kInformationNameLabel),
    Label(kInformationNumber2Label, kStringNumber2Capacity, ui::kStyleHidden),
    Value(kInformationNumber2, kInformationNumber2Label, ui::kStyleHidden),
    Label(kInformationNumberLabel, kStringMaxNumberLength),
    Value(kInformationNumber, kInformationNumberLabel),
    Label(kInformationEmailLabel, kStringEmailCapacity, ui::kStyleHidden),
    Value(kInformationEmail, kInformationEmailLabel, ui::kStyleHidden),
    Label(kInformationSmsLabel, kStringSmsCapacity),
    Value(kInformationSms, kInformationSmsLabel),
    BlankLabel(kInformationEntriesText),
    Progress(kInformationEntriesBar, kInformationEntriesText),
    BlankLabel(kInformationMessagesText),
    Progress(kInformationMessagesBar, kInformationMessagesText),
};

constexpr ControlTemplate kEditOwnNumber[] = {
    Label(kOwnNumberNameLabel, kStringNameLabel),
    Edit(kOwnNumberName, kOwnNumberNameLabel),
    Label(kOwnNumberNumberLabel, kStringNumberLabel),
    Edit(kOwnNumberNumber, kOwnNumberNumberLabel),
};

constexpr ControlTemplate kMarkEditor[] = {
    Label(kMarkTypeLabel, kStringPhoneTypeLabel),
    Edit(kMarkType, kMarkTypeLabel, ui::kStyleReadOnly),
    Label(kMarkTextLabel, kStringMarkLabel),
    Edit(kMarkText, kMarkTextLabel),
};

constexpr ControlTemplate kDeleteContacts[] = {
    Label(kDeleteContactsLabel, kTextContactsToDelete, ui::kStyleHidden),
    List(kDeleteContactsList, kDeleteContactsLabel),
};

constexpr ControlTemplate kServiceNumbers[] = {
    Label(kServiceNumbersHeader, kStringServiceNumbersHeader, ui::kStyleHeader),
    List(kServiceNumbersList, kServiceNumbersHeader),
};

constexpr ControlTemplate kCallChooser[] = {
    Label(kCallChooserLabel, kTextCallChooser),
    List(kCallChooserList, kCallChooserLabel),
};

constexpr ControlTemplate kSendChooser[] = {
    Label(kSendChooserLabel, kTextSendChooser),
    List(kSendChooserList, kSendChooserLabel),
};

constexpr ControlTemplate kNotAllPrompt[] = {
    BlankLabel(kNotAllText),
    CheckBox(kNotAllApplyToAll, kStringApplyToAll),
};

constexpr ControlTemplate kEditNumberName[] = {
    Label(kNumberNameLabel, kStringNameLabel),
    Edit(kNumberName, kNumberNameLabel),
};

constexpr ControlTemplate kOverwritePrompt[] = {
    BlankLabel(kOverwriteText),
    CheckBox(kOverwriteApplyToAll, kStringApplyToAll),
};

constexpr ControlTemplate kNumberNames[] = {
    Label(kNumberNamesHeader, kStringEditNumberNames, ui::kStyleHeader),
    List(kNumberNamesList, kNumberNamesHeader),
};

constexpr ControlTemplate kGroupNames[] = {
    Label(kGroupNamesHeader, kStringEditGroupNames, ui::kStyleHeader),
    List(kGroupNamesList, kGroupNamesHeader),
};

constexpr ControlTemplate kEditGroupName[] = {
    Label(kGroupNameLabel, kStringNameLabel),
    Edit(kGroupName, kGroupNameLabel),
};

constexpr ControlTemplate kNumberNamePicker[] = {
    Label(kNumberNamePickerLabel, kTextNumberNames, ui::kStyleHidden),
    List(kNumberNamePickerList, kNumberNamePickerLabel, ui::kStyleSingleSelection),
};

constexpr ControlTemplate kCopyProgress[] = {
    BlankLabel(kProgressStatus),
    Progress(kProgressBar, kProgressStatus),
};

constexpr DialogTemplate kDialogs[] = {
    {kDialogGroupPicker, kGroupPicker, u"group-names"},
    {kDialogMain, kMain, u"main-list"},
    {kDialogNewEntry, kNewEntry, u"new-entry"},
    {kDialogEditEntry, kEditEntry, u"edit-entry"},
    {kDialogAbout, kAbout, u"about"},
    {kDialogContactPicker, kContactPicker, u"contacts-to-sim"},
    {kDialogOptions, kOptions, u"options"},
    {kDialogSimInformationList, kSimInformationList, u"sim-information"},
    {kDialogOwnNumbers, kOwnNumbers, u"own-numbers"},
    {kDialogSimInformationPage, kSimInformationPage, u"sim-information"},
    {kDialogEditOwnNumber, kEditOwnNumber, u"own-numbers"},
    {kDialogMarkEditor, kMarkEditor, u"options"},
    {kDialogDeleteContacts, kDeleteContacts, u"delete-contacts"},
    {kDialogServiceNumbers, kServiceNumbers, u"service-numbers"},
    {kDialogCallChooser, kCallChooser, u"call-and-send"},
    {kDialogSendChooser, kSendChooser, u"call-and-send"},
    {kDialogNotAllPrompt, kNotAllPrompt, u"contacts-to-sim"},
    {kDialogEditNumberName, kEditNumberName, u"number-names"},
    {kDialogOverwritePrompt, kOverwritePrompt, u"sim-to-contacts"},
    {kDialogNumberNames, kNumberNames, u"number-names"},
    {kDialogGroupNames, kGroupNames, u"group-names"},
    {kDialogEditGroupName, kEditGroupName, u"group-names"},
    {kDialogNumberNamePicker, kNumberNamePicker, u"number-names"},
    {kDialogCopyProgress, kCopyProgress, u"sim-to-contacts"},
};

// What no template may break, checked where they are made.

constexpr const ControlTemplate* FindControl(const DialogTemplate& dialog, int id) {
  for (const ControlTemplate& control : dialog.controls) {
    if (control.id == id) {
      return &control;
    }
  }
  return nullptr;
}

constexpr bool NumbersRise() {
  for (std::size_t i = 1; i < std::size(kDialogs); ++i) {
    if (kDialogs[i - 1].id >= kDialogs[i].id) {
      return false;
    }
  }
  return true;
}

constexpr bool NumbersDiffer(const DialogTemplate& dialog) {
  for (const ControlTemplate& control : dialog.controls) {
    // The first one with this number is this one.
    if (control.id <= kCancel || FindControl(dialog, control.id) != &control) {
      return false;
    }
  }
  return true;
}

constexpr bool NeedsLabel(ControlKind kind) {
  return kind == ControlKind::kEdit || kind == ControlKind::kList ||
         kind == ControlKind::kProgress || kind == ControlKind::kButton;
}

// Every control that needs one has a label, and every label named is one of the same dialog.
constexpr bool LabelsExist(const DialogTemplate& dialog) {
  for (const ControlTemplate& control : dialog.controls) {
    if (control.labelledBy == 0) {
      if (NeedsLabel(control.kind)) {
        return false;
      }
      continue;
    }
    const ControlTemplate* label = FindControl(dialog, control.labelledBy);
    if (label == nullptr || label->kind != ControlKind::kLabel) {
      return false;
    }
  }
  return true;
}

constexpr bool DrawingsExist(const DialogTemplate& dialog) {
  for (const ControlTemplate& control : dialog.controls) {
    const int wanted = control.kind == ControlKind::kIcon      ? kIconApplication
                       : control.kind == ControlKind::kPicture ? kPictureAbout
                                                               : 0;
    if (control.resource != wanted) {
      return false;
    }
  }
  return true;
}

constexpr bool IsHidden(const ControlTemplate& control) {
  return (control.style & ui::kStyleHidden) != 0;
}

// A label and what it names are hidden together, unless it only lends a list its name.
constexpr bool PairsHideTogether(const DialogTemplate& dialog) {
  for (const ControlTemplate& control : dialog.controls) {
    const ControlTemplate* label = FindControl(dialog, control.labelledBy);
    if (label != nullptr && control.kind != ControlKind::kList &&
        IsHidden(control) != IsHidden(*label)) {
      return false;
    }
  }
  return true;
}

constexpr bool AllDialogs(bool (*holds)(const DialogTemplate&)) {
  for (const DialogTemplate& dialog : kDialogs) {
    if (!holds(dialog)) {
      return false;
    }
  }
  return true;
}

static_assert(std::size(kDialogs) == 24);
static_assert(NumbersRise());
static_assert(AllDialogs(NumbersDiffer));
static_assert(AllDialogs(LabelsExist));
static_assert(AllDialogs(DrawingsExist));
static_assert(AllDialogs(PairsHideTogether));

}  // namespace

std::span<const ui::DialogTemplate> Dialogs() {
  return kDialogs;
}

const ui::DialogTemplate* FindDialog(int id) {
  const auto* found = std::ranges::lower_bound(kDialogs, id, {}, &DialogTemplate::id);
  return found != std::end(kDialogs) && found->id == id ? &Translated(*found) : nullptr;
}

}  // namespace kelpin::res
