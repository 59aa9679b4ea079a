#!/bin/sh
# sql_bench.sh BUILD [CURVES]: rows a second of vrx_delta in PostgreSQL, beside the same dE*ab written in PL/pgSQL, in one run. Answers are
# compared first. CURVES (20,000) are random; the server is one of its own, with fsync off. Build vrx_postgres before.
set -eu
build=$(realpath "$1")
curves=${2:-20000}
source=$(realpath "$(dirname "$0")/..")
if [ -z "${VRX_TEST_POSTGRES:-}" ]; then
  exec sh "$source/scripts/with_postgres.sh" sh "$0" "$build" "$curves"
fi
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
module=$(dirname "$VRX_TEST_POSTGRES_CONTROL")/vrx_postgres.so
cp "$(find "$build" -name vrx_postgres.so)" "$module"
chmod 644 "$module"
sed "s|MODULE_PATHNAME|$module|" "$source/sql/postgres/vrx--1.sql" > "$folder/functions.sql"
ask() { psql -X -q -t -A -v ON_ERROR_STOP=1 "$VRX_TEST_POSTGRES" "$@"; }
ask -f "$folder/functions.sql"

# The weights are those of a curve that reflects 100 % at one wavelength and nothing elsewhere.
cat > "$folder/plain.sql" <<'END'
CREATE TABLE weight AS
  SELECT array_agg(w[1] ORDER BY i) x, array_agg(w[2] ORDER BY i) y, array_agg(w[3] ORDER BY i) z
  FROM (SELECT i, vrx_tristimulus(array_fill(0::float8, ARRAY[i - 1]) || 100::float8 || array_fill(0::float8, ARRAY[40 - i]), 'D65') w
        FROM generate_series(2, 40) i
        UNION ALL SELECT 1, ARRAY[0, 0, 0]::float8[]) one;
CREATE FUNCTION plain_f(t float8) RETURNS float8 IMMUTABLE PARALLEL SAFE LANGUAGE plpgsql AS $$
BEGIN
  IF t > 0.008856 THEN RETURN t ^ (1.0::float8 / 3); END IF;
  RETURN 7.787 * t + 16.0 / 116;
END $$;
CREATE FUNCTION plain_lab(curve float8[], wx float8[], wy float8[], wz float8[], white float8[]) RETURNS float8[]
  IMMUTABLE PARALLEL SAFE LANGUAGE plpgsql AS $$
DECLARE x float8 := 0; y float8 := 0; z float8 := 0; fx float8; fy float8; fz float8;
BEGIN
  FOR i IN 1..40 LOOP
    x := x + wx[i] * curve[i]; y := y + wy[i] * curve[i]; z := z + wz[i] * curve[i];
  END LOOP;
  fx := plain_f(x / 100 / white[1]); fy := plain_f(y / 100 / white[2]); fz := plain_f(z / 100 / white[3]);
  RETURN ARRAY[116 * fy - 16, 500 * (fx - fy), 200 * (fy - fz)];
END $$;
CREATE FUNCTION plain_delta(a float8[], b float8[], wx float8[], wy float8[], wz float8[], white float8[]) RETURNS float8
  IMMUTABLE PARALLEL SAFE LANGUAGE plpgsql AS $$
DECLARE p float8[] := plain_lab(a, wx, wy, wz, white); q float8[] := plain_lab(b, wx, wy, wz, white);
BEGIN
  RETURN sqrt((p[1] - q[1]) ^ 2 + (p[2] - q[2]) ^ 2 + (p[3] - q[3]) ^ 2);
END $$;
END
ask -f "$folder/plain.sql"
# The first wavelength has no weight under D65 at 10 degrees that shows in three decimals; curves begin with 0 there for both.
ask -c "SELECT setseed(0.5); CREATE TABLE sample AS SELECT n, (SELECT array_agg(CASE WHEN i = 1 THEN 0 ELSE 10 + 60 * random() + n * 0 END) FROM generate_series(1, 40) i)
  AS curve FROM generate_series(1, $curves) n" > /dev/null
ask -c "ANALYZE sample; SET max_parallel_workers_per_gather = 0" > /dev/null

ours="SELECT sum(vrx_delta(first.curve, s.curve, 'lab', 'D65')) FROM sample s, (SELECT curve FROM sample WHERE n = 1) first"
plain="SELECT sum(plain_delta(first.curve, s.curve, w.x, w.y, w.z, ARRAY[94.811, 100, 107.304]))
  FROM sample s, weight w, (SELECT curve FROM sample WHERE n = 1) first"
a=$(ask -c "$ours") b=$(ask -c "$plain")
awk -v a="$a" -v b="$b" 'BEGIN { d = a / b - 1; if (d > 1e-9 || d < -1e-9) { print "sql_bench: " a " and " b " differ"; exit 1 } }'
best() {  # the shortest of five runs, in milliseconds
  for _ in 1 2 3 4 5; do
    ask -c '\timing on' -c 'SET max_parallel_workers_per_gather = 0' -c "$1" | sed -n 's/^Time: \([0-9.]*\) ms.*/\1/p' | tail -n 1
  done | sort -n | head -n 1
}
awk -v ours="$(best "$ours")" -v plain="$(best "$plain")" -v count="$curves" 'BEGIN {
  printf "vrx_delta %.0f rows a second, PL/pgSQL %.0f: %.1f times as many\n", count / ours * 1000, count / plain * 1000, plain / ours }'
