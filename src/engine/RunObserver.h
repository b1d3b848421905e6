#pragma once

#include "common/Windows.h"

#include "engine/FileDecision.h"

class CCommand;

// Hears of a run, command by command. The control has none.
class RunObserver {
 public:
  virtual void CommandBegins(const CCommand& command) = 0;

  // The command's file will have this name: a URL for a cookie, a file that the cache has made for the Internet cache. Not
  // heard of a command that ends before it.
  virtual void DestinationChosen(const char* fileName) = 0;

  // A file of that name is there.
  virtual void ExistingFileDecided(const FileDecision& decision) = 0;

  // The command's own result.
  virtual void CommandEnded(const CCommand& command, HRESULT result) = 0;

 protected:
  ~RunObserver() = default;
};
