#include "advice/FileNames.h"

#include "common/Windows.h"

#include <cwchar>

namespace {

constexpr const wchar_t* kDevices[] = {L"CON", L"PRN", L"AUX", L"NUL", L"CONIN$", L"CONOUT$", L"CLOCK$"};
constexpr const wchar_t* kNumberedDevices[] = {L"COM", L"LPT"};

// The digits of ports; three more are numbers to the system than to most of us.
constexpr wchar_t kPorts[] = L"123456789\u00B9\u00B2\u00B3";

}  // namespace

bool IsDeviceName(const std::wstring& name) {
  std::wstring stem = name.substr(0, name.find_first_of(L".:"));
  stem.erase(stem.find_last_not_of(L' ') + 1);
  for (const wchar_t* const device : kDevices) {
    if (_wcsicmp(stem.c_str(), device) == 0)
      return true;
  }
  for (const wchar_t* const device : kNumberedDevices) {
    if (stem.size() == 4 && _wcsnicmp(stem.c_str(), device, 3) == 0 && std::wcschr(kPorts, stem[3]))
      return true;
  }
  return false;
}

bool EndsInDot(const std::wstring& name) {
  return !name.empty() && name != L"." && name != L".." && (name.back() == L'.' || name.back() == L' ');
}
