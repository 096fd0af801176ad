#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace kelpin::contacts {

// Languages that write a name without a separator.
inline constexpr std::uint32_t kLanguageChineseSimplified = 2052;
inline constexpr std::uint32_t kLanguageChineseTraditional = 1028;

// UTF-16 units of a name or number, as the card's interface takes them.
inline constexpr std::size_t kEntryTextLimit = 255;

// What a contact is called in lists and on the card.
struct DisplayName {
  std::u16string text;
  bool ucs2 = false;  // by the language's rule: the card keeps it in two bytes a character
};

// "Last, First", or the one part that there is. In Chinese, when a part has a character above
// U+00FF, the parts stand together and the name is a UCS-2 one.
DisplayName MakeDisplayName(std::u16string_view first, std::u16string_view last,
                            std::uint32_t language);

// At most `units` of a text; no surrogate pair is cut in two.
void CutText(std::u16string& text, std::size_t units);

// A name with its mark as the card of `maxNameLength` takes it.
std::u16string CardName(const DisplayName& name, std::u16string_view mark,
                        std::uint32_t maxNameLength);

// A contact's number as it is dialled: plain digits alone, cut to `maxLength`.
std::u16string CardNumber(std::u16string number, std::size_t maxLength);

// Whether that has all of the number before it is cut: what it leaves out are blanks and the signs
// that stand between digits, not letters or words.
bool KeepsNumber(std::u16string number);

}  // namespace kelpin::contacts
