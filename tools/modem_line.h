#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include "platform/mutex.h"

namespace kelpin::tools {

// The modem's end of a line: a pseudo-terminal whose other end is the port that programs open.
class ModemLine {
 public:
  // The answer to one command line; on the serving thread.
  using Answer = std::function<std::string(std::string_view command)>;

  // `link`: a symbolic link to the port, made anew and taken away at the end; empty: none. Null on
  // failure; `why` says what to do.
  static std::unique_ptr<ModemLine> Open(const std::string& link, std::string& why);
  ~ModemLine();
  ModemLine(const ModemLine&) = delete;
  ModemLine& operator=(const ModemLine&) = delete;

  // What to open: the link, or the pseudo-terminal itself.
  const std::string& Port() const { return port_; }

  // Answers commands until Stop.
  void Serve(const Answer& answer);
  // Any thread.
  void Stop();
  // Sends what is no answer, and never before an answer that was found earlier. Any thread, but not
  // while answering. What nobody takes off the line in time is lost.
  void Tell(std::string_view text) EXCLUDES(writeLock_);

 private:
  ModemLine(int line, int port, int stop) : line_(line), slave_(port), stop_(stop) {}
  void LetOthersIn() const;
  void Write(std::string_view text) REQUIRES(writeLock_);

  const int line_;
  const int slave_;  // kept open: with nobody at the other end a line cannot be waited on
  const int stop_;
  std::string port_;
  std::string link_;
  Mutex writeLock_;
};

}  // namespace kelpin::tools
