// Qt's event loop, in which the answers to calls that were started arrive, is there before any
// test.

#include <gtest/gtest.h>

#include <QCoreApplication>

#include "tests/contract/calls/modem_manager_bench.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  QCoreApplication application(argc, argv);
  const int result = RUN_ALL_TESTS();
  kelpin::contract::PrivateBus::End();
  return result;
}
