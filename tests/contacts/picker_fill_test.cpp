#include "contacts/contact_picker_fill.h"
#include "tests/contacts/to_sim_fixture.h"

// Which rows the picker offers.
namespace kelpin::contacts {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class PickerFillTest : public ToSimTest {
 protected:
  // The rows that a command offers, looked at by `look`.
  void Offered(const std::function<void(ui::ListView&)>& look) {
    Pick(kCopy, [&](ui::Dialog& picker) { look(PickerList(picker)); });
  }
  void ExpectRows(const std::vector<std::u16string>& rows) {
    Offered([&](ui::ListView& list) { EXPECT_EQ(RowsOf(list), rows); });
  }
  void ChooseTypes(std::initializer_list<std::size_t> types) {
    for (std::uint32_t& flag : state->settings.typeFlags) flag = 0;
    for (const std::size_t type : types) state->settings.typeFlags[type] = 1;
  }
  void SetMark(std::size_t type, char16_t letter) {
    state->settings.typeMarks[type][0] = u'/';
    state->settings.typeMarks[type][1] = letter;
    state->settings.typeMarks[type][2] = 0;
  }
};

TEST_F(PickerFillTest, TwoChosenNumbersAreTwoRowsWithTheirMarks) {
  Open();
  ChooseTypes({0, 1});
  SetMark(0, u'M');
  SetMark(1, u'W');
  Add(u"Doe", u"111",
      {{ContactProperty::kFirstName, u"Jane"},
       {ContactProperty::kBusinessTelephoneNumber, u"222"},
       {ContactProperty::kHomeTelephoneNumber, u"333"}});
  ExpectRows({u"Doe, Jane/M|111", u"Doe, Jane/W|222"});
}

TEST_F(PickerFillTest, ASingleRowHasNoMark) {
  Open();
  ChooseTypes({0, 1});
  SetMark(0, u'M');
  SetMark(1, u'W');
  Add(u"Doe", u"", {{ContactProperty::kBusinessTelephoneNumber, u"222"}});
  ExpectRows({u"Doe|222"});
}

TEST_F(PickerFillTest, AContactWithoutAChosenNumberIsNotOffered) {
  Open();
  ChooseTypes({0});
  Add(u"Doe", u"", {{ContactProperty::kHomeTelephoneNumber, u"333"}});
  Offered([](ui::ListView& list) {
    EXPECT_EQ(list.ItemCount(), 0);
    EXPECT_EQ(list.Message().text, u"No contact has a number of the chosen kinds");
  });
}

TEST_F(PickerFillTest, AFlagOfAnotherValueThanOneChoosesNothing) {
  Open();
  state->settings.typeFlags[0] = 2;
  Add(u"Doe", u"111");
  ExpectRows({});
}

TEST_F(PickerFillTest, EveryTypeHasItsNumber) {
  Open();
  ChooseTypes({0, 1, 2, 3, 4, 5, 6, 7, 8, 9});
  for (std::size_t type = 0; type < 10; ++type) {
    SetMark(type, static_cast<char16_t>(u'0' + type));
  }
  test::FakeContact contact;
  contact[ContactProperty::kLastName] = u"D";
  contact[ContactProperty::kMobileTelephoneNumber] = u"10";
  contact[ContactProperty::kBusinessTelephoneNumber] = u"11";
  contact[ContactProperty::kHomeTelephoneNumber] = u"12";
  contact.companyPhone = u"13";
  contact[ContactProperty::kBusiness2TelephoneNumber] = u"14";
  contact[ContactProperty::kHome2TelephoneNumber] = u"15";
  contact[ContactProperty::kRadioTelephoneNumber] = u"16";
  contact[ContactProperty::kPagerNumber] = u"17";
  contact[ContactProperty::kCarTelephoneNumber] = u"18";
  contact[ContactProperty::kAssistantTelephoneNumber] = u"19";
  device.contacts.Insert(contact);
  ExpectRows({u"D/0|10", u"D/1|11", u"D/2|12", u"D/3|13", u"D/4|14", u"D/5|15", u"D/6|16",
              u"D/7|17", u"D/8|18", u"D/9|19"});
}

TEST_F(PickerFillTest, NamesAndNumbersAreCutToTheCard) {
  device.sim.SetLengths(6, 14);
  Open();
  ChooseTypes({0});
  Add(u"Abcdefghijklmnopqr", u"\uFF11\uFF12 (3)-4567");
  ExpectRows({u"Abcdefghijklmn|123456"});
}

TEST_F(PickerFillTest, AChineseNameIsJoinedAndCutToTwoBytesACharacter) {
  Open();
  state->language = 2052;
  ChooseTypes({0});
  Add(std::u16string(5, u'\u738B'), u"111",
      {{ContactProperty::kFirstName, std::u16string(4, u'\u660E')}});
  // 9 characters are 18 bytes of 14: 14 / 2 - 1 stay.
  ExpectRows({std::u16string(5, u'\u738B') + u"\u660E|111"});
}

TEST_F(PickerFillTest, WithoutARowSetTheOtherFieldsOfARowStayUnset) {
  Open();
  ChooseTypes({0});
  Add(u"Doe", u"111",
      {{ContactProperty::kBusinessTelephoneNumber, u"222"},
       {ContactProperty::kEmail1Address, u"a@b"}});
  Offered([](ui::ListView& list) {
    ASSERT_EQ(list.ItemCount(), 1);
    const auto row = std::static_pointer_cast<const ContactPickRow>(list.ItemData(0));
    ASSERT_NE(row, nullptr);
    EXPECT_EQ(row->number2, u"");
    EXPECT_EQ(row->email, u"");
    EXPECT_EQ(row->oid, 0);
  });
}

TEST_F(PickerFillTest, OneEntryPerContactHoldsItsFirstTwoNumbersAndItsFirstEmail) {
  Open();
  state->settings.CToSim_Type = 2;
  const std::int32_t oid = Add(u"Doe", u"+49 111",
                               {{ContactProperty::kFirstName, u"Jane"},
                                {ContactProperty::kPagerNumber, u"9"},
                                {ContactProperty::kHomeTelephoneNumber, u"(2) 22"},
                                {ContactProperty::kEmail2Address, u"two@example.org"},
                                {ContactProperty::kEmail3Address, u"three@example.org"}});
  Offered([&](ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), ElementsAre(u"Doe, Jane|+49111"));
    const auto row = std::static_pointer_cast<const ContactPickRow>(list.ItemData(0));
    EXPECT_EQ(row->number2, u"222");
    EXPECT_EQ(row->email, u"two@example.org");
    EXPECT_EQ(row->oid, oid);
    EXPECT_EQ(row->name, u"Doe, Jane");
    EXPECT_EQ(row->number, u"+49111");
  });
}

TEST_F(PickerFillTest, TheFirstOfThreeEmailsIsTaken) {
  Open();
  state->settings.CToSim_Type = 2;
  Texts emails = {{ContactProperty::kEmail3Address, u"three@example.org"}};
  Add(u"C", u"1", emails);
  emails[ContactProperty::kEmail2Address] = u"two@example.org";
  Add(u"B", u"1", emails);
  emails[ContactProperty::kEmail1Address] = u"one@example.org";
  Add(u"A", u"1", emails);
  Offered([](ui::ListView& list) {
    const auto email = [&](int row) {
      return std::static_pointer_cast<const ContactPickRow>(list.ItemData(row))->email;
    };
    EXPECT_EQ(email(0), u"three@example.org");
    EXPECT_EQ(email(1), u"two@example.org");
    EXPECT_EQ(email(2), u"one@example.org");
  });
}

TEST_F(PickerFillTest, OneEntryPerContactHasNoMarkAndJoinsChineseNames) {
  Open();
  state->settings.CToSim_Type = 1;
  state->language = 2052;
  ChooseTypes({0, 2});
  SetMark(0, u'M');
  SetMark(2, u'H');
  Add(u"\u738B", u"1",
      {{ContactProperty::kFirstName, u"\u660E"}, {ContactProperty::kHomeTelephoneNumber, u"2"}});
  Add(u"Doe", u"3", {{ContactProperty::kFirstName, u"Jane"}});
  ExpectRows({u"\u738B\u660E|1", u"Doe, Jane|3"});
}

TEST_F(PickerFillTest, WhatARowHoldsGoesWithThePicker) {
  Open();
  state->settings.CToSim_Type = 2;
  Add(u"Doe", u"1");
  std::weak_ptr<const ui::RowData> row;
  Offered([&](ui::ListView& list) {
    row = list.ItemData(0);
    EXPECT_FALSE(row.expired());
  });
  EXPECT_TRUE(row.expired());
}

TEST_F(PickerFillTest, NumbersAreLookedForInTheirOrder) {
  constexpr ContactProperty kOrder[] = {
      ContactProperty::kMobileTelephoneNumber,
      ContactProperty::kRadioTelephoneNumber,
      ContactProperty::kHomeTelephoneNumber,
      ContactProperty::kHome2TelephoneNumber,
      ContactProperty::kBusinessTelephoneNumber,
      ContactProperty::kBusiness2TelephoneNumber,
      ContactProperty::kCompanyName,  // stands for the company's number
      ContactProperty::kAssistantTelephoneNumber,
      ContactProperty::kHomeFaxNumber,
      ContactProperty::kBusinessFaxNumber,
      ContactProperty::kCarTelephoneNumber,
      ContactProperty::kPagerNumber,
  };
  constexpr std::size_t kCount = std::size(kOrder);
  Open();
  state->settings.CToSim_Type = 2;
  for (std::size_t first = 0; first < kCount; ++first) {
    test::FakeContact contact;
    for (std::size_t at = first; at < kCount; ++at) {
      const std::string digits = std::to_string(10 + at);
      const std::u16string number(digits.begin(), digits.end());
      (kOrder[at] == ContactProperty::kCompanyName ? contact.companyPhone : contact[kOrder[at]]) =
          number;
    }
    device.contacts.Insert(contact);
  }
  Offered([&](ui::ListView& list) {
    ASSERT_EQ(list.ItemCount(), static_cast<int>(kCount));
    for (std::size_t first = 0; first < kCount; ++first) {
      const auto row =
          std::static_pointer_cast<const ContactPickRow>(list.ItemData(static_cast<int>(first)));
      const std::string one = std::to_string(10 + first);
      const std::string two = first + 1 < kCount ? std::to_string(11 + first) : "";
      EXPECT_EQ(row->number, std::u16string(one.begin(), one.end())) << first;
      EXPECT_EQ(row->number2, std::u16string(two.begin(), two.end())) << first;
    }
  });
}

TEST_F(PickerFillTest, AContactWithoutANumberIsOfferedWithNone) {
  Open();
  state->settings.CToSim_Type = 2;
  Add(u"Doe", u"");
  Add(u"Roe", u"n/a", {{ContactProperty::kHomeTelephoneNumber, u"5"}});
  ExpectRows({u"Doe|", u"Roe|5"});
}

TEST_F(PickerFillTest, OneEntryPerContactIsCutToItsFields) {
  device.sim.SetLengths(6, 4);
  Open();
  state->settings.CToSim_Type = 2;
  Add(u"A name longer than the card's", std::u16string(45, u'1'),
      {{ContactProperty::kHomeTelephoneNumber, std::u16string(45, u'2')},
       {ContactProperty::kEmail1Address, std::u16string(300, u'e')}});
  Offered([](ui::ListView& list) {
    const auto row = std::static_pointer_cast<const ContactPickRow>(list.ItemData(0));
    EXPECT_EQ(row->name, u"A name longer than the card's");
    EXPECT_EQ(row->number, u"111111");
    EXPECT_EQ(row->number2, std::u16string(40, u'2'));
    EXPECT_EQ(row->email.size(), 255u);  // this card keeps no e-mails, so has no length for them
  });
}

TEST_F(PickerFillTest, RowsStartCheckedUnlessTheSettingsSayOtherwise) {
  Open();
  Add(u"A", u"1");
  Add(u"B", u"2");
  for (const std::uint32_t type : {0u, 2u}) {
    state->settings.CToSim_Type = type;
    state->settings.CToSim_NotCheckAll = 0;
    Offered([](ui::ListView& list) { EXPECT_THAT(ChecksOf(list), ElementsAre(true, true)); });
    state->settings.CToSim_NotCheckAll = 1;
    Offered([](ui::ListView& list) { EXPECT_THAT(ChecksOf(list), ElementsAre(false, false)); });
  }
}

TEST_F(PickerFillTest, RowsAreSortedByNameWhereEachContactIsOneEntry) {
  Open();
  state->settings.Enable_Sort = 1;
  Add(u"zed", u"1");
  Add(u"Bob", u"2");
  Add(u"ann", u"3");
  ExpectRows({u"zed|1", u"Bob|2", u"ann|3"});
  state->settings.CToSim_Type = 2;
  ExpectRows({u"ann|3", u"Bob|2", u"zed|1"});
  state->settings.Enable_Sort = 0;
  ExpectRows({u"zed|1", u"Bob|2", u"ann|3"});
}

TEST_F(PickerFillTest, ASortedFillOfNoContactsIsEmpty) {
  Open();
  state->settings.Enable_Sort = 1;
  state->settings.CToSim_Type = 2;
  Offered([](ui::ListView& list) {
    EXPECT_THAT(RowsOf(list), IsEmpty());
    EXPECT_EQ(list.Message().text, u"No contacts");
  });
}

TEST_F(PickerFillTest, AStoreThatCannotBeOpenedGivesNoRow) {
  Open();
  Add(u"A", u"1");
  for (const char* call : {"CoInitializeEx", "CoCreateInstance", "Logon", "GetDefaultFolder",
                           "get_Items", "get_Count"}) {
    SCOPED_TRACE(call);
    device.failures.FailCallOf(call, 1);
    Offered([](ui::ListView& list) { EXPECT_EQ(list.ItemCount(), 0); });
    EXPECT_TRUE(device.failures.Failed());
    EXPECT_EQ(device.contacts.OpenUses(), 0);
    EXPECT_EQ(Boxes().size(), 0u);
  }
}

TEST_F(PickerFillTest, AContactThatCannotBeFetchedEndsTheFill) {
  Open();
  for (const std::u16string_view name : {u"A", u"B", u"C"}) Add(name, u"1");
  device.failures.FailCallOf("Item", 3);
  ExpectRows({u"A|1", u"B|1"});
  EXPECT_EQ(device.contacts.OpenUses(), 0);
}

TEST_F(PickerFillTest, ItReadsTheNumberOfAContactBeforeItsTexts) {
  Open();
  Add(u"A", u"1");
  device.journal.Clear();
  ExpectRows({u"A|1"});
  EXPECT_THAT(device.journal.Entries("get_Oid"), testing::SizeIs(1));
  EXPECT_LT(Position("get_Oid"), Position("Get("));
  EXPECT_THAT(device.journal.Entries("Get("),
              ElementsAre("Get(FirstName)", "Get(LastName)", "Get(MobileTelephoneNumber)"));
}

TEST_F(PickerFillTest, TextsOfAnyKindAreOfferedAsTheyAre) {
  Open();
  device.sim.SetLengths(20, 200);
  const std::vector<std::u16string> names = {u"%s %d %n",
                                             u"O'Hara \"Bob\"",
                                             u"two\nlines",
                                             u"\u0645\u0631\u064A\u0645",
                                             u"\U0001F600\U0001F468\u200D\U0001F469",
                                             std::u16string(300, u'x')};
  for (const std::u16string& name : names) Add(name, u"1");
  Offered([&](ui::ListView& list) {
    ASSERT_EQ(list.ItemCount(), 6);
    for (int row = 0; row < 5; ++row)
      EXPECT_EQ(list.ItemText(row, 0), names[static_cast<std::size_t>(row)]);
    EXPECT_EQ(list.ItemText(5, 0), std::u16string(200, u'x'));
  });
}

}  // namespace
}  // namespace kelpin::contacts
