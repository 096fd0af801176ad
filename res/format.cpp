#include "res/format.h"

#include <algorithm>
#include <charconv>

namespace kelpin::res {
namespace {

// "-9223372036854775808" and its like.
struct Digits {
  explicit Digits(std::int64_t number) {
    char text[20];
    const std::to_chars_result result = std::to_chars(text, text + sizeof text, number);
    size = static_cast<std::size_t>(result.ptr - text);
    std::copy(text, result.ptr, units);
  }
  std::u16string_view View() const { return {units, size}; }

  char16_t units[20];
  std::size_t size = 0;
};

// A place to fill in: what it takes and how many units of the pattern it covers.
struct Place {
  enum class Kind { kNone, kNumber, kText, kPercent } kind = Kind::kNone;
  std::size_t size = 1;
};

Place PlaceAt(std::u16string_view rest) {
  if (rest.starts_with(u"%d")) {
    return {Place::Kind::kNumber, 2};
  }
  if (rest.starts_with(u"%ld")) {
    return {Place::Kind::kNumber, 3};
  }
  if (rest.starts_with(u"%s")) {
    return {Place::Kind::kText, 2};
  }
  if (rest.starts_with(u"%%")) {
    return {Place::Kind::kPercent, 2};
  }
  return {};
}

bool IsHighSurrogate(char16_t unit) {
  return unit >= 0xD800 && unit <= 0xDBFF;
}

}  // namespace

std::u16string Format(std::u16string_view pattern, std::initializer_list<FormatArgument> arguments,
                      std::size_t limit) {
  std::size_t expected = pattern.size();
  for (const FormatArgument& argument : arguments) {
    expected += argument.IsText() ? argument.Text().size() : sizeof Digits::units;
  }
  std::u16string result;
  result.reserve(std::min(expected, limit));

  const auto append = [&](std::u16string_view text) {
    result.append(text.substr(0, limit - result.size()));
  };
  const FormatArgument* next = arguments.begin();
  while (!pattern.empty() && result.size() < limit) {
    const Place place = PlaceAt(pattern);
    const std::u16string_view written = pattern.substr(0, place.size);
    pattern.remove_prefix(place.size);
    if (place.kind == Place::Kind::kPercent) {
      append(u"%");
    } else if (place.kind == Place::Kind::kNone || next == arguments.end()) {
      append(written);
    } else {
      const FormatArgument& argument = *next++;
      if (argument.IsText() != (place.kind == Place::Kind::kText)) {
        append(written);
      } else if (argument.IsText()) {
        append(argument.Text());
      } else {
        append(Digits(argument.Number()).View());
      }
    }
  }
  const bool cut = result.size() == limit;
  if (cut && !result.empty() && IsHighSurrogate(result.back())) {
    result.pop_back();
  }
  return result;
}

}  // namespace kelpin::res
