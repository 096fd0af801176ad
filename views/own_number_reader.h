#pragma once

#include <array>
#include <atomic>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "app/settings.h"
#include "platform/mutex.h"
#include "sim/ril_client.h"
#include "ui/dialog.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::views {

inline constexpr std::uint32_t kOwnNumberFile = 0x6F40;  // EF_MSISDN

inline constexpr int kOwnNumberColumnRecord = 0;
inline constexpr int kOwnNumberColumnName = 1;
inline constexpr int kOwnNumberColumnPhone = 2;

// Fills the list of own numbers from the card, on threads of its own. They hold it, so that it may
// outlive the dialog; once closed it leaves the list alone. Any thread.
class OwnNumberReader : public std::enable_shared_from_this<OwnNumberReader> {
 public:
  explicit OwnNumberReader(app::AppState& state);

  // The radio session for the dialog's file, told of the card's changes.
  void Open(std::shared_ptr<ui::Dialog> dialog);
  // Ends what is under way.
  void Close();

  // 1 when a thread was made that fills the list.
  int StartFill();
  // Reads the list anew. After a card that did not answer, no more in this dialog.
  void Refresh();
  // The soft keys and menu items that need a row; in a list that only shows, its one key.
  void EnableCommands(bool enabled);

  sim::RilClient& Client() { return client_; }
  bool Closed() const { return closed_; }
  // Whether the record's name is the settings' and not the card's; `record` is 1-based.
  bool NameFromSettings(std::uint32_t record) const;

  // An update that the card did not confirm: what `record` (1-based) was to be, and whether the
  // user was told that it failed. Screen thread, as is all that follows.
  void Doubt(std::uint32_t record, std::vector<std::uint8_t> meant, bool told);
  bool InDoubt() const { return !doubts_.empty(); }
  // Reads back what is in doubt: the rows show what the card holds, and the user is told of a
  // change that it has not.
  void ResolveDoubts();

 private:
  // An update that was not confirmed.
  struct Unconfirmed {
    std::uint32_t record = 0;
    std::vector<std::uint8_t> meant;
    bool told = false;
  };
  struct Texts {
    std::u16string name;
    std::u16string number;
  };

  void Fill(ui::ListView& list, std::uint32_t turn);
  bool ReadRecord(ui::ListView& list, std::uint32_t record, std::uint32_t turn);
  // What a row shows of a record.
  Texts Decode(std::span<const std::uint8_t> response, std::uint32_t record);
  void Resolve(const Unconfirmed& update);
  // True when the card has failed.
  bool TellStatus();
  // Whether this fill is to go on: the list is there and none was started after it.
  bool Wanted(std::uint32_t turn) const { return !closed_ && turn == turn_; }

  app::AppState& state_;
  sim::RilClient client_;
  std::shared_ptr<ui::Dialog> dialog_;
  std::atomic<bool> closed_ = false;
  std::atomic<bool> refreshing_ = false;
  std::atomic<std::uint32_t> turn_ = 0;  // the fill that was started last
  std::array<std::atomic<bool>, app::kOwnNumberRecordCount> nameFromSettings_ = {};
  std::vector<Unconfirmed> doubts_;
  Mutex filling_;  // held by a fill from its start to its end; others wait for it, on their threads
  Mutex rows_;     // held where a fill adds a row, and where the rows are taken away
};

// Waits for word that the own numbers were rewritten, and has the open list read them anew. One of
// the process; its thread ends with the process. While no list is open it hands the word on to who
// waits behind it.
class OwnNumberWatcher : public std::enable_shared_from_this<OwnNumberWatcher> {
 public:
  explicit OwnNumberWatcher(app::AppState& state) : state_(state) {}

  // Makes the thread, the first time.
  void Start();
  // The list that is open; null when none is.
  void SetList(std::shared_ptr<OwnNumberReader> reader);

 private:
  void Watch();
  std::shared_ptr<OwnNumberReader> List() const;

  app::AppState& state_;
  std::unique_ptr<platform::Event> event_;
  mutable Mutex lock_;
  bool started_ GUARDED_BY(lock_) = false;
  std::shared_ptr<OwnNumberReader> list_ GUARDED_BY(lock_);
};

}  // namespace kelpin::views
