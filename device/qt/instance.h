#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <thread>

// How copies of the program find one another: each anchor window is a socket "window-<handle>" in
// a folder that only the user may enter.
namespace kelpin::qt {

struct AnchorInfo {
  std::uint32_t handle = 0;
  std::string className;  // UTF-8
  std::string title;
  std::string busName;  // the copy's unique name on the session bus, empty when it has none
  bool operator==(const AnchorInfo&) const = default;
};

// $XDG_RUNTIME_DIR/kelpin, else a folder of the user's in the system's temporary folder.
std::filesystem::path DefaultRuntimeFolder();
// Makes the folder when it is not there. False unless it is the user's own and closed to others.
bool PrepareRuntimeFolder(const std::filesystem::path& folder);

// Answers for one anchor window, on a thread of its own, until it is destroyed.
class AnchorServer {
 public:
  // `raise` is called on that thread, with the activation token of who asks (may be empty).
  AnchorServer(std::filesystem::path folder, AnchorInfo info,
               std::function<void(const std::string& token)> raise);
  ~AnchorServer();
  AnchorServer(const AnchorServer&) = delete;
  AnchorServer& operator=(const AnchorServer&) = delete;

  // False when no socket could be made: other copies do not find the window.
  bool Listening() const { return listen_ >= 0; }

 private:
  bool Open();
  void Serve();
  void Answer(int client);

  const std::filesystem::path folder_;
  const AnchorInfo info_;
  const std::function<void(const std::string&)> raise_;
  int listen_ = -1;
  int wake_ = -1;
  std::thread thread_;
};

// A window of another copy with this class and, unless it is empty, this title. Sockets that a
// crashed copy left are removed. Waits at most a second for each copy.
std::optional<AnchorInfo> FindAnchor(const std::filesystem::path& folder,
                                     const std::string& className, const std::string& title);
std::optional<AnchorInfo> AskAnchor(const std::filesystem::path& folder, std::uint32_t handle);
// False when there is no such window.
bool RaiseAnchor(const std::filesystem::path& folder, std::uint32_t handle,
                 const std::string& token);

}  // namespace kelpin::qt
