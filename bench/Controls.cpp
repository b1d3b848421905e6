#include "common/Windows.h"

#include "Host.h"
#include "Scenarios.h"
#include "support/Stopwatch.h"

namespace {

void MeasureControlsOf(int entries, int repeats) {
  Host host;
  AddEntries(host.Permit(), entries);
  host.Control();
  for (const VARIANT_BOOL debug : {VARIANT_FALSE, VARIANT_TRUE}) {
    host.Control()->SetEnableLogDebug(debug);
    const double seconds = SecondsOf([&] {
      for (int i = 0; i < repeats; ++i)
        Require(host.MakeControl() != nullptr, "no control was made");
    });
    Report(std::to_string(entries) + (debug ? " debug" : ""), seconds / repeats);
  }
}

}  // namespace

void MeasureControls(const Arguments& arguments) {
  const int budget = std::stoi(arguments[0]);
  for (std::size_t i = 1; i < arguments.size(); ++i) {
    const int entries = std::stoi(arguments[i]);
    MeasureControlsOf(entries, Repeats(entries, budget, 50));
  }
}
