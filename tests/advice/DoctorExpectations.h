#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "advice/DoctorCheck.h"

// The name and the status of a check, and the whole of what it says.
inline void ExpectCheck(const std::string& name, DoctorStatus status, const std::string& detail, const DoctorCheck& check) {
  EXPECT_EQ(name, check.name);
  EXPECT_STREQ(NameOf(status), NameOf(check.status)) << check.detail;
  EXPECT_EQ(detail, check.detail);
}

// The check of that name; a failed test and an empty one when there is none, or more than one.
inline DoctorCheck CheckNamed(const std::string& name, const DoctorChecks& checks) {
  const auto isNamed = [&](const DoctorCheck& check) { return check.name == name; };
  EXPECT_EQ(1, std::count_if(checks.begin(), checks.end(), isNamed)) << name;
  const auto found = std::find_if(checks.begin(), checks.end(), isNamed);
  return found == checks.end() ? DoctorCheck{} : *found;
}
