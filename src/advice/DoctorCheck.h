#pragma once

#include <string>
#include <vector>

enum class DoctorStatus { Ok, Warning, Failed, Skipped };

// One answer of an examination of the machine.
struct DoctorCheck {
  std::string name;  // stable, as it is documented: "log-folder"
  DoctorStatus status;
  std::string detail;  // a sentence or two, in UTF-8, without user names and passwords
};

using DoctorChecks = std::vector<DoctorCheck>;

// "ok", "warning", "failed" or "skipped".
const char* NameOf(DoctorStatus status);
