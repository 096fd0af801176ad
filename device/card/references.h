#pragma once

#include <cstdint>

#include "device/card/card_layout.h"
#include "device/card/card_result.h"
#include "device/card/extension_file.h"

namespace kelpin::device::card {

// Which records of the files beside the entries anything refers to. A change that was cut short may
// leave one behind that is in use by its content, and that nothing refers to: it is free.

// Whether the records of `file` belong to entries through EF_IAP, in every set that names it.
bool IsLinkedFile(const CardLayout& layout, const RecordFile& file);

// The records of `file` that EF_IAP of any entry refers to; everything where an EF_IAP that should
// tell cannot. False, with `linked` untouched, for a file that is not of type 2 alone.
bool LinkedRecords(CardLayout& layout, const RecordFile& file, RecordSet& linked);

// Whether no EF_IAP refers to a record of `file`. What is known of the card is looked at first, so
// that one whose entry was just read costs nothing. False where an EF_IAP cannot tell.
bool IsUnlinked(CardLayout& layout, const RecordFile& file, std::uint8_t record);

// A record that reads as in use and is free: no entry refers to it. Looked for only where no record
// of the file is free by its content, for it costs a command for each entry with such fields.
bool IsLeftBehind(CardLayout& layout, RecordFile& file, std::uint8_t record);

// The records of an EF_EXT1 that any number refers to, but for the one of the entry at `except`
// (null: all of them). Looks no further once all of `wanted` are found.
CardResult ExtensionReferences(CardLayout& layout, RecordFile& ext1, const EntryPlace* except,
                               const RecordSet& wanted, RecordSet& referenced);

}  // namespace kelpin::device::card
