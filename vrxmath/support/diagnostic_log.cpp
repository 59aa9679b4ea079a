#include <vrxmath/support/diagnostic_log.h>

#include <array>
#include <initializer_list>
#include <memory>

#include <vrxmath/foundation/string_numbers.h>
#include <vrxmath/platform/clock.h>
#include <vrxmath/platform/file_system.h>
#include <vrxmath/platform/message_box.h>
#include <vrxmath/platform/resources.h>
#include <vrxmath/support/settings.h>

namespace vrx {
namespace {

constexpr WideView kFileName = u"VrxDebug.txt";
constexpr WideView kDefaultDirectory = u".";
constexpr int32_t kNotRead = -1;
constexpr int32_t kOff = 0;

// The length that a file is cut to before it is deleted: a reader that holds it open sees it end.
constexpr uint64_t kRemainsBytes = 2;

int32_t& CachedMode(DiagChannel channel) {
  static std::array<int32_t, 2> modes = {kNotRead, kNotRead};
  return modes[static_cast<std::size_t>(channel)];
}

std::string WithCrLf(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 16);
  for (const char c : text) {
    if (c == '\n') out += '\r';
    out += c;
  }
  return out;
}

// A file that grew too long goes away, and with it the diagnostics.
void DiscardFile(std::unique_ptr<ExclusiveFile> file, const CString& name) {
  ShowMessage(FillPattern(FindString(kStringFileDeleted), {name}), MessageIcon::kInformation);
  file->SetLength(kRemainsBytes);
  file.reset();
  CurrentFileSystem().Delete(name);
  for (const DiagChannel channel : {DiagChannel::kColorSensor, DiagChannel::kGeneral}) {
    SetSettingInt(kDiagSection, DiagModeValue(channel), kOff);
    CachedMode(channel) = kOff;
  }
}

void AppendToFile(std::string_view text) {
  const CString name = DiagFileName();
  std::unique_ptr<ExclusiveFile> file = CurrentFileSystem().OpenExclusive(name);
  if (file == nullptr) return;
  const uint64_t length = file->Length();
  if (length > kMaxDiagFileBytes) return DiscardFile(std::move(file), name);
  // On a full disk the message is lost as a whole.
  if (!text.empty() && !file->Append(WithCrLf(text))) file->SetLength(length);
}

std::string Visible(std::string_view text) {
  std::string visible(text);
  MakeVisible(visible);
  return visible;
}

std::string Joined(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces) text += piece;
  return text;
}

void Trace(std::initializer_list<std::string_view> pieces) {
  DiagWrite(Joined(pieces), DiagChannel::kColorSensor);
}

// One line of an answer, its number in two places and its line end made visible.
void TraceLine(int32_t number, std::string_view text, std::string_view lineEnd) {
  Trace(
      {"    Rcv Data ", number < 10 ? " " : "", std::to_string(number), " |", text, Visible(lineEnd), "|\n"});
}

// Says what a mode now means; for mode 2, where the file is.
void ShowNewMode(uint32_t mode, const CStringArray1& texts, WideView path, WideView closing) {
  CString message = texts[mode];
  if (mode == 2) {
    SetSettingString(kDiagSection, kDiagPathValue, path);
    message += u"\n    ";
    message += path;
    message += kFileName;
  }
  message += u"\n\n";
  message += closing;
  ShowMessage(message, MessageIcon::kInformation);
}

}  // namespace

WideView DiagModeValue(DiagChannel channel) {
  return channel == DiagChannel::kColorSensor ? u"Color Sensor" : u"General";
}

int32_t DiagGetMode(DiagChannel channel) {
  int32_t& cached = CachedMode(channel);
  if (cached >= 0 && cached <= 2) return cached;
  int32_t mode = GetSettingInt(kDiagSection, DiagModeValue(channel), kNotRead);
  if (mode == kNotRead) {
    mode = kOff;
    SetSettingInt(kDiagSection, DiagModeValue(channel), mode);
  }
  cached = mode;
  return mode;
}

bool DiagIsEnabled(DiagChannel channel) {
  const int32_t mode = DiagGetMode(channel);
  return mode != 0 && mode != 3;
}

CString DiagFileName() {
  CString name = GetSettingString(kDiagSection, kDiagPathValue, kDefaultDirectory);
  if (!CurrentFileSystem().DirectoryExists(name)) name = CString(kDefaultDirectory);
  name += kFileName;
  return name;
}

void DiagWrite(std::string_view text, DiagChannel channel) {
  const int32_t mode = DiagGetMode(channel);
  if (mode == 1 || mode == 4) {
    ShowMessage(CString::FromUtf8(text), MessageIcon::kInformation);
  } else if (mode == 2 || mode == 5) {
    AppendToFile(text);
  }
}

void MakeVisible(std::string& text) {
  for (char& c : text) {
    if (static_cast<unsigned char>(c) < 32) {
      c = static_cast<char>(c + 96);
    } else if (c == ' ') {
      c = '^';
    }
  }
}

void TraceSend(std::string_view command, int32_t error) {
  if (!DiagIsEnabled(DiagChannel::kColorSensor)) return;
  Trace({"SendToComm = |", Visible(command), "|, nError = ", std::to_string(error), "\n"});
}

void TraceReceive(std::string_view buffer, int32_t allowedMs, uint32_t startTicks, int32_t error,
                  std::string_view separator) {
  if (!DiagIsEnabled(DiagChannel::kColorSensor)) return;
  const auto elapsed = static_cast<int32_t>(CurrentClock().Ticks() - startTicks);
  Trace({"RcvBuff = Time(ms) ", std::to_string(elapsed), ", Allowed ", std::to_string(allowedMs), ", Sep |",
         Visible(separator), "|, Return Error ", std::to_string(error), "\n"});
  int32_t number = 1;
  for (std::size_t cr = buffer.find('\r'); cr != std::string_view::npos; cr = buffer.find('\r')) {
    const std::string_view lineEnd = buffer.substr(cr, buffer.substr(cr, 2) == "\r\n" ? 2 : 1);
    TraceLine(number++, buffer.substr(0, cr), lineEnd);
    buffer.remove_prefix(cr + lineEnd.size());
  }
  TraceLine(number, buffer, "");
}

void SetGeneralDiagMode(uint32_t mode, const CStringArray1& texts, WideView path) {
  if (mode > 2) return;
  SetSettingInt(kDiagSection, DiagModeValue(DiagChannel::kGeneral), static_cast<int32_t>(mode));
  ShowNewMode(mode, texts, path, {});
}

void CycleSensorDiagMode(const CStringArray1& texts, WideView path) {
  const WideView name = DiagModeValue(DiagChannel::kColorSensor);
  const int64_t stored = GetSettingInt(kDiagSection, name, kNotRead);
  const auto mode = static_cast<uint32_t>(((stored + 1) % 3 + 3) % 3);  // never negative
  SetSettingInt(kDiagSection, name, static_cast<int32_t>(mode));
  ShowNewMode(mode, texts, path, texts[3]);
}

void support_internal::ForgetDiagModes() {
  CachedMode(DiagChannel::kColorSensor) = kNotRead;
  CachedMode(DiagChannel::kGeneral) = kNotRead;
}

}  // namespace vrx
