/* A host in plain C, which links no runtime for C++: threads that have called the C interface, and were refused, live on
 * while the library is unloaded and loaded again.
 *
 *     c_host_test vrxmath_c.dll */
#include <stdint.h>
#include <stdio.h>
#include <string.h>
#include <windows.h>

static int failures;

#define CHECK(condition)                                                                 \
  do {                                                                                   \
    if (!(condition)) printf("%s:%d: %s\n", __FILE__, __LINE__, #condition), ++failures; \
  } while (0)

typedef int32_t(__stdcall* white_point_function)(int32_t illuminant, int32_t observer, double* xyz);
typedef int32_t(__stdcall* last_error_function)(char* text, int32_t capacity, int32_t* length);

struct visit {
  HMODULE library;
  HANDLE called, unloaded;
};

static FARPROC find(HMODULE library, const char* name) {
  const FARPROC function = GetProcAddress(library, name);
  CHECK(function != NULL);
  if (function == NULL) ExitProcess(1);
  return function;
}

static DWORD WINAPI call(void* argument) {
  const struct visit* visit = argument;
  const white_point_function white_point =
      (white_point_function)(void*)find(visit->library, "vrx_white_point");
  const last_error_function last_error = (last_error_function)(void*)find(visit->library, "vrx_last_error");
  double xyz[3];
  char reason[100] = "";
  CHECK(white_point(2, 1, xyz) == 0);
  CHECK(white_point(99, 1, xyz) == 4);
  CHECK(last_error(reason, sizeof reason, NULL) == 0 && strcmp(reason, "there is no illuminant 99") == 0);
  SetEvent(visit->called);
  WaitForSingleObject(visit->unloaded, INFINITE);
  return 0;
}

/* Ends a process that would wait for ever. */
static DWORD WINAPI watch(void* unused) {
  (void)unused;
  Sleep(60000);
  printf("hangs\n");
  fflush(stdout);
  TerminateProcess(GetCurrentProcess(), 1);
  return 0;
}

int main(int argc, char** argv) {
  static const char* const modules[] = {
      "vrxmath_c.dll",
      "vrxmath.dll",
      "libstdc++-6.dll",
#ifdef _WIN64
      /* On 32 bits the unwinder, libgcc_s_dw2-1.dll, loads itself once more for its own tables. So it stays, whoever loaded it, and
       * with it the library of threads that it needs. */
      "libwinpthread-1.dll",
#endif
  };
  if (argc != 2) return 2;
  CloseHandle(CreateThread(NULL, 0, watch, NULL, 0, NULL));
  for (int round = 0; round < 20; ++round) {
    struct visit visit = {LoadLibraryA(argv[1]), CreateEventA(NULL, TRUE, FALSE, NULL),
                          CreateEventA(NULL, TRUE, FALSE, NULL)};
    CHECK(visit.library != NULL);
    if (visit.library == NULL) return 1;
    const HANDLE thread = CreateThread(NULL, 0, call, &visit, 0, NULL);
    WaitForSingleObject(visit.called, INFINITE);
    CHECK(FreeLibrary(visit.library));
    for (size_t i = 0; i < sizeof modules / sizeof modules[0]; ++i)
      CHECK(GetModuleHandleA(modules[i]) == NULL);
    SetEvent(visit.unloaded);
    CHECK(WaitForSingleObject(thread, 20000) == WAIT_OBJECT_0);
    CloseHandle(thread), CloseHandle(visit.called), CloseHandle(visit.unloaded);
  }
  printf(failures == 0 ? "passed\n" : "failed\n");
  return failures != 0;
}
