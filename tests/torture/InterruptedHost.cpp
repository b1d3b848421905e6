// A host that is killed in the middle of a run: it ends, without any of its destructors, when the module makes a call that
// is chosen by its number.
//
//   interrupted_host MODULE MANIFEST-URL DESTINATION SOURCES CALL
//
// Exit code 0 when it was killed, 1 when the run came to its end before that call.

#include "common/Windows.h"

#include <cstdlib>

#include "torture/FailingSystem.h"
#include "torture/Host.h"

int main(int argc, char** argv) {
  if (argc != 6)
    return 2;
  const std::string path = argv[1];
  const std::string manifestUrl = argv[2];
  CoInitialize(nullptr);
  LoadedModule module(path);
  CallCounter counter;
  Places places;
  places.moduleFolder = path.substr(0, path.find_last_of('\\'));
  places.destinationFolder = argv[3];
  places.sourceFolder = argv[4];
  places.manifestUrl = manifestUrl;
  const FailingSystem system(module.Handle(), counter, places);
  counter.EndProcessAt(static_cast<std::size_t>(std::atoi(argv[5])));
  Effects effects;
  UseModule(module, Use::Execute, manifestUrl, counter, effects);
  return 1;
}
