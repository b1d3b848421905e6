#pragma once

#include "tool/Arguments.h"

// The commands: each asks the advice library, prints the answer and gives the exit code.
int ExplainCommand(const Arguments& arguments);
int PlanCommand(const Arguments& arguments);
int RunCommand(const Arguments& arguments);
