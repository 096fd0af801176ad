#include "device/card/refused_codes.h"

#include <random>

namespace kelpin::device::card {
namespace {

// Mixes one more byte into the sum (the finishing step of SplitMix64).
std::uint64_t Mix(std::uint64_t sum, std::uint8_t byte) {
  sum = (sum ^ byte) + 0x9E3779B97F4A7C15;
  sum = (sum ^ (sum >> 30)) * 0xBF58476D1CE4E5B9;
  sum = (sum ^ (sum >> 27)) * 0x94D049BB133111EB;
  return sum ^ (sum >> 31);
}

}  // namespace

RefusedCodes::RefusedCodes() {
  std::random_device device;
  salt_ = (std::uint64_t{device()} << 32) | device();
}

std::uint64_t RefusedCodes::Digest(std::span<const std::uint8_t> card, Kind kind,
                                   std::string_view code) const {
  std::uint64_t sum = Mix(salt_, static_cast<std::uint8_t>(kind));
  sum = Mix(sum, static_cast<std::uint8_t>(card.size()));
  for (const std::uint8_t byte : card) sum = Mix(sum, byte);
  for (const char digit : code) sum = Mix(sum, static_cast<std::uint8_t>(digit));
  return sum;
}

void RefusedCodes::Add(std::span<const std::uint8_t> card, Kind kind, std::string_view code) {
  digests_.insert(Digest(card, kind, code));
}

void RefusedCodes::Remove(std::span<const std::uint8_t> card, Kind kind, std::string_view code) {
  digests_.erase(Digest(card, kind, code));
}

bool RefusedCodes::Has(std::span<const std::uint8_t> card, Kind kind, std::string_view code) const {
  return digests_.count(Digest(card, kind, code)) != 0;
}

}  // namespace kelpin::device::card
