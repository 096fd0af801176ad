#include "res/language.h"

#include <charconv>
#include <cstdint>
#include <string>
#include <utility>

#include "res/string_table.h"

namespace kelpin::res {
namespace {

constexpr char32_t kInvalid = 0xFFFFFFFF;

// The character that starts at `at`, which is moved behind it; kInvalid when the bytes are none.
char32_t NextCharacter(std::string_view bytes, std::size_t& at) {
  const auto byte = [&](std::size_t index) { return static_cast<std::uint8_t>(bytes[index]); };
  const std::uint8_t first = byte(at++);
  if (first < 0x80) {
    return first;
  }
  const std::size_t more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : 1;
  constexpr char32_t kSmallest[] = {0, 0x80, 0x800, 0x10000};
  if (first < 0xC2 || first > 0xF4 || bytes.size() - at < more) {
    return kInvalid;
  }
  char32_t character = first & (0x3Fu >> more);
  for (std::size_t i = 0; i < more; ++i) {
    const std::uint8_t next = byte(at++);
    if ((next & 0xC0) != 0x80) {
      return kInvalid;
    }
    character = (character << 6) | (next & 0x3Fu);
  }
  const bool surrogate = character >= 0xD800 && character <= 0xDFFF;
  return character < kSmallest[more] || character > 0x10FFFF || surrogate ? kInvalid : character;
}

bool IsControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character < 0xA0);
}

void Append(std::u16string& text, char32_t character) {
  if (character < 0x10000) {
    text.push_back(static_cast<char16_t>(character));
  } else {
    text.push_back(static_cast<char16_t>(0xD7C0 + (character >> 10)));
    text.push_back(static_cast<char16_t>(0xDC00 + (character & 0x3FF)));
  }
}

std::string_view Trim(std::string_view line) {
  const std::size_t first = line.find_first_not_of(' ');
  return first == std::string_view::npos
             ? std::string_view()
             : line.substr(first, line.find_last_not_of(' ') - first + 1);
}

// The text that `written` stands for; false when it is not written as it should be.
bool Unescape(std::string_view written, std::u16string& text) {
  for (std::size_t at = 0; at < written.size();) {
    char32_t character = NextCharacter(written, at);
    if (character == kInvalid || IsControl(character)) {
      return false;
    }
    if (character == U'\\') {
      const char next = at < written.size() ? written[at++] : ' ';
      if (next != 'n' && next != '\\' && next != '"') {
        return false;
      }
      character = next == 'n' ? U'\n' : static_cast<char32_t>(next);
    }
    Append(text, character);
  }
  return true;
}

// What Format fills in, in order: 'd' for a number, 's' for a text.
std::u16string Directives(std::u16string_view pattern) {
  std::u16string directives;
  for (std::size_t at = pattern.find(u'%'); at < pattern.size(); at = pattern.find(u'%', at)) {
    const std::u16string_view rest = pattern.substr(at + 1);
    if (rest.starts_with(u'd') || rest.starts_with(u"ld")) {
      directives.push_back(u'd');
    } else if (rest.starts_with(u's')) {
      directives.push_back(u's');
    }
    at += rest.starts_with(u'%') ? 2 : 1;
  }
  return directives;
}

// Empty when `text` can stand for the English one, else why it cannot.
std::string Refusal(std::u16string_view english, std::u16string_view text) {
  if (english.empty()) {
    return "the program has no such text";
  }
  if (text.empty()) {
    return "it is empty";
  }
  if (text.size() > kLanguageTextLimit) {
    return "it is too long";
  }
  return Directives(text) == Directives(english)
             ? ""
             : "its %d and %s are not those of the English text, in the same order";
}

// A line "ID = text"; false when it is none.
bool ReadLine(std::string_view line, int& id, std::u16string& text) {
  const std::size_t equals = line.find('=');
  if (equals == std::string_view::npos) {
    return false;
  }
  const std::string_view number = Trim(line.substr(0, equals));
  const auto [end, error] = std::from_chars(number.data(), number.data() + number.size(), id);
  return error == std::errc() && end == number.data() + number.size() && id > 0 &&
         Unescape(Trim(line.substr(equals + 1)), text);
}

// A text between quotation marks at the start of `line`, which is cut off it, in both encodings;
// false when there is none.
bool TakeQuoted(std::string_view& line, std::string& text, std::u16string& text16) {
  line = Trim(line);
  std::size_t end = 1;
  while (end < line.size() && line[end] != '"') {
    end += line[end] == '\\' ? 2 : 1;
  }
  if (!line.starts_with('"') || end >= line.size()) {
    return false;
  }
  const std::string_view written = line.substr(1, end - 1);
  line.remove_prefix(end + 1);
  for (std::size_t at = 0; at < written.size(); ++at) {
    const bool escaped = written[at] == '\\';
    at += escaped ? 1 : 0;
    text.push_back(escaped && written[at] == 'n' ? '\n' : written[at]);
  }
  return Unescape(written, text16);
}

struct Saying {
  std::string english;
  std::string text;
  std::u16string english16;
  std::u16string text16;
};

// A line "ENGLISH" = "text"; false when it is none.
bool ReadSaying(std::string_view line, Saying& saying) {
  if (!TakeQuoted(line, saying.english, saying.english16)) {
    return false;
  }
  line = Trim(line);
  if (!line.starts_with('=')) {
    return false;
  }
  line.remove_prefix(1);
  return TakeQuoted(line, saying.text, saying.text16) && Trim(line).empty();
}

// The texts of a file, as its lines are read.
class Reading {
 public:
  explicit Reading(std::vector<std::string>& notes) : notes_(notes) {}

  // False at a line that is none.
  bool Take(std::string_view line, const std::string& where) {
    int id = 0;
    std::u16string text;
    Saying saying;
    if (ReadSaying(line, saying)) {
      const std::string refusal =
          sayings.contains(saying.english) ? kSameAbove : Refusal(saying.english16, saying.text16);
      if (Keep(refusal, where, '"' + saying.english + '"')) {
        sayings.emplace(std::move(saying.english), std::move(saying.text));
      }
    } else if (ReadLine(line, id, text)) {
      const std::string refusal = texts.contains(id) ? kSameAbove : Refusal(EnglishText(id), text);
      if (Keep(refusal, where, std::to_string(id))) {
        texts.emplace(id, std::move(text));
      }
    } else {
      return false;
    }
    return true;
  }

  void NoteAll() {
    if (leftOut_ > kLanguageNoteLimit) {
      notes_.push_back(std::to_string(leftOut_) + " texts are left out in all");
    }
  }

  LanguageTexts texts;
  LanguageSayings sayings;

 private:
  static constexpr const char* kSameAbove = "a line above is for the same text";

  bool Keep(const std::string& refusal, const std::string& where, const std::string& name) {
    if (!refusal.empty() && ++leftOut_ <= kLanguageNoteLimit) {
      notes_.push_back(where + "text " + name + " is left out: " + refusal);
    }
    return refusal.empty();
  }

  std::vector<std::string>& notes_;
  std::size_t leftOut_ = 0;
};

}  // namespace

std::optional<LanguageTexts> ReadLanguage(std::string_view bytes, std::vector<std::string>& notes,
                                          LanguageSayings* sayings) {
  if (bytes.size() > kLanguageFileLimit) {
    notes.push_back("it is longer than " + std::to_string(kLanguageFileLimit) + " bytes");
    return std::nullopt;
  }
  if (bytes.starts_with("\xEF\xBB\xBF")) {
    bytes.remove_prefix(3);
  }
  Reading reading(notes);
  for (std::size_t number = 1; number == 1 || !bytes.empty(); ++number) {
    const std::size_t end = bytes.find('\n');
    std::string_view line = bytes.substr(0, end);
    bytes.remove_prefix(end == std::string_view::npos ? bytes.size() : end + 1);
    if (line.ends_with('\r')) {
      line.remove_suffix(1);
    }
    const std::string where = "line " + std::to_string(number) + ": ";
    if (number == 1) {
      if (line != kLanguageHeader) {
        notes.push_back(where + "\"" + std::string(kLanguageHeader) + "\" is wanted here");
        return std::nullopt;
      }
      continue;
    }
    if (Trim(line).empty() || line.starts_with('#')) {
      continue;
    }
    if (!reading.Take(line, where)) {
      notes.push_back(where +
                      "this is no line \"NUMBER = text\" or \"\"ENGLISH\" = \"text\"\" in UTF-8");
      return std::nullopt;
    }
  }
  reading.NoteAll();
  if (sayings != nullptr) {
    *sayings = std::move(reading.sayings);
  }
  return std::move(reading.texts);
}

}  // namespace kelpin::res
