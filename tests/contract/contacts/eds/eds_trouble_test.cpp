#include <gmock/gmock.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/contract/contacts/eds/eds_fixture.h"
#include "tests/contract/contacts/eds/extra_book.h"

// Address books that cannot be reached, written or found any more.
namespace kelpin::contract {
namespace {

using device::contacts::ContactBook;
using device::contacts::ContactRecord;
using device::contacts::ContactTextSet;
using device::contacts::EdsStore;
using platform::ComResult;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

ContactRecord Named(const char* name) {
  ContactRecord record;
  record[device::contacts::TextIndex(platform::ContactProperty::kFileAs)] = name;
  return record;
}

class EdsTrouble : public ::testing::Test {
 protected:
  std::unique_ptr<EdsStore> Open(const char* book) {
    std::string why;
    auto store =
        EdsStore::Open(book, why, [this](const std::string& text) { told.push_back(text); });
    EXPECT_NE(store, nullptr) << why;
    return store;
  }

  std::vector<std::string> told;
};

TEST_F(EdsTrouble, ABookOfAnAccountThatIsNotReachedSaysWhyItIsEmpty) {
  const SilentPort port;
  const ExtraBook extra("kelpin-far", "Far away", port.Number());
  const auto store = Open("kelpin-far");
  ASSERT_NE(store, nullptr);
  auto book = store->OpenBook();
  ASSERT_NE(book, nullptr);
  std::vector<std::int32_t> numbers;
  EXPECT_EQ(book->Numbers(numbers), ComResult::kOk);
  EXPECT_THAT(numbers, IsEmpty());
  EXPECT_THAT(told, IsEmpty());
  book = nullptr;
  EXPECT_THAT(told, ElementsAre(AllOf(
                        StartsWith("the address book Far away shows no contacts and can only be "
                                   "read. "),
                        HasSubstr("the network is there and the account has its password"))));
}

TEST_F(EdsTrouble, ABookThatMayOnlyBeReadSaysOnceWhyNothingIsSaved) {
  const SilentPort port;
  const ExtraBook extra("kelpin-far", "Far away", port.Number());
  const auto store = Open("kelpin-far");
  ASSERT_NE(store, nullptr);
  auto book = store->OpenBook();
  ASSERT_NE(book, nullptr);
  std::int32_t number = 0;
  EXPECT_EQ(book->Add(Named("Ann"), number), ComResult::kFail);
  EXPECT_EQ(book->Add(Named("Bob"), number), ComResult::kFail);
  EXPECT_EQ(number, 0);
  book = nullptr;
  EXPECT_THAT(told, ElementsAre(StartsWith("the address book Far away: its contacts cannot be "
                                           "changed: it can only be read. ")));
}

TEST_F(EdsTrouble, ABookThatIsTakenAwayMeanwhileTakesNoMoreAndSaysSo) {
  ExtraBook extra("kelpin-second", "Second");
  const auto store = Open("Second");
  ASSERT_NE(store, nullptr);
  auto book = store->OpenBook();
  ASSERT_NE(book, nullptr);
  std::int32_t ann = 0;
  ASSERT_EQ(book->Add(Named("Ann"), ann), ComResult::kOk);
  extra.TakeAway();
  // Its server would take more, and they would go with the book.
  std::int32_t bob = 0;
  EXPECT_EQ(book->Add(Named("Bob"), bob), ComResult::kFail);
  ContactTextSet all;
  EXPECT_EQ(book->Change(ann, Named("Anna"), all.set()), ComResult::kFail);
  book = nullptr;
  EXPECT_THAT(told, ElementsAre(StartsWith("the address book Second was taken away. ")));
  EXPECT_EQ(store->OpenBook(), nullptr);
  ASSERT_EQ(told.size(), 2u);
  EXPECT_THAT(told[1], StartsWith("no address book \"Second\"; there are: "));
}

TEST_F(EdsTrouble, ABookIsNamedToTheLetter) {
  const ExtraBook extra("kelpin-odd", "Odd");
  std::string why;
  EXPECT_NE(EdsStore::Open("Odd", why), nullptr) << why;
  EXPECT_EQ(EdsStore::Open("odd", why), nullptr);
  EXPECT_THAT(why, HasSubstr("kelpin-odd (Odd)"));
}

}  // namespace
}  // namespace kelpin::contract
