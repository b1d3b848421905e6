#pragma once

#include "tool/Arguments.h"

// The commands: each asks the advice library, prints the answer and gives the exit code.
int BrowserOnCommand(const Arguments& arguments);
int BrowserKitCommand(const Arguments& arguments);
int BrowserOffCommand(const Arguments& arguments);
int BrowserStatusCommand(const Arguments& arguments);
int CheckCommand(const Arguments& arguments);
int DoctorCommand(const Arguments& arguments);
int ExplainCommand(const Arguments& arguments);
int PlanCommand(const Arguments& arguments);
int RunCommand(const Arguments& arguments);
