#include "ui/row_store.h"

#include <gtest/gtest.h>

#include <map>
#include <vector>

namespace kelpin::ui {
namespace {

constexpr int kMany = 100000;

// Counts how often rows were moved about.
struct CountingRow {
  explicit CountingRow(int number) : value(number) {}
  CountingRow(CountingRow&& other) noexcept : value(other.value) { ++moves; }
  CountingRow& operator=(CountingRow&& other) noexcept {
    value = other.value;
    ++moves;
    return *this;
  }
  int value;
  static inline std::int64_t moves = 0;
};

TEST(RowStore, AHundredThousandRowsAtTheTopMoveNoOtherRow) {
  RowStore<CountingRow> rows;
  CountingRow::moves = 0;
  for (int i = 0; i < kMany; ++i) {
    const KeyShift shift = rows.Insert(0, CountingRow(i));
    ASSERT_GT(shift.first, shift.last) << "row " << i << " moved keys";
  }
  // Into the argument and from there into the store, perhaps by way of one more.
  EXPECT_LE(CountingRow::moves, 3 * kMany);
  EXPECT_EQ(rows.At(0).value, kMany - 1);
  EXPECT_EQ(rows.At(kMany - 1).value, 0);
}

TEST(RowStore, AHundredThousandRowsAtTheEndMoveNoOtherRow) {
  RowStore<CountingRow> rows;
  CountingRow::moves = 0;
  for (int i = 0; i < kMany; ++i) {
    const KeyShift shift = rows.Insert(rows.Size(), CountingRow(i));
    ASSERT_GT(shift.first, shift.last);
  }
  EXPECT_LE(CountingRow::moves, 3 * kMany);
}

TEST(RowStore, RowsErasedAtEitherEndMoveNoOtherRow) {
  RowStore<CountingRow> rows;
  for (int i = 0; i < kMany; ++i) {
    rows.Insert(rows.Size(), CountingRow(i));
  }
  CountingRow::moves = 0;
  for (int i = 0; i < kMany; ++i) {
    const KeyShift shift = rows.Erase(i % 2 == 0 ? 0 : rows.Size() - 1);
    ASSERT_GT(shift.first, shift.last);
  }
  EXPECT_EQ(rows.Size(), 0u);
  EXPECT_EQ(CountingRow::moves, 0);
}

TEST(RowStore, ARowInTheMiddleMovesTheShorterSide) {
  RowStore<CountingRow> rows;
  for (int i = 0; i < 1000; ++i) {
    rows.Insert(rows.Size(), CountingRow(i));
  }
  const KeyShift low = rows.Insert(10, CountingRow(-1));
  EXPECT_EQ(low.last - low.first + 1, 10);
  EXPECT_EQ(low.delta, -1);
  const KeyShift high = rows.Insert(991, CountingRow(-2));
  EXPECT_EQ(high.last - high.first + 1, 10);
  EXPECT_EQ(high.delta, 1);
  const KeyShift erased = rows.Erase(10);
  EXPECT_EQ(erased.last - erased.first + 1, 10);
  EXPECT_EQ(erased.delta, 1);
}

// Follows every row by its key through a fixed run of insertions and removals.
TEST(RowStore, AKeyKeptUpWithTheShiftsAlwaysNamesItsRow) {
  RowStore<int> rows;
  std::map<int, std::int64_t> keyOf;
  const auto apply = [&](const KeyShift& shift) {
    for (auto& [row, key] : keyOf) {
      if (key >= shift.first && key <= shift.last) {
        key += shift.delta;
      }
    }
  };
  std::uint32_t seed = 12345;
  const auto random = [&](std::size_t below) {
    seed = seed * 1664525u + 1013904223u;
    return static_cast<std::size_t>((seed >> 8) % below);
  };
  int next = 0;
  for (int step = 0; step < 800; ++step) {
    if (rows.Size() == 0 || random(3) != 0) {
      const std::size_t at = random(rows.Size() + 1);
      apply(rows.Insert(at, next));
      keyOf[next] = rows.KeyAt(at);
      ++next;
    } else {
      const std::size_t at = random(rows.Size());
      keyOf.erase(rows.At(at));
      apply(rows.Erase(at));
    }
    ASSERT_EQ(rows.Size(), keyOf.size());
    for (std::size_t i = 0; i < rows.Size(); ++i) {
      ASSERT_EQ(keyOf[rows.At(i)], rows.KeyAt(i)) << "step " << step;
      ASSERT_EQ(rows.PositionOf(rows.KeyAt(i)), i);
    }
  }
}

}  // namespace
}  // namespace kelpin::ui
