#include "tests/gui/sample_dialogs.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace kelpin::test {
namespace {

using ui::ControlKind;
using ui::ControlTemplate;

constexpr std::array kListControls = {
    ControlTemplate{kSampleHeader, ControlKind::kLabel, u"My No. 1234567890",
                    ui::kStyleHeader | ui::kStyleValue},
    ControlTemplate{kSampleList, ControlKind::kList, u"", ui::kStyleNone, kSampleHeader},
};
constexpr std::array kFormControls = {
    ControlTemplate{kNameLabel, ControlKind::kLabel, u"Name:"},
    ControlTemplate{kNameEdit, ControlKind::kEdit, u"", ui::kStyleNone, kNameLabel},
    ControlTemplate{kNumberLabel, ControlKind::kLabel, u"Phone Number:"},
    ControlTemplate{kNumberButton, ControlKind::kButton, u"...", ui::kStyleNone, kNumberLabel},
    ControlTemplate{kNumberEdit, ControlKind::kEdit, u"", ui::kStyleNone, kNumberLabel},
    ControlTemplate{kThirdLabel, ControlKind::kLabel, u"Phone Number 3:"},
    ControlTemplate{kThirdButton, ControlKind::kButton, u"...", ui::kStyleNone, kThirdLabel},
    ControlTemplate{kThirdEdit, ControlKind::kEdit, u"", ui::kStyleNone, kThirdLabel},
    ControlTemplate{kEverybody, ControlKind::kCheckBox, u"Apply to all"},
    ControlTemplate{kProgress, ControlKind::kProgress, u""},
};
constexpr std::array kPickControls = {
    ControlTemplate{kSampleHeader, ControlKind::kLabel, u"Contacts to SIM", ui::kStyleHeader},
    ControlTemplate{kPickList, ControlKind::kList, u"", ui::kStyleNone, kSampleHeader},
};
constexpr std::array kBareControls = {
    ControlTemplate{kNameLabel, ControlKind::kLabel, u"Name:"},
    ControlTemplate{kNameEdit, ControlKind::kEdit, u"", ui::kStyleNone, kNameLabel},
};

constexpr std::array kToolItems = {
    ui::MenuItemTemplate{kOwnNumbers, u"List of Own Numbers...", "own-number", u"", {}},
};
constexpr std::array kMenuItems = {
    ui::MenuItemTemplate{kEdit, u"Edit...", "edit", u"F2", {}},
    ui::MenuItemTemplate{kDelete, u"Delete", "delete", u"Del", {}},
    ui::MenuItemTemplate{},
    ui::MenuItemTemplate{kRefresh, u"Refresh", "refresh", u"F5", {}},
    ui::MenuItemTemplate{0, u"Tools", "tools", u"", kToolItems},
};
constexpr std::array kListKeys = {
    ui::SoftKeyTemplate{kNew, u"New", "new", {}},
    ui::SoftKeyTemplate{kMenu, u"Menu", "menu", kMenuItems},
};
constexpr std::array kFormKeys = {
    ui::SoftKeyTemplate{kDone, u"Done", "", {}},
    ui::SoftKeyTemplate{kCancel, u"Cancel", "", {}},
};

}  // namespace

const ui::DialogTemplate kListTemplate = {kListDialog, kListControls, u""};
const ui::DialogTemplate kFormTemplate = {kFormDialog, kFormControls, u""};
const ui::DialogTemplate kPickTemplate = {kPickDialog, kPickControls, u""};
const ui::DialogTemplate kBareTemplate = {kBareDialog, kBareControls, u""};
const ui::MenuBarTemplate kListBar = {1, kListKeys};
const ui::MenuBarTemplate kFormBar = {2, kFormKeys};

void SampleHandler::OnInit(ui::Dialog& dialog) {
  if (init) {
    init(dialog);
  }
}

void SampleHandler::OnCommand(ui::Dialog& dialog, int id) {
  commands.push_back(id);
  if (command) {
    command(dialog, id);
  }
}

void SampleHandler::OnNotify(ui::Dialog& dialog, const ui::Notification& notification) {
  notifications.push_back(notification);
  if (notify) {
    notify(dialog, notification);
  }
}

void SampleHandler::OnSize(ui::Dialog& /*dialog*/, ui::Size client) {
  sizes.push_back(client);
}

void SampleHandler::OnActivate(ui::Dialog& /*dialog*/, bool active) {
  activations.push_back(active);
}

bool SampleHandler::OnHotKey(ui::Dialog& /*dialog*/, int virtualKey, unsigned /*modifiers*/) {
  hotKeys.push_back(virtualKey);
  return true;
}

void SampleHandler::OnSettingsChange(ui::Dialog& /*dialog*/) {
  ++settingsChanges;
}

void SampleHandler::OnHelp(ui::Dialog& /*dialog*/) {
  ++helps;
}

void SampleHandler::OnClose(ui::Dialog& dialog) {
  ++closes;
  ui::DialogHandler::OnClose(dialog);
}

void SampleHandler::OnDestroy(ui::Dialog& /*dialog*/) {
  ++destroyed;
}

std::size_t SampleHandler::Count(ui::NotifyCode code) const {
  return static_cast<std::size_t>(
      std::count_if(notifications.begin(), notifications.end(),
                    [code](const ui::Notification& one) { return one.code == code; }));
}

void SampleDialog::OnInit(ui::Dialog& dialog) {
  dialog.SetTitle(u"Kelpin");
  dialog.SetFullScreen(true, true);
  switch (dialog.Resource()) {
    case kListDialog: {
      dialog.CreateMenuBar(kListBar);
      dialog.SetText(kSampleHeader, u"My No. +491712345678");
      ui::ListView& list = *dialog.List(kSampleList);
      list.InsertColumn(0, u"#", 76);
      list.InsertColumn(1, u"Name", 160);
      list.InsertColumn(2, u"Phone", 540);
      list.SetSortArrow(1, ui::SortArrow::kAscending);
      break;
    }
    case kPickDialog: {
      dialog.CreateMenuBar(kFormBar);
      ui::ListView& list = *dialog.List(kPickList);
      list.SetExtendedStyle(ui::kListCheckBoxes | ui::kListFullRowSelect);
      list.InsertColumn(0, u"Name", 200);
      list.InsertColumn(1, u"Phone", 200);
      break;
    }
    case kFormDialog:
      dialog.CreateMenuBar(kFormBar);
      dialog.SetText(kNameEdit, u"Müller, Jörg");
      dialog.SetText(kNumberEdit, u"+491711234567");
      dialog.SetUnavailableText(kThirdEdit, u"<Not available>");
      dialog.SetProgress(kProgress, 40);
      break;
    default:
      break;
  }
  SampleHandler::OnInit(dialog);
}

void SampleDialog::OnSize(ui::Dialog& dialog, ui::Size client) {
  SampleHandler::OnSize(dialog, client);
  const ui::Metrics metrics = screen_.GetMetrics();
  const auto list = [&](int control) {
    dialog.SetBounds(kSampleHeader, {0, 0, client.width, metrics.headerHeight});
    dialog.SetBounds(control,
                     {0, metrics.headerHeight, client.width, client.height - metrics.headerHeight});
  };
  switch (dialog.Resource()) {
    case kListDialog:
      list(kSampleList);
      dialog.List(kSampleList)->SetColumnWidth(1, client.width / 2 - 20);
      dialog.List(kSampleList)->SetColumnWidth(2, client.width / 2 + 360);
      break;
    case kPickDialog:
      list(kPickList);
      break;
    case kFormDialog:
      LayOutForm(dialog, client);
      break;
    default:
      break;
  }
}

void SampleDialog::LayOutForm(ui::Dialog& dialog, ui::Size client) const {
  const ui::Metrics metrics = screen_.GetMetrics();
  const int wide = client.width - 2 * metrics.margin;
  int y = metrics.gap;
  const auto field = [&](int label, int button, int edit) {
    const int row = button == 0 ? metrics.labelHeight : metrics.fieldHeight;
    dialog.SetBounds(label, {metrics.margin, y, wide - metrics.buttonWidth - metrics.gap, row});
    if (button != 0) {
      dialog.SetBounds(button, {metrics.margin + wide - metrics.buttonWidth, y, metrics.buttonWidth,
                                metrics.fieldHeight});
    }
    y += row + (button == 0 ? 0 : 4);
    dialog.SetBounds(edit, {metrics.margin, y, wide, metrics.fieldHeight});
    y += metrics.fieldHeight + metrics.gap;
  };
  field(kNameLabel, 0, kNameEdit);
  field(kNumberLabel, kNumberButton, kNumberEdit);
  field(kThirdLabel, kThirdButton, kThirdEdit);
  dialog.SetBounds(kEverybody, {metrics.margin, y, wide, metrics.fieldHeight});
  y += metrics.fieldHeight + metrics.gap;
  dialog.SetBounds(kProgress, {metrics.margin, y, wide, metrics.progressHeight});
}

const std::vector<SampleEntry>& SampleEntries() {
  static const std::vector<SampleEntry> kEntries = {
      {12, u"Ana Sofía Núñez", u"+34612345678"},
      {3, u"Dr. Ødegård", u"+4722123456"},
      {118, u"Иван Петров", u"+74951234567"},
      {7, u"Kowalski, Małgorzata Anna", u"+48601234567"},
      {41, u"Müller, Jörg", u"+4917112345678901234567890"},
      {42, u"Müller, Jörg /w", u"+49301234567"},
      {250, u"Notruf", u"112"},
      {9, u"Σωκράτης", u"+302101234567"},
      {77, u"Taxi 🚕", u"+442079460000"},
      {5, u"שרה כהן", u"+97221234567"},
      {6, u"محمد الأحمد", u"+966112345678"},
      {8, u"王小明", u"+861012345678"},
      {10, u"さくら", u"*21*0312345678#"},
      {11, u"Voicemail", u"*86"},
  };
  return kEntries;
}

void FillList(ui::ListView& list, const std::vector<SampleEntry>& entries) {
  const auto digits = [](int number) {
    const std::string text = std::to_string(number);
    return std::u16string(text.begin(), text.end());
  };
  const bool numbered = list.Columns().size() == 3;
  for (const SampleEntry& entry : entries) {
    std::vector<std::u16string> texts = {entry.name, entry.number};
    if (numbered) {
      texts.insert(texts.begin(), digits(entry.index));
    }
    list.InsertRow(list.ItemCount(), std::move(texts), nullptr);
  }
}

}  // namespace kelpin::test
