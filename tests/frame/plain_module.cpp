// A shared object that needs nothing: for tests of where modules are looked for.
extern "C" __attribute__((visibility("default"))) int plainModule() { return 1; }
