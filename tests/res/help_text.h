#pragma once

#include <string>
#include <string_view>

#include "platform/utf8.h"

namespace kelpin::res {

// A text as the help shows it: "..." for what is filled in, a blank for line breaks, no blank at
// the end. Every character of the texts is in the basic plane.
inline std::string AsInHelp(std::u16string_view text) {
  std::string shown;
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (text.substr(at, 2) == u"%d" || text.substr(at, 2) == u"%s") {
      shown += "...";
      ++at;
    } else if (text[at] == u'\n' || text[at] == u' ') {
      if (!shown.ends_with(' ')) shown += ' ';
    } else if (text[at] == u'<' || text[at] == u'>') {
      shown += text[at] == u'<' ? "&lt;" : "&gt;";
    } else {
      AppendUtf8(text[at], shown);
    }
  }
  shown.erase(shown.find_last_not_of(' ') + 1);
  return shown;
}

// Whether the page lists it among its messages, word for word.
inline bool NamesMessage(const std::string& page, const std::string& text) {
  return page.find("<td>" + text + "<") != std::string::npos ||
         page.find("<br>" + text + "<") != std::string::npos;
}

}  // namespace kelpin::res
