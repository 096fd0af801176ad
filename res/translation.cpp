#include "res/translation.h"

#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <string_view>
#include <utility>
#include <vector>

#include "res/language.h"
#include "res/string_table.h"

namespace kelpin::res {
namespace {

// The language in use, and copies of the resources asked for so far with its texts.
class Translation {
 public:
  explicit Translation(LanguageTexts texts) : texts_(std::move(texts)) {
    // Templates hold texts, not ids. Of two ids with one English text the first stands for both.
    for (const auto& [id, text] : texts_) {
      byEnglish_.emplace(EnglishText(id), text);
    }
  }

  std::u16string_view Text(int id, std::u16string_view english) const {
    const auto found = texts_.find(id);
    return found == texts_.end() ? english : found->second;
  }

  const ui::DialogTemplate& Dialog(const ui::DialogTemplate& english) {
    const std::lock_guard guard(lock_);
    const auto [copy, isNew] = dialogs_.try_emplace(&english, english);
    if (isNew) {
      std::vector<ui::ControlTemplate>& controls =
          controls_.emplace_back(english.controls.begin(), english.controls.end());
      for (ui::ControlTemplate& control : controls) {
        control.text = OfTemplate(control.text);
      }
      copy->second.controls = controls;
    }
    return copy->second;
  }

  const ui::MenuBarTemplate& Bar(const ui::MenuBarTemplate& english) {
    const std::lock_guard guard(lock_);
    const auto [copy, isNew] = bars_.try_emplace(&english, english);
    if (isNew) {
      std::vector<ui::SoftKeyTemplate>& keys =
          keys_.emplace_back(english.keys.begin(), english.keys.end());
      for (ui::SoftKeyTemplate& key : keys) {
        key.text = OfTemplate(key.text);
        key.menu = Items(key.menu);
      }
      copy->second.keys = keys;
    }
    return copy->second;
  }

  std::span<const ui::MenuItemTemplate> Menu(std::span<const ui::MenuItemTemplate> english) {
    const std::lock_guard guard(lock_);
    const auto known = menus_.find(english.data());
    if (known != menus_.end()) {
      return known->second;
    }
    return menus_[english.data()] = Items(english);
  }

 private:
  std::u16string_view OfTemplate(std::u16string_view english) const {
    const auto found = byEnglish_.find(english);
    return found == byEnglish_.end() ? english : found->second;
  }

  std::span<const ui::MenuItemTemplate> Items(std::span<const ui::MenuItemTemplate> english) {
    if (english.empty()) {
      return {};
    }
    std::vector<ui::MenuItemTemplate>& items = items_.emplace_back(english.begin(), english.end());
    for (ui::MenuItemTemplate& item : items) {
      item.text = OfTemplate(item.text);
      item.keys = OfTemplate(item.keys);
      item.items = Items(item.items);
    }
    return items;
  }

  const LanguageTexts texts_;
  std::map<std::u16string_view, std::u16string_view> byEnglish_;

  std::mutex lock_;  // guards what follows
  std::map<const ui::DialogTemplate*, ui::DialogTemplate> dialogs_;
  std::map<const ui::MenuBarTemplate*, ui::MenuBarTemplate> bars_;
  std::map<const ui::MenuItemTemplate*, std::span<const ui::MenuItemTemplate>> menus_;
  // What the spans above look at.
  std::list<std::vector<ui::ControlTemplate>> controls_;
  std::list<std::vector<ui::SoftKeyTemplate>> keys_;
  std::list<std::vector<ui::MenuItemTemplate>> items_;
};

// Null: English.
std::unique_ptr<Translation>& InUse() {
  static std::unique_ptr<Translation> inUse;
  return inUse;
}

}  // namespace

void UseLanguage(LanguageTexts texts) {
  InUse() = texts.empty() ? nullptr : std::make_unique<Translation>(std::move(texts));
}

std::u16string_view Translated(int id, std::u16string_view english) {
  return InUse() == nullptr ? english : InUse()->Text(id, english);
}

const ui::DialogTemplate& Translated(const ui::DialogTemplate& english) {
  return InUse() == nullptr ? english : InUse()->Dialog(english);
}

const ui::MenuBarTemplate& Translated(const ui::MenuBarTemplate& english) {
  return InUse() == nullptr ? english : InUse()->Bar(english);
}

std::span<const ui::MenuItemTemplate> Translated(std::span<const ui::MenuItemTemplate> english) {
  return InUse() == nullptr ? english : InUse()->Menu(english);
}

}  // namespace kelpin::res
