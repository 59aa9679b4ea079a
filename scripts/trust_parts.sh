# What store_trust.sh and server_trust.sh share; they read it before they leave their folder.

fail() {
  echo "$(basename "$0" .sh): $1" >&2
  exit 1
}

# curves FILE COUNT SEED PREFIX: curves whose values the seed makes.
curves() {
  awk -v count="$2" -v seed="$3" -v prefix="$4" 'BEGIN {
    srand(seed); printf "id"; for (nm = 400; nm <= 700; nm += 10) printf ",%d", nm; print ""
    for (i = 0; i < count; ++i) {
      printf "%s%d", prefix, i; level = 40 + 2 * rand()
      for (nm = 400; nm <= 700; nm += 10) printf ",%.3f", level + rand(); print ""
    }
  }' > "$1"
}

# Of a job: how many trials it has, and whether it verifies.
trials() { "$vrx" job info --job "$1" --format csv | sed -n 's/^trials,//p'; }
verify() { "$vrx" job verify --job "$1" > verified 2>&1 || { cat verified >&2; fail "$1 does not verify"; }; }
