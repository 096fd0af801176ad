#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/mutex.h"
#include "ui/templates.h"

namespace kelpin::ui {

struct MenuItem {
  int command = 0;  // 0: a separator or a sub-menu
  std::u16string text;
  std::string icon;
  std::u16string keys;
  bool enabled = true;
  std::vector<MenuItem> items;  // of a sub-menu

  bool IsSeparator() const { return command == 0 && items.empty() && text.empty(); }
  bool operator==(const MenuItem&) const = default;
};

// A pop-up menu. Any thread; `changed` is called after a change, without the menu's lock.
class Menu {
 public:
  Menu() = default;
  explicit Menu(std::span<const MenuItemTemplate> items);

  void SetChanged(std::function<void()> changed);

  void Append(int command, std::u16string_view text, bool enabled = true);
  void AppendSeparator();
  // By command, sub-menus included; a command that is not there changes nothing. 1 when found.
  int EnableItem(int command, bool enabled);
  int RemoveItem(int command);
  bool Contains(int command) const;
  bool IsEnabled(int command) const;  // false when it is not there
  bool WasRemoved(int command) const;
  // A copy to draw from: no empty sub-menu, no separator first, last or doubled.
  std::vector<MenuItem> Items() const;

 private:
  mutable Mutex lock_;
  std::vector<MenuItem> items_ GUARDED_BY(lock_);
  std::vector<int> removed_ GUARDED_BY(lock_);
  std::function<void()> changed_ GUARDED_BY(lock_);
};

struct SoftKey {
  int command = 0;
  std::u16string text;
  std::string icon;
  bool enabled = true;
  bool dropDown = false;
  bool operator==(const SoftKey&) const = default;
};

// The soft keys at a dialog's foot, each a button or a drop-down. Any thread.
class MenuBar {
 public:
  explicit MenuBar(const MenuBarTemplate& bar);

  void SetChanged(std::function<void()> changed);

  int Resource() const { return resource_; }
  std::size_t KeyCount() const;
  SoftKey KeyAt(std::size_t index) const;  // 0 is the left one
  // 1 when there is such a key.
  int EnableSoftKey(std::size_t index, bool enabled);
  // The pop-up of the drop-down key with this command; null when there is none. Lives as long as
  // the bar.
  Menu* SubMenu(int command);
  // Whether `command` can be given now: its key and, for one in a pop-up, the item and the key
  // that opens it are enabled. A command of no key and no menu: true; one that was removed: false.
  bool CommandEnabled(int command) const;

 private:
  struct Entry {
    SoftKey key;
    std::unique_ptr<Menu> menu;
  };
  int resource_ = 0;
  mutable Mutex lock_;
  std::vector<Entry> keys_ GUARDED_BY(lock_);
  std::function<void()> changed_ GUARDED_BY(lock_);
};

}  // namespace kelpin::ui
