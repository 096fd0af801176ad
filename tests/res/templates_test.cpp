#include "res/templates.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace kelpin::res {
namespace {

using ui::ControlKind;
using enum ui::ControlKind;

struct Control {
  int id;
  ControlKind kind;
  int labelledBy = 0;
  std::uint32_t style = 0;
};

// Dialogs by number: their controls in Tab order.
const std::map<int, std::vector<Control>>& Expected() {
  static const std::map<int, std::vector<Control>> expected = {
      {103, {{2021, kLabel, 0, ui::kStyleHidden}, {2019, kList, 2021}}},
      {201, {{1001, kLabel, 0, ui::kStyleHeader | ui::kStyleValue}, {1000, kList, 1001}}},
      {202,
       {{1002, kLabel},
        {1004, kEdit, 1002},
        {2004, kLabel},
        {2005, kEdit, 2004},
        {1003, kLabel},
        {1005, kEdit, 1003},
        {1061, kLabel},
        {1062, kEdit, 1061},
        {2012, kButton, 1061},
        {1065, kLabel},
        {1066, kEdit, 1065},
        {2011, kButton, 1065},
        {1063, kLabel},
        {1064, kEdit, 1063},
        {2008, kLabel},
        {2009, kEdit, 2008, ui::kStyleReadOnly},
        {2010, kButton, 2008}}},
      {203,
       {{1055, kLabel},
        {1056, kEdit, 1055, ui::kStyleDisabled},
        {1007, kLabel},
        {1012, kEdit, 1007},
        {2006, kLabel},
        {2007, kEdit, 2006},
        {1009, kLabel},
        {1018, kEdit, 1009},
        {1057, kLabel},
        {1058, kEdit, 1057},
        {2013, kButton, 1057},
        {1067, kLabel},
        {1068, kEdit, 1067},
        {2014, kButton, 1067},
        {1059, kLabel},
        {1060, kEdit, 1059},
        {2015, kLabel},
        {2016, kEdit, 2015, ui::kStyleReadOnly},
        {2017, kButton, 2015}}},
      {204,
       {{1006, kIcon},
        {1010, kLabel, 0, ui::kStyleCentered | ui::kStyleBold},
        {1013, kLabel, 0, ui::kStyleCentered},
        {1008, kLabel, 0, ui::kStyleCentered},
        {1027, kPicture},
        {1011, kLabel, 0, ui::kStyleCentered},
        {1014, kLabel, 0, ui::kStyleCentered | ui::kStyleBold},
        {1016, kLabel, 0, ui::kStyleCentered}}},
      {205, {{1040, kLabel}, {1015, kList, 1040}}},
      {206, {{1019, kLabel, 0, ui::kStyleHeader}, {1020, kLabel}, {1017, kList, 1019}}},
      {207,
       {{1024, kLabel, 0, ui::kStyleHeader},
        {1022, kList, 1024},
        {2030, kLabel},
        {2031, kProgress, 2030},
        {2032, kLabel},
        {2033, kProgress, 2032}}},
      {208, {{1031, kLabel, 0, ui::kStyleHeader}, {1028, kList, 1031}}},
      {209,
       {{1035, kLabel},
        {1037, kLabel, 1035, ui::kStyleValue},
        {1039, kLabel},
        {1041, kLabel, 1039, ui::kStyleValue},
        {1042, kLabel},
        {1043, kLabel, 1042, ui::kStyleValue},
        {1049, kLabel, 0, ui::kStyleHidden},
        {1050, kLabel, 1049, ui::kStyleValue | ui::kStyleHidden},
        {1044, kLabel},
        {1045, kLabel, 1044, ui::kStyleValue},
        {1051, kLabel, 0, ui::kStyleHidden},
        {1052, kLabel, 1051, ui::kStyleValue | ui::kStyleHidden},
        {1046, kLabel},
        {1047, kLabel, 1046, ui::kStyleValue},
        {2030, kLabel},
        {2031, kProgress, 2030},
        {2032, kLabel},
        {2033, kProgress, 2032}}},
      {210, {{1021, kLabel}, {1023, kEdit, 1021}, {1025, kLabel}, {1026, kEdit, 1025}}},
      {211,
       {{1030, kLabel},
        {1033, kEdit, 1030, ui::kStyleReadOnly},
        {1036, kLabel},
        {1038, kEdit, 1036}}},
      {212, {{1075, kLabel, 0, ui::kStyleHidden}, {1029, kList, 1075}}},
      {213, {{1032, kLabel, 0, ui::kStyleHeader}, {1034, kList, 1032}}},
      {214, {{1069, kLabel}, {1070, kList, 1069}}},
      {215, {{1073, kLabel}, {1074, kList, 1073}}},
      {216, {{1079, kLabel}, {1080, kCheckBox}}},
      {217, {{2000, kLabel}, {2001, kEdit, 2000}}},
      {356, {{357, kLabel}, {358, kCheckBox}}},
      {368, {{1085, kLabel, 0, ui::kStyleHeader}, {1088, kList, 1085}}},
      {371, {{1089, kLabel, 0, ui::kStyleHeader}, {1092, kList, 1089}}},
      {373, {{2002, kLabel}, {2003, kEdit, 2002}}},
      {375, {{2020, kLabel, 0, ui::kStyleHidden}, {2018, kList, 2020, ui::kStyleSingleSelection}}},
      {379, {{2023, kLabel}, {2022, kProgress, 2023}}},
  };
  return expected;
}

std::u16string_view TextOf(int dialog, int control) {
  const ui::DialogTemplate* found = FindDialog(dialog);
  if (found == nullptr) {
    return u"no such dialog";
  }
  for (const ui::ControlTemplate& candidate : found->controls) {
    if (candidate.id == control) {
      return candidate.text;
    }
  }
  return u"no such control";
}

TEST(Dialogs, EachHasItsControlsInTabOrder) {
  ASSERT_EQ(Dialogs().size(), Expected().size());
  for (const auto& [id, controls] : Expected()) {
    SCOPED_TRACE("dialog " + std::to_string(id));
    const ui::DialogTemplate* dialog = FindDialog(id);
    ASSERT_NE(dialog, nullptr);
    EXPECT_EQ(dialog->id, id);
    ASSERT_EQ(dialog->controls.size(), controls.size());
    for (std::size_t i = 0; i < controls.size(); ++i) {
      SCOPED_TRACE("control " + std::to_string(controls[i].id));
      EXPECT_EQ(dialog->controls[i].id, controls[i].id);
      EXPECT_EQ(dialog->controls[i].kind, controls[i].kind);
      EXPECT_EQ(dialog->controls[i].labelledBy, controls[i].labelledBy);
      EXPECT_EQ(dialog->controls[i].style, controls[i].style);
    }
  }
}

TEST(Dialogs, AreFoundByTheirNumberAlone) {
  for (const ui::DialogTemplate& dialog : Dialogs()) {
    EXPECT_EQ(FindDialog(dialog.id), &dialog);
  }
  for (const int id : {0, -1, 1, 102, 104, 200, 218, 355, 357, 374, 380, 0x7FFFFFFF}) {
    EXPECT_EQ(FindDialog(id), nullptr) << id;
  }
}

TEST(Dialogs, TheMainHeaderHasItsTemplateText) {
  EXPECT_TRUE(TextOf(201, 1001) == u"My No. 1234567890");
}

TEST(Dialogs, EntryFormsNameTheirFields) {
  const std::pair<int, std::u16string_view> newEntry[] = {{1002, u"Name:"},
                                                          {2004, u"Nickname:"},
                                                          {1003, u"Phone Number:"},
                                                          {1061, u"Phone Number 2:"},
                                                          {1065, u"Phone Number 3:"},
                                                          {1063, u"E-mail:"},
                                                          {2008, u"Group:"},
                                                          {2012, u"..."},
                                                          {2011, u"..."},
                                                          {2010, u"..."}};
  for (const auto& [id, text] : newEntry) {
    EXPECT_TRUE(TextOf(202, id) == text) << id;
  }
  const std::pair<int, std::u16string_view> editEntry[] = {{1055, u"No.:"},
                                                           {1007, u"Name:"},
                                                           {2006, u"Nickname:"},
                                                           {1009, u"Phone Number:"},
                                                           {1057, u"Phone Number 2:"},
                                                           {1067, u"Phone Number 3:"},
                                                           {1059, u"E-mail:"},
                                                           {2015, u"Group:"},
                                                           {2013, u"..."},
                                                           {2014, u"..."},
                                                           {2017, u"..."}};
  for (const auto& [id, text] : editEntry) {
    EXPECT_TRUE(TextOf(203, id) == text) << id;
  }
}

TEST(Dialogs, OtherLabelsReadAsTheyShould) {
  struct Label {
    int dialog;
    int control;
    std::u16string_view text;
  };
  const Label labels[] = {
      {204, 1010, u"Kelpin"},
      {205, 1040, u"0 / 0"},
      {206, 1019, u"Contacts to SIM:"},
      {206, 1020,
       u"When the contact has more than one phone number, copy selected phone numbers into SIM "
       u"card."},
      {207, 1024, u"SIM Information"},
      {208, 1031, u"Store your personal numbers."},
      {209, 1035, u"Total phonebook size:"},
      {209, 1039, u"No. of phonebook entries:"},
      {209, 1042, u"Max. length for name:"},
      {209, 1049, u"2nd phone number storage capacity:"},
      {209, 1044, u"Max. length for phone number:"},
      {209, 1051, u"E-mail address storage capacity:"},
      {209, 1046, u"SMS message storage capacity:"},
      {210, 1021, u"Name:"},
      {210, 1025, u"Phone Number:"},
      {211, 1030, u"Phone Type:"},
      {211, 1036, u"Mark:"},
      {213, 1032, u"Service dialing numbers:"},
      {216, 1079, u""},
      {216, 1080, u"Apply to all"},
      {217, 2000, u"Name:"},
      {356, 357, u""},
      {356, 358, u"Apply to all"},
      {368, 1085, u"Edit Phone No. Name"},
      {371, 1089, u"Edit Group Name"},
      {373, 2002, u"Name:"},
      {379, 2023, u""},
  };
  for (const Label& label : labels) {
    EXPECT_TRUE(TextOf(label.dialog, label.control) == label.text)
        << "dialog " << label.dialog << " control " << label.control;
  }
}

TEST(Dialogs, TheAboutBoxShowsTheIconAndThePicture) {
  for (const ui::ControlTemplate& control : FindDialog(204)->controls) {
    EXPECT_EQ(control.resource, control.id == 1006   ? 353
                                : control.id == 1027 ? 352
                                                     : 0)
        << control.id;
  }
}

TEST(Dialogs, EveryFieldAndListHasANameForAScreenReader) {
  for (const ui::DialogTemplate& dialog : Dialogs()) {
    for (const ui::ControlTemplate& control : dialog.controls) {
      if (control.kind == kEdit || control.kind == kList || control.kind == kButton) {
        EXPECT_FALSE(TextOf(dialog.id, control.labelledBy).empty())
            << "dialog " << dialog.id << " control " << control.id;
      }
    }
  }
}

TEST(Dialogs, EachNamesASectionOfTheHelp) {
  for (const ui::DialogTemplate& dialog : Dialogs()) {
    EXPECT_FALSE(dialog.helpSection.empty()) << dialog.id;
  }
}

}  // namespace
}  // namespace kelpin::res
