/* Judges a trial against a standard through the C interface:
 *     cc judge.c $(pkg-config --cflags --libs vrxmath_c) -o judge && ./judge */
#include <stdio.h>
#include <stdlib.h>

#include <vrxmath/c_api.h>

/* A call that was refused ends the program with the library's reason. */
static void check(vrx_status status) {
  char reason[200];
  if (status == VRX_OK) return;
  vrx_last_error(reason, sizeof reason, NULL);
  fprintf(stderr, "judge: %s\n", reason);
  exit(EXIT_FAILURE);
}

int main(void) {
  static const char* const verdictNames[] = {"fail", "warning", "pass"};
  const int32_t lamps[] = {VRX_ILLUM_D65, VRX_ILLUM_A};
  const double box[7] = {1.0, 1.0, 0.8, 0.8, 1.5, 1.5, 0.6};
  double standard[40], trial[40], differences[2][7];
  int32_t verdicts[2];
  vrx_system cmc;
  vrx_handle judgement;

  for (int i = 0; i < 40; ++i) { /* a yellow, and one that is a little darker */
    standard[i] = i < 16 ? 12.0 : 62.0;
    trial[i] = i < 16 ? 12.2 : 61.0;
  }
  check(vrx_default_system(VRX_SYSTEM_CMC, &cmc));
  check(vrx_judgement_open(&cmc, lamps, 2, VRX_OBSERVER_10, &judgement));
  check(vrx_judgement_standard(judgement, standard));
  for (int32_t i = 0; i < 2; ++i) check(vrx_judgement_box(judgement, i, box));
  check(vrx_judgement_trials(judgement, trial, 1, verdicts, differences[0], NULL));
  check(vrx_close(judgement));

  for (int i = 0; i < 2; ++i) {
    char name[40];
    check(vrx_illuminant_name(lamps[i], VRX_OBSERVER_10, 4, name, sizeof name, NULL));
    printf("%-4s dE %.2f  %s\n", name, differences[i][6], verdictNames[verdicts[i]]);
  }
  return 0;
}
