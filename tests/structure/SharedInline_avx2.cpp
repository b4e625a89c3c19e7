// Emits an inline function, as no file with a processor suffix may: CheckObjects.cmake must find
// it.
[[gnu::noinline]] inline int SharedInline(int value) {
  return value + 1;
}

int CallSharedInline(int value);
int CallSharedInline(int value) {
  return SharedInline(value);
}
