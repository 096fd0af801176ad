#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>

#include "app/settings.h"
#include "contacts/contact_enumeration.h"
#include "ui/list_view.h"

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

// What a row of the picker holds beside its two columns. Where a contact gives a row for each of
// its numbers only the first two are set, to nothing. Texts have at most 255 characters.
struct ContactPickRow : ui::RowData {
  std::u16string number2;
  std::u16string email;
  std::int32_t oid = 0;  // of the contact, 0 when not all of it could be read
  std::u16string name;
  std::u16string number;
};

// What decides which rows there are, as it was when the picker opened.
struct PickRules {
  explicit PickRules(const app::AppState& state);

  bool perContact = false;  // one row each; else one for each number of a chosen type
  bool sorted = false;
  bool startChecked = false;
  std::array<bool, app::kPhoneTypeCount> chosen = {};
  std::array<std::u16string, app::kPhoneTypeCount> marks;
  std::uint32_t language = 0;
  std::uint32_t maxNameLength = 0;
  std::uint32_t maxNumberLength = 0;
  std::size_t maxEmailLength = 0;
};

struct FillOutcome {
  EnumerationEnd end = EnumerationEnd::kNotOpened;
  bool anyContact = false;  // also one that gave no row
};

// Fills the list with the contacts, until `stop` is set. Any thread.
FillOutcome FillPicker(platform::ContactsStore& store, const PickRules& rules,
                       const std::atomic<bool>& stop, ui::ListView& list);

}  // namespace kelpin::contacts
