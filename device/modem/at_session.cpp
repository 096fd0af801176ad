#include "device/modem/at_session.h"

#include <algorithm>
#include <cstddef>
#include <utility>

#include "platform/wording.h"

namespace kelpin::device::modem {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kGreetings = 5;
// No command is answered with more; a modem that never stops would fill the memory.
constexpr std::size_t kMostLines = 64;

// What a modem tells of its own accord begins so (or is one of a few words).
bool IsMessage(std::string_view line) {
  constexpr std::string_view kSigns = "+^*#%$&";
  return kSigns.find(line.front()) != std::string_view::npos || line == "RING" || line == "RDY" ||
         line.find(" DONE") != std::string_view::npos;
}

void Wipe(std::string& text) {
  std::fill(text.begin(), text.end(), '\0');
  text.clear();
}

}  // namespace

bool AtSession::Open(const std::string& path, std::string& why) {
  port_.reset();
  {
    const MutexLock hold(lock_);
    gone_ = false;
    pending_ = {};
  }
  inStep_ = false;
  assembler_.Clear();
  port_ =
      AtPort::Open(path,
                   {.received = [this](std::span<const std::uint8_t> bytes) { Received(bytes); },
                    .gone = [this] { Gone(); }},
                   why);
  if (port_ == nullptr) return false;
  if (!Synchronise()) {
    port_.reset();
    why = platform::Say(
              "%s does not answer as a modem does. A modem often has several ports, of which only "
              "one or two take commands: try another.",
              {path}) +
          ' ' + KnownPorts();
    return false;
  }
  Greet();
  return true;
}

void AtSession::Greet() {
  // Each may fail: an echo is known when it comes, and errors are understood in words too.
  for (const char* command : {"ATE0", "ATV1", "AT+CMEE=1"}) {
    static_cast<void>(Exchange(command, "", patience_.plain, false));
  }
}

void AtSession::Received(std::span<const std::uint8_t> bytes) {
  {
    const MutexLock hold(lock_);
    lastByte_ = Clock::now();
  }
  assembler_.Add(bytes, [this](std::string_view line) { Line(line); });
}

void AtSession::Line(std::string_view line) {
  {
    const MutexLock hold(lock_);
    if (pending_.active && !pending_.ended) {
      // Behind the prompt or the rubbish that may stand before it.
      if (line.ends_with(pending_.command)) return;
      if (auto last = ParseLastLine(line)) {
        pending_.answer.end = last->end;
        pending_.answer.error = last->error;
        pending_.ended = true;
        changed_.notify_all();
        return;
      }
      const bool named = !pending_.prefix.empty() && Behind(line, pending_.prefix).has_value();
      if (named || (pending_.bare && !IsMessage(line))) {
        if (pending_.answer.lines.size() < kMostLines) pending_.answer.lines.emplace_back(line);
        changed_.notify_all();
      }
    } else if (const auto last = ParseLastLine(line)) {
      // Of a command that was given up, or of none of ours: the next might be taken for an answer.
      if (last->end == AtEnd::kOk || last->end == AtEnd::kCme) strayed_ = true;
      return;
    }
  }
  observer_.line(line);
}

void AtSession::Gone() {
  {
    const MutexLock hold(lock_);
    gone_ = true;
    changed_.notify_all();
  }
  observer_.gone();
}

AtAnswer AtSession::Exchange(const std::string& command, std::string_view prefix,
                             std::chrono::milliseconds patience, bool bare) {
  const auto limit = Clock::now() + patience;
  // Wavecom's answer to AT+CPIN? has no last line.
  const bool unfinished = command == "AT+CPIN?";
  {
    const MutexLock hold(lock_);
    if (gone_) return {.end = AtEnd::kGone};
    pending_ = {.active = true,
                .bare = bare,
                .unfinished = unfinished,
                .command = command,
                .prefix = prefix};
  }
  std::string bytes;
  bytes.reserve(command.size() + 1);
  bytes = command;
  bytes += '\r';
  const bool sent = port_->Write(std::move(bytes), patience);

  const MutexLock hold(lock_);
  // A port that takes nothing before its time is over has gone, which its reader tells in a moment.
  while (!sent && !gone_ && Clock::now() < limit) {
    changed_.wait_until(lock_, limit);
  }
  while (sent && !pending_.ended && !gone_) {
    auto until = limit;
    const bool mayBeAll = pending_.unfinished && !pending_.answer.lines.empty();
    if (mayBeAll) until = std::min(limit, lastByte_ + 2 * patience_.quiet);
    if (changed_.wait_until(lock_, until) != std::cv_status::timeout) continue;
    if (mayBeAll && !pending_.ended && Clock::now() >= lastByte_ + 2 * patience_.quiet) {
      pending_.answer.end = AtEnd::kOk;
      pending_.ended = true;
    }
    if (Clock::now() >= limit) break;
  }
  AtAnswer answer = std::move(pending_.answer);
  if (!pending_.ended) answer.end = gone_ ? AtEnd::kGone : AtEnd::kTimeout;
  Wipe(pending_.command);
  pending_ = {};
  return answer;
}

void AtSession::Drain() {
  const auto limit = Clock::now() + patience_.drain;
  auto quietSince = Clock::now();
  const MutexLock hold(lock_);
  while (!gone_) {
    quietSince = std::max(quietSince, lastByte_);
    const auto until = std::min(limit, quietSince + patience_.quiet);
    if (Clock::now() >= until) return;
    changed_.wait_until(lock_, until);
  }
}

bool AtSession::Synchronise() {
  inStep_ = false;
  for (int greeting = 0; greeting < kGreetings && !inStep_; ++greeting) {
    Drain();
    const AtAnswer answer = Exchange("AT", "", patience_.sync, false);
    if (answer.end == AtEnd::kGone) return false;
    if (!answer.Ok()) continue;
    // The answer that was still due may have been taken for this one: then this one comes now.
    const auto before = Clock::now();
    Drain();
    const MutexLock hold(lock_);
    inStep_ = lastByte_ <= before || greeting > 0;
    strayed_ = false;
  }
  return inStep_;
}

AtAnswer AtSession::Send(const std::string& command, std::string_view prefix,
                         std::chrono::milliseconds patience, bool bare) {
  if (port_ == nullptr) return {.end = AtEnd::kGone};
  bool strayed = false;
  {
    const MutexLock hold(lock_);
    strayed = strayed_;
  }
  const bool greeted = inStep_;
  if ((!inStep_ || strayed) && !Synchronise()) {
    const MutexLock hold(lock_);
    return {.end = gone_ ? AtEnd::kGone : AtEnd::kTimeout};
  }
  if (!greeted) Greet();
  AtAnswer answer = Exchange(command, prefix, patience, bare);
  if (answer.end == AtEnd::kTimeout) inStep_ = false;
  return answer;
}

}  // namespace kelpin::device::modem
