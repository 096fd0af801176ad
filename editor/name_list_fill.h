#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

#include "editor/name_family.h"
#include "editor/name_records.h"
#include "editor/pickers.h"
#include "ui/dialog.h"

namespace kelpin::editor {

inline constexpr int kNameColumnId = 0;
inline constexpr int kNameColumnName = 1;

// Which rows a list of names gets, and what it says when it gets none.
struct NameRows {
  bool erased = false;       // a row for a record without a name too
  bool defaultName = false;  // first of all a row that stands for no name, with id 0
  bool checked = false;      // the rows of `groups` are checked
  std::array<std::uint8_t, kGroupIds> groups = {};
  int nothing = 0;
  int hint = 0;  // 0: none
};

// Fills a list of names from the card, on a thread of its own, which holds this object. The last
// record comes first and each row is inserted at the top, so that the ids rise. A record that
// cannot be read ends it, with the rows there are. Any thread.
class NameListFill : public std::enable_shared_from_this<NameListFill> {
 public:
  NameListFill(app::AppState& state, const NameFamily& family, std::shared_ptr<ui::Dialog> dialog,
               int list, const NameRows& rows);

  // False when there is no thread to be had; the list stays empty then.
  bool Start();
  // The list is left alone from now on.
  void Stop();
  // There will be no more rows.
  bool Ended() const { return ended_; }

 private:
  void Run(ui::ListView& list);
  // False when nothing more is to be read.
  bool AddRecord(ui::ListView& list, std::uint32_t id);
  void AddRow(ui::ListView& list, std::uint32_t id, std::u16string name) const;
  void Finish(ui::ListView& list);
  void EndWait();

  app::AppState& state_;
  const NameRecords records_;
  const std::shared_ptr<ui::Dialog> dialog_;
  const int list_;
  const NameRows rows_;
  std::atomic<bool> stopped_ = false;
  std::atomic<bool> ended_ = false;
  std::atomic<bool> waiting_ = false;  // the wait cursor is ours
};

// The record that a row shows, 0 for none.
std::uint32_t RecordOfRow(const ui::ListView& list, int row);
// The row that shows a record, -1 when there is none.
int RowOfRecord(const ui::ListView& list, std::uint32_t record);

// The list's two columns, for `client` pixels; `idWidth` is the width of the first.
void InsertNameColumns(ui::ListView& list, int idWidth, ui::Size client);
void SetNameColumnWidth(ui::ListView& list, int idWidth, ui::Size client);
int NameIdWidth(const app::AppState& state);

}  // namespace kelpin::editor
