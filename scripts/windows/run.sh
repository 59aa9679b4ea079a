#!/bin/sh
# run.sh PROGRAM.exe ARGS...: runs a Windows program of either width under wine and ends with its status.
#
# The build calls it as CMAKE_CROSSCOMPILING_EMULATOR. Each width has a wine and a registry of its own; the 64-bit one
# is kept in VRX_WINE64 (~/.cache/vrxmath-wine64).
set -eu

# The machine that a program is for: 8664 or 014c, the two bytes behind "PE\0\0", whose place stands at 0x3c.
header=$(($(od -An -t u4 -j 60 -N 4 "$1")))
machine=$(od -An -t x2 -j $((header + 4)) -N 2 "$1")

export WINEDEBUG="${WINEDEBUG:--all}" WINEDLLOVERRIDES="mscoree,mshtml="
if [ "$machine" = " 8664" ]; then
  export WINEPREFIX="${VRX_WINE64:-${XDG_CACHE_HOME:-$HOME/.cache}/vrxmath-wine64}"
  loader=/usr/lib/wine/wine64 server=/usr/lib/wine/wineserver64
elif [ -x /usr/lib/wine/wine ]; then
  export WINEPREFIX="${VRX_WINE32:-${XDG_CACHE_HOME:-$HOME/.cache}/vrxmath-wine32}/prefix" WINEARCH=win32
  loader=/usr/lib/wine/wine server=/usr/lib/wine/wineserver32
else
  exec "$(dirname "$0")/wine32.sh" run "$@"
fi

# The first program would leave its output to the server and the services that it starts, and whoever reads it would
# wait for their end; so would a second one that begins before they are all there. Windows are shown on an X server, or,
# without one, nowhere.
mkdir -p "$WINEPREFIX"
(
  flock 9
  { "$server" -k0 || {
      "$server" -p60
      "$loader" wineboot
      "$loader" reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d x11,null /f
    }; } > /dev/null 2>&1 < /dev/null 9>&- || true
) 9> "$WINEPREFIX/starting"
exec "$loader" "$@"
