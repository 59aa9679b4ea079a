#!/bin/sh
# check_packages.sh [ROOT]
#
# Installs the packages of scripts/packages.sh on a bare Debian that debootstrap makes in the folder ROOT (by default a temporary
# one), uses them as a laboratory and as hosts in C++, C and Python would, and removes them again: nothing may stay. Needs root.
set -eu
cd "$(dirname "$0")/.."
given=${1:-}
root=${given:-$(mktemp -d)/root}
command -v debootstrap > /dev/null || apt-get install -y -qq debootstrap > /dev/null
if [ ! -e "$root/etc/debian_version" ]; then
  debootstrap --variant=minbase --include=ca-certificates bookworm "$root" > /dev/null
fi
cp -r /etc/apt/apt.conf.d/. "$root/etc/apt/apt.conf.d/"
cp -L /etc/resolv.conf /etc/hosts "$root/etc/"
mount -t proc proc "$root/proc"
mount --bind /dev "$root/dev"
trap 'umount "$root/proc" "$root/dev"; [ -n "$given" ] || rm -rf "$(dirname "$root")"' EXIT
mkdir -p "$root/try/debs"
cp build/packages/*.deb "$root/try/debs/"
rm -f "$root"/try/debs/*-dbgsym_*
cp -r examples tests/consumer "$root/try/"
cat > "$root/try/try.sh" << 'END'
set -eu
export DEBIAN_FRONTEND=noninteractive
cd /try
apt-get update -qq
files() { find /etc /usr -newer /try/before -type f ! -name '*.cache' ! -path '/usr/share/mime/*' | sort; }
apt-get install -y -qq g++ cmake make pkg-config python3-numpy > /dev/null
dpkg-query -W -f '${Package}\n' > packages.before
sleep 1; touch before
started=$(date +%s)
apt-get install -y -qq ./debs/*.deb > /dev/null
echo "installed in $(($(date +%s) - started)) s"
vrx judge examples/chart_ohta.csv examples/chart_average.csv --pairs | tail -n 3
man -w vrx > /dev/null 2>&1 || ls /usr/share/man/man1/vrx.1.gz > /dev/null
# shellcheck disable=SC2046 # the flags are separate words
g++ -std=c++20 -O1 consumer/main.cpp $(pkg-config --cflags --libs vrxio) -o by_pkg_config && ./by_pkg_config
cmake -S consumer -B by_cmake > /dev/null && cmake --build by_cmake > /dev/null && by_cmake/consumer
# shellcheck disable=SC2046
gcc -std=c11 examples/c/judge.c $(pkg-config --cflags --libs vrxmath_c) -o by_c && ./by_c
python3 -c 'import numpy, vrxmath as vrx; print(vrx.__version__, vrx.tristimulus(numpy.full((1, 40), 50.0), ["D65"]))'
dpkg-query -W -f '${Package}\n' | grep -vxFf packages.before | xargs apt-get purge -y -qq > /dev/null
left=$(files | grep -i vrx || true)
[ -z "$left" ] || { echo "left behind: $left"; exit 1; }
echo "removed without a trace"
END
chroot "$root" /usr/bin/env -i PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin HOME=/root LANG=C.UTF-8 \
  $(env | grep -iE '^(http|https|no)_proxy=' | xargs -r echo) sh /try/try.sh
