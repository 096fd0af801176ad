// Entries that other telephones left on the card, in forms that this program would not write: what
// is read of them can be given back, and they can be changed and deleted.
#include <gtest/gtest.h>

#include <string>

#include "device/card/extension_file.h"
#include "device/card/sim_service.h"
#include "tests/card/radio_client.h"
#include "tests/card/sim_client.h"
#include "tests/card/soft_card.h"

namespace kelpin::device::card {
namespace {

using platform::SimResult;

constexpr std::uint32_t kPlaces = 4;  // locations with the same entry
constexpr std::size_t kAlpha = 24;
constexpr std::size_t kRecord = 38;

// A card that nobody else has, with the same entry at its first locations.
class OtherForm {
 public:
  OtherForm(const std::string& alpha, const std::string& number, const ImageChange& more = nullptr)
      : card_("usim", [&](nlohmann::json& image) {
          const std::string record = Padded(Padded(alpha, kAlpha) + number, kRecord);
          for (std::uint32_t place = 1; place <= kPlaces; ++place) {
            SetImageRecord(image, {"7F10", "5F3A", "4F3A"}, place, record);
          }
          if (more) more(image);
        }) {}

  // As the SIM interface tells it.
  platform::SimPhonebookEntry Read(std::uint32_t place = 1) {
    platform::SimPhonebookEntry entry;
    EXPECT_EQ(sim_.Read(place, entry), SimResult::kOk);
    return entry;
  }
  // As the list shows it: the radio tells the digits, and of the '+' in the address type.
  platform::SimPhonebookEntry Listed(std::uint32_t place = 1) {
    const auto result = radio_.ReadEntries(place, place);
    const auto entries = RadioClient::Records<platform::RilPhonebookEntry>(result);
    EXPECT_EQ(entries.size(), 1U);
    if (entries.empty()) return {};
    std::u16string number = entries[0].address;
    if (entries[0].addressType == platform::kAddressTypeInternational) number.insert(0, 1, u'+');
    return SimClient::Entry(entries[0].text, number.substr(0, platform::kSimTextLength - 1));
  }
  // As an editor saves where the name alone was edited, or the number alone.
  void ExpectRenamed(const std::string& alpha, const std::string& number) {
    const platform::SimPhonebookEntry known = Read();
    EXPECT_EQ(sim_.WriteKnown(1, u"New", known.address, known), SimResult::kOk);
    EXPECT_EQ(Record(), Padded(Padded(alpha, kAlpha) + number, kRecord));
  }
  void ExpectNumbered(const std::u16string& to, const std::string& number) {
    const platform::SimPhonebookEntry known = Read();
    EXPECT_EQ(sim_.WriteKnown(1, known.text, to, known), SimResult::kOk);
    EXPECT_EQ(Record().substr(2 * kAlpha), Padded(number, kRecord - kAlpha));
  }
  // Whichever of the two the user has seen.
  void ExpectOpenToChange() {
    EXPECT_EQ(sim_.WriteKnown(1, u"Changed", u"5", Read(1)), SimResult::kOk);
    EXPECT_EQ(sim_.WriteKnown(2, u"Changed", u"5", Listed(2)), SimResult::kOk);
    EXPECT_EQ(sim_.DeleteKnown(3, Read(3)), SimResult::kOk);
    EXPECT_EQ(sim_.DeleteKnown(4, Listed(4)), SimResult::kOk);
    EXPECT_EQ(sim_.Text(1), u"Changed|5");
    EXPECT_EQ(sim_.Text(2), u"Changed|5");
    EXPECT_EQ(sim_.Text(3), u"!88000345");
    EXPECT_EQ(sim_.Text(4), u"!88000345");
  }

 private:
  std::string Record() {
    nlohmann::json image = card_.Image();
    return ImageRecord(image, {"7F10", "5F3A", "4F3A"}, 1);
  }
  static std::string Padded(std::string hex, std::size_t bytes) {
    while (hex.size() < 2 * bytes) hex += "FF";
    return hex;
  }

  SoftCard card_;
  SimService service_{card_.Channel()};
  SimClient sim_{service_};
  RadioClient radio_{service_};
};

// Its '+' has no place of its own: what is read has none, the list puts it in front.
TEST(OtherForms, AnInternationalServiceNumberOfOneRun) {
  OtherForm form("426F78", "04911A32F4");  // *1234
  EXPECT_EQ(std::u16string(form.Read().address), u"*1234");
  EXPECT_EQ(std::u16string(form.Listed().address), u"+*1234");
  form.ExpectOpenToChange();
}

// Its type is not shown, so that the name alone changes.
TEST(OtherForms, AnInternationalServiceNumberStaysOneWhenItIsNotEdited) {
  OtherForm form("426F78", "04911A32F4");
  form.ExpectRenamed("4E6577", "04911A32F4");
}

TEST(OtherForms, AServiceNumberThatIsEditedIsWhatWasTyped) {
  OtherForm form("426F78", "04911A32F4");
  form.ExpectNumbered(u"*12345", "04811A3254");
  form.ExpectNumbered(u"+*12345", "04911A3254");
}

// *21*1234#: read with the '+' before the second run, listed with it in front.
TEST(OtherForms, AnInternationalServiceNumberOfTwoRuns) {
  OtherForm("426F78", "069112A12143FB").ExpectOpenToChange();
}

// The list shows no more than the '+' of it.
TEST(OtherForms, AnInternationalNumberWithoutDigits) {
  OtherForm form("426F78", "0291FF");
  EXPECT_EQ(std::u16string(form.Read().address), u"");
  form.ExpectOpenToChange();
}

TEST(OtherForms, AWildDigitAndAPause) {
  OtherForm form("426F78", "038121DC");
  EXPECT_EQ(std::u16string(form.Read().address), u"12p?");
  form.ExpectOpenToChange();
}

TEST(OtherForms, ANumberOfAnotherPlanOrOfTheNation) {
  OtherForm("426F78", "03A12143").ExpectOpenToChange();
  OtherForm("426F78", "03892143").ExpectOpenToChange();
}

TEST(OtherForms, ANameWithBlanksAtItsEnds) {
  OtherForm form("20426F782020", "028121");
  EXPECT_EQ(std::u16string(form.Read().text), u" Box  ");
  form.ExpectOpenToChange();
}

// Half of a character outside the first plane, and a character that is none.
TEST(OtherForms, ANameInDamagedUcs2) {
  OtherForm form("800041D83D000000420043", "028121");
  EXPECT_EQ(std::u16string(form.Read().text), u"A\uFFFDBC");
  form.ExpectOpenToChange();
}

TEST(OtherForms, ANameInUcs2ThatGsmCouldHold) {
  OtherForm("800042006F0078", "028121").ExpectOpenToChange();
}

TEST(OtherForms, ANameOfBytesThatAreNoCharacters) {
  OtherForm("42C86F1B7841", "028121").ExpectOpenToChange();
}

TEST(OtherForms, ANumberAlone) {
  OtherForm("", "028121").ExpectOpenToChange();
}

TEST(OtherForms, ANumberWhoseRestIsNowhere) {
  OtherForm("426F78", "0B8121436587092143658709FF05").ExpectOpenToChange();  // free
  OtherForm("426F78", "0B8121436587092143658709FFC8").ExpectOpenToChange();  // no such record
}

// Thirteen records of twenty digits behind the entry's own.
TEST(OtherForms, ANumberOfMoreDigitsThanAreKept) {
  const auto chain = [](nlohmann::json& image) {
    const std::string next[] = {"06", "07", "08", "09", "0A", "0B", "0C",
                                "0D", "0E", "0F", "10", "11", "FF"};
    std::size_t record = 5;
    for (const std::string& following : next) {
      SetImageRecord(image, {"7F10", "5F3A", "4F80"}, record++,
                     "020A21436587092143658709" + following);
    }
  };
  const std::string number = "0B9121436587092143658709FF05";
  // With its '+' it fits a text of 255.
  OtherForm form("426F78", number, chain);
  EXPECT_EQ(std::u16string(form.Read().address).size(), kMostDigits + 1);
  form.ExpectOpenToChange();
}

}  // namespace
}  // namespace kelpin::device::card
