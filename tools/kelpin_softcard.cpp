// The software card behind a virtual reader, so that every program that knows smart cards sees it,
// or in a modem, so that every program that speaks to one does.

#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <chrono>
#include <fstream>
#include <functional>
#include <iostream>
#include <memory>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "device/softcard/soft_channel.h"
#include "platform/mutex.h"
#include "platform/printable.h"
#include "platform/system_trouble.h"
#include "start/command_line.h"
#include "tools/softcard_modem.h"
#include "tools/vpcd_link.h"

namespace {

using namespace kelpin;
using device::softcard::SoftChannel;
using tools::VpcdLink;

constexpr int kExitFailure = 1;
constexpr int kExitUsage = 2;
constexpr std::chrono::milliseconds kPatience{5000};

constexpr const char* kFooter =
    "The card is in the reader, or the modem, as long as this runs; SIGTERM or Ctrl+C takes it "
    "out.\n"
    "As a modem it prints the port to open: kelpin --sim modem:PORT.\n"
    "Every change is in the image before the command is answered; one that cannot be saved is "
    "told\n"
    "here and answered as a memory failure, and the file stays whole. Traces mask the PINs.\n"
    "Ends with 0 when it was told to, 1 when something failed, 2 for a wrong command line.";

struct Options {
  std::string image;
  std::string address = "localhost:35963";
  std::string trace;
  int delay = 0;
  bool asModem = false;
  tools::ModemOptions modem;
};

std::string CheckAddress(const std::string& text) {
  std::string host;
  std::string port;
  return tools::SplitAddress(text, host, port) ? "" : "write it as HOST:PORT";
}

// Ends the connection that serves now, at SIGTERM, SIGINT or SIGHUP.
class Ending {
 public:
  explicit Ending(SoftChannel& card) : card_(card) {
    thread_ = std::thread([this] { Await(); });
  }
  ~Ending() {
    ::pthread_kill(thread_.native_handle(), SIGTERM);
    thread_.join();
  }
  Ending(const Ending&) = delete;
  Ending& operator=(const Ending&) = delete;

  // Before the first thread starts: every thread leaves the signals to ours.
  static void HoldSignals() {
    const ::sigset_t signals = Signals();
    ::pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  }

  // `stop` ends what serves now; null: nothing does. False when the end was asked for.
  bool Serving(std::function<void()> stop) {
    const MutexLock hold(lock_);
    stop_ = std::move(stop);
    return !asked_;
  }

 private:
  static ::sigset_t Signals() {
    ::sigset_t signals;
    ::sigemptyset(&signals);
    for (const int number : {SIGTERM, SIGINT, SIGHUP}) ::sigaddset(&signals, number);
    return signals;
  }

  void Await() {
    const ::sigset_t signals = Signals();
    int number = 0;
    while (::sigwait(&signals, &number) != 0) {
    }
    {
      const MutexLock hold(lock_);
      asked_ = true;
      if (stop_) stop_();
    }
    card_.Remove();  // ends a slow command
  }

  SoftChannel& card_;
  Mutex lock_;
  std::function<void()> stop_ GUARDED_BY(lock_);
  bool asked_ GUARDED_BY(lock_) = false;
  std::thread thread_;
};

int Fail(const std::string& why) {
  std::cerr << "kelpin-softcard: " << platform::PrintableLines(why) << '\n';
  return kExitFailure;
}

// A file that may not grow further is told as a full disk is; unasked, the system ends the program
// instead, and the card with it.
void OutliveFileSizeLimit() {
  struct ::sigaction action = {};
  action.sa_handler = [](int) {};
  action.sa_flags = SA_RESTART;
  ::sigaction(SIGXFSZ, &action, nullptr);
}

int Run(const Options& options) {
  std::string host;
  std::string port;
  if (!tools::SplitAddress(options.address, host, port)) return kExitUsage;

  std::string why;
  const std::unique_ptr<SoftChannel> card = SoftChannel::Open(options.image, why);
  if (card == nullptr) return Fail(why);
  std::ofstream trace;
  if (!options.trace.empty()) {
    ::umask(S_IRWXG | S_IRWXO);  // names and numbers are in it
    trace.open(options.trace, std::ios::app);
    if (!trace) {
      return Fail(platform::Say("%s: the trace cannot be written: %s",
                                {options.trace, platform::SystemTrouble(errno)}));
    }
    card->SetTrace([&trace, &options](std::string_view line) {
      if (trace && !(trace << line << std::endl)) {
        static_cast<void>(
            Fail(platform::Say("%s: the trace cannot be written, and ends here. See "
                               "that the disk is not full",
                               {options.trace})));
      }
    });
  }
  card->SetTrouble([](const std::string& trouble) { static_cast<void>(Fail(trouble)); });

  Ending ending(*card);
  if (options.asModem) {
    tools::SoftcardModem modem(*card, options.modem);
    if (!modem.Open(why)) return Fail(why);
    if (ending.Serving([&modem] { modem.Stop(); })) modem.Serve();
    ending.Serving(nullptr);
    return 0;
  }
  for (;;) {
    const std::unique_ptr<VpcdLink> link = VpcdLink::Connect(host, port, kPatience, why);
    if (link == nullptr) return ending.Serving(nullptr) ? Fail(why) : 0;
    VpcdLink::End end = VpcdLink::End::kStopped;
    if (ending.Serving([&link] { link->Stop(); })) {
      end = link->Serve(*card, std::chrono::milliseconds(options.delay));
    }
    if (!ending.Serving(nullptr)) return 0;
    switch (end) {
      case VpcdLink::End::kStopped:
        return 0;
      case VpcdLink::End::kReaderGone:
        return Fail("the reader on " + options.address +
                    " has gone. Start pcscd, then start again");
      case VpcdLink::End::kCardLost:
        break;
    }
    // The image was changed by another program: taken out, and put in again as it is now.
    std::vector<std::uint8_t> atr;
    if (card->Connect(atr) != device::card::TransportError::kNone) return Fail(card->LastError());
  }
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App cli{"A software SIM or USIM card in a virtual reader (vpcd) of pcscd, or in a modem",
               "kelpin-softcard"};
  cli.add_option("--image", options.image, "The card image")->required()->type_name("FILE");
  CLI::Option* const reader =
      cli.add_option("--vpcd", options.address, "The reader, else " + options.address)
          ->check(CheckAddress)
          ->type_name("HOST:PORT");
  CLI::Option* const modem =
      cli.add_option("--modem", options.modem.link,
                     "A modem on a pseudo-terminal instead of a reader; LINK leads to it")
          ->expected(0, 1)
          ->type_name("[LINK]")
          ->excludes(reader);
  cli.add_flag("!--no-cgla", options.modem.abilities.logicalChannels,
               "The modem knows no logical channels (+CCHO, +CGLA)")
      ->needs(modem);
  cli.add_flag("!--no-csim", options.modem.abilities.apdus, "The modem does not know +CSIM")
      ->needs(modem);
  cli.add_flag("!--no-crsm", options.modem.abilities.fileCommands, "The modem does not know +CRSM")
      ->needs(modem);
  cli.add_flag("!--no-paths", options.modem.abilities.folders,
               "The modem's +CRSM takes no notice of paths")
      ->needs(modem);
  cli.add_option("--unsolicited-ms", options.modem.unsolicited,
                 "The modem tells its signal of its own accord, every N milliseconds")
      ->check(CLI::Range(1, 60000))
      ->type_name("N")
      ->needs(modem);
  cli.add_option("--delay-ms", options.delay, "Every command takes at least so long")
      ->check(CLI::Range(0, 60000))
      ->type_name("N");
  cli.add_option("--trace", options.trace, "Append every command and answer to FILE")
      ->type_name("FILE");
  cli.footer(kFooter);
  cli.set_version_flag("--version", "Kelpin 6.80");
  try {
    cli.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return start::EndOfCommandLine(cli, error, kExitUsage);
  }
  options.asModem = modem->count() > 0;
  options.modem.delay = std::chrono::milliseconds(options.delay);
  Ending::HoldSignals();
  OutliveFileSizeLimit();
  return Run(options);
}
