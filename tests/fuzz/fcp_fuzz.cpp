// Answers to SELECT: the FCP template and the GSM form.
// Links: kelpin_card
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "device/card/file_info.h"

using kelpin::device::card::FileStructure;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> response(data, size);
  static_cast<void>(kelpin::device::card::ParsePinReference(response));
  const auto info = kelpin::device::card::ParseFileInfo(response);
  if (!info) return 0;
  const bool records =
      info->structure == FileStructure::kLinearFixed || info->structure == FileStructure::kCyclic;
  if (records != (info->recordLength != 0)) std::abort();
  if (info->recordCount > kelpin::device::card::kMaxRecords) std::abort();
  // What we tell of the file in the GSM form says the same.
  const auto told = kelpin::device::card::GsmResponse(*info);
  const auto again = kelpin::device::card::ParseFileInfo(told);
  if (!again || again->structure != info->structure || again->fileId != info->fileId) std::abort();
  if (records &&
      (again->recordLength != info->recordLength || again->recordCount != info->recordCount)) {
    std::abort();
  }
  return 0;
}
