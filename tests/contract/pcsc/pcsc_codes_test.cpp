#include "device/pcsc/pcsc_codes.h"

#include <gtest/gtest.h>

namespace kelpin::device::pcsc {
namespace {

using card::TransportError;

// By number, as the daemon's manual gives them.
struct Row {
  const char* why;
  long code;
  TransportError error;
  bool endsSession;
};

constexpr Row kRows[] = {
    {"done", 0x00000000, TransportError::kNone, false},
    {"cancelled", 0x80100002, TransportError::kTimeout, false},
    {"invalid handle: the daemon is another one", 0x80100003, TransportError::kNoReader, true},
    {"answer too long for the buffer", 0x80100008, TransportError::kCommunication, false},
    {"unknown reader", 0x80100009, TransportError::kNoReader, true},
    {"time-out", 0x8010000A, TransportError::kTimeout, false},
    {"another program has the card for itself", 0x8010000B, TransportError::kBusy, false},
    {"empty reader", 0x8010000C, TransportError::kNoCard, true},
    {"the card speaks another protocol", 0x8010000F, TransportError::kCommunication, false},
    {"the daemon was ended", 0x80100013, TransportError::kNoReader, true},
    {"not transacted: gone or silent", 0x80100016, TransportError::kReset, true},
    {"reader unplugged", 0x80100017, TransportError::kNoReader, true},
    {"no service", 0x8010001D, TransportError::kNoReader, true},
    {"service stopped", 0x8010001E, TransportError::kNoReader, true},
    {"no readers", 0x8010002E, TransportError::kNoReader, true},
    {"unsupported card", 0x80100065, TransportError::kCommunication, false},
    {"unresponsive card", 0x80100066, TransportError::kCommunication, false},
    {"without power", 0x80100067, TransportError::kReset, true},
    {"reset by another program", 0x80100068, TransportError::kReset, true},
    {"taken out", 0x80100069, TransportError::kRemoved, true},
    {"the daemon was killed", 0x8010006A, TransportError::kNoReader, true},
    {"a code of a later day", 0x80107777, TransportError::kCommunication, false},
};

TEST(PcscCodes, EveryCodeHasItsMeaning) {
  for (const Row& row : kRows) {
    const Verdict verdict = Judge(row.code);
    EXPECT_EQ(ToTransportError(verdict), row.error) << row.why;
    EXPECT_EQ(EndsSession(verdict), row.endsSession) << row.why;
  }
}

TEST(PcscCodes, ACodeMeansTheSameWithItsUpperHalfSet) {
  EXPECT_EQ(Judge(static_cast<LONG>(0x8010000CL)), Verdict::kNoCard);
  EXPECT_EQ(Judge(static_cast<LONG>(~0xFFFFFFFFL | 0x8010000CL)), Verdict::kNoCard);
}

}  // namespace
}  // namespace kelpin::device::pcsc
