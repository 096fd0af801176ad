#include "sim/index_list.h"

#include <gtest/gtest.h>

namespace kelpin::sim {
namespace {

TEST(IndexList, StartsWithoutAnyRoom) {
  IndexList list;
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_EQ(list.Capacity(), 0u);
}

TEST(IndexList, DoublesFromOneWhenItIsFull) {
  IndexList list;
  const std::uint32_t capacities[] = {1, 2, 4, 4, 8, 8, 8, 8, 16};
  std::uint32_t appended = 0;
  for (const std::uint32_t capacity : capacities) {
    EXPECT_EQ(list.Append(100 + appended), 1);
    ++appended;
    EXPECT_EQ(list.Count(), appended);
    EXPECT_EQ(list.Capacity(), capacity);
  }
  for (std::uint32_t at = 0; at < appended; ++at) EXPECT_EQ(list[at], 100 + at);
}

TEST(IndexList, GrowsToTheLastCapacityUnderTheLimitAndNoFurther) {
  EXPECT_EQ(IndexList::GrownCapacity(0), 1u);
  EXPECT_EQ(IndexList::GrownCapacity(1), 2u);
  EXPECT_EQ(IndexList::GrownCapacity(0x08000000), 0x10000000u);
  EXPECT_EQ(IndexList::GrownCapacity(0x0FFFFFFF), 0x1FFFFFFEu);
  EXPECT_EQ(IndexList::GrownCapacity(0x10000000), 0u);  // would be 0x20000000
}

TEST(IndexList, DoesNotGrowFromACapacityWhoseDoubleHasTheSignBit) {
  EXPECT_EQ(IndexList::GrownCapacity(0x40000000), 0u);
  EXPECT_EQ(IndexList::GrownCapacity(0x40000001), 0u);
  EXPECT_EQ(IndexList::GrownCapacity(0xC0000000), 0u);
}

TEST(IndexList, GivesTheOldestFirst) {
  IndexList list;
  for (const std::uint32_t index : {7u, 3u, 7u}) ASSERT_EQ(list.Append(index), 1);
  std::uint32_t index = 0;
  EXPECT_EQ(list.TakeFirst(index), 1);
  EXPECT_EQ(index, 7u);
  ASSERT_EQ(list.Append(9), 1);
  EXPECT_EQ(list.TakeFirst(index), 1);
  EXPECT_EQ(index, 3u);
  EXPECT_EQ(list.TakeFirst(index), 1);
  EXPECT_EQ(index, 7u);
  EXPECT_EQ(list.TakeFirst(index), 1);
  EXPECT_EQ(index, 9u);
  EXPECT_EQ(list.Count(), 0u);
  EXPECT_EQ(list.Capacity(), 4u);
}

TEST(IndexList, GivesNothingWhenItIsEmpty) {
  IndexList list;
  std::uint32_t index = 42;
  EXPECT_EQ(list.TakeFirst(index), 0);
  EXPECT_EQ(index, 42u);
}

}  // namespace
}  // namespace kelpin::sim
