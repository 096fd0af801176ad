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
// thread, which must have Qt's event loop: what becomes of a call that was handed over is told
// there. The call goes on when this is gone.
class ModemManagerTelephone final : public platform::Telephone {
 public:
  struct Options {
    // The bus ModemManager is on; empty: the system's.
    std::string busAddress = {};
    // How long PhoneMakeCall may take in all.
    std::chrono::milliseconds patience{3000};
    // Told, as UTF-8, why a call is not made; also when the modem refuses one that was handed over.
    // May be empty.
    std::function<void(const std::string& why)> failed = nullptr;
  };

  // Null when the bus cannot be reached; `why` says why and what to do. ModemManager and the modem
  // may come later.
  static std::unique_ptr<ModemManagerTelephone> Open(Options options, std::string& why);
  ~ModemManagerTelephone() override;

  // A number with pauses is refused: a modem would leave them out and dial what follows with it.
  int PhoneMakeCall(const platform::PhoneCallRequest& request) override;

 private:
  explicit ModemManagerTelephone(Options options);

  // Connected to the bus, anew when it went away.
  bool Connect();
  // Empty when there is none; then `why` says why.
  QString FindModem(const QDeadlineTimer& end, QString& why);
  // The new call, which nobody is called by yet; empty on failure.
  QString CreateCall(const QString& modem, const QString& number, const QDeadlineTimer& end,
                     QString& why);
  void StartCall(const QString& modem, const QString& call);
  int Refuse(const QString& why) const;
  // Waits for the answer until `end`.
  QDBusMessage Ask(const QDBusMessage& question, const QDeadlineTimer& end);

  const Options options_;
  const QString connectionName_;
  QDBusConnection bus_;
  QObject answers_;  // owns what waits for answers
};

}  // namespace kelpin::device::calls
