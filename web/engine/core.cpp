// The C interface as a module: its functions are exported by name, and this holds them together.

int main() {
  return 0;
}
