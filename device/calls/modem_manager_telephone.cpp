#include "device/calls/modem_manager_telephone.h"

#include <QDBusArgument>
#include <QDBusError>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QMap>
#include <QVariantMap>
#include <algorithm>
#include <atomic>
#include <initializer_list>
#include <string_view>
#include <utility>

#include "platform/dial_number.h"
#include "platform/wording.h"

namespace kelpin::device::calls {
namespace {

const QString kService = QStringLiteral("org.freedesktop.ModemManager1");
const QString kRoot = QStringLiteral("/org/freedesktop/ModemManager1");
const QString kBus = QStringLiteral("org.freedesktop.DBus");
const QString kBusPath = QStringLiteral("/org/freedesktop/DBus");
const QString kObjectManager = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString kModem = QStringLiteral("org.freedesktop.ModemManager1.Modem");
const QString kVoice = QStringLiteral("org.freedesktop.ModemManager1.Modem.Voice");
const QString kCall = QStringLiteral("org.freedesktop.ModemManager1.Call");
const QString kModems = QStringLiteral("a{oa{sa{sv}}}");  // what GetManagedObjects answers

constexpr std::string_view kNotRunning =
    platform::Words("ModemManager is not running. Install the package modemmanager and start it.");

QString Say(std::string_view english, std::initializer_list<std::string_view> values = {}) {
  return QString::fromStdString(platform::Say(english, values));
}

// Milliseconds. The bus itself answers at once.
constexpr int kBusPatience = 1000;
// A modem may need this long until the network takes a call.
constexpr qint64 kStartPatience = 120000;

using Interfaces = QMap<QString, QVariantMap>;

QString NewConnectionName() {
  static std::atomic<int> last = 0;
  return QStringLiteral("kelpin-calls-%1").arg(++last);
}

QDBusConnection ConnectTo(const std::string& address, const QString& name) {
  return address.empty() ? QDBusConnection::connectToBus(QDBusConnection::SystemBus, name)
                         : QDBusConnection::connectToBus(QString::fromStdString(address), name);
}

bool IsAnswer(const QDBusMessage& message, const QString& signature) {
  return message.type() == QDBusMessage::ReplyMessage && message.signature() == signature;
}

// Nobody knows what became of the question.
bool IsUnanswered(QDBusError::ErrorType error) {
  return error == QDBusError::NoReply || error == QDBusError::Timeout ||
         error == QDBusError::TimedOut || error == QDBusError::Disconnected;
}

QString WhyNot(const QDBusMessage& answer) {
  if (answer.type() != QDBusMessage::ErrorMessage) {
    return Say("ModemManager gave an answer that is not understood. Is it up to date?");
  }
  const QDBusError error(answer);
  const QString name = answer.errorName();
  if (error.type() == QDBusError::ServiceUnknown ||
      name == QStringLiteral("org.freedesktop.DBus.Error.NameHasNoOwner") ||
      name.startsWith(QStringLiteral("org.freedesktop.DBus.Error.Spawn."))) {
    return Say(kNotRunning);
  }
  if (IsUnanswered(error.type())) {
    return Say("ModemManager does not answer. Look whether it runs and the modem is still there.");
  }
  return Say("The modem did not take the call: %s", {answer.errorMessage().toStdString()});
}

// The modem with the lowest number comes first.
bool StandsBefore(const QString& one, const QString& other) {
  return one.size() != other.size() ? one.size() < other.size() : one < other;
}

// The first modem that can speak; empty when there is none, then `why` says why.
QString FirstModem(const QDBusMessage& answer, QString& why) {
  QString first;
  bool modems = false;
  const auto objects = answer.arguments().constFirst().value<QDBusArgument>();
  objects.beginMap();
  while (!objects.atEnd()) {
    QDBusObjectPath path;
    Interfaces interfaces;
    objects.beginMapEntry();
    objects >> path >> interfaces;
    objects.endMapEntry();
    modems = modems || interfaces.contains(kModem);
    if (interfaces.contains(kVoice) && (first.isEmpty() || StandsBefore(path.path(), first))) {
      first = path.path();
    }
  }
  objects.endMap();
  if (first.isEmpty()) {
    why = modems ? Say("The modem cannot make calls; ModemManager offers none through it. Put in "
                       "one that is more than a modem for data.")
                 : Say("ModemManager knows no modem. Plug one in and wait until \"mmcli -L\" "
                       "lists it.");
  }
  return first;
}

}  // namespace

std::unique_ptr<ModemManagerTelephone> ModemManagerTelephone::Open(Options options,
                                                                   std::string& why) {
  std::unique_ptr<ModemManagerTelephone> telephone(new ModemManagerTelephone(std::move(options)));
  if (!telephone->bus_.isConnected()) {
    why = platform::Say(
        "the system bus, through which ModemManager is reached, cannot be reached (%s). Install "
        "the "
        "package dbus and start it, or start Kelpin without --calls modem",
        {telephone->bus_.lastError().message().toStdString()});
    return nullptr;
  }
  return telephone;
}

ModemManagerTelephone::ModemManagerTelephone(Options options)
    : options_(std::move(options)),
      connectionName_(NewConnectionName()),
      bus_(ConnectTo(options_.busAddress, connectionName_)) {}

ModemManagerTelephone::~ModemManagerTelephone() {
  QDBusConnection::disconnectFromBus(connectionName_);
}

bool ModemManagerTelephone::Connect() {
  if (!bus_.isConnected()) {
    QDBusConnection::disconnectFromBus(connectionName_);
    bus_ = ConnectTo(options_.busAddress, connectionName_);
  }
  return bus_.isConnected();
}

bool ModemManagerTelephone::HasService() {
  QDBusMessage owned =
      QDBusMessage::createMethodCall(kBus, kBusPath, kBus, QStringLiteral("NameHasOwner"));
  owned << kService;
  const QDBusMessage owner = bus_.call(owned, QDBus::Block, kBusPatience);
  if (IsAnswer(owner, QStringLiteral("b")) && owner.arguments().constFirst().toBool()) return true;
  const QDBusMessage names = bus_.call(
      QDBusMessage::createMethodCall(kBus, kBusPath, kBus, QStringLiteral("ListActivatableNames")),
      QDBus::Block, kBusPatience);
  return IsAnswer(names, QStringLiteral("as")) &&
         names.arguments().constFirst().toStringList().contains(kService);
}

int ModemManagerTelephone::PhoneMakeCall(const platform::PhoneCallRequest& request) {
  if (request.size != platform::kCallRequestSize ||
      !platform::IsDialNumber(request.destinationAddress)) {
    return 0;
  }
  if (request.destinationAddress.find_first_of(u"pPwW") != std::u16string_view::npos) {
    return Refuse(
        Say("A modem cannot dial a number with pauses. Call the part before the first one."));
  }
  if (preparing_) {
    return Refuse(
        Say("The modem has not answered to the last call yet. Wait a moment, then call again."));
  }
  if (!Connect()) {
    return Refuse(
        Say("The system bus cannot be reached, and ModemManager through it. Start dbus, or Kelpin "
            "without --calls modem."));
  }
  if (!HasService()) return Refuse(Say(kNotRunning));
  const QString number = QString::fromUtf16(
      request.destinationAddress.data(), static_cast<qsizetype>(request.destinationAddress.size()));
  preparing_ = true;
  FindModem(number, QDeadlineTimer(options_.patience));
  return 1;
}

void ModemManagerTelephone::FindModem(const QString& number, const QDeadlineTimer& end) {
  Ask(QDBusMessage::createMethodCall(kService, kRoot, kObjectManager,
                                     QStringLiteral("GetManagedObjects")),
      end.remainingTime(), [this, number, end](const QDBusMessage& answer) {
        QString why = WhyNot(answer);
        const QString modem = IsAnswer(answer, kModems) ? FirstModem(answer, why) : QString();
        if (!modem.isEmpty()) {
          CreateCall(modem, number, end);
          return;
        }
        preparing_ = false;
        Refuse(why);
      });
}

// A call that is created after the time is over, and so without our knowing, is never started.
void ModemManagerTelephone::CreateCall(const QString& modem, const QString& number,
                                       const QDeadlineTimer& end) {
  QDBusMessage question =
      QDBusMessage::createMethodCall(kService, modem, kVoice, QStringLiteral("CreateCall"));
  question << QVariantMap{{QStringLiteral("number"), number}};
  Ask(question, end.remainingTime(), [this, modem](const QDBusMessage& answer) {
    preparing_ = false;
    if (IsAnswer(answer, QStringLiteral("o"))) {
      StartCall(modem, answer.arguments().constFirst().value<QDBusObjectPath>().path());
    } else {
      Refuse(WhyNot(answer));
    }
  });
}

void ModemManagerTelephone::StartCall(const QString& modem, const QString& call) {
  Ask(QDBusMessage::createMethodCall(kService, call, kCall, QStringLiteral("Start")),
      kStartPatience, [this, modem, call](const QDBusMessage& answer) {
        if (answer.type() != QDBusMessage::ErrorMessage) return;
        // One that may be ringing is left to whoever can end it.
        if (!IsUnanswered(QDBusError(answer).type())) DeleteCall(modem, call);
        Refuse(WhyNot(answer));
      });
}

void ModemManagerTelephone::DeleteCall(const QString& modem, const QString& call) {
  QDBusMessage removal =
      QDBusMessage::createMethodCall(kService, modem, kVoice, QStringLiteral("DeleteCall"));
  removal << QVariant::fromValue(QDBusObjectPath(call));
  bus_.send(removal);
}

int ModemManagerTelephone::Refuse(const QString& why) const {
  if (options_.failed) options_.failed(why.toStdString());
  return 0;
}

void ModemManagerTelephone::Ask(const QDBusMessage& question, qint64 milliseconds,
                                Answered answered) {
  // 0 and less would stand for no limit.
  const auto limit = static_cast<int>(std::max<qint64>(milliseconds, 1));
  auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(question, limit), &answers_);
  QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &answers_,
                   [watcher, answered = std::move(answered)] {
                     watcher->deleteLater();
                     answered(watcher->reply());
                   });
}

}  // namespace kelpin::device::calls
