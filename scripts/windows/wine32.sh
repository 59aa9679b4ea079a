#!/usr/bin/env bash
# wine32.sh install          unpacks a 32-bit wine of its own, where the machine cannot install wine32:i386
# wine32.sh run EXE ARGS...  runs a 32-bit Windows program in it
#
# Debian's i386 packages want the very versions of the libraries that are installed for amd64, so a mirror that is a
# day behind for one of the two makes wine32:i386 impossible to install. Here they go into a folder of their own,
# VRX_WINE32 (~/.cache/vrxmath-wine32, 1.4 GB), and run with it as their root. Drive Z: is the machine's own root, so a
# path means the same inside and outside. Needs root, and a kernel that runs 32-bit programs.
set -euo pipefail
base=${VRX_WINE32:-${XDG_CACHE_HOME:-$HOME/.cache}/vrxmath-wine32}
tree=$base/tree

fail() { echo "wine32.sh: $*" >&2; exit 125; }

# Debian's i386 packages by an apt that knows of nothing installed and keeps its lists in $base.
download() {
  mkdir -p "$base"/apt/{lists/partial,archives/partial}
  : > "$base/apt/installed"
  cat > "$base/apt.conf" <<END
APT { Architecture "i386"; Architectures { "i386"; }; Install-Recommends "false"; Sandbox::User "root"; };
Dir { State { Lists "$base/apt/lists"; status "$base/apt/installed"; };
      Cache { Archives "$base/apt/archives"; pkgcache ""; srcpkgcache ""; }; };
Acquire { Languages "none"; Retries "3"; };
END
  # Not every index has to arrive: the download below says whether what is missing matters.
  APT_CONFIG=$base/apt.conf apt-get -qq update 2> "$base/update.log" || true
  APT_CONFIG=$base/apt.conf apt-get -qq -y --download-only install wine32 busybox-static > "$base/download.log" 2>&1 ||
    fail "wine32 could not be downloaded: $(tail -n 2 "$base/download.log")"
}

unpack() {
  rm -rf "$tree"
  mkdir -p "$tree"/{proc,dev,tmp,root,machine}
  for package in "$base"/apt/archives/*.deb; do
    dpkg-deb --fsys-tarfile "$package" | tar -x -C "$tree" --exclude='./usr/share/doc*' --exclude='./usr/share/locale*' \
      --exclude='./usr/share/man*'
  done
  # The package's own script would copy zlib among wine's libraries, with the mark of those that come with wine.
  local zlib=$tree/usr/lib/i386-linux-gnu/wine/i386-windows/zlib1.dll
  cp "$tree/usr/i686-w64-mingw32/lib/zlib1.dll" "$zlib"
  printf 'Wine builtin DLL\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0' | dd of="$zlib" bs=1 seek=64 conv=notrunc status=none
  # File names beyond ASCII need the machine's locale.
  mkdir -p "$tree/usr/lib/locale"
  cp -r /usr/lib/locale/C.utf8 "$tree/usr/lib/locale/"
  rm -rf "$base/apt"
}

# inside FOLDER EXE ARGS...: wine with the tree as its root. The mounts go away with the name space that holds them. They
# begin on top of /proc, which is a mount everywhere, so that it can be kept from handing them on to the machine; the root
# of a chroot is none.
inside() {
  VRX_TREE=$tree unshare --mount --propagation unchanged bash -c '
    set -e
    mount --make-private /proc
    mount -t tmpfs none /proc
    root=/proc/root
    mkdir "$root"
    mount --bind "$VRX_TREE" "$root"
    mount --make-private "$root"
    mount -t proc proc "$root/proc"
    mount --rbind /dev "$root/dev"
    mount --rbind / "$root/machine"
    if [ -d /tmp/.X11-unix ]; then mkdir -p "$root/tmp/.X11-unix"; mount --bind /tmp/.X11-unix "$root/tmp/.X11-unix"; fi
    exec 9> "$root/tmp/starting"
    flock 9
    exec chroot "$root" /bin/busybox env HOME=/root PATH=/usr/bin:/bin LANG=C.UTF-8 WINEDEBUG="${WINEDEBUG:--all}" \
      WINEDLLOVERRIDES="mscoree,mshtml=" WINESERVER=/usr/lib/wine/wineserver32 ${DISPLAY:+DISPLAY="$DISPLAY"} \
      /bin/busybox sh -c "$0" sh "$@"' "$start" "$@"
}
# The first program would leave its output to the server and the services that it starts, and whoever reads it would
# wait for their end; so would a second one that begins before they are all there. It has the lock until then.
start='
  { $WINESERVER -k0 || { $WINESERVER -p60; /usr/lib/wine/wine wineboot; }; } > /dev/null 2>&1 < /dev/null 9>&-
  exec 9>&-
  cd "$1" && shift && exec /usr/lib/wine/wine "$@"'

install() {
  [ "$(id -u)" = 0 ] || fail "needs root"
  mkdir -p "$base"
  exec 9> "$base/lock"
  flock 9
  [ ! -e "$base/ready" ] || return 0
  download
  unpack
  "$tree/bin/busybox" true 2> /dev/null || fail "this kernel does not run 32-bit programs"
  inside / wineboot --init > "$base/wineboot.log" 2>&1 9>&- || fail "$(tail -n 3 "$base/wineboot.log")"
  # Windows are shown on an X server, or, without one, nowhere.
  inside / reg add 'HKCU\Software\Wine\Drivers' /v Graphics /d x11,null /f > /dev/null 2>&1 9>&-
  ln -sfn /machine "$tree/root/.wine/dosdevices/z:"
  touch "$base/ready"
}

case ${1:-} in
  install) install ;;
  run)
    [ -e "$base/ready" ] || fail "nothing is unpacked in $base; run wine32.sh install"
    program=$(realpath "$2") && shift 2
    inside "/machine$PWD" "/machine$program" "$@"
    ;;
  *) fail "usage: wine32.sh install | run EXE ARGS..." ;;
esac
