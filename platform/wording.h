#pragma once

#include <initializer_list>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "platform/printable.h"

namespace kelpin::platform {

// What adapters say to the user, in the user's language. It is written in English where it is said;
// a language file has the same text in another language. All of it is UTF-8.
using Wording = std::map<std::string, std::string, std::less<>>;  // by the English text

inline Wording& WordingInUse() {
  static Wording inUse;
  return inUse;
}

// From now on. Not with other threads about.
inline void UseWording(Wording wording) {
  WordingInUse() = std::move(wording);
}

// Marks an English text that is handed to Say elsewhere. Tests look for these two names to find all
// texts that a language file needs.
constexpr std::string_view Words(std::string_view english) {
  return english;
}

// `english` in the language in use, or itself, with `values` in the places of its "%s", in their
// order. Values are shown with Printable; there are as many as places. Any thread.
inline std::string Say(std::string_view english,
                       std::initializer_list<std::string_view> values = {}) {
  const auto found = WordingInUse().find(english);
  std::string_view rest = found == WordingInUse().end() ? english : found->second;
  std::string said;
  for (const std::string_view value : values) {
    const std::size_t place = rest.find("%s");
    if (place == std::string_view::npos) break;
    said += rest.substr(0, place);
    said += Printable(value);
    rest.remove_prefix(place + 2);
  }
  return said.append(rest);
}

}  // namespace kelpin::platform
