#pragma once

#include "common/Windows.h"

#include <mutex>
#include <string>

#include "advice/Outcome.h"

// What a run is at, as one thread hears of it and another one shows it.
class Progress final : public RunWatcher {
 public:
  struct State {
    int number = 0;  // of the command; 0 while the manifest is fetched
    std::string file;
    std::uint64_t bytes = 0;
  };

  State Now() const;

  void CommandBegins(const CommandOutcome& command) override { Take(command); }
  void BytesArrived(const CommandOutcome& command) override { Take(command); }
  void CommandEnded(const CommandOutcome& command) override { Take(command); }

 private:
  void Take(const CommandOutcome& command);

  mutable std::mutex mutex;
  State state;
};

// Waits for a thread. When it takes longer than a second, the system's progress dialog shows what it is at; where no window
// can be made, nothing is shown. The calling thread is in an apartment of COM.
void WaitWithProgress(HANDLE thread, const Progress& progress);
