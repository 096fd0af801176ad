#include "editor/name_records.h"

#include <array>
#include <span>
#include <utility>
#include <vector>

#include "editor/name_list_state.h"
#include "sim/sim_text.h"

namespace kelpin::editor {
namespace {

constexpr std::uint8_t kErased = 0xFF;

}  // namespace

bool NameRecords::Read(std::uint32_t id, std::u16string& name) const {
  std::vector<std::uint8_t> response;
  if (!book_.ReadExtRecord(file_.file, id, response)) {
    return false;
  }
  std::u16string text;
  sim::DecodeAlphaRaw(response, text, Length(), kNameRoom - 1, 0);
  name = std::move(text);
  return true;
}

bool NameRecords::Write(std::uint32_t id, std::u16string& name) const {
  const std::size_t length = Length();
  std::array<std::uint8_t, sim::kAlphaWorkSize> work;
  if (length > work.size()) {
    return false;
  }
  work.fill(kErased);
  std::size_t written = 0;
  // The encoder takes a UCS-2 text for an even size; the byte before the characters makes an odd
  // one hold as many.
  sim::EncodeAlpha(name, work, length + length % 2, sim::kAlphaAutomatic, written);
  return book_.WriteExtRecord(file_.file, id, std::span(work).first(length));
}

}  // namespace kelpin::editor
