#pragma once

#include "advice/Finding.h"
#include "advice/ManifestDocument.h"
#include "advice/Surroundings.h"

// What the author of a manifest should know about it, by lines: commands that will fail on every machine, and those that do
// something else than they seem to. What a command means is asked of the module's own command. The log gets nothing. Of a
// manifest that the module refuses: why.
Findings FindingsOf(const ManifestDocument& manifest, const Surroundings& surroundings = ThisMachinesSurroundings());
