#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "device/card/card_layout.h"

namespace kelpin::device::card {

// Clients of the radio interface decode texts by themselves, and read the GSM alphabet and the form
// of UCS-2 that begins with 80. A text that another telephone wrote in one of the shorter forms is
// told to them in a form they read, and stays on the card as it is until they write another one.

// The text at the start of a file's records.
struct ShownText {
  std::size_t length = 0;     // bytes
  std::size_t wideLimit = 0;  // characters of UCS-2 that the clients write into it
  bool gsmAlone = false;      // they show no other characters there
};

// After a successful Load of the file. Nothing for a file whose records clients read no text from.
std::optional<ShownText> FindShownText(const CardLayout& layout, const RecordFile& file);

// What a client is told of a record.
std::vector<std::uint8_t> ToldRecord(const ShownText& text, std::span<const std::uint8_t> record);

// What goes to the card where a record is `held` and a client wants it to be `wanted`: the text as
// it is held where the client wants the one it was told.
std::vector<std::uint8_t> WantedRecord(const ShownText& text, std::span<const std::uint8_t> held,
                                       std::span<const std::uint8_t> wanted);

}  // namespace kelpin::device::card
