#include "res/menus.h"

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "res/ids.h"
#include "res/string_table.h"

namespace kelpin::res {
namespace {

using ui::MenuBarTemplate;
using ui::MenuItemTemplate;
using ui::SoftKeyTemplate;

consteval MenuItemTemplate Item(int command, std::u16string_view text, std::string_view icon = {},
                                std::u16string_view keys = {}) {
  return {command, text, icon, keys, {}};
}

consteval SoftKeyTemplate Key(int command, std::u16string_view text) {
  return {command, text, {}, {}};
}

constexpr MenuItemTemplate kSeparator = {};

constexpr std::u16string_view kDelete = TemplateText(kStringDelete);
constexpr std::u16string_view kEdit = TemplateText(kStringEdit);
constexpr std::u16string_view kErase = TemplateText(kStringErase);
constexpr std::u16string_view kRefresh = TemplateText(kStringRefresh);
constexpr std::u16string_view kSelectAll = TemplateText(kStringSelectAll);
constexpr std::u16string_view kEditItem = TemplateText(kStringEditItem);
constexpr std::u16string_view kCallItem = TemplateText(kStringCallItem);
constexpr std::u16string_view kSendItem = TemplateText(kStringSendItem);
constexpr std::u16string_view kSave = TemplateText(kStringSaveToContacts);
constexpr std::u16string_view kMenu = TemplateText(kStringMenu);
constexpr std::u16string_view kCall = TemplateText(kStringCall);

constexpr MenuItemTemplate kTools[] = {
    Item(kCommandNumberNames, u"Phone No. Name...", "number-name"),
    Item(kCommandGroupNames, u"Group Name...", "group"),
    Item(kCommandOwnNumbers, u"List of Own Numbers...", "own-number"),
    Item(kCommandServiceNumbers, u"Service Dialing Numbers...", "service"),
    Item(kCommandSimInformation, u"SIM Information...", "info"),
    Item(kCommandOptions, u"Options...", "options"),
};

constexpr MenuItemTemplate kMainItems[] = {
    Item(kCommandEdit, kEditItem, "edit", u"F2"),
    Item(kCommandDelete, kDelete, "delete", u"Del"),
    Item(kCommandCall, kCallItem, "call", u"Ctrl+D"),
    Item(kCommandSend, kSendItem, "send"),
    kSeparator,
    Item(kCommandDeleteContacts, u"Delete Contacts...", "contacts-delete"),
    Item(kCommandSaveToContacts, kSave, "contacts-save"),
    Item(kCommandMoveToContacts, u"Move to Contacts", "contacts-move"),
    Item(kCommandContactsToSim, u"Contacts to SIM...", "sim-copy"),
    Item(kCommandMoveContactsToSim, u"Move Contacts to SIM...", "sim-move"),
    kSeparator,
    Item(kCommandSelectAll, kSelectAll, "select-all", u"Ctrl+A"),
    Item(kCommandRefresh, kRefresh, "refresh", u"F5"),
    {0, u"Tools", "tools", {}, kTools},
    kSeparator,
    Item(kCommandAbout, u"About...", "about"),
};

constexpr MenuItemTemplate kCopyPickerItems[] = {
    Item(kCopyPickerCheckAll, u"Check All"),
    Item(kCopyPickerUncheckAll, u"Uncheck All"),
    Item(kCopyPickerCancel, u"Cancel"),
};

constexpr MenuItemTemplate kMovePickerItems[] = {
    Item(kMovePickerCheckAll, u"Check All"),
    Item(kMovePickerUncheckAll, u"Uncheck All"),
    Item(kMovePickerCancel, u"Cancel"),
};

constexpr MenuItemTemplate kDeleteContactsItems[] = {
    Item(kDeleteContactsCheckAll, u"Check All"),
    Item(kDeleteContactsUncheckAll, u"Uncheck All"),
    Item(kDeleteContactsCancel, u"Cancel"),
};

constexpr MenuItemTemplate kOwnNumbersItems[] = {
    Item(kOwnNumbersErase, kErase),
    Item(kOwnNumbersRefresh, kRefresh),
};

constexpr SoftKeyTemplate kCopyPicker[] = {Key(kCopyPickerDone, u"Done"),
                                           {kCopyPickerMenu, kMenu, {}, kCopyPickerItems}};
constexpr SoftKeyTemplate kOwnNumbers[] = {Key(kOwnNumbersEdit, kEdit),
                                           {kOwnNumbersMenu, kMenu, {}, kOwnNumbersItems}};
constexpr SoftKeyTemplate kViewKeys[] = {Key(kViewOk, u"OK")};
constexpr SoftKeyTemplate kOptions[] = {Key(kOptionsOk, u"OK"), Key(kOptionsEdit, kEdit)};
constexpr SoftKeyTemplate kAbout[] = {Key(kAboutDone, u"Done")};
constexpr SoftKeyTemplate kEditOwnNumber[] = {Key(kOwnNumberSave, u"Save"),
                                              Key(kOwnNumberCancel, u"Cancel")};
constexpr SoftKeyTemplate kDeleteContacts[] = {
    Key(kDeleteContactsDelete, kDelete), {kDeleteContactsMenu, kMenu, {}, kDeleteContactsItems}};
constexpr SoftKeyTemplate kServiceNumbers[] = {Key(kServiceNumbersCall, kCall),
                                               Key(kServiceNumbersClose, u"Cancel")};
constexpr SoftKeyTemplate kMain[] = {{kCommandNew, TemplateText(kStringNew), "new", {}},
                                     {kCommandMenu, kMenu, "menu", kMainItems}};
constexpr SoftKeyTemplate kNewEntry[] = {Key(kNewEntryDone, u"Done"),
                                         Key(kNewEntryCancel, u"Cancel")};
constexpr SoftKeyTemplate kEditEntry[] = {Key(kEditEntryDone, u"Done"),
                                          Key(kEditEntryCancel, u"Cancel")};
constexpr SoftKeyTemplate kMarkEditor[] = {Key(kMarkSave, u"Save"), Key(kMarkCancel, u"Cancel")};
constexpr SoftKeyTemplate kOverwritePrompt[] = {Key(kOverwriteYes, u"Yes"),
                                                Key(kOverwriteNo, u"No")};
constexpr SoftKeyTemplate kCallChooser[] = {Key(kCallChooserCall, kCall),
                                            Key(kCallChooserCancel, u"Cancel")};
constexpr SoftKeyTemplate kSendChooser[] = {Key(kSendChooserSelect, u"Select"),
                                            Key(kSendChooserCancel, u"Cancel")};
constexpr SoftKeyTemplate kNotAllPrompt[] = {Key(kNotAllYes, u"Yes"), Key(kNotAllNo, u"No")};
constexpr SoftKeyTemplate kNumberNames[] = {Key(kNumberNamesEdit, kEdit),
                                            Key(kNumberNamesErase, kErase)};
constexpr SoftKeyTemplate kGroupNames[] = {Key(kGroupNamesEdit, kEdit),
                                           Key(kGroupNamesErase, kErase)};
constexpr SoftKeyTemplate kEditNumberName[] = {Key(kNumberNameSave, u"Save"),
                                               Key(kNumberNameCancel, u"Cancel")};
constexpr SoftKeyTemplate kEditGroupName[] = {Key(kGroupNameSave, u"Save"),
                                              Key(kGroupNameCancel, u"Cancel")};
constexpr SoftKeyTemplate kNumberNamePicker[] = {Key(kNumberNamePickerOk, u"OK"),
                                                 Key(kNumberNamePickerCancel, u"Cancel")};
constexpr SoftKeyTemplate kGroupPicker[] = {Key(kGroupPickerOk, u"OK"),
                                            Key(kGroupPickerCancel, u"Cancel")};
constexpr SoftKeyTemplate kMovePicker[] = {Key(kMovePickerMove, u"Move"),
                                           {kMovePickerMenu, kMenu, {}, kMovePickerItems}};

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
    Item(kCommandEdit, kEditItem, "edit", u"F2"),
    Item(kCommandDelete, kDelete, "delete", u"Del"),
    Item(kCommandCall, kCallItem, "call", u"Ctrl+D"),
    Item(kCommandSend, kSendItem, "send"),
    Item(kCommandSaveToContacts, kSave, "contacts-save"),
};

constexpr MenuItemTemplate kOwnNumberMenu[] = {
    Item(kOwnNumbersEdit, kEdit, "edit"),
    Item(kOwnNumbersErase, kErase, "delete"),
    Item(kOwnNumbersRefresh, kRefresh, "refresh"),
};

constexpr MenuItemTemplate kServiceNumberMenu[] = {Item(kServiceNumbersCall, kCall, "call")};

constexpr MenuItemTemplate kEditMenu[] = {
    Item(kCommandEditCut, TemplateText(kStringCut)),
    Item(kCommandEditCopy, TemplateText(kStringCopy), "copy"),
    Item(kCommandEditPaste, TemplateText(kStringPaste)),
    Item(kCommandEditClear, TemplateText(kStringClear)),
    kSeparator,
    Item(kCommandEditSelectAll, kSelectAll, "select-all"),
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
  return found != std::end(kBars) && found->id == id ? found : nullptr;
}

std::span<const MenuItemTemplate> MainListMenu() {
  return kMainListMenu;
}
std::span<const MenuItemTemplate> OwnNumberMenu() {
  return kOwnNumberMenu;
}
std::span<const MenuItemTemplate> ServiceNumberMenu() {
  return kServiceNumberMenu;
}
std::span<const MenuItemTemplate> EditMenu() {
  return kEditMenu;
}

}  // namespace kelpin::res
