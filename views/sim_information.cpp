#include "views/sim_information.h"

#include <algorithm>
#include <cstdint>
#include <iterator>

#include "app/app_state.h"
#include "app/card_error.h"
#include "app/readiness.h"
#include "res/format.h"
#include "res/ids.h"
#include "res/strings.h"
#include "views/view_dialog.h"

namespace kelpin::views {
namespace {

constexpr int kListTop = 10;
constexpr int kItemColumnAddition = 60;
constexpr std::uint32_t kListStyle = ui::kListHeaderDragDrop | ui::kListFullRowSelect;

std::u16string Decimal(std::uint32_t value) {
  return res::Format(u"%d", {value});
}

}  // namespace

void SimInformation::OnCommand(ui::Dialog& dialog, int command) {
  switch (command) {
    case res::kOk:
    case res::kCancel:
    case res::kViewOk:
      dialog.Close();
      break;
    default:
      break;
  }
}

void SimInformation::OnClose(ui::Dialog& dialog) {
  dialog.DestroyMenuBar();
  dialog.End(ui::kDialogDone);
}

bool SimInformation::ReadFigures() {
  platform::SimResult result = state_.simPhonebook.ReadStatus();
  if (Succeeded(result)) {
    result = state_.simPhonebook.ReadSmsStatus();
  }
  if (!Succeeded(result)) {
    state_.ports.screen.SetWaitCursor(false);
    app::ShowCardError(state_, state_.mainDialog, result);
  }
  return Succeeded(result);
}

bool SimInformation::ShowsSms() const {
  return state_.settings.Disable_SMS_Total_Item == 0;
}

SimInformation::Row SimInformation::TotalRow() const {
  return {res::kStringTotalSize, Decimal(state_.simPhonebook.Total())};
}

SimInformation::Row SimInformation::EntriesRow() const {
  return {res::kStringEntryCount, Decimal(state_.simPhonebook.Used())};
}

SimInformation::Row SimInformation::NameRow() const {
  if (state_.settings.Show_MaxPhoneNumber2 != 0) {
    return {res::kStringNumber2Capacity, Decimal(state_.extPhonebook.SecondNumberCapacity())};
  }
  return {res::kStringMaxNameLength, Decimal(state_.simPhonebook.MaxNameLength())};
}

SimInformation::Row SimInformation::NumberRow() const {
  if (state_.settings.Show_MaxEmail != 0) {
    return {res::kStringEmailCapacity, Decimal(state_.extPhonebook.EmailCapacity())};
  }
  return {res::kStringMaxNumberLength, Decimal(state_.simPhonebook.MaxNumberLength())};
}

SimInformation::Row SimInformation::SmsRow() const {
  return {res::kStringSmsCapacity, Decimal(state_.simPhonebook.SmsTotal())};
}

void SimInformation::ShowBars(ui::Dialog& dialog, bool known) {
  const sim::SimPhonebook& card = state_.simPhonebook;
  ShowBar(dialog, res::kInformationEntriesText, res::kInformationEntriesBar, res::kTextEntriesUsed,
          card.Used(), card.Total(), known);
  ShowBar(dialog, res::kInformationMessagesText, res::kInformationMessagesBar,
          res::kTextMessagesStored, card.SmsUsed(), card.SmsTotal(), known && ShowsSms());
}

void SimInformation::ShowBar(ui::Dialog& dialog, int text, int bar, int pattern, std::uint32_t used,
                             std::uint32_t total, bool known) {
  const bool shown = known && total > 0;
  dialog.Show(text, shown);
  dialog.Show(bar, shown);
  dialog.SetText(text, res::Format(res::LoadString(pattern), {used, total}));
  dialog.SetProgressRange(bar, 0, static_cast<int>(total), 1);
  dialog.SetProgress(bar, static_cast<int>(std::min(used, total)));
}

int SimInformation::BarsHeight() const {
  const ui::Metrics metrics = state_.ports.screen.GetMetrics();
  const int bars = ShowsSms() ? 2 : 1;
  return bars * (metrics.labelHeight + metrics.progressHeight + 2 * metrics.gap);
}

void SimInformation::PlaceBars(ui::Dialog& dialog, int y, int width) {
  const ui::Metrics metrics = state_.ports.screen.GetMetrics();
  const int inner = std::max(0, width - 2 * metrics.margin);
  const auto place = [&](int text, int bar) {
    dialog.SetBounds(text, {metrics.margin, y, inner, metrics.labelHeight});
    y += metrics.labelHeight + metrics.gap;
    dialog.SetBounds(bar, {metrics.margin, y, inner, metrics.progressHeight});
    y += metrics.progressHeight + metrics.gap;
  };
  place(res::kInformationEntriesText, res::kInformationEntriesBar);
  place(res::kInformationMessagesText, res::kInformationMessagesBar);
}

// The list --------------------------------------------------------------------------------------

void SimInformationList::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(true, true);
  dialog.SetTitle(state_.appTitle);
  CreateBar(dialog, res::kBarOk);
  dialog.SetText(res::kInformationHeader, res::LoadString(res::kStringSimInformation));
  if (ui::ListView* const list = dialog.List(res::kInformationList)) {
    list->SetExtendedStyle(kListStyle);
    list->InsertColumn(0, res::LoadString(res::kStringItem), 0);
    list->InsertColumn(1, res::LoadString(res::kStringDescription), 0);
  }
  Fill(dialog);
}

void SimInformationList::OnSize(ui::Dialog& dialog, ui::Size client) {
  ui::ListView* const list = dialog.List(res::kInformationList);
  if (list == nullptr || client.width == size_.width || client.height == size_.height) {
    return;
  }
  size_ = client;
  // The heading stands over the bars, at the foot.
  const int heading = state_.ports.screen.GetMetrics().headerHeight;
  const int foot = std::min(heading + BarsHeight(), client.height / 2);
  const int height = std::max(0, client.height - kListTop - foot);
  dialog.SetBounds(res::kInformationList, {0, kListTop, client.width, height});
  dialog.SetBounds(res::kInformationHeader, {0, kListTop + height, client.width, heading});
  PlaceBars(dialog, kListTop + height + heading, client.width);
  list->SetColumnWidth(0, client.width / 2 + kItemColumnAddition);
  list->SetColumnWidth(1, client.width / 2 - kItemColumnAddition);
}

void SimInformationList::Fill(ui::Dialog& dialog) {
  ui::ListView* const list = dialog.List(res::kInformationList);
  state_.ports.screen.SetWaitCursor(true);
  ShowBars(dialog, false);
  if (list == nullptr || !ReadFigures()) {
    return;
  }
  const auto insert = [list](const Row& row) {
    list->InsertRow(0, {std::u16string(res::LoadString(row.label)), row.value}, nullptr);
  };
  if (ShowsSms()) {
    insert(SmsRow());
  }
  insert(NumberRow());
  insert(NameRow());
  insert(EntriesRow());
  insert(TotalRow());
  ShowBars(dialog, true);
  state_.ports.screen.SetWaitCursor(false);
}

void SimInformationList::OnHelp(ui::Dialog& /*dialog*/) {
  ShowHelp(state_);
}

// The page --------------------------------------------------------------------------------------

namespace {

struct Pair {
  int label = 0;
  int value = 0;
};

constexpr Pair kTotal = {res::kInformationTotalLabel, res::kInformationTotal};
constexpr Pair kEntries = {res::kInformationEntriesLabel, res::kInformationEntries};
constexpr Pair kName = {res::kInformationNameLabel, res::kInformationName};
constexpr Pair kNumber2 = {res::kInformationNumber2Label, res::kInformationNumber2};
constexpr Pair kNumber = {res::kInformationNumberLabel, res::kInformationNumber};
constexpr Pair kEmail = {res::kInformationEmailLabel, res::kInformationEmail};
constexpr Pair kSms = {res::kInformationSmsLabel, res::kInformationSms};

// One of two pairs that stand in the same place.
const Pair& Choose(ui::Dialog& dialog, bool first, const Pair& one, const Pair& other) {
  const Pair& chosen = first ? one : other;
  const Pair& hidden = first ? other : one;
  for (const Pair* const pair : {&chosen, &hidden}) {
    dialog.Show(pair->label, pair == &chosen);
    dialog.Show(pair->value, pair == &chosen);
  }
  return chosen;
}

// Room for a label that is broken where the line would be too wide: a letter takes two fifths of
// the line's height.
int LabelHeight(const ui::Dialog& dialog, int label, int width, int line) {
  const int needed = static_cast<int>(dialog.Text(label).size()) * line * 2 / 5;
  return needed > width ? 2 * line : line;
}

const Pair& NamePair(ui::Dialog& dialog, const app::AppState& state) {
  return Choose(dialog, state.settings.Show_MaxPhoneNumber2 != 0, kNumber2, kName);
}

const Pair& NumberPair(ui::Dialog& dialog, const app::AppState& state) {
  return Choose(dialog, state.settings.Show_MaxEmail != 0, kEmail, kNumber);
}

}  // namespace

void SimInformationPage::OnInit(ui::Dialog& dialog) {
  dialog.SetFullScreen(true, true);
  dialog.SetTitle(res::LoadString(res::kStringSimInformation));
  CreateBar(dialog, res::kBarOk);
  size_ = dialog.ClientSize();
  Place(dialog, size_);
  Fill(dialog);
}

void SimInformationPage::OnSize(ui::Dialog& dialog, ui::Size client) {
  if (client != size_) {
    size_ = client;
    Place(dialog, client);
  }
}

void SimInformationPage::Place(ui::Dialog& dialog, ui::Size client) {
  const ui::Metrics metrics = state_.ports.screen.GetMetrics();
  const int width = std::max(0, client.width - 2 * metrics.margin);
  int y = metrics.gap;
  for (const Pair& pair :
       {kTotal, kEntries, NamePair(dialog, state_), NumberPair(dialog, state_), kSms}) {
    const int label = LabelHeight(dialog, pair.label, width, metrics.labelHeight);
    dialog.SetBounds(pair.label, {metrics.margin, y, width, label});
    y += label;
    dialog.SetBounds(pair.value, {metrics.margin, y, width, metrics.textLineHeight});
    y += metrics.textLineHeight + metrics.gap;
  }
  PlaceBars(dialog, y + metrics.gap, client.width);
}

void SimInformationPage::Fill(ui::Dialog& dialog) {
  state_.ports.screen.SetWaitCursor(true);
  ShowBars(dialog, false);
  const Pair name = NamePair(dialog, state_);
  const Pair number = NumberPair(dialog, state_);
  const auto label = [&dialog](const Pair& pair, const Row& row) {
    dialog.SetText(pair.label, res::LoadString(row.label));
  };
  label(kTotal, TotalRow());
  label(kEntries, EntriesRow());
  label(name, NameRow());
  label(number, NumberRow());
  label(kSms, SmsRow());
  if (!ReadFigures()) {
    return;
  }
  dialog.SetText(kTotal.value, TotalRow().value);
  dialog.SetText(kEntries.value, EntriesRow().value);
  dialog.SetText(name.value, NameRow().value);
  dialog.SetText(number.value, NumberRow().value);
  if (ShowsSms()) {
    dialog.SetText(kSms.value, SmsRow().value);
  }
  ShowBars(dialog, true);
  state_.ports.screen.SetWaitCursor(false);
}

void SimInformationPage::OnSettingsChange(ui::Dialog& dialog) {
  dialog.PostMessage(res::kMessageScrollReset, 1, 1);
}

void SimInformationPage::OnMessage(ui::Dialog& dialog, std::uint32_t message,
                                   std::uint32_t /*first*/, std::uint32_t /*second*/) {
  if (message == res::kMessageScrollReset) {
    dialog.ScrollIntoView(res::kInformationTotalLabel);
  }
}

void ShowSimInformation(app::AppState& state) {
  if (!app::CardIsReady(state) || !app::LimitsAreKnown(state)) {
    return;
  }
  if (state.isSmartphone != 0) {
    SimInformationPage page(state);
    RunDialog(state, res::kDialogSimInformationPage, state.mainDialog, page);
  } else {
    SimInformationList list(state);
    RunDialog(state, res::kDialogSimInformationList, state.mainDialog, list);
  }
}

}  // namespace kelpin::views
