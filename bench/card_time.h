#pragma once

namespace kelpin::bench {

inline constexpr double kSecondsPerByte = 12 * 372 / 3.5712e6;  // 12 etu at 9600 bit/s
                                                                // (ISO/IEC 7816-3)
inline constexpr double kSecondsPerCommand = 0.020;             // a card that answers in 20 ms

}  // namespace kelpin::bench
