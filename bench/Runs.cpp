#include "common/Windows.h"

#include "Host.h"
#include "Scenarios.h"
#include "support/Stopwatch.h"

namespace {

// Commands that find their file in place and leave it alone: what a command costs without the bytes it would bring.
std::string WriteSkippingManifest(Host& host, int count) {
  const std::string source = host.Folder().File("0.bin");
  return host.WriteManifestOfOneSource(count, source, "<Skip/>");
}

void MeasureRunsOf(Host& host, int count, int repeats) {
  const std::string manifest = WriteSkippingManifest(host, count);
  for (const VARIANT_BOOL debug : {VARIANT_FALSE, VARIANT_TRUE}) {
    host.Control()->SetEnableLogDebug(debug);
    const double seconds = SecondsOf([&] {
      for (int i = 0; i < repeats; ++i)
        host.Run(manifest);
    });
    Report(std::to_string(count) + (debug ? " debug" : ""), seconds / repeats);
  }
}

}  // namespace

void MeasureRuns(const Arguments& arguments) {
  Host host;
  WriteWholeFile(host.Folder().File("0.bin"), "new");
  WriteWholeFile(host.Destination(0), "old");
  host.Run(WriteSkippingManifest(host, 10));
  const int budget = std::stoi(arguments[0]);
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const int count = std::stoi(arguments[i]);
    MeasureRunsOf(host, count, Repeats(count, budget, 100));
  }
  Require(ReadWholeFile(host.Destination(0)) == "old", "a command did not leave its file alone");
}
