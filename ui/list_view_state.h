#pragma once

#include <algorithm>
#include <memory>
#include <numeric>
#include <utility>
#include <vector>

#include "ui/list_view.h"

namespace kelpin::ui {

struct ListView::Pending {
  std::shared_ptr<const Sink> sink;
  bool notifying = false;  // at the moment of the change
  bool changed = false;
  std::vector<Notification> notifications;

  void Add(NotifyCode code, int row, std::uint32_t oldState = 0, std::uint32_t newState = 0) {
    if (notifying) {
      Notification notification;
      notification.code = code;
      notification.row = row;
      notification.oldState = oldState;
      notification.newState = newState;
      notifications.push_back(notification);
    }
  }
};

template <typename Change>
void ListView::Track(std::vector<int> rows, Pending& pending, const Change& change) {
  std::sort(rows.begin(), rows.end());
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  std::erase_if(rows, [](int row) { return row < 0; });
  std::vector<std::uint32_t> before;
  before.reserve(rows.size());
  for (const int row : rows) {
    before.push_back(StateOf(row));
  }
  change();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::uint32_t now = StateOf(rows[i]);
    if (now != before[i]) {
      pending.changed = true;
      pending.Add(NotifyCode::kItemChanged, rows[i], before[i], now);
    }
  }
}

}  // namespace kelpin::ui
