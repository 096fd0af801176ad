#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/dialog.h"
#include "ui/screen.h"

// A list and a form like the program's own, to press and to look at.
namespace kelpin::test {

inline constexpr int kListDialog = 9001;
inline constexpr int kFormDialog = 9002;
inline constexpr int kPickDialog = 9003;
inline constexpr int kBareDialog = 9004;

inline constexpr int kSampleHeader = 11;
inline constexpr int kSampleList = 12;
inline constexpr int kNameLabel = 21;
inline constexpr int kNameEdit = 22;
inline constexpr int kNumberLabel = 23;
inline constexpr int kNumberEdit = 24;
inline constexpr int kNumberButton = 25;
inline constexpr int kThirdLabel = 26;
inline constexpr int kThirdEdit = 27;
inline constexpr int kThirdButton = 28;
inline constexpr int kEverybody = 29;
inline constexpr int kProgress = 30;
inline constexpr int kPickList = 31;

inline constexpr int kNew = 501;
inline constexpr int kMenu = 502;
inline constexpr int kEdit = 503;
inline constexpr int kDelete = 504;
inline constexpr int kRefresh = 505;
inline constexpr int kTools = 506;
inline constexpr int kOwnNumbers = 507;
inline constexpr int kDone = 508;
inline constexpr int kCancel = 509;

extern const ui::DialogTemplate kListTemplate;
extern const ui::DialogTemplate kFormTemplate;
extern const ui::DialogTemplate kPickTemplate;
extern const ui::DialogTemplate kBareTemplate;
extern const ui::MenuBarTemplate kListBar;
extern const ui::MenuBarTemplate kFormBar;

// Notes what reaches it; does what the hooks say.
class SampleHandler : public ui::DialogHandler {
 public:
  std::function<void(ui::Dialog&)> init;
  std::function<void(ui::Dialog&, int)> command;
  std::function<void(ui::Dialog&, const ui::Notification&)> notify;
  std::vector<int> commands;
  std::vector<ui::Notification> notifications;
  std::vector<ui::Size> sizes;
  std::vector<bool> activations;
  std::vector<int> hotKeys;
  int helps = 0;
  int closes = 0;
  int destroyed = 0;
  int settingsChanges = 0;

  void OnInit(ui::Dialog& dialog) override;
  void OnCommand(ui::Dialog& dialog, int id) override;
  void OnNotify(ui::Dialog& dialog, const ui::Notification& notification) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;
  void OnActivate(ui::Dialog& dialog, bool active) override;
  bool OnHotKey(ui::Dialog& dialog, int virtualKey, unsigned modifiers) override;
  void OnSettingsChange(ui::Dialog& dialog) override;
  void OnHelp(ui::Dialog& dialog) override;
  void OnClose(ui::Dialog& dialog) override;
  void OnDestroy(ui::Dialog& dialog) override;

  std::size_t Count(ui::NotifyCode code) const;
};

// Lays out, fills and titles the sample dialogs as the program does its own.
class SampleDialog : public SampleHandler {
 public:
  explicit SampleDialog(ui::Screen& screen) : screen_(screen) {}

  void OnInit(ui::Dialog& dialog) override;
  void OnSize(ui::Dialog& dialog, ui::Size client) override;

 private:
  void LayOutForm(ui::Dialog& dialog, ui::Size client) const;

  ui::Screen& screen_;
};

struct SampleEntry {
  int index;
  std::u16string name;
  std::u16string number;
};
// Names in many scripts, long numbers.
const std::vector<SampleEntry>& SampleEntries();
void FillList(ui::ListView& list, const std::vector<SampleEntry>& entries);

}  // namespace kelpin::test
