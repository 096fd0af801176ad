#include "device/desktop/language_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace kelpin::device::desktop {
namespace {

// "de_AT" of "de_AT.UTF-8@euro".
std::string LanguageOf(const std::string& locale) {
  return locale.substr(0, locale.find_first_of(".@"));
}

// Part of a file's name, so it holds no more than a language's name does.
bool IsLanguage(const std::string& name) {
  return name.size() >= 2 && name.size() <= 16 && std::all_of(name.begin(), name.end(), [](char c) {
           return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                  c == '_';
         });
}

// False at English, behind which nothing is wanted.
bool Add(const std::string& locale, std::vector<std::string>& languages) {
  const std::string language = LanguageOf(locale);
  const std::string plain = language.substr(0, language.find('_'));
  if (plain == "en" || language == "C" || language == "POSIX") {
    return false;
  }
  for (const std::string& name : {language, plain}) {
    if (IsLanguage(name) && std::ranges::find(languages, name) == languages.end()) {
      languages.push_back(name);
    }
  }
  return true;
}

}  // namespace

std::vector<std::string> WantedLanguages(const Environment& environment) {
  std::string locale;
  for (const char* variable : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    if (locale.empty()) {
      locale = environment(variable);
    }
  }
  const std::string language = LanguageOf(locale);
  std::vector<std::string> languages;
  if (language.empty() || language == "C" || language == "POSIX") {
    return languages;
  }
  std::string list = environment("LANGUAGE");
  while (!list.empty()) {
    const std::string first = list.substr(0, list.find(':'));
    list.erase(0, first.size() + 1);
    if (!first.empty() && !Add(first, languages)) {
      return languages;
    }
  }
  Add(locale, languages);
  return languages;
}

std::vector<std::filesystem::path> LanguageFiles(
    const std::vector<std::string>& languages,
    const std::vector<std::filesystem::path>& dataFolders) {
  std::vector<std::filesystem::path> files;
  for (const std::string& language : languages) {
    for (const std::filesystem::path& folder : dataFolders) {
      const std::filesystem::path file = folder / "lang" / (language + ".txt");
      std::error_code error;
      if (std::filesystem::exists(file, error)) {
        files.push_back(file);
      }
    }
  }
  return files;
}

bool ReadDataFile(const std::filesystem::path& file, std::size_t limit, std::string& bytes,
                  std::string& why) {
  // A pipe in the file's place must not hold the program up.
  const int descriptor = ::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  struct stat status = {};
  if (descriptor < 0 || ::fstat(descriptor, &status) != 0) {
    why = std::strerror(errno);
    if (descriptor >= 0) {
      ::close(descriptor);
    }
    return false;
  }
  if (!S_ISREG(status.st_mode)) {
    why = "it is no file";
    ::close(descriptor);
    return false;
  }
  bytes.clear();
  char part[4096];
  ssize_t count = 1;
  while (count > 0 && bytes.size() <= limit) {
    count = ::read(descriptor, part, std::min(sizeof part, limit + 1 - bytes.size()));
    if (count < 0 && errno == EINTR) {
      count = 1;
    } else if (count > 0) {
      bytes.append(part, static_cast<std::size_t>(count));
    }
  }
  if (count < 0) {
    why = std::strerror(errno);
  }
  ::close(descriptor);
  return count >= 0;
}

}  // namespace kelpin::device::desktop
