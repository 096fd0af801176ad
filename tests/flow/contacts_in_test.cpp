#include <gmock/gmock.h>

#include "tests/card/soft_card.h"
#include "tests/flow/card_program.h"

// Contacts to the card and back out of Contacts, down to the card's files.
namespace kelpin::contacts {
namespace {

using device::card::SoftCard;
using platform::ContactProperty;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kCopy = 318;
constexpr int kMove = 1108;

class ContactsInTest : public testing::Test {
 protected:
  // Name, number, second number, e-mail.
  void Add(std::u16string_view name, std::u16string_view number, std::u16string_view number2 = u"",
           std::u16string_view email = u"") {
    test::FakeContact contact;
    contact[ContactProperty::kLastName] = name;
    contact[ContactProperty::kMobileTelephoneNumber] = number;
    contact[ContactProperty::kHomeTelephoneNumber] = number2;
    contact[ContactProperty::kEmail1Address] = email;
    store.Insert(contact);
  }

  test::Journal journal;
  test::FailPlan failures;
  test::FakeContacts store{journal, failures};
  SoftCard card{"usim-empty"};
};

TEST_F(ContactsInTest, AContactIsOnTheCardWithItsSecondNumberAndEmail) {
  Add(u"Zo\u00EB", u"+49 (30) 12", u"+4930231251231234567890123", u"zoe@example.org");
  {
    CardProgram program(card.Channel(), store);
    program.SetSwitch(u"CToSim_Type", 2);
    program.Open();
    program.Copy(kMove);
    EXPECT_THAT(program.BoxTexts(),
                ElementsAre(u"Contact(s) successfully added.\n\n - 1 new item(s).\n - 0 item(s) "
                            u"overwritten.\n - 0 item(s) already exists."));
  }
  EXPECT_THAT(store.Contacts(), IsEmpty());
  CardProgram again(card.Channel(), store);
  again.Open();
  EXPECT_THAT(again.Rows(), ElementsAre(u"Zo\u00EB|+493012"));
  const std::uint32_t index = again.Find(u"Zo\u00EB");
  EXPECT_EQ(again.Number2(index), u"+4930231251231234567890123");
  EXPECT_EQ(again.Email(index), u"zoe@example.org");
}

TEST_F(ContactsInTest, AnOverwriteReplacesAndClearsTheExtendedFields) {
  Add(u"Ann", u"1", u"22", u"ann@example.org");
  Add(u"Bob", u"3", u"44", u"bob@example.org");
  CardProgram program(card.Channel(), store);
  program.SetSwitch(u"CToSim_Type", 2);
  program.Open();
  program.Copy(kCopy);
  const std::uint32_t ann = program.Find(u"Ann");
  const std::uint32_t bob = program.Find(u"Bob");
  ASSERT_EQ(program.Email(ann), u"ann@example.org");
  program.screen.ScriptEveryDialog(356, [](ui::Dialog& box) { box.Command(360); });

  // One entry for each number knows of no further fields: an overwrite takes them away.
  program.state.settings.CToSim_Type = 0;
  program.Copy(kCopy);
  EXPECT_THAT(program.Rows(), ElementsAre(u"Ann|1", u"Bob|3"));
  EXPECT_EQ(program.Number2(ann), u"");
  EXPECT_EQ(program.Email(ann), u"");
  EXPECT_EQ(program.Number2(bob), u"");

  program.state.settings.CToSim_Type = 2;
  program.Copy(kCopy);
  EXPECT_EQ(program.Number2(ann), u"22");
  EXPECT_EQ(program.Email(bob), u"bob@example.org");
}

TEST_F(ContactsInTest, AFieldThatIsSwitchedOffIsNeitherWrittenNorCleared) {
  Add(u"Ann", u"1", u"22", u"ann@example.org");
  CardProgram program(card.Channel(), store);
  program.SetSwitch(u"CToSim_Type", 2);
  program.Open();
  program.Copy(kCopy);
  const std::uint32_t ann = program.Find(u"Ann");
  program.screen.ScriptEveryDialog(356, [](ui::Dialog& box) { box.Command(360); });
  program.state.settings.Disable_ANR = 1;
  program.state.settings.Disable_EMAIL = 1;
  program.state.settings.CToSim_Type = 0;
  program.Copy(kCopy);
  EXPECT_EQ(program.Number2(ann), u"22");
  EXPECT_EQ(program.Email(ann), u"ann@example.org");
}

TEST_F(ContactsInTest, AnEmailIsCutToTheCardsRecord) {
  Add(u"Ann", u"1", u"", std::u16string(100, u'e'));
  CardProgram program(card.Channel(), store);
  program.SetSwitch(u"CToSim_Type", 2);
  program.Open();
  const sim::SlotLayout file = program.state.extPhonebook.SlotInUse(0, sim::FieldSlot::kEmail);
  ASSERT_EQ(file.fileClass, sim::kClassType2);  // so that two bytes are the link to the entry
  program.Copy(kCopy);
  EXPECT_EQ(program.Email(program.Find(u"Ann")), std::u16string(file.recordLength - 2, u'e'));
}

// The card's e-mail file with a record for each entry.
TEST_F(ContactsInTest, AnEmailFillsTheRecordThatHasNoLinkBehindIt) {
  SoftCard parallel("usim-empty", [](nlohmann::json& image) {
    // Its tag goes from the files that are linked (A9) to those side by side with the entries (A8).
    for (nlohmann::json& record :
         device::card::ImageFile(image, {"7F10", "5F3A", "4F30"})["records"]) {
      std::string hex = record.is_string() ? record.get<std::string>() : "";
      const std::size_t linked = hex.find("A908CA024F");
      if (linked == std::string::npos) continue;
      const std::string email = hex.substr(linked + 4, 8);
      hex.erase(linked, 12);
      hex.insert(linked, email + "A904");
      hex.replace(0, 4, "A819");
      record = hex;
    }
    for (const char* id : {"4F50", "4F51"}) {
      device::card::ImageFile(image, {"7F10", "5F3A", id})["recordCount"] = 250;
    }
  });
  Add(u"Ann", u"1", u"", std::u16string(100, u'e'));
  CardProgram program(parallel.Channel(), store);
  program.SetSwitch(u"CToSim_Type", 2);
  program.Open();
  ASSERT_EQ(program.state.extPhonebook.SlotInUse(0, sim::FieldSlot::kEmail).fileClass,
            sim::kClassType1);
  program.Copy(kCopy);
  EXPECT_EQ(program.Email(program.Find(u"Ann")), std::u16string(42, u'e'));
}

TEST_F(ContactsInTest, WithoutQuestionsNoFieldIsWritten) {
  Add(u"Ann", u"1", u"22", u"ann@example.org");
  CardProgram program(card.Channel(), store);
  program.SetSwitch(u"CToSim_Type", 2);
  program.SetSwitch(u"Disable_Prompt_Contact_Exist", 1);
  program.Open();
  program.Copy(kMove);
  EXPECT_THAT(program.Rows(), ElementsAre(u"Ann|1"));
  EXPECT_EQ(program.Number2(program.Find(u"Ann")), u"");
  EXPECT_EQ(program.Email(program.Find(u"Ann")), u"");
  EXPECT_EQ(store.Contacts().size(), 1u);
  EXPECT_THAT(program.BoxTexts(), IsEmpty());
}

TEST_F(ContactsInTest, ACardWithoutSuchFilesKeepsTheContactOfAMove) {
  Add(u"Ann", u"1", u"22", u"ann@example.org");
  Add(u"Bob", u"3");
  SoftCard plain("sim-250");
  CardProgram program(plain.Channel(), store);
  program.SetSwitch(u"CToSim_Type", 2);
  program.Open();
  program.Copy(kMove);
  EXPECT_NE(program.Find(u"Ann"), 0u);
  EXPECT_NE(program.Find(u"Bob"), 0u);
  ASSERT_EQ(store.Contacts().size(), 1u);
  EXPECT_EQ(store.Contacts().begin()->second[ContactProperty::kLastName], u"Ann");
  ASSERT_EQ(program.BoxTexts().size(), 2u);
  EXPECT_TRUE(program.BoxTexts()[0].starts_with(u"Of the contacts that were moved, 1 are still"));
}

TEST_F(ContactsInTest, TheWatchersDoNotListACopyTwice) {
  for (int number = 0; number < 20; ++number) {
    Add(u"Name " + std::u16string(1, static_cast<char16_t>(u'A' + number)), u"1");
  }
  CardProgram program(card.Channel(), store, CardProgram::Threads::kReal);
  program.Open();
  program.Copy(kCopy);
  program.screen.RunPending();
  EXPECT_EQ(program.List().ItemCount(), 20);
  EXPECT_EQ(program.state.simPhonebook.StoredCount(), 0u);
  EXPECT_EQ(program.state.simPhonebook.CollectStores(), 1u);
  EXPECT_EQ(program.Rows().front(), u"Name A|1");
}

TEST_F(ContactsInTest, TextsOfAnyKindGoToTheCardAndBack) {
  const std::vector<std::u16string> names = {u"%s %d %n",   u"O'Hara \"Bob\"",
                                             u"two\nlines", u"\u0645\u0631\u064A\u0645",
                                             u"\U0001F600", u"\u738B\u5C0F\u660E"};
  for (const std::u16string& name : names) Add(name, u"+49 1");
  CardProgram program(card.Channel(), store);
  program.SetSwitch(u"CToSim_Type", 2);
  program.Open();
  program.Copy(kMove);
  EXPECT_THAT(store.Contacts(), IsEmpty());
  CardProgram again(card.Channel(), store);
  again.Open();
  for (const std::u16string& name : names) EXPECT_NE(again.Find(name), 0u);
}

TEST_F(ContactsInTest, NumbersOfAnyKindGoToTheCardAsTheyCanBeDialled) {
  Add(u"Wide", u"\uFF10\uFF13\uFF10 \uFF11\uFF12");
  Add(u"Brackets", u"+49 (30) 1-2/3");
  Add(u"Letters", u"1-800-FLOWERS");
  Add(u"Without", u"");
  Add(u"", u"5");
  Add(u"Long", std::u16string(300, u'7'), std::u16string(300, u'8'), std::u16string(300, u'e'));
  CardProgram program(card.Channel(), store);
  program.SetSwitch(u"CToSim_Type", 2);
  program.Open();
  const std::size_t most = program.state.simPhonebook.MaxNumberLength();
  ASSERT_LT(most, 255u);
  program.Copy(kCopy);
  EXPECT_THAT(program.Rows(), testing::UnorderedElementsAre(u"Wide|03012", u"Brackets|+4930123",
                                                            u"Letters|1800", u"Without|", u"|5",
                                                            u"Long|" + std::u16string(most, u'7')));
  EXPECT_EQ(program.Number2(program.Find(u"Long")), std::u16string(40, u'8'));
  // 42 bytes a record, of which two are the link to the entry.
  EXPECT_EQ(program.Email(program.Find(u"Long")), std::u16string(40, u'e'));
  EXPECT_THAT(program.BoxTexts(),
              ElementsAre(u"Contact(s) successfully added.\n\n - 6 new item(s).\n - 0 item(s) "
                          u"overwritten.\n - 0 item(s) already exists."));
}

TEST_F(ContactsInTest, ANameThatIsTooLongIsCutForOneNumberAndNamedForTheWholeContact) {
  const std::u16string greek(300, u'\u03B2');
  Add(u"Ann", u"1");
  Add(greek, u"2");
  CardProgram program(card.Channel(), store);
  program.Open();
  // As many characters as the card has bytes for a name, which these take more of.
  program.Copy(kCopy);
  const std::size_t most = program.state.simPhonebook.MaxNameLength();
  ASSERT_EQ(program.BoxTexts().size(), 3u);
  EXPECT_TRUE(program.BoxTexts()[0].starts_with(
      u"1 of 2 contacts are done. \"" + std::u16string(most, u'\u03B2') + u"\" does not fit"));
  EXPECT_EQ(program.BoxTexts()[1], u"Bad parameter.");
  EXPECT_THAT(program.Rows(), ElementsAre(u"Ann|1"));

  program.state.settings.Enable_CutName = 1;
  program.screen.ScriptEveryDialog(356, [](ui::Dialog& box) { box.Command(361); });
  program.Copy(kCopy);
  EXPECT_THAT(program.Rows(),
              ElementsAre(u"Ann|1", std::u16string(most / 2 - 1, u'\u03B2') + u"|2"));
}

}  // namespace
}  // namespace kelpin::contacts
