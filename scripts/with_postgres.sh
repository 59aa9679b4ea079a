#!/bin/sh
# with_postgres.sh COMMAND...: runs a command beside a PostgreSQL server of its own, and ends the server behind it, whatever came of it.
#
# The server keeps its files in a temporary folder, listens there only, and takes anybody as any user. The command finds in
# the environment
#   VRX_TEST_POSTGRES          URL of an empty database; the server takes "create database"
#   VRX_TEST_POSTGRES_CONTROL  a script that takes stop and start: the server goes away at once, and comes back
# Status 77 where the server's programs are missing.
set -eu
programs=$(find /usr/lib/postgresql/*/bin -name initdb -exec dirname {} \; 2> /dev/null | sort -V | tail -n 1)
if [ -z "$programs" ]; then
  echo "with_postgres.sh: there is no PostgreSQL server here; sh scripts/setup.sh test installs it" >&2
  exit 77
fi

# A short path: that of a socket has 107 characters at most. The server does not run as root.
folder=$(mktemp -d /tmp/vrxpg.XXXXXX)
as=
if [ "$(id -u)" -eq 0 ]; then
  as="runuser -u nobody --"
  chown nobody "$folder"
fi
control=$folder/control
cat > "$control" <<END
#!/bin/sh
cd /
case \$1 in
  stop) $as kill -QUIT "\$(head -n 1 "$folder/data/postmaster.pid")" ;;
  start) $as "$programs/postgres" -D "$folder/data" -k "$folder" -c listen_addresses= -c fsync=off \\
    >> "$folder/log" 2>&1 & ;;
esac
for try in \$(seq 300); do
  state=start
  $as "$programs/pg_isready" -q -h "$folder" || state=stop
  if [ "\$1" = stop ] && [ -e "$folder/data/postmaster.pid" ]; then state=start; fi
  if [ "\$state" = "\$1" ]; then exit 0; fi
  sleep 0.1
done
cat "$folder/log" >&2
exit 1
END
chmod 755 "$folder" "$control"
clean() {
  if [ -e "$folder/data/postmaster.pid" ]; then sh "$control" stop || true; fi
  rm -rf "$folder"
}
# Cleans up when this script is killed, as ctest does after its time.
(
  while kill -0 $$ 2> /dev/null; do sleep 1; done
  clean
) > /dev/null 2>&1 &
guard=$!
trap 'kill $guard; clean' EXIT
trap 'exit 1' HUP INT TERM
touch "$folder/log"
chmod 666 "$folder/log"
# shellcheck disable=SC2086 # the words of the prefix are separate
(cd / && $as "$programs/initdb" -D "$folder/data" -U postgres -A trust -E UTF8 --locale=C.UTF-8 --no-sync) >> "$folder/log" 2>&1 ||
  { cat "$folder/log" >&2; exit 1; }
sh "$control" start
export VRX_TEST_POSTGRES="postgresql://postgres@/postgres?host=$folder" VRX_TEST_POSTGRES_CONTROL="$control"
"$@"
