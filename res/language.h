#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::res {

// Limits of a language file; one that is beyond them is not used.
inline constexpr std::size_t kLanguageFileLimit = 256u << 10;  // bytes
inline constexpr std::size_t kLanguageTextLimit = 600;         // UTF-16 units of one text
inline constexpr std::size_t kLanguageNoteLimit = 20;          // texts left out that are named

inline constexpr std::string_view kLanguageHeader = "KELPIN LANGUAGE 1";

// Texts by their `kString…` or `kText…` id.
using LanguageTexts = std::map<int, std::u16string>;

// What adapters say, which has no ids: by the English text, all in UTF-8.
using LanguageSayings = std::map<std::string, std::string, std::less<>>;

// Reads a language file: UTF-8, the header line, then lines "ID = text" in which "\n" is a line
// break and "\\" a backslash, lines "\"English\" = \"text\"" in which a quotation mark is "\\\"" as
// well, blank lines and lines that begin with '#'. Nothing when the file is broken; `notes` then
// says where and why. A text that cannot stand in for the English one, because nobody asks for its
// id, it is empty or too long, or its %d and %s are others, is left out and noted. `sayings` may be
// null.
std::optional<LanguageTexts> ReadLanguage(std::string_view bytes, std::vector<std::string>& notes,
                                          LanguageSayings* sayings = nullptr);

// From now on the program's texts are `texts`, and English where there is none: those of LoadString
// and those of dialogs, soft-key bars and menus. No texts at all is English. Called before anything
// has asked for a text, or when nothing holds one any more; not with other threads about.
void UseLanguage(LanguageTexts texts);

}  // namespace kelpin::res
