// Records of the phone-book reference file.
// Links: kelpin_card
#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "device/card/pbr.h"

using kelpin::device::card::PbrTag;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto set = kelpin::device::card::ParsePbrRecord({data, size});
  if (!set) return 0;
  if (set->Find(PbrTag::kAdn) == nullptr) std::abort();
  if (set->files.size() > size / 4) std::abort();  // tag, length, file id
  for (const auto& file : set->files) {
    if (file.fileId == kelpin::device::card::kNoFileId) continue;  // named, and not there
    if (set->Find(file.tag) == nullptr || set->FindLast(file.tag) == nullptr) std::abort();
  }
  return 0;
}
