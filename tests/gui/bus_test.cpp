#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QProcess>
#include <QStandardPaths>

#include "device/qt/activation.h"
#include "device/qt/instance.h"
#include "tests/gui/gui_support.h"

namespace kelpin::test {
namespace {

#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KELPIN_LOOKS_FOR_RACES
#endif
#endif
#ifdef KELPIN_LOOKS_FOR_RACES
constexpr bool kRacesAreLookedFor = true;
#else
constexpr bool kRacesAreLookedFor = false;
#endif

// A session bus of the test's own. Qt keeps one connection a process to the session bus, so this
// is the only test program part that has one.
class Bus {
 public:
  Bus() {
    daemon_.start(QStringLiteral("dbus-daemon"),
                  {QStringLiteral("--session"), QStringLiteral("--nofork"),
                   QStringLiteral("--print-address")});
    if (daemon_.waitForStarted() && daemon_.waitForReadyRead()) {
      address_ = daemon_.readLine().trimmed();
    }
  }
  ~Bus() {
    daemon_.terminate();
    daemon_.waitForFinished();
  }
  Bus(const Bus&) = delete;
  Bus& operator=(const Bus&) = delete;
  const QByteArray& Address() const { return address_; }

 private:
  QProcess daemon_;
  QByteArray address_;
};

class OnTheBus : public GuiTest {
 protected:
  static void SetUpTestSuite() {
    if (kRacesAreLookedFor || used_) {
      return;
    }
    used_ = true;
    bus_ = new Bus;
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus_->Address());
  }
  static void TearDownTestSuite() {
    if (bus_ == nullptr) {
      return;
    }
    QDBusConnection::disconnectFromBus(QStringLiteral("qt_default_session_bus"));
    qunsetenv("DBUS_SESSION_BUS_ADDRESS");
    delete bus_;
    bus_ = nullptr;
  }
  void SetUp() override {
    if (kRacesAreLookedFor) {
      GTEST_SKIP() << "starting a program confuses the race detector";
    }
    if (bus_ == nullptr) {
      GTEST_SKIP() << "the only connection of this process has been used";
    }
    if (QStandardPaths::findExecutable(QStringLiteral("dbus-daemon")).isEmpty()) {
      GTEST_SKIP() << "no dbus-daemon";
    }
    ASSERT_FALSE(bus_->Address().isEmpty());
    ASSERT_TRUE(screen_->RegisterWindowClass({.name = u"OEM_CLASS"}));
  }

  static inline Bus* bus_ = nullptr;
  static inline bool used_ = false;  // these tests are run once, also when all are repeated
};

// What another program does, which is what a second copy's raising comes to.
void ActivateFromOutside(const QByteArray& address, const QString& destination) {
  const QString name = QStringLiteral("another program");
  {
    QDBusConnection other = QDBusConnection::connectToBus(QString::fromLatin1(address), name);
    QDBusMessage call = QDBusMessage::createMethodCall(
        destination, QStringLiteral("/org/kelpin/Kelpin"),
        QStringLiteral("org.freedesktop.Application"), QStringLiteral("Activate"));
    call << QVariantMap{{QStringLiteral("activation-token"), QStringLiteral("token-9")}};
    const QDBusPendingCall answer = other.asyncCall(call);
    EXPECT_TRUE(ServeUntil([&] { return answer.isFinished(); }));
    EXPECT_FALSE(answer.isError()) << answer.error().message().toStdString();
  }
  QDBusConnection::disconnectFromBus(name);
}

TEST_F(OnTheBus, TheProgramOwnsItsNameAndComesForwardWhenActivated) {
  ASSERT_NE(screen_->CreateAnchorWindow(u"OEM_CLASS", u"Kelpin", ui::AnchorStyle::kVisible), 0u);
  QDBusConnectionInterface* bus = QDBusConnection::sessionBus().interface();
  EXPECT_TRUE(bus->isServiceRegistered(QStringLiteral("org.kelpin.Kelpin")));
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  WindowOf(*dialog)->showMinimized();
  ActivateFromOutside(bus_->Address(), QStringLiteral("org.kelpin.Kelpin"));
  EXPECT_TRUE(ServeUntil([&] { return !WindowOf(*dialog)->isMinimized(); }));
}

TEST_F(OnTheBus, AnswersToTheNameItsAnchorTells) {
  ASSERT_NE(screen_->CreateAnchorWindow(u"OEM_CLASS", u"Kelpin", ui::AnchorStyle::kVisible), 0u);
  const auto found = qt::FindAnchor(Folder("run"), "OEM_CLASS", "");
  ASSERT_TRUE(found);
  EXPECT_EQ(found->busName, QDBusConnection::sessionBus().baseService().toStdString());
  SampleDialog handler(*screen_);
  const auto dialog = Show(kListTemplate, handler);
  WindowOf(*dialog)->showMinimized();
  ActivateFromOutside(bus_->Address(), QString::fromStdString(found->busName));
  EXPECT_TRUE(ServeUntil([&] { return !WindowOf(*dialog)->isMinimized(); }));
}

TEST_F(OnTheBus, TheNameIsFreeAgainAfterwards) {
  ASSERT_NE(screen_->CreateAnchorWindow(u"OEM_CLASS", u"Kelpin", ui::AnchorStyle::kVisible), 0u);
  screen_.reset();
  QDBusConnectionInterface* bus = QDBusConnection::sessionBus().interface();
  EXPECT_FALSE(bus->isServiceRegistered(QStringLiteral("org.kelpin.Kelpin")));
}

TEST_F(OnTheBus, ADisabledAnchorTakesNoName) {
  ASSERT_NE(screen_->CreateAnchorWindow(u"OEM_CLASS", u"Kelpin", ui::AnchorStyle::kDisabled), 0u);
  const auto found = qt::FindAnchor(Folder("run"), "OEM_CLASS", "");
  ASSERT_TRUE(found);
  EXPECT_TRUE(found->busName.empty());
}

TEST(OffTheBus, ActivatingNobodyFailsAtOnce) {
  EXPECT_FALSE(qt::Activation::Activate("", "token"));
}

TEST(OffTheBus, TheStartersTokenIsTakenOnce) {
  qputenv("XDG_ACTIVATION_TOKEN", "wayland-token");
  EXPECT_EQ(qt::TakeActivationToken(), "wayland-token");
  EXPECT_EQ(qt::TakeActivationToken(), "");
}

}  // namespace
}  // namespace kelpin::test
