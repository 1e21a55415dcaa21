// A library that registers itself like a COM server, for the tests.
#ifdef _WIN32
#define EXPORTED extern "C" __declspec(dllexport)
#define CALLED __stdcall
#else
#define EXPORTED extern "C" __attribute__((visibility("default")))
#define CALLED
#endif

EXPORTED int CALLED DllRegisterServer() {
  return 0;
}

EXPORTED int CALLED DllUnregisterServer() {
  return 5;
}
