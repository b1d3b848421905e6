#pragma once

#include "common/Windows.h"

#include "advice/DoctorCheck.h"
#include "transfer/FileUtilities.h"

// Whether the module can write its logs. A file is made in the log folder and taken away again.
DoctorCheck CheckLogFolder();

// Where the files of a destination go for this user, with an empty text.
DoctorCheck CheckFolder(FolderKind kind);

// All thirteen.
DoctorChecks CheckFolders();
