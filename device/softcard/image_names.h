#pragma once

#include <array>
#include <string_view>

#include "device/softcard/card_image.h"

namespace kelpin::device::softcard {

// The words of the card image and what they stand for.
template <typename Value>
struct ImageWord {
  std::string_view word;
  Value value;
};

inline constexpr std::array<ImageWord<Protocol>, 2> kProtocolWords = {
    {{"T0", Protocol::kT0}, {"T1", Protocol::kT1}}};

inline constexpr std::array<ImageWord<Classes>, 4> kClassesWords = {{{"A0", Classes::kGsm},
                                                                     {"00", Classes::kUicc},
                                                                     {"both", Classes::kBoth},
                                                                     {"first", Classes::kFirst}}};

inline constexpr std::array<ImageWord<Access>, 5> kAccessWords = {{{"ALW", Access::kAlways},
                                                                   {"PIN1", Access::kPin1},
                                                                   {"PIN2", Access::kPin2},
                                                                   {"ADM", Access::kAdm},
                                                                   {"NEV", Access::kNever}}};

inline constexpr std::array<ImageWord<FileKind>, 3> kStructureWords = {
    {{"transparent", FileKind::kTransparent},
     {"linearFixed", FileKind::kLinearFixed},
     {"cyclic", FileKind::kCyclic}}};

template <typename Table, typename Value>
constexpr std::string_view WordFor(const Table& table, Value value) {
  for (const auto& entry : table) {
    if (entry.value == value) {
      return entry.word;
    }
  }
  return {};
}

}  // namespace kelpin::device::softcard
