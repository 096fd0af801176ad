// A sanitizer brings its own operator new, and only one can be in a program.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KELPIN_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define KELPIN_SANITIZED 1
#endif
#endif

#ifndef KELPIN_SANITIZED

#include <cstdlib>
#include <new>

#include "app/list_turn.h"
#include "tests/app/app_fixture.h"

namespace {

// Allocations of this thread until one fails; 0 fails none.
thread_local int allocationsLeft = 0;

void* Allocate(std::size_t size) {
  if (allocationsLeft > 0 && --allocationsLeft == 0) return nullptr;
  return std::malloc(size == 0 ? 1 : size);
}

}  // namespace

// This program's own, so that a test can run out of memory. Not inlined: the compiler would take
// the malloc and the free in them for a mismatched pair.
[[gnu::noinline]] void* operator new(std::size_t size) {
  if (void* const memory = Allocate(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return Allocate(size);
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace kelpin::app {
namespace {

// Texts too long to be kept without memory of their own.
constexpr const char16_t* kName = u"A name that does not fit into a short string";
constexpr const char16_t* kNumber = u"+4930123456789012345678901234567890";

class MemoryFaultTest : public AppTest {};

TEST_F(MemoryFaultTest, ARowThatFindsNoMemoryIsLeftOut) {
  Open();
  ASSERT_TRUE(TakeList(*state));
  int failures = 0;
  for (int failing = 1;; ++failing) {
    ASSERT_LT(failing, 200);
    allocationsLeft = failing;
    const int inserted = InsertListRow(*state, 5, kNumber, kName);
    const bool failed = allocationsLeft == 0;
    allocationsLeft = 0;
    EXPECT_EQ(inserted, failed ? 0 : 1);
    EXPECT_EQ(List().ItemCount(), failed ? 0 : 1) << "allocation " << failing;
    if (!failed) break;
    ++failures;
  }
  EXPECT_GT(failures, 3);  // the block and its texts at least
  EXPECT_EQ(RowText(0), std::u16string(u"5|") + kName + u"|" + kNumber);
}

TEST_F(MemoryFaultTest, ARowThatCannotBeReplacedIsStillARow) {
  Open();
  ASSERT_TRUE(TakeList(*state));
  ASSERT_EQ(InsertListRow(*state, 5, u"1", u"Anna"), 1);
  for (int failing = 1;; ++failing) {
    ASSERT_LT(failing, 200);
    allocationsLeft = failing;
    const int replaced = ReplaceListRow(*state, 0, 5, kName, kNumber);
    const bool failed = allocationsLeft == 0;
    allocationsLeft = 0;
    EXPECT_EQ(replaced, failed ? 0 : 1);
    EXPECT_EQ(List().ItemCount(), 1);
    EXPECT_EQ(GetListRow(*state, 0, nullptr, nullptr, nullptr), 1);
    if (!failed) break;
  }
  EXPECT_EQ(RowText(0), std::u16string(u"5|") + kName + u"|" + kNumber);
}

}  // namespace
}  // namespace kelpin::app

#endif  // KELPIN_SANITIZED
