#pragma once

#include "common/Windows.h"

#include <functional>
#include <string>

#include "advice/DoctorCheck.h"
#include "advice/Finding.h"
#include "advice/PermitDocument.h"

// What there is to say about a permission file, usable or not.
using PermitExaminer = std::function<Findings(const PermitDocument&)>;

// Whether the permission file is there and valid, sound (all findings but "file-writable"), and safe from users (that
// finding). Without `findingsOf` the last two are skipped.
DoctorChecks CheckPermit(const std::wstring& path, const PermitExaminer& findingsOf);
