#include "app/commands.h"

#include <array>
#include <utility>
#include <vector>

#include "app/app_state.h"
#include "res/ids.h"
#include "res/menus.h"

namespace kelpin::app {
namespace {

constexpr std::array kSelectionCommands = {
    res::kCommandEdit, res::kCommandDelete,         res::kCommandCall,
    res::kCommandSend, res::kCommandSaveToContacts, res::kCommandMoveToContacts};

constexpr std::size_t kLeftSoftKey = 0;
constexpr std::size_t kRightSoftKey = 1;

template <typename Action>
void ForEachCommand(const std::vector<ui::MenuItem>& items, const Action& action) {
  for (const ui::MenuItem& item : items) {
    if (item.command != 0) {
      action(item.command);
    }
    ForEachCommand(item.items, action);
  }
}

}  // namespace

void Commands::Register(int command, Runner runner) {
  runners_[command] = std::move(runner);
}

bool Commands::Knows(int command) const {
  const auto found = runners_.find(command);
  return found != runners_.end() && found->second != nullptr;
}

bool Commands::Run(int command) const {
  if (!Knows(command)) {
    return false;
  }
  runners_.at(command)();
  return true;
}

ui::Menu* Commands::Menu() const {
  return state_.menuBar == nullptr ? nullptr : state_.menuBar->SubMenu(res::kCommandMenu);
}

void Commands::GreyUnknown() {
  ui::Menu* const menu = Menu();
  if (menu == nullptr) {
    return;
  }
  ForEachCommand(menu->Items(), [&](int command) {
    if (!Knows(command)) {
      menu->EnableItem(command, false);
    }
  });
  state_.menuBar->EnableSoftKey(kLeftSoftKey, Knows(res::kCommandNew));
}

void Commands::SetCommandsEnabled(bool anySelected) {
  ui::Menu* const menu = Menu();
  if (menu == nullptr) {
    return;
  }
  for (const int command : kSelectionCommands) {
    menu->EnableItem(command, anySelected && Knows(command));
  }
}

void Commands::FollowSelection() {
  const MutexLock following(following_);
  const ui::ListView* const list = state_.dialog->List(res::kMainList);
  SetCommandsEnabled(list != nullptr && list->SelectedCount() > 0);
}

void Commands::EnableSoftKeys(bool enabled) {
  if (state_.menuBar != nullptr) {
    state_.menuBar->EnableSoftKey(kLeftSoftKey, enabled && Knows(res::kCommandNew));
    state_.menuBar->EnableSoftKey(kRightSoftKey, enabled);
  }
}

void Commands::SetLoadCommandsEnabled(bool enabled) {
  ui::Menu* const menu = Menu();
  if (menu == nullptr) {
    return;
  }
  menu->EnableItem(res::kCommandRefresh, enabled && Knows(res::kCommandRefresh));
  EnableSoftKeys(enabled);
}

void Commands::RemoveSwitchedOff() {
  ui::Menu* const menu = Menu();
  if (menu == nullptr) {
    return;
  }
  // Some switches count when they are 1, others when they are not 0. Device makers rely on both.
  const AppSettings& settings = state_.settings;
  const auto removeIf = [&](bool condition, int command) {
    if (condition) {
      menu->RemoveItem(command);
    }
  };
  removeIf(settings.Enable_SDN != 1, res::kCommandServiceNumbers);
  removeIf(settings.Disable_OwnNumber == 1, res::kCommandOwnNumbers);
  removeIf(settings.Enable_AAS != 1, res::kCommandNumberNames);
  removeIf(settings.Enable_GAS != 1, res::kCommandGroupNames);
  removeIf(settings.Enable_Move_Func != 1, res::kCommandMoveContactsToSim);
  removeIf(settings.Enable_Move_Func != 1, res::kCommandMoveToContacts);
  removeIf(settings.CToSim_Type != 0, res::kCommandOptions);
  removeIf(settings.Disable_DelContacts != 0, res::kCommandDeleteContacts);
}

std::shared_ptr<ui::Menu> Commands::ContextMenu() const {
  auto menu = std::make_shared<ui::Menu>(res::MainListMenu());
  ForEachCommand(menu->Items(), [&](int command) {
    if (!Knows(command)) {
      menu->EnableItem(command, false);
    }
  });
  return menu;
}

}  // namespace kelpin::app
