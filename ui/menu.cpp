#include "ui/menu.h"

#include <algorithm>
#include <utility>

namespace kelpin::ui {
namespace {

MenuItem MakeItem(const MenuItemTemplate& source) {
  MenuItem item;
  item.command = source.command;
  item.text = source.text;
  item.icon = source.icon;
  item.keys = source.keys;
  for (const MenuItemTemplate& child : source.items) {
    item.items.push_back(MakeItem(child));
  }
  return item;
}

// Runs `action` on every item with `command`; how many there were.
template <typename Items, typename Action>
int Visit(Items& items, int command, const Action& action) {
  int found = 0;
  for (auto& item : items) {
    if (item.command == command) {
      action(item);
      ++found;
    }
    found += Visit(item.items, command, action);
  }
  return found;
}

int Remove(std::vector<MenuItem>& items, int command) {
  auto removed = static_cast<int>(
      std::erase_if(items, [&](const MenuItem& item) { return item.command == command; }));
  for (MenuItem& item : items) {
    removed += Remove(item.items, command);
  }
  return removed;
}

std::vector<MenuItem> Tidy(const std::vector<MenuItem>& items) {
  std::vector<MenuItem> tidy;
  for (const MenuItem& item : items) {
    if (item.IsSeparator()) {
      if (!tidy.empty() && !tidy.back().IsSeparator()) {
        tidy.push_back(item);
      }
      continue;
    }
    MenuItem copy = item;
    copy.items = Tidy(item.items);
    if (copy.command != 0 || !copy.items.empty()) {
      tidy.push_back(std::move(copy));
    }
  }
  if (!tidy.empty() && tidy.back().IsSeparator()) {
    tidy.pop_back();
  }
  return tidy;
}

void Call(const std::function<void()>& changed) {
  if (changed) {
    changed();
  }
}

}  // namespace

Menu::Menu(std::span<const MenuItemTemplate> items) {
  for (const MenuItemTemplate& item : items) {
    items_.push_back(MakeItem(item));
  }
}

void Menu::SetChanged(std::function<void()> changed) {
  const MutexLock guard(lock_);
  changed_ = std::move(changed);
}

void Menu::Append(int command, std::u16string_view text, bool enabled) {
  std::function<void()> changed;
  {
    const MutexLock guard(lock_);
    MenuItem item;
    item.command = command;
    item.text = text;
    item.enabled = enabled;
    items_.push_back(std::move(item));
    changed = changed_;
  }
  Call(changed);
}

void Menu::AppendSeparator() {
  std::function<void()> changed;
  {
    const MutexLock guard(lock_);
    items_.emplace_back();
    changed = changed_;
  }
  Call(changed);
}

int Menu::EnableItem(int command, bool enabled) {
  std::function<void()> changed;
  int found = 0;
  if (command != 0) {
    const MutexLock guard(lock_);
    bool differs = false;
    found = Visit(items_, command, [&](MenuItem& item) {
      differs = differs || item.enabled != enabled;
      item.enabled = enabled;
    });
    if (differs) {
      changed = changed_;
    }
  }
  Call(changed);
  return found > 0 ? 1 : 0;
}

int Menu::RemoveItem(int command) {
  std::function<void()> changed;
  int found = 0;
  if (command != 0) {
    const MutexLock guard(lock_);
    found = Remove(items_, command);
    if (found > 0) {
      removed_.push_back(command);
      changed = changed_;
    }
  }
  Call(changed);
  return found > 0 ? 1 : 0;
}

bool Menu::Contains(int command) const {
  const MutexLock guard(lock_);
  return command != 0 && Visit(items_, command, [](const MenuItem&) {}) > 0;
}

bool Menu::IsEnabled(int command) const {
  bool enabled = false;
  if (command != 0) {
    const MutexLock guard(lock_);
    Visit(items_, command, [&](const MenuItem& item) { enabled = enabled || item.enabled; });
  }
  return enabled;
}

bool Menu::WasRemoved(int command) const {
  const MutexLock guard(lock_);
  return std::find(removed_.begin(), removed_.end(), command) != removed_.end();
}

std::vector<MenuItem> Menu::Items() const {
  const MutexLock guard(lock_);
  return Tidy(items_);
}

MenuBar::MenuBar(const MenuBarTemplate& bar) : resource_(bar.id) {
  for (const SoftKeyTemplate& source : bar.keys) {
    Entry entry;
    entry.key.command = source.command;
    entry.key.text = source.text;
    entry.key.icon = source.icon;
    entry.key.dropDown = !source.menu.empty();
    if (entry.key.dropDown) {
      entry.menu = std::make_unique<Menu>(source.menu);
    }
    keys_.push_back(std::move(entry));
  }
}

void MenuBar::SetChanged(std::function<void()> changed) {
  const MutexLock guard(lock_);
  changed_ = std::move(changed);
  for (const Entry& entry : keys_) {
    if (entry.menu) {
      entry.menu->SetChanged(changed_);
    }
  }
}

std::size_t MenuBar::KeyCount() const {
  const MutexLock guard(lock_);
  return keys_.size();
}

SoftKey MenuBar::KeyAt(std::size_t index) const {
  const MutexLock guard(lock_);
  return index < keys_.size() ? keys_[index].key : SoftKey{};
}

int MenuBar::EnableSoftKey(std::size_t index, bool enabled) {
  std::function<void()> changed;
  {
    const MutexLock guard(lock_);
    if (index >= keys_.size()) {
      return 0;
    }
    if (keys_[index].key.enabled != enabled) {
      keys_[index].key.enabled = enabled;
      changed = changed_;
    }
  }
  Call(changed);
  return 1;
}

Menu* MenuBar::SubMenu(int command) {
  const MutexLock guard(lock_);
  for (const Entry& entry : keys_) {
    if (entry.key.command == command) {
      return entry.menu.get();
    }
  }
  return nullptr;
}

bool MenuBar::CommandEnabled(int command) const {
  const MutexLock guard(lock_);
  bool known = false;
  for (const Entry& entry : keys_) {
    if (entry.key.command == command) {
      if (entry.key.enabled) {
        return true;
      }
      known = true;
    }
    if (entry.menu && entry.menu->Contains(command)) {
      if (entry.key.enabled && entry.menu->IsEnabled(command)) {
        return true;
      }
      known = true;
    }
    if (entry.menu && entry.menu->WasRemoved(command)) {
      known = true;
    }
  }
  return !known;
}

}  // namespace kelpin::ui
