#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "device/card/card_layout.h"

namespace kelpin::device::card {

// Clients of the radio interface know one EF_EXT1. Where sets have one each, the records of all are
// told to them as those of one file, counted through.

// Byte of EF_ANR that names an EF_EXT1 record.
inline constexpr std::size_t kNumberExtension = 14;

// The set whose second or third numbers a file holds, where they refer to one of several EF_EXT1;
// null otherwise.
const PhonebookSet* FindNumbers(const CardLayout& layout, const RecordFile& file);

// How many records of other files stand before the set's EF_EXT1.
std::uint32_t ExtensionsBefore(const CardLayout& layout, const PhonebookSet& set);

// What a client is told of a byte that refers to a record of the set's EF_EXT1. A record that is
// not there stays none that is.
std::uint8_t ToldExtension(const CardLayout& layout, const PhonebookSet& set, std::uint8_t held);

// The byte that a client's reference stands for. Nothing for a record of another set's EF_EXT1.
std::optional<std::uint8_t> HeldExtension(const CardLayout& layout, const PhonebookSet& set,
                                          std::uint8_t told);

}  // namespace kelpin::device::card
