#pragma once

#include <QDBusAbstractAdaptor>
#include <QObject>
#include <QString>
#include <QStringList>
#include <QVariant>
#include <QVariantMap>
#include <functional>
#include <string>

namespace kelpin::qt {

// The program on the session bus: the name org.kelpin.Kelpin, raised through
// org.freedesktop.Application. Without a bus every call does nothing.
class Activation : public QObject {
  Q_OBJECT

 public:
  explicit Activation(QObject* parent);
  ~Activation() override;

  // Owns the name when no other copy does. The connection's unique name either way, empty without
  // a bus.
  std::string Register();
  // Asks the copy with this unique name to come forward. False when it did not answer.
  static bool Activate(const std::string& uniqueName, const std::string& token);

 Q_SIGNALS:
  void Raise(const QString& token);

 private:
  bool registered_ = false;
};

class ApplicationAdaptor : public QDBusAbstractAdaptor {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

 public:
  explicit ApplicationAdaptor(Activation* activation);

 public Q_SLOTS:
  void Activate(const QVariantMap& platformData);
  void Open(const QStringList& uris, const QVariantMap& platformData);
  void ActivateAction(const QString& action, const QVariantList& parameter,
                      const QVariantMap& platformData);

 private:
  Activation* activation_;
};

// The token this process was started with, which lets another window take the focus; taken once.
std::string TakeActivationToken();
// Has the windows that `activate` activates use `token`.
void WithActivationToken(const std::string& token, const std::function<void()>& activate);

}  // namespace kelpin::qt
