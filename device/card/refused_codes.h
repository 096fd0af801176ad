#pragma once

#include <cstddef>
#include <cstdint>
#include <set>
#include <span>
#include <string_view>

namespace kelpin::device::card {

// Which codes which card has refused, for as long as the program runs. Neither codes nor cards are
// kept, but a number made of both and of another that is drawn anew at each start.
class RefusedCodes {
 public:
  enum class Kind : std::uint8_t { kPin, kPuk };

  RefusedCodes();

  // `card` is what tells it from others; cards that do not tell are taken for one.
  void Add(std::span<const std::uint8_t> card, Kind kind, std::string_view code);
  void Remove(std::span<const std::uint8_t> card, Kind kind, std::string_view code);
  bool Has(std::span<const std::uint8_t> card, Kind kind, std::string_view code) const;

 private:
  std::uint64_t Digest(std::span<const std::uint8_t> card, Kind kind, std::string_view code) const;

  std::uint64_t salt_;
  std::set<std::uint64_t> digests_;
};

}  // namespace kelpin::device::card
