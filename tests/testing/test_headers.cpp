// Carries the headers that the tests share, compiled once; tests/CMakeLists.txt lists them.

int main() {
  return 0;
}
