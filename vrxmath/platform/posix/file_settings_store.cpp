#include <vrxmath/platform/posix/file_settings_store.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/file.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>
#include <utility>

#include <vrxmath/platform/posix/link_target.h>

namespace vrx::platform_internal {
namespace {

constexpr const char* kDirectory = "/ostrel";
constexpr const char* kFile = "/settings.conf";

// Beyond this a file is not ours: it is neither read nor replaced.
constexpr int64_t kMaxFileBytes = int64_t{16} << 20;

// A writer holds the lock for milliseconds; whoever still waits after this gives up instead of hanging.
constexpr auto kLockPatience = std::chrono::seconds(10);
constexpr auto kLockPause = std::chrono::milliseconds(1);

constexpr int kMaxKeptAside = 99;

// An open file descriptor.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(std::exchange(other.number_, -1)) {}
  Descriptor& operator=(Descriptor&&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }
  int Number() const { return number_; }
  bool IsOpen() const { return number_ >= 0; }

 private:
  int number_;
};

// O_NONBLOCK: a named pipe in the file's place must not block.
Descriptor Open(const std::string& path, int flags) {
  return Descriptor(::open(path.c_str(), flags | O_CLOEXEC | O_NONBLOCK, 0600));
}

bool MakeDirectory(const std::string& path) {
  return ::mkdir(path.c_str(), 0700) == 0 || errno == EEXIST;
}

bool MayWrite(const std::string& path) {
  return ::faccessat(AT_FDCWD, path.c_str(), W_OK, AT_EACCESS) == 0;
}

// The settings file's path behind any links, with its directory made; "" when settings cannot be kept there.
std::string PreparePath(const std::string& configDirectory) {
  if (configDirectory.empty()) return {};
  const std::string directory = configDirectory + kDirectory;
  if (!MakeDirectory(configDirectory) || !MakeDirectory(directory) || !MayWrite(directory)) return {};
  const std::string path = LinkTarget(directory + kFile);
  return MayWrite(path) || errno == ENOENT ? path : std::string();
}

// The whole file; empty text when there is none yet, nothing when there is something else in its place.
std::optional<std::string> ReadFile(const std::string& path) {
  const Descriptor file = Open(path, O_RDONLY);
  if (!file.IsOpen()) return errno == ENOENT ? std::optional(std::string()) : std::nullopt;
  struct stat status = {};
  if (::fstat(file.Number(), &status) != 0 || !S_ISREG(status.st_mode) || status.st_size > kMaxFileBytes) {
    return std::nullopt;
  }
  std::string text(static_cast<std::size_t>(status.st_size), '\0');
  std::size_t length = 0;
  while (length < text.size()) {
    const ssize_t count = ::read(file.Number(), text.data() + length, text.size() - length);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    length += static_cast<std::size_t>(count);
  }
  return length == text.size() ? std::optional(std::move(text)) : std::nullopt;
}

bool WriteAll(int file, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(file, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return ::fsync(file) == 0;
}

// Puts `text` in the place of the file in one step. Only for the holder of the lock: the temporary file has
// a fixed name, so that one left behind by a killed process is used again instead of piling up. The file keeps
// its mode; a new one is its user's alone.
bool ReplaceFile(const std::string& path, std::string_view text) {
  const std::string temporary = path + ".new";
  struct stat old = {};
  const mode_t mode = ::stat(path.c_str(), &old) == 0 ? old.st_mode & 07777 : 0600;
  {
    const Descriptor file = Open(temporary, O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW);
    if (!file.IsOpen() || ::fchmod(file.Number(), mode) != 0 || !WriteAll(file.Number(), text)) return false;
  }
  if (::rename(temporary.c_str(), path.c_str()) != 0) return false;
  const Descriptor directory = Open(path.substr(0, path.rfind('/') + 1), O_RDONLY | O_DIRECTORY);
  return directory.IsOpen() && ::fsync(directory.Number()) == 0;
}

// Keeps a damaged content beside the file under the first free name.
bool KeepAside(const std::string& path, std::string_view text) {
  for (int number = 1; number <= kMaxKeptAside; ++number) {
    const std::string name = path + ".damaged-" + std::to_string(number);
    const Descriptor file = Open(name, O_WRONLY | O_CREAT | O_EXCL);
    if (file.IsOpen()) return WriteAll(file.Number(), text);
    if (errno != EEXIST) return false;
  }
  return false;
}

// The lock on a settings file: held while the descriptor is open.
Descriptor Lock(const std::string& path) {
  Descriptor lock = Open(path + ".lock", O_RDWR | O_CREAT);
  const auto deadline = std::chrono::steady_clock::now() + kLockPatience;
  while (lock.IsOpen() && ::flock(lock.Number(), LOCK_EX | LOCK_NB) != 0) {
    if ((errno != EWOULDBLOCK && errno != EINTR) || std::chrono::steady_clock::now() > deadline)
      return Descriptor();
    std::this_thread::sleep_for(kLockPause);
  }
  return lock;
}

}  // namespace

FileSettingsStore::FileSettingsStore(std::function<std::string()> configDirectory)
    : configDirectory_(std::move(configDirectory)) {}

bool FileSettingsStore::OpenKey(const SettingsPath& path, bool create) {
  const std::string file = PreparePath(configDirectory_());
  const std::optional<std::string> text = file.empty() ? std::nullopt : ReadFile(file);
  if (!text || !IsValidPath(path)) return false;
  const SettingsDocument document = SettingsDocument::Parse(*text);
  if (path.size() == 1 || document.HasKey(path)) return true;
  // A damaged file is written for a value only, which makes its key: opening comes before every reading.
  if (document.IsDamaged()) return create;
  return create && Update([&](SettingsDocument& changed) { changed.AddKey(path); });
}

std::optional<SettingValue> FileSettingsStore::Read(const SettingsPath& key, WideView name) {
  const std::string file = PreparePath(configDirectory_());
  const std::optional<std::string> text = file.empty() ? std::nullopt : ReadFile(file);
  if (!text) return std::nullopt;
  const SettingsDocument document = SettingsDocument::Parse(*text);
  const SettingValue* value = document.Find(key, name);
  return value != nullptr ? std::optional(*value) : std::nullopt;
}

bool FileSettingsStore::Write(const SettingsPath& key, WideView name, const SettingValue& value) {
  if (!IsValidPath(key) || name.size() > kMaxValueName) return false;
  return Update([&](SettingsDocument& document) { document.Set(key, name, value); });
}

std::vector<SettingsEntry> FileSettingsStore::List(const SettingsPath& key) {
  const std::string file = PreparePath(configDirectory_());
  const std::optional<std::string> text = file.empty() ? std::nullopt : ReadFile(file);
  return text ? SettingsDocument::Parse(*text).List(key) : std::vector<SettingsEntry>();
}

// Changes the document under the lock: what another process wrote meanwhile is in it.
bool FileSettingsStore::Update(const std::function<void(SettingsDocument&)>& change) {
  const std::string file = PreparePath(configDirectory_());
  if (file.empty()) return false;
  const Descriptor lock = Lock(file);
  const std::optional<std::string> old = lock.IsOpen() ? ReadFile(file) : std::nullopt;
  if (!old) return false;
  SettingsDocument document = SettingsDocument::Parse(*old);
  change(document);
  const std::string text = document.Format();
  if (text == *old) return true;
  if (static_cast<int64_t>(text.size()) > kMaxFileBytes) return false;
  if (document.IsDamaged() && !KeepAside(file, *old)) return false;
  return ReplaceFile(file, text);
}

std::string SystemSettingsPlace() {
  const std::string directory = UserConfigDirectory();
  return directory.empty() ? "the home folder, which HOME does not name" : directory + kDirectory + kFile;
}

std::string UserConfigDirectory() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  if (config != nullptr && config[0] == '/') return config;
  const char* home = std::getenv("HOME");
  return home != nullptr && home[0] == '/' ? std::string(home) + "/.config" : std::string();
}

}  // namespace vrx::platform_internal

namespace vrx {

SettingsStore& platform_internal::SystemSettingsStore() {
  static FileSettingsStore store(&UserConfigDirectory);
  return store;
}

}  // namespace vrx
