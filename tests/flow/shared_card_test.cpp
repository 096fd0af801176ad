#include <algorithm>

#include "tests/card/shared_channel.h"
#include "tests/card/soft_card.h"
#include "tests/flow/card_program.h"

// A card that another program writes to without anybody being told, as over a reader.
namespace kelpin::contacts {
namespace {

using device::card::Hex;
using device::card::SharedChannel;
using device::card::SoftCard;

TEST(SharedCard, ARefreshListsWhatAnotherProgramWroteUnnoticed) {
  test::Journal journal;
  test::FailPlan failures;
  test::FakeContacts store(journal, failures);
  SoftCard card("usim");
  SharedChannel channel(card.Channel());
  CardProgram program(channel, store);
  program.Open();
  const auto has = [&program](std::u16string_view row) {
    const std::vector<std::u16string> rows = program.Rows();
    return std::find(rows.begin(), rows.end(), row) != rows.end();
  };
  ASSERT_TRUE(has(u"Bauer, Anna|+12125550100"));
  // The other program selects the file and writes over its first record: "X", 12.
  std::vector<std::uint8_t> response;
  for (const std::string& command :
       {std::string("00A40804067F105F3A4F3A"),
        "00DC01042658" + std::string(46, 'F') + "028121FFFFFFFFFFFFFFFFFFFFFF"}) {
    ASSERT_EQ(card.Channel().Transmit(Hex(command), response), device::card::TransportError::kNone);
  }
  ASSERT_EQ(response, Hex("9000"));
  program.state.dialog->Command(res::kCommandRefresh);
  program.RunThreads();
  EXPECT_TRUE(has(u"X|12"));
  EXPECT_FALSE(has(u"Bauer, Anna|+12125550100"));
  EXPECT_EQ(program.Rows().size(), 180u);
  EXPECT_TRUE(program.screen.Boxes().empty());
}

}  // namespace
}  // namespace kelpin::contacts
