#include "tests/contacts/copy_out_fixture.h"

// What is asked about entries that Contacts has already, and what a run makes of the answers.
namespace kelpin::contacts {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;

enum class Way { kSave, kMove };

class DuplicatesTest : public CopyOutTest, public testing::WithParamInterface<Way> {
 protected:
  // Anna, Bert and Cem on the card, all selected; these of them in Contacts already.
  void OpenWith(const Texts& duplicates) {
    PutThree();
    for (const std::u16string& name : duplicates) PutContact(name);
    Open();
    SelectAll();
  }
  void Copy() { GetParam() == Way::kSave ? Save() : Move(); }
  // A saved entry stays, a moved one goes.
  void ExpectCardKeeps(const std::vector<std::uint32_t>& afterMove) {
    const std::vector<std::uint32_t> all = {1, 2, 3};
    EXPECT_THAT(OnTheCard(), ElementsAreArray(GetParam() == Way::kSave ? all : afterMove));
  }
};

INSTANTIATE_TEST_SUITE_P(Ways, DuplicatesTest, testing::Values(Way::kSave, Way::kMove),
                         [](const auto& test) {
                           return test.param == Way::kSave ? "Save" : "Move";
                         });

TEST_P(DuplicatesTest, YesOverwritesAndNoLeavesAlone) {
  OpenWith({u"Anna", u"Bert"});
  AnswerPrompt(res::kOverwriteYes);
  AnswerPrompt(res::kOverwriteNo);
  Copy();
  EXPECT_THAT(prompts,
              ElementsAre(u"\"Anna\" already exists in Contacts. Do you want to overwrite it?",
                          u"\"Bert\" already exists in Contacts. Do you want to overwrite it?"));
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Bert:old", u"Cem:333"));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(1, 1, 1)));
  ExpectCardKeeps({2});
}

TEST_P(DuplicatesTest, YesToAllOverwritesTheOthersWithoutAsking) {
  OpenWith({u"Anna", u"Bert", u"Cem"});
  AnswerPrompt(res::kOverwriteYes, true);
  Copy();
  EXPECT_EQ(prompts.size(), 1u);
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:111", u"Bert:222", u"Cem:333"));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(0, 3, 0)));
  ExpectCardKeeps({});
}

TEST_P(DuplicatesTest, NoToAllLeavesTheOthersWithoutAsking) {
  OpenWith({u"Anna", u"Bert"});
  AnswerPrompt(res::kOverwriteNo, true);
  Copy();
  EXPECT_EQ(prompts.size(), 1u);
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:old", u"Bert:old", u"Cem:333"));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(1, 0, 2)));
  ExpectCardKeeps({1, 2});
}

TEST_P(DuplicatesTest, ForAllHoldsForOneRun) {
  OpenWith({u"Anna", u"Bert"});
  SelectRows({0});
  AnswerPrompt(res::kOverwriteYes, true);
  Copy();
  SelectAll();
  AnswerPrompt(res::kOverwriteNo, true);
  Copy();
  EXPECT_EQ(prompts.size(), 2u);
  ExpectCardKeeps({2});
}

TEST_P(DuplicatesTest, AYesThatCouldNotBeWrittenStillCountsAndTheEntryStays) {
  OpenWith({u"Anna"});
  SelectRows({0});
  AnswerPrompt(res::kOverwriteYes);
  device.failures.FailCallOf("Save", 1);
  Copy();
  EXPECT_THAT(Contacts(), ElementsAre(u"Anna:old"));
  EXPECT_THAT(BoxTexts(), ElementsAre(Summary(0, 1, 0)));
  ExpectCardKeeps({1, 2, 3});
}

}  // namespace
}  // namespace kelpin::contacts
