#pragma once

#include "common/Windows.h"

#include <functional>
#include <string>

#include "advice/DoctorCheck.h"
#include "advice/Finding.h"
#include "advice/PermitDocument.h"

// What there is to say about a permission file, usable or not.
using PermitExaminer = std::function<Findings(const PermitDocument&)>;

// The finding that somebody besides administrators and the system may write the file, its folder or the module.
constexpr char kFileWritable[] = "file-writable";

// Whether the permission file is there and valid, sound, and safe from users. Without `findingsOf` the last two are skipped.
DoctorChecks CheckPermit(const std::wstring& path, const PermitExaminer& findingsOf);
