#include "res/strings.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <fstream>
#include <map>
#include <regex>
#include <set>
#include <string>
#include <string_view>

#include "res/ids.h"

namespace kelpin::res {
namespace {

struct Expected {
  int id;
  std::u16string_view text;
};

constexpr Expected kExpected[] = {
    {1, u"Info"},
    {2,
     u"Contact(s) successfully added.\n\n - %d new item(s).\n - %d item(s) overwritten.\n - %d "
     u"item(s) already exists."},
    {3, u"Warning"},
    {4, u"The selected items will be permanently deleted from the SIM card.\nContinue?"},
    {6,
     u"When the contact has more than one phone number, copy selected phone numbers into SIM "
     u"card."},
    {7, u"Mobile tel"},
    {8, u"Work tel"},
    {9, u"Home tel"},
    {10, u"Company tel"},
    {11, u"Work2 tel"},
    {12, u"Home2 tel"},
    {13, u"Radio tel"},
    {14, u"Pager"},
    {15, u"Car tel"},
    {16, u"Assistant tel"},
    {17, u"Phone Type"},
    {18, u"Item"},
    {19, u"Description"},
    {20, u"Total phonebook size:"},
    {21, u"No. of phonebook entries:"},
    {22, u"Max. length for name:"},
    {23, u"Max. length for phone number:"},
    {24, u"SMS message storage capacity:"},
    {26, u"Store your personal numbers."},
    {27, u"Edit"},
    {28, u"Menu"},
    {29, u"Erase"},
    {30, u"Refresh"},
    {31, u"#"},
    {32, u"Kelpin"},
    {33, u"Mark"},
    {34, u"Error"},
    {35, u"My No."},
    {36, u"Name"},
    {37, u"Phone"},
    {38, u"Phone number cannot be left empty."},
    {42, u"New"},
    {43, u"SIM Information"},
    {44, u"SIM failure was detected. "},
    {45, u"SIM is busy."},
    {46, u"Inorrect SIM was inserted."},
    {47, u"SIM isn't capable of storing messages. "},
    {48, u"SIM Application Toolkit is busy."},
    {49, u"SIM data download error. "},
    {50, u"SIM isn't inserted into the phone. "},
    {51, u"PH-SIM PIN is required to perform this operation."},
    {52, u"PH-FSIM PIN is required to perform this operation."},
    {53, u"PH-FSIM PUK is required to perform this operation."},
    {54, u"SIM PIN is required to perform this operation."},
    {55, u"SIM PUK is required to perform this operation."},
    {56, u"Incorrect password was supplied."},
    {57, u"SIM PIN2 is required to perform this operation."},
    {58, u"Network Personalization PIN is required to perform this operation."},
    {59, u"Network Personalization PUK is required to perform this operation."},
    {60, u"Network Subset Personalization PIN is required to perform this operation."},
    {61, u"Network Subset Personalization PUK is required to perform this operation."},
    {62, u"Service Provider Personalization PIN is required to perform this operation."},
    {63, u"Service Provider Personalization PUK is required to perform this operation."},
    {64, u"Corporate Personalization PIN is required to perform this operation."},
    {65, u"Corporate Personalization PUK is required to perform this operation."},
    {66, u"The SIM is full. Delete some SIM contacts and try again."},
    {67, u"Invalid storage index was supplied."},
    {68, u"A requested storage entry was not found."},
    {69, u"Storage memory failure."},
    {70, u"Message storage on the SIM is full."},
    {71, u"Storage location is empty."},
    {72, u"SIM isn't yet ready to perform the requested operation. "},
    {73, u"SIM isn't yet ready to perform the requested operation. "},
    {74, u"Buffer too small."},
    {75, u"Requested Short Message Service (SMS) message is not a text message."},
    {76, u"Device doesn't have a SIM."},
    {77, u"There was a network error."},
    {78, u"Mobile error."},
    {79, u"The command is unsupported."},
    {80, u"Bad parameter."},
    {81, u"Undetermined error."},
    {82, u"The Radio is not present."},
    {83, u"The phone function is disabled. Please turn on the phone function first in Relaydeck."},
    {84, u"An error occurs."},
    {85, u"for Pocket PC"},
    {86, u"for Smartphone"},
    {87, u"Version %s"},
    {91, u"Maximum length for names has been exceeded."},
    {92, u"Maximum length for phone numbers has been exceeded."},
    {93, u"Save to Contacts"},
    {94, u"Delete"},
    {95, u"Call"},
    {96, u"Name:"},
    {97, u"Phone Number:"},
    {98, u"Phone Type:"},
    {99, u"Mark:"},
    {100, u"The selected items will be permanently deleted from the Contacts.\nContinue?"},
    {102, u"Service dialing numbers:"},
    {104, u"Cut"},
    {105, u"Copy"},
    {106, u"Paste"},
    {107, u"Clear"},
    {108, u"Select All"},
    {109, u"No.:"},
    {110, u"Phone Number 2:"},
    {111, u"E-mail:"},
    {112, u"<Not available>"},
    {113, u"Failed to update Phone Number 2 field."},
    {114, u"Failed to update Email field."},
    {115, u"Address book data is updated. Please check."},
    {116, u"\"%s\" already exists in Contacts. Do you want to overwrite it?"},
    {117, u"Apply to all"},
    {120, u"\"%s\" already exists in SIM card. Do you want to overwrite it?"},
    {121, u"Contacts successfully added.\n\n - %d new item(s).\n - %d item(s) already exists."},
    {122, u"Phone Number 3:"},
    {123, u"Failed to update Phone Number 3 field."},
    {125, u"Edit..."},
    {126, u"Call..."},
    {127, u"Send..."},
    {130,
     u"Not all \"%s\" phone(s) and email(s) could be copied. Do you want to proceed?\n\nYes: Still "
     u"copy this contact and continue\nNo: Skip the current contact, continue from the next "
     u"contact"},
    {131, u"New SIM Card Inserted"},
    {132, u"Do you want to copy SIM card entries to your Contacts?"},
    {133, u"Edit Phone No. Name"},
    {134, u"Edit Group Name"},
    {135, u"<Default>"},
    {136, u"Group:"},
    {137, u"<No Group>"},
    {138, u"Nickname:"},
    {139, u"Failed to update Nickname field."},
    {140, u"..."},
    {141, u"Contact"},
    {143,
     u"If you move the current contact, \u201C%s\u201D, to the SIM card, at most only two phone "
     u"numbers and one e-mail address can be stored on the SIM card.\n\nTap Yes to move this "
     u"contact to the SIM card, or tap No to skip to the next contact."},
    {144, u"2nd phone number storage capacity:"},
    {145, u"E-mail address storage capacity:"},
    {146,
     u"For contact names over 16 bytes long, only the first 16 bytes of the name will be copied to "
     u"the SIM."},
    {147, u"Warning"},
    {148, u"%d of %d contacts copied."},
};

// Numbers of the table that stand for no text.
constexpr int kWithoutText[] = {5,   25,  39,  40,  41,  88,  89,  90,
                                101, 103, 118, 119, 124, 128, 129, 142};

TEST(Strings, EveryTextIsTheOneOfItsNumber) {
  for (const Expected& expected : kExpected) {
    EXPECT_TRUE(LoadString(expected.id) == expected.text) << "string " << expected.id;
  }
}

TEST(Strings, ANumberWithoutTextLoadsNothing) {
  for (const int id : kWithoutText) {
    EXPECT_TRUE(LoadString(id).empty()) << "string " << id;
  }
}

TEST(Strings, TheTableAccountsForEveryNumberFrom1To148) {
  std::set<int> numbers(std::begin(kWithoutText), std::end(kWithoutText));
  for (const Expected& expected : kExpected) {
    EXPECT_TRUE(numbers.insert(expected.id).second) << expected.id << " stands twice";
  }
  EXPECT_EQ(numbers.size(), 148u);
  EXPECT_EQ(*numbers.begin(), 1);
  EXPECT_EQ(*numbers.rbegin(), 148);
}

TEST(Strings, UnknownNumbersLoadNothing) {
  for (const int id : {0, -1, 149, 1000, kTextFirst - 1, kTextLast + 1, 0x7FFFFFFF, -0x7FFFFFFF}) {
    EXPECT_TRUE(LoadString(id).empty()) << "string " << id;
  }
}

TEST(Strings, TextsKeepTheirTrailingBlanks) {
  for (const int id : {44, 47, 49, 50, 72, 73}) {
    ASSERT_FALSE(LoadString(id).empty());
    EXPECT_EQ(LoadString(id).back(), u' ') << "string " << id;
  }
}

TEST(Strings, BothNotReadyCodesReadTheSame) {
  EXPECT_EQ(LoadString(72), LoadString(73));
}

TEST(Strings, TextsOfOurOwnAreThereAndAreNotRepeated) {
  std::map<std::u16string_view, int> seen;
  for (int id = kTextFirst; id <= kTextLast; ++id) {
    EXPECT_FALSE(LoadString(id).empty()) << "text " << id;
    // The heading over the PIN says what the list says behind it.
    if (id != kTextPinTitle) {
      EXPECT_TRUE(seen.emplace(LoadString(id), id).second) << "text " << id << " stands twice";
    }
  }
}

TEST(Strings, AnAbsentCardAndAnEmptyOneSayWhatToDoNext) {
  EXPECT_TRUE(LoadString(kTextReadingCardProgress) == u"Reading the card\u2026 %d of %d");
  EXPECT_TRUE(LoadString(kTextNoEntries) == u"No entries on this card");
  EXPECT_TRUE(LoadString(kTextNoEntriesHint) ==
              u"Press New to add one, or Contacts to SIM... in the menu.");
  EXPECT_TRUE(LoadString(kTextNoCard) == u"No SIM card");
}

// Every name of a group in ids.h, with its number.
std::map<std::string, int> NamesOf(const std::string& prefix) {
  std::ifstream file(KELPIN_SOURCE_DIR "/res/ids.h");
  EXPECT_TRUE(file.is_open());
  const std::regex constant("^inline constexpr int (" + prefix + "[A-Za-z0-9]+) = (\\w+);.*");
  std::map<std::string, int> names;
  std::string line;
  while (std::getline(file, line)) {
    std::smatch match;
    if (std::regex_match(line, match, constant)) {
      names.emplace(match[1], std::stoi(match[2], nullptr, 0));
    }
  }
  for (const char* bound : {"kStringFirst", "kStringLast", "kTextFirst", "kTextLast"}) {
    names.erase(bound);
  }
  return names;
}

void ExpectDifferentNumbers(const std::map<std::string, int>& names) {
  std::map<int, std::string> seen;
  for (const auto& [name, number] : names) {
    const auto [other, added] = seen.emplace(number, name);
    EXPECT_TRUE(added) << name << " and " << other->second << " are both " << number;
  }
}

TEST(Ids, EveryStringNameHasANumberOfItsOwnAndAText) {
  std::map<std::string, int> names = NamesOf("kString");
  EXPECT_EQ(names.size(), std::size(kExpected));
  ExpectDifferentNumbers(names);
  for (const auto& [name, number] : names) {
    EXPECT_FALSE(LoadString(number).empty()) << name;
  }
  names = NamesOf("kText");
  EXPECT_EQ(names.size(), static_cast<std::size_t>(kTextLast - kTextFirst + 1));
  ExpectDifferentNumbers(names);
  for (const auto& [name, number] : names) {
    EXPECT_FALSE(LoadString(number).empty()) << name;
  }
}

TEST(Ids, DialogsAndBarsAndDrawingsHaveNumbersOfTheirOwn) {
  std::map<std::string, int> all = NamesOf("kDialog");
  EXPECT_EQ(all.size(), 24u);
  const std::map<std::string, int> bars = NamesOf("kBar");
  EXPECT_EQ(bars.size(), 23u);
  all.insert(bars.begin(), bars.end());
  all.emplace("kPictureAbout", kPictureAbout);
  all.emplace("kIconApplication", kIconApplication);
  ExpectDifferentNumbers(all);
}

TEST(Ids, CommandsOfTheMainListHaveNumbersOfTheirOwn) {
  ExpectDifferentNumbers(NamesOf("kCommand"));
}

TEST(Ids, FilteredFieldsAreToldApartByTheirNumberAlone) {
  EXPECT_EQ(kNewEmail, 1064);
  EXPECT_EQ(kEditEmail, 1060);
  EXPECT_EQ(kOwnNumberNumber, 1026);
}

}  // namespace
}  // namespace kelpin::res
