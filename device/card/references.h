#pragma once

#include <cstdint>

#include "device/card/card_layout.h"
#include "device/card/card_result.h"
#include "device/card/extension_file.h"

namespace kelpin::device::card {

// Which records of the files beside the entries anything refers to. A change that was cut short may
// leave one behind that is in use by its content, and that nothing refers to: it is free.

// The records of `file` that EF_IAP of any entry refers to; everything where an EF_IAP that should
// tell cannot. False, with `linked` untouched, for a file that is not of type 2 alone.
bool LinkedRecords(CardLayout& layout, const RecordFile& file, RecordSet& linked);

// The records of an EF_EXT1 that any number refers to, but for the one of the entry at `except`
// (null: all of them). Looks no further once all of `wanted` are found.
CardResult ExtensionReferences(CardLayout& layout, RecordFile& ext1, const EntryPlace* except,
                               const RecordSet& wanted, RecordSet& referenced);

}  // namespace kelpin::device::card
