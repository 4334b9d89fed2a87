// A DLL that tiny.dll imports a function of, by its number.
double Half(double value) {
  return value / 2;
}
