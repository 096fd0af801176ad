#pragma once

#include <cstdint>
#include <string>

namespace kelpin::platform {

// What the program tells the device of how it uses the card that is in. Any thread.
class CardUse {
 public:
  virtual ~CardUse() = default;

  // Where another program may have written to the card since, nothing more is answered from memory.
  virtual void ReadAfresh() = 0;
  // What is changed from here to LetGo is meant for the card that is in now. Another one that is
  // put in meanwhile can be read and refuses every change with kWrongSim. Nesting is counted.
  virtual void Hold() = 0;
  virtual void LetGo() = 0;
  // Rises whenever what was read before may no longer be what the card holds.
  [[nodiscard]] virtual std::uint32_t Generation() const = 0;
  // Every change is refused: another card is in. Outside of Hold and LetGo until that one was read
  // from its first entry.
  [[nodiscard]] virtual bool IsExchanged() const = 0;
  // The program was told to end: nothing is asked of the card any more, and every call fails.
  [[nodiscard]] virtual bool IsGivenUp() const = 0;
  // Why the card cannot be reached now, and what to do, as the device says it to the user; empty
  // when it can, or when the device knows no more than the result codes tell.
  [[nodiscard]] virtual std::u16string Trouble() const { return {}; }
};

}  // namespace kelpin::platform
