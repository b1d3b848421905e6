#pragma once

#include "common/Windows.h"

#include <string>

#include "common/Handles.h"

// That a manifest is being run by a link, in this session, for as long as the object lives.
class RunningManifest {
 public:
  explicit RunningManifest(const std::wstring& url);

  // False while another process runs the same manifest. Where the system cannot tell, the manifest is run.
  bool IsTheOnlyOne() const { return isTheOnlyOne; }

 private:
  KernelHandle mutex;
  bool isTheOnlyOne = true;
};

// Says in the manifest's log, behind what stands there, that it was started again while it ran.
void LogSecondStart(const std::wstring& url);
