#include "tests/contract/calls/modem_manager_bench.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QProcessEnvironment>
#include <QStringList>
#include <QThread>
#include <filesystem>
#include <memory>

#include "tests/device/scratch_folder.h"

namespace kelpin::contract {
namespace {

constexpr int kPatience = 60000;  // milliseconds, for a machine that has much else to do
constexpr int kStep = 5;
const QString kService = QStringLiteral("org.freedesktop.ModemManager1");
const QString kObserver = QStringLiteral("kelpin-calls-observer");

const std::filesystem::path& Folder() {
  static const test::ScratchFolder folder;
  return folder.Path();
}

std::unique_ptr<QProcess>& Daemon() {
  static std::unique_ptr<QProcess> daemon;
  return daemon;
}

std::string Configuration() {
  return "<busconfig><type>session</type><listen>" + PrivateBus::Address() +
         "</listen><policy context=\"default\"><allow send_destination=\"*\" eavesdrop=\"true\"/>"
         "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>";
}

// A process that is not left behind when the tests are killed.
void EndWithUs(QProcess& process) {
  process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
}

bool AwaitService(bool there) {
  QDBusConnection observer = QDBusConnection(kObserver);
  if (!observer.isConnected()) {
    observer =
        QDBusConnection::connectToBus(QString::fromStdString(PrivateBus::Address()), kObserver);
  }
  for (int waited = 0; waited < kPatience; waited += kStep) {
    if (observer.interface()->isServiceRegistered(kService).value() == there) return true;
    QThread::msleep(kStep);
  }
  return false;
}

}  // namespace

std::string PrivateBus::Address() {
  return "unix:path=" + (Folder() / "bus").string();
}

bool PrivateBus::Start() {
  std::unique_ptr<QProcess>& daemon = Daemon();
  if (daemon != nullptr) return true;
  const std::filesystem::path file = Folder() / "bus.conf";
  test::WriteText(file, Configuration());
  daemon = std::make_unique<QProcess>();
  EndWithUs(*daemon);
  daemon->setProcessChannelMode(QProcess::ForwardedErrorChannel);
  daemon->start(QStringLiteral("dbus-daemon"),
                {QStringLiteral("--config-file=") + QString::fromStdString(file.string()),
                 QStringLiteral("--nofork"), QStringLiteral("--print-address")});
  // It prints its address when it listens.
  if (daemon->waitForReadyRead(kPatience)) return true;
  daemon.reset();
  return false;
}

void PrivateBus::End() {
  std::unique_ptr<QProcess>& daemon = Daemon();
  if (daemon == nullptr) return;
  QDBusConnection::disconnectFromBus(kObserver);
  daemon->terminate();
  daemon->waitForFinished();
  daemon.reset();
  std::filesystem::remove(Folder() / "bus");
}

QString MockPython() {
  static const QString found = [] {
    for (const char* name : {"/usr/bin/python3", "python3"}) {
      QProcess python;
      python.start(QString::fromLatin1(name),
                   {QStringLiteral("-c"), QStringLiteral("import dbusmock")});
      if (python.waitForFinished(kPatience) && python.exitStatus() == QProcess::NormalExit &&
          python.exitCode() == 0) {
        return QString::fromLatin1(name);
      }
    }
    return QString();
  }();
  return found;
}

ModemManagerMock::ModemManagerMock(const std::string& parameters) {
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"),
                     QString::fromStdString(PrivateBus::Address()));
  environment.insert(QStringLiteral("PYTHONDONTWRITEBYTECODE"), QStringLiteral("1"));
  service_.setProcessEnvironment(environment);
  service_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  EndWithUs(service_);
  service_.start(MockPython(),
                 {QStringLiteral("-m"), QStringLiteral("dbusmock"), QStringLiteral("--logfile"),
                  QStringLiteral("/dev/null"), QStringLiteral("--template"),
                  QStringLiteral(KELPIN_SOURCE_DIR "/tests/contract/calls/modem_manager_mock.py"),
                  QStringLiteral("--parameters"), QString::fromStdString(parameters)});
  EXPECT_TRUE(service_.waitForStarted(kPatience) && AwaitService(true))
      << "the mock does not start";
}

std::string ModemManagerMock::NextLine() {
  for (int waited = 0; !service_.canReadLine(); waited += kStep) {
    if (waited >= kPatience) return "nothing was asked";
    QCoreApplication::processEvents();
    QThread::msleep(kStep);
  }
  return service_.readLine().trimmed().toStdString();
}

void ModemManagerMock::AwaitEnd() {
  service_.waitForFinished(kPatience);
  EXPECT_TRUE(AwaitService(false)) << "the mock does not end";
}

void ModemManagerMock::End() {
  if (service_.state() == QProcess::NotRunning) return;
  service_.kill();
  AwaitEnd();
}

}  // namespace kelpin::contract
