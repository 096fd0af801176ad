// Language files: what is read fits the program's own texts.
// Links: kelpin_res
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "res/format.h"
#include "res/language.h"
#include "res/string_table.h"

using namespace kelpin::res;  // NOLINT: one function

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::vector<std::string> notes;
  const auto texts =
      ReadLanguage(std::string_view(reinterpret_cast<const char*>(data), size), notes);
  if (notes.size() > kLanguageNoteLimit + 2) std::abort();
  if (!texts.has_value()) {
    if (notes.empty()) std::abort();
    return 0;
  }
  for (const auto& [id, text] : *texts) {
    if (EnglishText(id).empty() || text.empty() || text.size() > kLanguageTextLimit) std::abort();
    if (Format(text, {std::u16string_view(u"a"), std::u16string_view(u"b")}).size() >
        kFormatLimit) {
      std::abort();
    }
  }
  return 0;
}
