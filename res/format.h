#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>

namespace kelpin::res {

// What fills one place of a pattern. Keeps a view: an argument lives as long as the call.
class FormatArgument {
 public:
  template <std::integral Number>
  requires(!std::same_as<Number, bool> && !std::same_as<Number, char16_t>) constexpr FormatArgument(
      Number number)  // NOLINT(google-explicit-constructor)
      : number_(static_cast<std::int64_t>(number)) {}
  template <typename Text>
  requires std::convertible_to<const Text&, std::u16string_view>
  constexpr FormatArgument(const Text& text)  // NOLINT(google-explicit-constructor)
      : text_(text), isText_(true) {}

  bool IsText() const { return isText_; }
  std::int64_t Number() const { return number_; }
  std::u16string_view Text() const { return text_; }

 private:
  std::int64_t number_ = 0;
  std::u16string_view text_;
  bool isText_ = false;
};

inline constexpr std::size_t kFormatLimit = 1024;  // UTF-16 units

// `pattern` with each %d and %ld replaced by a number and each %s by a text, in order, and %% by a
// percent sign; at most `limit` UTF-16 units, never half a surrogate pair. A place whose argument
// is missing or of the other kind, and any other '%', stand as they are written. What a user wrote
// is an argument, never the pattern. Any thread.
std::u16string Format(std::u16string_view pattern, std::initializer_list<FormatArgument> arguments,
                      std::size_t limit = kFormatLimit);

}  // namespace kelpin::res
