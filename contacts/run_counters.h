#pragma once

#include <cstddef>
#include <string>

namespace kelpin::app {
struct AppState;
}

namespace kelpin::contacts {

inline constexpr std::size_t kSummaryLimit = 260;  // UTF-16 units

// What one run did, told at its end.
struct RunCounters {
  int processed = 0;    // chosen entries taken in hand
  int created = 0;      // new ones
  int overwritten = 0;  // duplicates the user wanted overwritten
  int existing = 0;     // duplicates left alone
};

// "Contact(s) successfully added." with what is new, overwritten and existed already.
std::u16string SummaryText(const RunCounters& counters);
// The same of a run that overwrites nothing: what is not new counts as there already.
std::u16string AddedSummaryText(const RunCounters& counters);

// Tells it. Any thread; returns when the box is closed.
void ShowSummary(app::AppState& state, const std::u16string& text);

}  // namespace kelpin::contacts
