// A small DLL of the handheld with one of everything that the loader handles: imports by name and by
// ordinal, constants and instructions that hold addresses, data with and without content, resources,
// exports, an entry point.
#define EXPORT __declspec(dllexport)
#define IMPORT __declspec(dllimport)

IMPORT int wcslen(const unsigned short* text);
IMPORT double Half(double value);  // number 7 of its library, which has no names

static int counter = 40;
static int* volatile counter_place = &counter;  // read, not known to the compiler
static unsigned last_reason;
static unsigned start_count;
static void (*call_at_end)(void);
static const unsigned short kText[] = {'t', 'i', 'n', 'y', 0};

int DllMain(void* instance, unsigned reason, void* reserved) {
  (void)reserved;
  last_reason = reason;
  if (reason == 1) ++start_count;
  if (reason == 0 && call_at_end != 0) call_at_end();
  return instance != 0;
}

EXPORT unsigned LastReason(void) {
  return last_reason;
}
EXPORT void CallAtEnd(void (*function)(void)) {
  call_at_end = function;
}
EXPORT unsigned StartCount(void) {
  return start_count;
}
EXPORT int Count(void) {
  return ++*counter_place;
}

static int Twice(int value) {
  return 2 * value;
}
static int Negated(int value) {
  return -value;
}
static int (*const kFunctions[])(int) = {Twice, Negated};
EXPORT int CallThrough(int index, int value) {
  return kFunctions[index & 1](value);
}

EXPORT double Quarter(double value) {
  return Half(value) / 2;
}
EXPORT int TextLength(void) {
  return wcslen(kText);
}
EXPORT int DivideSigned(int a, int b) {
  return a / b * 1000 + a % b;
}
EXPORT unsigned DivideUnsigned(unsigned a, unsigned b) {
  return a / b + a % b;
}

EXPORT int* Variable(void) {
  return &counter;
}
EXPORT const unsigned short* Constant(void) {
  return kText;
}
