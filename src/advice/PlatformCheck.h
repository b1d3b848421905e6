#pragma once

#include "advice/DoctorCheck.h"

// What the module needs of the system. The thread is in an apartment of COM.

// The XML parser, without which no document can be read.
DoctorCheck CheckParser();

// The registrar, without which regsvr32 leaves a registration that does not work.
DoctorCheck CheckRegistrar();
