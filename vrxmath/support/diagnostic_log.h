// The diagnostic log: two channels of trace text, shown in message boxes or appended to a file.
//
// "Color Sensor" carries the traffic with a measuring instrument, "General" everything else. What becomes of
// a channel's messages is its mode, a value of the settings section "Diagnostics":
//
//   0, 3   nothing
//   1, 4   each message is shown in a message box
//   2, 5   each message is appended to VrxDebug.txt in the directory of the value "PathInfo"
//   other  nothing, although the channel counts as enabled
//
// Modes 0 to 2 are read once in a process, others at every message: a new mode rules from the next process
// on. Whatever goes wrong loses a message and nothing else. One thread at a time; two processes keep out of
// each other's way by opening the file exclusively.

#ifndef VRXMATH_SUPPORT_DIAGNOSTIC_LOG_H_
#define VRXMATH_SUPPORT_DIAGNOSTIC_LOG_H_

#include <cstdint>
#include <string>
#include <string_view>

#include <vrxmath/export.h>
#include <vrxmath/foundation/typed_arrays.h>

namespace vrx {

enum class DiagChannel { kColorSensor, kGeneral };

/// Beyond this length in bytes the file is deleted and both channels are switched off.
inline constexpr uint64_t kMaxDiagFileBytes = 0x100000;

/// The settings section of the log, and its values.
inline constexpr WideView kDiagSection = u"Diagnostics";
inline constexpr WideView kDiagPathValue = u"PathInfo";
/// "Color Sensor" or "General".
[[nodiscard]] VRX_API WideView DiagModeValue(DiagChannel channel);

/// The channel's mode. A mode that was never set is stored as 0.
VRX_API int32_t DiagGetMode(DiagChannel channel);

/// True when the channel's mode is neither 0 nor 3.
[[nodiscard]] VRX_API bool DiagIsEnabled(DiagChannel channel);

/// The file that messages are appended to: "VrxDebug.txt" put directly behind "PathInfo", which must end
/// with a separator. Without a "PathInfo", or when it is no directory, the file is ".VrxDebug.txt" in the
/// current directory.
[[nodiscard]] VRX_API CString DiagFileName();

/// Delivers `text` (UTF-8, as it stands: it is not a format) as the channel's mode says. In the file each LF
/// becomes CR LF and nothing is added. A file longer than kMaxDiagFileBytes is deleted, with a message box
/// that says so; both channels then go to mode 0, and the text is lost.
VRX_API void DiagWrite(std::string_view text, DiagChannel channel);

/// Makes control characters and blanks visible, in place: a character below 32 gets 96 added (CR becomes
/// "m", LF "j", TAB "i"), a space becomes "^".
VRX_API void MakeVisible(std::string& text);

/// Traces a command sent to the instrument and the error code of sending it, on the "Color Sensor" channel.
VRX_API void TraceSend(std::string_view command, int32_t error);

/// Traces what the instrument answered: a line with the time since `startTicks` (a tick count of the
/// platform's clock), the time allowed, both in ms, the separator waited for and the error code; then the
/// answer, one numbered line for each of its lines. An answer's line ends with CR or CR LF.
VRX_API void TraceReceive(std::string_view buffer, int32_t allowedMs, uint32_t startTicks, int32_t error,
                          std::string_view separator);

/// Sets the mode of the "General" channel to 0, 1 or 2 (others do nothing) and shows `texts[mode]`; mode 2
/// also sets the file's directory to `path` and shows the file. The running process keeps its mode.
VRX_API void SetGeneralDiagMode(uint32_t mode, const CStringArray1& texts, WideView path);

/// Moves the "Color Sensor" channel on to the next of the modes 0, 1 and 2 and shows its text of `texts`,
/// which holds one text for each mode and a closing remark. Otherwise as SetGeneralDiagMode.
VRX_API void CycleSensorDiagMode(const CStringArray1& texts, WideView path);

namespace support_internal {
/// Modes are read again at the next use, as in a new process.
void ForgetDiagModes();
}  // namespace support_internal

}  // namespace vrx

#endif  // VRXMATH_SUPPORT_DIAGNOSTIC_LOG_H_
