#pragma once

#include <optional>
#include <string>
#include <vector>

#include "advice/Explanation.h"

// What the command line asks for.
struct Arguments {
  enum class Command { Check, Explain, Plan, Run, Doctor, BrowserOn, BrowserOff, BrowserStatus, BrowserKit };

  Command command = Command::Check;
  bool isJson = false;
  std::wstring permit;               // empty: the file beside the program
  std::vector<std::wstring> files;   // check
  std::vector<Question> questions;   // explain
  std::wstring url;                  // plan, run; doctor, where it may be empty
  std::vector<std::string> origins;  // browser kit, as they were given, and what follows
  std::wstring out;
  bool isReplacing = false;
};

// A command line that the program does not understand, or a wish for help: what() is the text for the reader.
struct UsageText {
  std::string text;
  bool isWrong;
};

// Reads the arguments behind the program's name; throws UsageText.
Arguments ReadArguments(const std::vector<std::wstring>& arguments);
