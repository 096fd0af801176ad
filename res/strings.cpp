#include "res/strings.h"

#include "res/string_table.h"
#include "res/translation.h"

namespace kelpin::res {

std::u16string_view LoadString(int id) {
  return Translated(id, EnglishText(id));
}

}  // namespace kelpin::res
