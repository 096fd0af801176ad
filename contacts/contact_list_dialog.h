#pragma once

#include <cstdint>

#include "contacts/contact_enumeration.h"
#include "ui/dialog.h"
#include "ui/list_view.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

inline constexpr int kContactColumnName = 0;
inline constexpr int kContactColumnReach = 1;  // a number, or another way to reach the contact

// A dialog of contacts with check boxes in front, which are read on a thread of their own. Screen
// thread.
class ContactListDialog : public ui::DialogHandler {
 public:
  void OnMessage(ui::Dialog& dialog, std::uint32_t message, std::uint32_t first,
                 std::uint32_t second) override;
  void OnHelp(ui::Dialog& dialog) override;

 protected:
  // `fillMessage` is posted to the dialog to start the reading, and when it has ended.
  ContactListDialog(app::AppState& state, int list, std::uint32_t fillMessage)
      : state_(state), list_(list), fillMessage_(fillMessage) {}

  // Fills the screen with the bar and an empty list; `reach` is the second column's string.
  void SetUp(ui::Dialog& dialog, int bar, int reach) const;
  void PlaceList(ui::Dialog& dialog, const ui::Rect& bounds) const;
  void PostFillStarts(ui::Dialog& dialog) const;
  // Any thread.
  static void PostFillEnded(ui::Dialog& dialog, std::uint32_t fillMessage, EnumerationEnd end);

  virtual void StartFill(ui::Dialog& dialog) = 0;
  virtual void EndFill(ui::Dialog& dialog, EnumerationEnd end) = 0;

  app::AppState& state_;
  const int list_;

 private:
  const std::uint32_t fillMessage_;
};

// What the list says when it is empty after all.
ui::ListMessage NoContactsMessage(EnumerationEnd end);

}  // namespace kelpin::contacts
