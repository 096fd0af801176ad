#include "res/strings.h"

#include "res/string_table.h"

namespace kelpin::res {

// The one way from an id to its text: a translated table would be looked up here.
std::u16string_view LoadString(int id) {
  return EnglishText(id);
}

}  // namespace kelpin::res
