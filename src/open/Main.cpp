#include "common/Windows.h"

#include "open/Launch.h"

// The raw command line is read instead of arguments that were split: nothing in a link may become one.
int WINAPI wWinMain(HINSTANCE, HINSTANCE, wchar_t*, int) {
  return Launch(GetCommandLineW());
}
