#include "editor/name_list_fill.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "app/card_error.h"
#include "res/format.h"
#include "res/strings.h"

namespace kelpin::editor {
namespace {

constexpr int kIdWidth = 36;
constexpr int kHighResIdWidth = 72;
constexpr std::uint32_t kSelectedFocused = ui::kItemSelected | ui::kItemFocused;

std::u16string Text(int id) {
  return std::u16string(id == 0 ? std::u16string_view() : res::LoadString(id));
}

// What the first column takes, and half as much of air.
int NameWidth(int idWidth, ui::Size client) {
  return client.width - idWidth * 3 / 2;
}

}  // namespace

NameListFill::NameListFill(app::AppState& state, const NameFamily& family,
                           std::shared_ptr<ui::Dialog> dialog, int list, const NameRows& rows)
    : state_(state),
      records_(state.extPhonebook, family),
      dialog_(std::move(dialog)),
      list_(list),
      rows_(rows) {}

bool NameListFill::Start() {
  ui::ListView* const list = dialog_->List(list_);
  if (list == nullptr) {
    return false;
  }
  list->SetMessage({Text(res::kTextReadingCard), {}, 0, 0});
  waiting_ = true;
  state_.ports.screen.SetWaitCursor(true);
  const bool started = state_.ports.kernel.CreateThread([fill = shared_from_this(), list] {
    fill->Run(*list);
    fill->ended_ = true;
    fill->EndWait();
  }) != 0;
  if (!started) {
    list->SetMessage({});
    EndWait();
  }
  return started;
}

void NameListFill::Stop() {
  stopped_ = true;
  EndWait();
}

void NameListFill::EndWait() {
  if (waiting_.exchange(false)) {
    state_.ports.screen.SetWaitCursor(false);
  }
}

void NameListFill::Run(ui::ListView& list) {
  for (std::uint32_t id = records_.Count(); id > 0; --id) {
    if (!AddRecord(list, id)) {
      return;
    }
  }
  if (!stopped_) {
    Finish(list);
  }
}

bool NameListFill::AddRecord(ui::ListView& list, std::uint32_t id) {
  if (stopped_) {
    return false;
  }
  std::u16string name;
  if (records_.Read(id, name)) {
    if (!stopped_ && (rows_.erased || !name.empty())) {
      AddRow(list, id, std::move(name));
    }
    return true;
  }
  if (!stopped_) {
    list.SetMessage({});
    const platform::SimResult result = state_.simPhonebook.ReadCaps();
    if (!stopped_ && !state_.closing) {
      EndWait();
      app::ShowCardError(state_, dialog_->Handle(), result);
    }
  }
  return false;
}

void NameListFill::AddRow(ui::ListView& list, std::uint32_t id, std::u16string name) const {
  const bool chosen = rows_.checked && std::ranges::find(rows_.groups, id) != rows_.groups.end();
  list.InsertRow(0, {res::Format(u"%d", {id}), std::move(name)}, nullptr,
                 chosen ? ui::kItemChecked : 0);
}

// What the user has selected meanwhile stays selected.
void NameListFill::Finish(ui::ListView& list) {
  if (rows_.defaultName) {
    AddRow(list, 0, Text(res::kStringDefaultName));
  }
  // Before the selection shows it: what is chosen then counts.
  ended_ = true;
  if (list.ItemCount() == 0) {
    list.SetMessage({Text(rows_.nothing), Text(rows_.hint), 0, 0});
  } else if (list.SelectedCount() == 0) {
    list.SetSelectionMark(0);
    list.SetItemState(0, kSelectedFocused, kSelectedFocused);
    list.EnsureVisible(0);
  }
}

std::uint32_t RecordOfRow(const ui::ListView& list, int row) {
  std::uint32_t record = 0;
  for (const char16_t digit : list.ItemText(row, kNameColumnId)) {
    record = record * 10 + (digit - u'0');
  }
  return record;
}

int RowOfRecord(const ui::ListView& list, std::uint32_t record) {
  for (int row = 0; row < list.ItemCount(); ++row) {
    if (RecordOfRow(list, row) == record) {
      return row;
    }
  }
  return -1;
}

void InsertNameColumns(ui::ListView& list, int idWidth, ui::Size client) {
  list.InsertColumn(kNameColumnId, res::LoadString(res::kStringNumberSign), idWidth);
  list.InsertColumn(kNameColumnName, res::LoadString(res::kStringName), NameWidth(idWidth, client));
}

void SetNameColumnWidth(ui::ListView& list, int idWidth, ui::Size client) {
  list.SetColumnWidth(kNameColumnName, NameWidth(idWidth, client));
}

int NameIdWidth(const app::AppState& state) {
  return state.isHighRes != 0 ? kHighResIdWidth : kIdWidth;
}

}  // namespace kelpin::editor
