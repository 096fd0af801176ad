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
  static std::vector<std::u16string> Texts(const CardProgram& program) {
    std::vector<std::u16string> texts;
    for (const test::ShownBox& box : program.screen.Boxes()) texts.push_back(box.text);
    return texts;
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
    program.Put(u"CToSim_Type", 2);
    program.Open();
    program.Copy(kMove);
    EXPECT_THAT(Texts(program),
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
  program.Put(u"CToSim_Type", 2);
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
  program.Put(u"CToSim_Type", 2);
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
  program.Put(u"CToSim_Type", 2);
  program.Open();
  const sim::SlotLayout file = program.state.extPhonebook.SlotInUse(0, sim::FieldSlot::kEmail);
  ASSERT_EQ(file.fileClass, sim::kClassType2);  // so that two bytes are the link to the entry
  program.Copy(kCopy);
  EXPECT_EQ(program.Email(program.Find(u"Ann")), std::u16string(file.recordLength - 2, u'e'));
}

TEST_F(ContactsInTest, ACardWithoutSuchFilesKeepsTheContactOfAMove) {
  Add(u"Ann", u"1", u"22", u"ann@example.org");
  Add(u"Bob", u"3");
  SoftCard plain("sim-250");
  CardProgram program(plain.Channel(), store);
  program.Put(u"CToSim_Type", 2);
  program.Open();
  program.Copy(kMove);
  EXPECT_NE(program.Find(u"Ann"), 0u);
  EXPECT_NE(program.Find(u"Bob"), 0u);
  ASSERT_EQ(store.Contacts().size(), 1u);
  EXPECT_EQ(store.Contacts().begin()->second[ContactProperty::kLastName], u"Ann");
  ASSERT_EQ(Texts(program).size(), 2u);
  EXPECT_TRUE(Texts(program)[0].starts_with(u"Of the contacts that were moved, 1 are still"));
}

TEST_F(ContactsInTest, TheWatchersDoNotListACopyTwice) {
  for (int number = 0; number < 20; ++number) {
    Add(u"Name " + std::u16string(1, static_cast<char16_t>(u'A' + number)), u"1");
  }
  CardProgram program(card.Channel(), store, true);
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
  program.Put(u"CToSim_Type", 2);
  program.Open();
  program.Copy(kMove);
  EXPECT_THAT(store.Contacts(), IsEmpty());
  CardProgram again(card.Channel(), store);
  again.Open();
  for (const std::u16string& name : names) EXPECT_NE(again.Find(name), 0u);
}

}  // namespace
}  // namespace kelpin::contacts
