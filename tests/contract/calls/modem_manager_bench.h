#pragma once

#include <QProcess>
#include <QString>
#include <string>

namespace kelpin::contract {

// A message bus for this test program, which starts no service and ends with it.
class PrivateBus {
 public:
  // Where it is, whether it runs or not.
  static std::string Address();
  // False when it does not start. May be started anew when it had been ended.
  static bool Start();
  static void End();
};

// A Python that has dbusmock; empty when it is not installed.
QString MockPython();

// A ModemManager on the private bus. Ends with us.
class ModemManagerMock {
 public:
  // On the bus, which has been started. `parameters` as modem_manager_mock.py has them, JSON. When
  // this returns the service is there.
  explicit ModemManagerMock(const std::string& parameters);
  ~ModemManagerMock() { End(); }
  ModemManagerMock(const ModemManagerMock&) = delete;
  ModemManagerMock& operator=(const ModemManagerMock&) = delete;

  // Serves the event loop until it prints the next line; without the line's end.
  std::string NextLine();
  // Waits for the end of the service and until the bus has noticed.
  void AwaitEnd();
  void End();

 private:
  QProcess service_;
};

inline constexpr char kOneModem[] = R"({"modems": [[0, true]]})";

}  // namespace kelpin::contract
