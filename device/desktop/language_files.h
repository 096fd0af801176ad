#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

#include "device/desktop/xdg.h"

namespace kelpin::device::desktop {

// The languages that the user's locale asks for before English, the best one first: of
// "de_AT.UTF-8" they are "de_AT" and "de". LC_ALL counts before LC_MESSAGES, and that before LANG;
// with one of them set to more than "C" the list in LANGUAGE comes first.
std::vector<std::string> WantedLanguages(const Environment& environment = ProcessEnvironment);

// The files "lang/LANGUAGE.txt" there are below the data folders, the best language first.
std::vector<std::filesystem::path> LanguageFiles(
    const std::vector<std::string>& languages,
    const std::vector<std::filesystem::path>& dataFolders);

// What is in the file, up to `limit` bytes and one more when it is longer. False when it is none
// that can be read; `why` says why.
[[nodiscard]] bool ReadDataFile(const std::filesystem::path& file, std::size_t limit,
                                std::string& bytes, std::string& why);

}  // namespace kelpin::device::desktop
