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
# wait for their end. Windows are shown on an X server, or, without one, nowhere.
if ! "$server" -k0 2> /dev/null; then
  mkdir -p "$WINEPREFIX"
  flock "$WINEPREFIX" sh -c '"$1" -k0 || { "$1" -p60; "$2" wineboot
    "$2" reg add "HKCU\\Software\\Wine\\Drivers" /v Graphics /d x11,null /f; }' sh "$server" "$loader" \
    > /dev/null 2>&1 < /dev/null || true
fi
exec "$loader" "$@"
