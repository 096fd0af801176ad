#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/headless_screen.h"
#include "ui/dialog.h"
#include "ui/list_view.h"

namespace kelpin::test {

// What a list tells, outside a dialog.
struct ListRecorder {
  std::vector<ui::Notification> notifications;
  int changes = 0;

  void Attach(ui::ListView& list) {
    ui::ListView::Sink sink;
    sink.notify = [this](const ui::Notification& one) { notifications.push_back(one); };
    sink.changed = [this] { ++changes; };
    list.SetSink(std::move(sink));
  }

  std::vector<ui::Notification> Of(ui::NotifyCode code) const {
    std::vector<ui::Notification> found;
    for (const ui::Notification& one : notifications) {
      if (one.code == code) {
        found.push_back(one);
      }
    }
    return found;
  }
};

// A row's data in these tests.
struct Number : ui::RowData {
  explicit Number(int number) : value(number) {}
  int value;
};

inline int CompareNumbers(const ui::RowData* left, const ui::RowData* right) {
  const int a = static_cast<const Number*>(left)->value;
  const int b = static_cast<const Number*>(right)->value;
  return a < b ? -1 : (a > b ? 1 : 0);
}

inline std::u16string Digits(int value) {
  const std::string digits = std::to_string(value);
  return {digits.begin(), digits.end()};
}

// Rows 0, 1, 2 … top down, numbered in their data and in their text.
inline void Fill(ui::ListView& list, int count) {
  const bool notifying = list.Notifying();
  list.SetNotifying(false);
  for (int i = 0; i < count; ++i) {
    list.InsertItem(i, Digits(i), std::make_unique<Number>(i));
  }
  list.SetNotifying(notifying);
}

// The numbers of the rows, top down.
inline std::vector<int> Order(const ui::ListView& list) {
  std::vector<int> order;
  for (int i = 0; i < list.ItemCount(); ++i) {
    order.push_back(static_cast<const Number*>(list.ItemData(i).get())->value);
  }
  return order;
}

inline std::vector<int> Selected(const ui::ListView& list) {
  std::vector<int> rows;
  for (int row = list.NextItem(-1, ui::kItemSelected); row >= 0;
       row = list.NextItem(row, ui::kItemSelected)) {
    rows.push_back(row);
  }
  return rows;
}

inline ui::KeyPress Press(ui::Key key, unsigned modifiers = ui::kNoModifier) {
  return {key, modifiers, 0};
}

inline ui::KeyPress Type(char16_t character, unsigned modifiers = ui::kNoModifier) {
  return {ui::Key::kCharacter, modifiers, character};
}

// Writes down what a dialog tells its handler, and may act on it.
struct HandlerRecorder : ui::DialogHandler {
  std::vector<std::string> calls;
  std::vector<ui::Notification> notifications;
  std::function<void(ui::Dialog&)> onInit;
  std::function<void(ui::Dialog&, int)> onCommand;
  std::function<void(ui::Dialog&, const ui::Notification&)> onNotify;
  bool usesHotKeys = false;

  void OnInit(ui::Dialog& dialog) override {
    calls.push_back("init");
    if (onInit) {
      onInit(dialog);
    }
  }
  void OnCommand(ui::Dialog& dialog, int command) override {
    calls.push_back("command " + std::to_string(command));
    if (onCommand) {
      onCommand(dialog, command);
    }
  }
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override {
    notifications.push_back(notification);
    if (onNotify) {
      onNotify(dialog, notification);
    }
  }
  void OnSize(ui::Dialog& /*dialog*/, ui::Size client) override {
    calls.push_back("size " + std::to_string(client.width) + "x" + std::to_string(client.height));
  }
  void OnActivate(ui::Dialog& /*dialog*/, bool active) override {
    calls.push_back(active ? "active" : "inactive");
  }
  bool OnHotKey(ui::Dialog& /*dialog*/, int virtualKey, unsigned modifiers) override {
    calls.push_back("hot key " + std::to_string(virtualKey) + " " + std::to_string(modifiers));
    return usesHotKeys;
  }
  void OnMessage(ui::Dialog& /*dialog*/, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override {
    calls.push_back("message " + std::to_string(message) + " " + std::to_string(first) + " " +
                    std::to_string(second));
  }
  void OnSettingsChange(ui::Dialog& /*dialog*/) override { calls.push_back("settings"); }
  void OnHelp(ui::Dialog& /*dialog*/) override { calls.push_back("help"); }
  void OnClose(ui::Dialog& dialog) override {
    calls.push_back("close");
    DialogHandler::OnClose(dialog);
  }
  void OnDestroy(ui::Dialog& /*dialog*/) override { calls.push_back("destroy"); }

  std::vector<ui::Notification> Of(ui::NotifyCode code) const {
    std::vector<ui::Notification> found;
    for (const ui::Notification& one : notifications) {
      if (one.code == code) {
        found.push_back(one);
      }
    }
    return found;
  }
};

}  // namespace kelpin::test
