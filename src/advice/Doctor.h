#pragma once

#include "common/Windows.h"

#include <string>

#include "advice/DoctorCheck.h"
#include "advice/PermitCheck.h"

struct DoctorOptions {
  std::wstring modulePath;  // empty: norvik.dll in the module's folder
  std::wstring permitPath;  // empty: permit.xml in the module's folder
  std::wstring url;         // empty: no server is asked
  PermitExaminer findingsOf;
};

// Looks whether this machine is ready for the module, for the user who asks. The thread is in an apartment of COM.
//
// It leaves what every control leaves: the log folder, and a copy of the permission file in the Internet cache. A file is
// made in the log folder and taken away. Nothing leaves the machine but one request for the URL.
DoctorChecks Examine(const DoctorOptions& options);

// Whether no check has failed.
bool IsReady(const DoctorChecks& checks);
