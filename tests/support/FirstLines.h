#pragma once

#include <algorithm>
#include <string>
#include <vector>

// The first line of each message: refusals list below theirs what would be permitted.
inline std::vector<std::string> FirstLines(std::vector<std::string> messages) {
  for (std::string& message : messages)
    message.erase(std::min(message.find("\r\n"), message.size()));
  return messages;
}
