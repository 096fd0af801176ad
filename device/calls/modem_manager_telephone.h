#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDeadlineTimer>
#include <QObject>
#include <QString>
#include <QVariant>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "platform/telephone.h"

namespace kelpin::device::calls {

// Calls that ModemManager makes through the first modem that can speak. Everything on the screen
// thread, which must have Qt's event loop: neither the service nor the modem is waited for, and
// what becomes of a call that was handed over is told there. A call that was started goes on when
// this is gone, one that is still being prepared is not made.
class ModemManagerTelephone final : public platform::Telephone {
 public:
  struct Options {
    // The bus ModemManager is on; empty: the system's.
    std::string busAddress = {};
    // How long a call may take to be prepared. One that is ready later is not started: nobody
    // expects it any more.
    std::chrono::milliseconds patience{10000};
    // Told, as UTF-8, why a call is not made; also when the modem refuses one that was handed over.
    // May be empty.
    std::function<void(const std::string& why)> failed = nullptr;
  };

  // Null when the bus cannot be reached; `why` says why and what to do. ModemManager and the modem
  // may come later.
  static std::unique_ptr<ModemManagerTelephone> Open(Options options, std::string& why);
  ~ModemManagerTelephone() override;

  // 0 while another call is being prepared. A number with pauses is refused: a modem would leave
  // them out and dial what follows with it.
  int PhoneMakeCall(const platform::PhoneCallRequest& request) override;

 private:
  explicit ModemManagerTelephone(Options options);

  using Answered = std::function<void(const QDBusMessage& answer)>;

  // Connected to the bus, anew when it went away.
  bool Connect();
  // Whether ModemManager runs, or the bus would start it.
  bool HasService();
  // The three steps of a call: each goes on with the next when it is answered.
  void FindModem(const QString& number, const QDeadlineTimer& end);
  void CreateCall(const QString& modem, const QString& number, const QDeadlineTimer& end);
  void StartCall(const QString& modem, const QString& call);
  void DeleteCall(const QString& modem, const QString& call);
  int Refuse(const QString& why) const;
  // Not for longer than `milliseconds`.
  void Ask(const QDBusMessage& question, qint64 milliseconds, Answered answered);

  const Options options_;
  const QString connectionName_;
  QDBusConnection bus_;
  bool preparing_ = false;
  QObject answers_;  // owns what waits for answers
};

}  // namespace kelpin::device::calls
