/* What a core does in a second through the C interface: tristimulus values, CIEDE2000, rows of a csv file. Each line is a name, a
 * checksum of the results, and a rate; bench/wasm/compare.sh holds two builds of it against each other.
 *
 *   rates FILE.csv
 */
#define _POSIX_C_SOURCE 200809L
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <vrxmath/c_api.h>

enum { kRows = 4096, kCurve = 40, kRounds = 15 };

static double curves[kRows * kCurve], xyz[kRows * 3], other[kRows * 3], differences[kRows * 7];

static double Now(void) {
  struct timespec time;
  clock_gettime(CLOCK_MONOTONIC, &time);
  return (double)time.tv_sec + 1e-9 * (double)time.tv_nsec;
}

static void Check(vrx_status status) {
  if (status == VRX_OK) return;
  char reason[500] = "";
  vrx_last_error(reason, sizeof reason, NULL);
  fprintf(stderr, "%s\n", reason);
  exit(1);
}

/* FNV-1a over the bytes of results. */
static uint64_t Hash(const double* numbers, size_t count) {
  uint64_t hash = 14695981039346656037U;
  for (size_t i = 0; i < count; ++i) {
    unsigned char bytes[sizeof(double)];
    memcpy(bytes, &numbers[i], sizeof bytes);
    for (size_t k = 0; k < sizeof bytes; ++k) hash = (hash ^ bytes[k]) * 1099511628211U;
  }
  return hash;
}

static void Tristimulus(void) {
  Check(vrx_tristimulus(VRX_ILLUM_D65, VRX_OBSERVER_10, curves, kRows, xyz));
}

static void Differences(void) {
  vrx_system system;
  Check(vrx_default_system(VRX_SYSTEM_CIE2000, &system));
  Check(vrx_differences(&system, VRX_ILLUM_D65, VRX_OBSERVER_10, xyz, other, kRows, differences));
}

static const char* csv;
static int32_t csvRows;
static double* csvCurves;
static void ReadCsv(void) {
  vrx_handle file = 0;
  vrx_measurements_summary summary = {.size = sizeof summary};
  Check(vrx_measurements_open(csv, NULL, &file));
  Check(vrx_measurements_summarize(file, &summary));
  if (csvCurves == NULL) csvCurves = malloc(sizeof(double) * kCurve * (size_t)summary.count);
  csvRows = summary.count;
  Check(vrx_measurements_numbers(file, VRX_NUMBERS_CURVES, 0, csvRows, csvCurves));
  Check(vrx_close(file));
}

/* The best of several rounds, each long enough to be timed. */
static double RateOf(void (*work)(void), double rows) {
  const double enough = 0.03;
  double best = 0;
  work();
  for (int round = 0; round < kRounds; ++round) {
    const double start = Now();
    int times = 0;
    do {
      work();
      ++times;
    } while (Now() - start < enough);
    const double rate = rows * times / (Now() - start);
    if (rate > best) best = rate;
  }
  return best;
}

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  csv = argv[1];
  uint32_t seed = 1;
  for (size_t i = 0; i < sizeof curves / sizeof *curves; ++i) {
    seed = seed * 1664525U + 1013904223U;
    curves[i] = 2.0 + 90.0 * (double)(seed >> 8) / 16777216.0;
  }
  Tristimulus();
  for (int i = 0; i < kRows * 3; ++i) other[i] = xyz[i] * (1.0 + 0.02 * (i % 7 - 3));
  Differences();
  ReadCsv();
  printf("tristimulus %016llx %.0f\n", (unsigned long long)Hash(xyz, kRows * 3), RateOf(Tristimulus, kRows));
  printf("ciede2000 %016llx %.0f\n", (unsigned long long)Hash(differences, kRows * 7), RateOf(Differences, kRows));
  printf("csv %016llx %.0f\n", (unsigned long long)Hash(csvCurves, (size_t)csvRows * kCurve), RateOf(ReadCsv, csvRows));
  return 0;
}
