#include "device/qt/activation.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <array>

#include "device/qt/desktop_look.h"

namespace kelpin::qt {
namespace {

const QString kName = QStringLiteral("org.kelpin.Kelpin");
const QString kPath = QStringLiteral("/org/kelpin/Kelpin");
const QString kInterface = QStringLiteral("org.freedesktop.Application");
const QString kToken = QStringLiteral("activation-token");
const QString kStartupId = QStringLiteral("desktop-startup-id");
constexpr int kPatience = 2000;  // milliseconds
constexpr std::array kTokenVariables = {"XDG_ACTIVATION_TOKEN", "DESKTOP_STARTUP_ID"};

QString TokenIn(const QVariantMap& platformData) {
  const QString token = platformData.value(kToken).toString();
  return token.isEmpty() ? platformData.value(kStartupId).toString() : token;
}

}  // namespace

Activation::Activation(QObject* parent) : QObject(parent) {
  new ApplicationAdaptor(this);
}

Activation::~Activation() {
  if (registered_) {
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterObject(kPath);
    bus.unregisterService(kName);
  }
}

std::string Activation::Register() {
  if (!HasSessionBus()) {
    return {};
  }
  QDBusConnection bus = QDBusConnection::sessionBus();
  if (!bus.isConnected()) {
    return {};
  }
  // The object is there for who knows this copy by its unique name, whoever has the common one.
  registered_ = bus.registerObject(kPath, this) || registered_;
  bus.interface()->registerService(kName, QDBusConnectionInterface::DontQueueService,
                                   QDBusConnectionInterface::DontAllowReplacement);
  return bus.baseService().toStdString();
}

bool Activation::Activate(const std::string& uniqueName, const std::string& token) {
  if (uniqueName.empty() || !HasSessionBus()) {
    return false;
  }
  QVariantMap platformData;
  if (!token.empty()) {
    platformData.insert(kToken, QString::fromStdString(token));
    platformData.insert(kStartupId, QString::fromStdString(token));
  }
  QDBusMessage call = QDBusMessage::createMethodCall(QString::fromStdString(uniqueName), kPath,
                                                     kInterface, QStringLiteral("Activate"));
  call << platformData;
  const QDBusMessage answer = QDBusConnection::sessionBus().call(call, QDBus::Block, kPatience);
  return answer.type() == QDBusMessage::ReplyMessage;
}

ApplicationAdaptor::ApplicationAdaptor(Activation* activation)
    : QDBusAbstractAdaptor(activation), activation_(activation) {}

void ApplicationAdaptor::Activate(const QVariantMap& platformData) {
  Q_EMIT activation_->Raise(TokenIn(platformData));
}

void ApplicationAdaptor::Open(const QStringList& /*uris*/, const QVariantMap& platformData) {
  Activate(platformData);
}

void ApplicationAdaptor::ActivateAction(const QString& /*action*/,
                                        const QVariantList& /*parameter*/,
                                        const QVariantMap& platformData) {
  Activate(platformData);
}

std::string TakeActivationToken() {
  QByteArray token;
  for (const char* name : kTokenVariables) {
    if (token.isEmpty()) {
      token = qgetenv(name);
    }
    qunsetenv(name);
  }
  return token.toStdString();
}

// Qt's platforms read the variables, on the spot; what is left would only mislead programs that
// this one starts.
void WithActivationToken(const std::string& token, const std::function<void()>& activate) {
  if (!token.empty()) {
    for (const char* name : kTokenVariables) {
      qputenv(name, QByteArray::fromStdString(token));
    }
  }
  activate();
  for (const char* name : kTokenVariables) {
    qunsetenv(name);
  }
}

}  // namespace kelpin::qt
