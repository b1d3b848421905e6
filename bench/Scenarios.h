#pragma once

#include "Harness.h"

// Each scenario measures one round and reports its values. Times are in seconds, sizes in bytes.

// FIRST URL COUNT BYTES: fetches URL0.bin ... from a server, COUNT files of BYTES bytes each.
void MeasureDownloads(const Arguments& arguments);

// FIRST BYTES TURNS: copies one local file, that many times, each time with another contestant first.
void MeasureLocalCopies(const Arguments& arguments);

// BUDGET ENTRIES...: creates and destroys controls under permission files of that many entries.
void MeasureControls(const Arguments& arguments);

// ENTRIES...: explains a refusal by permission files of that many entries, and checks them, beside creating a control.
void MeasureAdvice(const Arguments& arguments);

// BUDGET COUNT...: runs manifests of that many commands, each with debug logging off and on.
void MeasureRuns(const Arguments& arguments);

// COUNT...: deletes chains of that many permitted URLs.
void MeasureChains(const Arguments& arguments);

// URL BYTES: one run that fetches URL0.bin, in a process that has done nothing else.
void MeasureMemory(const Arguments& arguments);

// COUNT: the handles of the process before and after that many runs.
void MeasureHandles(const Arguments& arguments);
