#pragma once

#include <string>

#include "host/InstalledModule.h"
#include "torture/CallCounter.h"
#include "torture/Scenario.h"

// Makes a control, lets it run the manifest, and lets go of it. What the host sees goes to the results and host actions of
// `effects`. Any of it may fail.
void UseModule(const LoadedModule& module, Use use, const std::string& manifestUrl, CallCounter& counter, Effects& effects);
