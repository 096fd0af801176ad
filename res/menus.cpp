#include "res/menus.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "res/ids.h"
#include "res/string_table.h"
#include "res/translation.h"

namespace kelpin::res {
namespace {

using ui::MenuBarTemplate;
using ui::MenuItemTemplate;
using ui::SoftKeyTemplate;

// `text` and `keys` are ids of texts.
consteval MenuItemTemplate Item(int command, int text, std::string_view icon = {}, int keys = 0) {
  return {command,
          TemplateText(text),
          icon,
          keys == 0 ? std::u16string_view() : TemplateText(keys),
          {}};
}

consteval SoftKeyTemplate Key(int command, int text) {
  return {command, TemplateText(text), {}, {}};
}

constexpr MenuItemTemplate kSeparator = {};

constexpr std::u16string_view kMenuText = TemplateText(kStringMenu);

constexpr MenuItemTemplate kTools[] = {
    Item(kCommandNumberNames, kTextMenuNumberNames, "number-name"),
    Item(kCommandGroupNames, kTextMenuGroupNames, "group"),
    Item(kCommandOwnNumbers, kTextMenuOwnNumbers, "own-number"),
    Item(kCommandServiceNumbers, kTextMenuServiceNumbers, "service"),
    Item(kCommandSimInformation, kTextMenuSimInformation, "info"),
    Item(kCommandOptions, kTextMenuOptions, "options"),
};

constexpr MenuItemTemplate kMainItems[] = {
    Item(kCommandEdit, kStringEditItem, "edit", kTextShortcutEdit),
    Item(kCommandDelete, kStringDelete, "delete", kTextShortcutDelete),
    Item(kCommandCall, kStringCallItem, "call", kTextShortcutCall),
    Item(kCommandSend, kStringSendItem, "send"),
    kSeparator,
    Item(kCommandDeleteContacts, kTextMenuDeleteContacts, "contacts-delete"),
    Item(kCommandSaveToContacts, kStringSaveToContacts, "contacts-save"),
    Item(kCommandMoveToContacts, kTextMenuMoveToContacts, "contacts-move"),
    Item(kCommandContactsToSim, kTextMenuContactsToSim, "sim-copy"),
    Item(kCommandMoveContactsToSim, kTextMenuMoveContactsToSim, "sim-move"),
    kSeparator,
    Item(kCommandSelectAll, kStringSelectAll, "select-all", kTextShortcutSelectAll),
    Item(kCommandRefresh, kStringRefresh, "refresh", kTextShortcutRefresh),
    {0, TemplateText(kTextMenuTools), "tools", {}, kTools},
    kSeparator,
    Item(kCommandAbout, kTextMenuAbout, "about"),
};

constexpr MenuItemTemplate kCopyPickerItems[] = {
    Item(kCopyPickerCheckAll, kTextMenuCheckAll),
    Item(kCopyPickerUncheckAll, kTextMenuUncheckAll),
    Item(kCopyPickerCancel, kTextKeyCancel),
};

constexpr MenuItemTemplate kMovePickerItems[] = {
    Item(kMovePickerCheckAll, kTextMenuCheckAll),
    Item(kMovePickerUncheckAll, kTextMenuUncheckAll),
    Item(kMovePickerCancel, kTextKeyCancel),
};

constexpr MenuItemTemplate kDeleteContactsItems[] = {
    Item(kDeleteContactsCheckAll, kTextMenuCheckAll),
    Item(kDeleteContactsUncheckAll, kTextMenuUncheckAll),
    Item(kDeleteContactsCancel, kTextKeyCancel),
};

constexpr MenuItemTemplate kOwnNumbersItems[] = {
    Item(kOwnNumbersErase, kStringErase),
    Item(kOwnNumbersRefresh, kStringRefresh),
};

constexpr SoftKeyTemplate kCopyPicker[] = {Key(kCopyPickerDone, kTextKeyDone),
                                           {kCopyPickerMenu, kMenuText, {}, kCopyPickerItems}};
constexpr SoftKeyTemplate kOwnNumbers[] = {Key(kOwnNumbersEdit, kStringEdit),
                                           {kOwnNumbersMenu, kMenuText, {}, kOwnNumbersItems}};
constexpr SoftKeyTemplate kViewKeys[] = {Key(kViewOk, kTextKeyOk)};
constexpr SoftKeyTemplate kOptions[] = {Key(kOptionsOk, kTextKeyOk),
                                        Key(kOptionsEdit, kStringEdit)};
constexpr SoftKeyTemplate kAbout[] = {Key(kAboutDone, kTextKeyDone)};
constexpr SoftKeyTemplate kEditOwnNumber[] = {Key(kOwnNumberSave, kTextKeySave),
                                              Key(kOwnNumberCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kDeleteContacts[] = {
    Key(kDeleteContactsDelete, kStringDelete),
    {kDeleteContactsMenu, kMenuText, {}, kDeleteContactsItems}};
constexpr SoftKeyTemplate kServiceNumbers[] = {Key(kServiceNumbersCall, kStringCall),
                                               Key(kServiceNumbersClose, kTextKeyCancel)};
constexpr SoftKeyTemplate kMain[] = {{kCommandNew, TemplateText(kStringNew), "new", {}},
                                     {kCommandMenu, kMenuText, "menu", kMainItems}};
constexpr SoftKeyTemplate kNewEntry[] = {Key(kNewEntryDone, kTextKeyDone),
                                         Key(kNewEntryCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kEditEntry[] = {Key(kEditEntryDone, kTextKeyDone),
                                          Key(kEditEntryCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kMarkEditor[] = {Key(kMarkSave, kTextKeySave),
                                           Key(kMarkCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kOverwritePrompt[] = {Key(kOverwriteYes, kTextKeyYes),
                                                Key(kOverwriteNo, kTextKeyNo)};
constexpr SoftKeyTemplate kCallChooser[] = {Key(kCallChooserCall, kStringCall),
                                            Key(kCallChooserCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kSendChooser[] = {Key(kSendChooserSelect, kTextKeySelect),
                                            Key(kSendChooserCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kNotAllPrompt[] = {Key(kNotAllYes, kTextKeyYes),
                                             Key(kNotAllNo, kTextKeyNo)};
constexpr SoftKeyTemplate kNumberNames[] = {Key(kNumberNamesEdit, kStringEdit),
                                            Key(kNumberNamesErase, kStringErase)};
constexpr SoftKeyTemplate kGroupNames[] = {Key(kGroupNamesEdit, kStringEdit),
                                           Key(kGroupNamesErase, kStringErase)};
constexpr SoftKeyTemplate kEditNumberName[] = {Key(kNumberNameSave, kTextKeySave),
                                               Key(kNumberNameCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kEditGroupName[] = {Key(kGroupNameSave, kTextKeySave),
                                              Key(kGroupNameCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kNumberNamePicker[] = {Key(kNumberNamePickerOk, kTextKeyOk),
                                                 Key(kNumberNamePickerCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kGroupPicker[] = {Key(kGroupPickerOk, kTextKeyOk),
                                            Key(kGroupPickerCancel, kTextKeyCancel)};
constexpr SoftKeyTemplate kMovePicker[] = {Key(kMovePickerMove, kTextKeyMove),
                                           {kMovePickerMenu, kMenuText, {}, kMovePickerItems}};

constexpr MenuBarTemplate kBars[] = {
    {kBarCopyPicker, kCopyPicker},
    {kBarOwnNumbers, kOwnNumbers},
    {kBarOk, kViewKeys},
    {kBarOptions, kOptions},
    {kBarAbout, kAbout},
    {kBarEditOwnNumber, kEditOwnNumber},
    {kBarDeleteContacts, kDeleteContacts},
    {kBarServiceNumbers, kServiceNumbers},
    {kBarMain, kMain},
    {kBarNewEntry, kNewEntry},
    {kBarEditEntry, kEditEntry},
    {kBarMarkEditor, kMarkEditor},
    {kBarOverwritePrompt, kOverwritePrompt},
    {kBarCallChooser, kCallChooser},
    {kBarSendChooser, kSendChooser},
    {kBarNotAllPrompt, kNotAllPrompt},
    {kBarNumberNames, kNumberNames},
    {kBarGroupNames, kGroupNames},
    {kBarEditNumberName, kEditNumberName},
    {kBarEditGroupName, kEditGroupName},
    {kBarNumberNamePicker, kNumberNamePicker},
    {kBarGroupPicker, kGroupPicker},
    {kBarMovePicker, kMovePicker},
};

constexpr MenuItemTemplate kMainListMenu[] = {
    Item(kCommandEdit, kStringEditItem, "edit", kTextShortcutEdit),
    Item(kCommandDelete, kStringDelete, "delete", kTextShortcutDelete),
    Item(kCommandCall, kStringCallItem, "call", kTextShortcutCall),
    Item(kCommandSend, kStringSendItem, "send"),
    Item(kCommandSaveToContacts, kStringSaveToContacts, "contacts-save"),
};

constexpr MenuItemTemplate kOwnNumberMenu[] = {
    Item(kOwnNumbersEdit, kStringEdit, "edit"),
    Item(kOwnNumbersErase, kStringErase, "delete"),
    Item(kOwnNumbersRefresh, kStringRefresh, "refresh"),
};

constexpr MenuItemTemplate kServiceNumberMenu[] = {Item(kServiceNumbersCall, kStringCall, "call")};

constexpr MenuItemTemplate kEditMenu[] = {
    Item(kCommandEditCut, kStringCut),
    Item(kCommandEditCopy, kStringCopy, "copy"),
    Item(kCommandEditPaste, kStringPaste),
    Item(kCommandEditClear, kStringClear),
    kSeparator,
    Item(kCommandEditSelectAll, kStringSelectAll, "select-all"),
};

// What no bar may break, checked where they are made.

constexpr std::size_t CountCommand(std::span<const MenuItemTemplate> items, int command) {
  std::size_t count = 0;
  for (const MenuItemTemplate& item : items) {
    count += item.command == command ? 1 : 0;
    count += CountCommand(item.items, command);
  }
  return count;
}

constexpr std::size_t CountCommand(const MenuBarTemplate& bar, int command) {
  std::size_t count = 0;
  for (const SoftKeyTemplate& key : bar.keys) {
    count += (key.command == command ? 1 : 0) + CountCommand(key.menu, command);
  }
  return count;
}

// An item is a command with a text, a separator, or a sub-menu with a text; each command stands
// once in the bar.
constexpr bool ItemsHold(const MenuBarTemplate& bar, std::span<const MenuItemTemplate> items) {
  for (const MenuItemTemplate& item : items) {
    const bool command = item.command > kCancel && !item.text.empty() && item.items.empty() &&
                         CountCommand(bar, item.command) == 1;
    const bool separator = item.command == 0 && item.text.empty() && item.items.empty();
    const bool subMenu = item.command == 0 && !item.text.empty() && !item.items.empty();
    if (!(command || separator || subMenu) || !ItemsHold(bar, item.items)) {
      return false;
    }
  }
  return true;
}

constexpr bool BarsHold() {
  for (const MenuBarTemplate& bar : kBars) {
    if (bar.keys.empty() || bar.keys.size() > 2) {
      return false;
    }
    for (const SoftKeyTemplate& key : bar.keys) {
      if (key.command <= kCancel || key.text.empty() || CountCommand(bar, key.command) != 1 ||
          !ItemsHold(bar, key.menu)) {
        return false;
      }
    }
  }
  return true;
}

constexpr bool NumbersRise() {
  for (std::size_t i = 1; i < std::size(kBars); ++i) {
    if (kBars[i - 1].id >= kBars[i].id) {
      return false;
    }
  }
  return true;
}

// A pop-up offers commands that the dialog's bar knows as well.
constexpr bool OffersCommandsOf(std::span<const MenuItemTemplate> items,
                                std::span<const SoftKeyTemplate> keys) {
  for (const MenuItemTemplate& item : items) {
    if (CountCommand(MenuBarTemplate{0, keys}, item.command) != 1) {
      return false;
    }
  }
  return true;
}

static_assert(std::size(kBars) == 23);
static_assert(NumbersRise());
static_assert(BarsHold());
static_assert(OffersCommandsOf(kMainListMenu, kMain));
static_assert(OffersCommandsOf(kOwnNumberMenu, kOwnNumbers));
static_assert(OffersCommandsOf(kServiceNumberMenu, kServiceNumbers));

}  // namespace

std::span<const MenuBarTemplate> MenuBars() {
  return kBars;
}

const MenuBarTemplate* FindMenuBar(int id) {
  const auto* found = std::ranges::lower_bound(kBars, id, {}, &MenuBarTemplate::id);
  return found != std::end(kBars) && found->id == id ? &Translated(*found) : nullptr;
}

std::span<const MenuItemTemplate> MainListMenu() {
  return Translated(kMainListMenu);
}
std::span<const MenuItemTemplate> OwnNumberMenu() {
  return Translated(kOwnNumberMenu);
}
std::span<const MenuItemTemplate> ServiceNumberMenu() {
  return Translated(kServiceNumberMenu);
}
std::span<const MenuItemTemplate> EditMenu() {
  return Translated(kEditMenu);
}

}  // namespace kelpin::res
