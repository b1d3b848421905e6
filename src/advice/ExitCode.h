#pragma once

// What the programs answer to whoever started them.
constexpr int kYes = 0;  // valid and sound, permitted, would succeed, succeeded, ready
constexpr int kNo = 1;
constexpr int kWrongUsage = 2;
constexpr int kUnanswered = 3;  // a file cannot be read, a server is not reached, memory ran out
