
#include "tools/vrx/report/report_files.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <span>
#include <system_error>
#include <thread>
#include <vector>

#if defined(__EMSCRIPTEN__)  // runs no other programs
#elif defined(_WIN32)
#include <process.h>
#else
#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <vrxio/text/path.h>
#include <vrxio/text/whole_file.h>
#include <vrxstore/digest/digest.h>
#include <vrxmath/platform/exceptions.h>
#include <vrxmath/platform/files.h>

#include "tools/vrx/base/command.h"
#include "tools/vrx/base/terminal.h"
#include "tools/vrx/output/file_output.h"

namespace vrx::tool {
namespace {

namespace fs = std::filesystem;

// A folder of its own under the system's temporary one, removed with all that is in it.
class ScratchFolder {
 public:
  ScratchFolder() {
    std::random_device random;
    do {
      path_ = fs::temp_directory_path() / ("vrx-" + std::to_string(random()) + std::to_string(random()));
    } while (!fs::create_directory(path_));
    fs::permissions(path_, fs::perms::owner_all);
  }
  ScratchFolder(const ScratchFolder&) = delete;
  ScratchFolder& operator=(const ScratchFolder&) = delete;
  // Programs that were ended may still write for a moment.
  ~ScratchFolder() {
    constexpr int kAttempts = 20;
    for (int i = 0; i < kAttempts; ++i) {
      std::error_code error;
      fs::remove_all(path_, error);
      if (!error) return;
      std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
  }
  std::string operator/(const char* name) const { return io::Utf8Of(path_ / name); }

 private:
  fs::path path_;
};

// Runs a program found on the path, without its messages. False when there is none of the name.
#if defined(__EMSCRIPTEN__)
bool RunQuietly(const std::vector<std::string>&, const InterruptWatch&) {
  return false;
}
#elif defined(_WIN32)
bool RunQuietly(std::vector<std::string>& arguments, const InterruptWatch&) {
  std::vector<const char*> pointers;
  for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
  pointers.push_back(nullptr);
  return _spawnvp(_P_WAIT, pointers[0], pointers.data()) != -1;
}
#else
bool RunQuietly(std::vector<std::string>& arguments, const InterruptWatch& interrupt) {
  std::vector<char*> pointers;
  pointers.reserve(arguments.size() + 1);
  for (std::string& argument : arguments) pointers.push_back(argument.data());
  pointers.push_back(nullptr);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    posix_spawn_file_actions_addopen(&actions, stream, "/dev/null", O_RDWR, 0);
  }
  // A group of its own, so that all of its processes end together.
  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETPGROUP);
  pid_t child = 0;
  const int error = posix_spawnp(&child, pointers[0], &actions, &attributes, pointers.data(), environ);
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) return false;
  constexpr auto kPatience = std::chrono::seconds(60);
  const auto end = std::chrono::steady_clock::now() + kPatience;
  int status = 0;
  while (waitpid(child, &status, WNOHANG) == 0) {
    if (interrupt.IsNoted() || std::chrono::steady_clock::now() > end) {
      kill(-child, SIGKILL);
      waitpid(child, &status, 0);
      interrupt.Check();
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
  constexpr int kNotFound = 127;
  return !WIFEXITED(status) || WEXITSTATUS(status) != kNotFound;
}
#endif

std::vector<std::string> Browsers() {
  const char* named = std::getenv("VRX_CHROMIUM");
  if (named != nullptr && *named != '\0') return {named};
  return {"chromium", "chromium-browser", "chrome"};
}

std::vector<std::string> PrintingCommand(const std::string& browser, const ScratchFolder& folder) {
  std::vector<std::string> command{browser,
                                   "--headless",
                                   "--disable-gpu",
                                   "--no-first-run",
                                   "--user-data-dir=" + (folder / "profile"),
                                   "--no-pdf-header-footer",
                                   "--print-to-pdf=" + (folder / "report.pdf"),
                                   "file://" + (folder / "report.html")};
#if !defined(_WIN32) && !defined(__EMSCRIPTEN__)
  // Root has no user namespaces to build a sandbox from. The page is the report, which loads nothing.
  if (geteuid() == 0) command.insert(command.begin() + 1, "--no-sandbox");
#endif
  return command;
}

}  // namespace

std::string Sha256(std::string_view content) {
  store::Digest digest;
  digest.Add(content);
  return digest.Finish();
}

std::string HashOfFile(const std::string& path) {
  std::error_code ignored;
  FileReader reader;
  if (!fs::is_regular_file(io::PathOf(path), ignored) || !reader.Open(path)) return {};
  store::Digest digest;
  std::string part(std::size_t{1} << 16, '\0');
  try {
    while (const std::size_t count = reader.Read(std::as_writable_bytes(std::span(part)))) {
      digest.Add(std::string_view(part).substr(0, count));
    }
  } catch (const CArchiveException&) {
    throw InputError(path + ": cannot be read: " + reader.GetError());
  }
  return store::HexText(digest.Finish());
}

std::string PictureUrl(const std::string& path) {
  constexpr std::size_t kLimit = std::size_t{1} << 20;
  const std::string content = ReadWholeFile(path, kLimit);
  const char* type = nullptr;
  if (content.starts_with("\x89PNG\r\n\x1a\n")) type = "image/png";
  if (content.starts_with("\xFF\xD8\xFF")) type = "image/jpeg";
  if (content.starts_with("<") && content.find("<svg") != std::string::npos) type = "image/svg+xml";
  if (type == nullptr) throw InputError(path + ": not a PNG, JPEG or SVG picture");
  return std::string("data:") + type + ";base64," + store::Base64(content);
}

void PrintToPdf(std::string_view html, const std::string& path) {
  const InterruptWatch interrupt;
  const ScratchFolder folder;
  ReplaceFile(folder / "report.html", html);
  bool found = false;
  for (const std::string& browser : Browsers()) {
    std::vector<std::string> command = PrintingCommand(browser, folder);
    found = RunQuietly(command, interrupt);
    if (found) break;
  }
  if (!found) {
    throw InputError(path +
                     ": writing a PDF needs Chromium, which is not installed; install it, name it in "
                     "VRX_CHROMIUM, or write a .html file and print that");
  }
  const std::string printed = folder / "report.pdf";
  std::error_code error;
  const auto size = fs::file_size(io::PathOf(printed), error);
  if (error) throw InputError(path + ": Chromium printed nothing; write a .html file and print that");
  ReplaceFile(path, ReadWholeFile(printed, static_cast<std::size_t>(size)));
}

}  // namespace vrx::tool
