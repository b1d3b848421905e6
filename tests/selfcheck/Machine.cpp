#include "selfcheck/Machine.h"

#include "common/Windows.h"

#include <vector>

#include "advice/Words.h"
#include "selfcheck/Process.h"

namespace {

// Of the parsers the module uses the first; the others tell how old the system is.
constexpr const wchar_t* kFiles[] = {L"msxml3.dll", L"msxml6.dll", L"wininet.dll", L"atl.dll", L"oleaut32.dll"};

std::string Dotted(DWORD high, DWORD low) {
  return std::to_string(HIWORD(high)) + "." + std::to_string(LOWORD(high)) + "." + std::to_string(HIWORD(low)) + "." +
         std::to_string(LOWORD(low));
}

// "none" of a file without a version, or of one that is not there.
std::string FileVersion(const wchar_t* name) {
  wchar_t path[MAX_PATH] = L"";
  GetSystemDirectoryW(path, MAX_PATH);
  const std::wstring full = std::wstring(path) + L"\\" + name;
  DWORD ignored = 0;
  std::vector<char> information(GetFileVersionInfoSizeW(full.c_str(), &ignored));
  VS_FIXEDFILEINFO* fixed = nullptr;
  UINT size = 0;
  if (information.empty() ||
      !GetFileVersionInfoW(full.c_str(), 0, static_cast<DWORD>(information.size()), information.data()) ||
      !VerQueryValueW(information.data(), L"\\", reinterpret_cast<void**>(&fixed), &size))
    return "none";
  return Dotted(fixed->dwFileVersionMS, fixed->dwFileVersionLS);
}

std::string RegistryText(const wchar_t* name) {
  wchar_t text[256] = L"";
  DWORD bytes = sizeof(text);
  RegGetValueW(
      HKEY_LOCAL_MACHINE, L"SOFTWARE\\Microsoft\\Windows NT\\CurrentVersion", name, RRF_RT_REG_SZ, nullptr, text, &bytes);
  return Utf8(text);
}

template <class Function>
Function SystemFunction(const char* name) {
  return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleW(L"ntdll.dll"), name)));
}

// Without the pretence that GetVersionEx makes for a program that does not name the later systems.
std::string WindowsVersion() {
  OSVERSIONINFOW version = {};
  version.dwOSVersionInfoSize = sizeof(version);
  SystemFunction<LONG(WINAPI*)(OSVERSIONINFOW*)>("RtlGetVersion")(&version);
  return std::to_string(version.dwMajorVersion) + "." + std::to_string(version.dwMinorVersion) + "." +
         std::to_string(version.dwBuildNumber);
}

std::string WineVersion() {
  const auto version = SystemFunction<const char*(CDECL*)()>("wine_get_version");
  return version ? version() : "";
}

std::string LocaleName() {
  wchar_t name[LOCALE_NAME_MAX_LENGTH] = L"";
  GetUserDefaultLocaleName(name, LOCALE_NAME_MAX_LENGTH);
  return Utf8(name);
}

std::string TimeZoneName() {
  DYNAMIC_TIME_ZONE_INFORMATION zone = {};
  GetDynamicTimeZoneInformation(&zone);
  return Utf8(zone.TimeZoneKeyName);
}

bool IsElevated() {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened))
    return false;
  const OwnedHandle token(opened);
  TOKEN_ELEVATION elevation = {};
  DWORD size = 0;
  return GetTokenInformation(token.Get(), TokenElevation, &elevation, sizeof(elevation), &size) && elevation.TokenIsElevated;
}

}  // namespace

Machine ReadMachine() {
  Machine machine;
  machine.windows = WindowsVersion();
  machine.product = RegistryText(L"ProductName");
  const std::string release = RegistryText(L"DisplayVersion");
  if (!release.empty())
    machine.product += " " + release;
  machine.wine = WineVersion();
  for (const wchar_t* const name : kFiles)
    machine.files[Utf8(name)] = FileVersion(name);
  machine.ansiCodePage = GetACP();
  machine.oemCodePage = GetOEMCP();
  machine.locale = LocaleName();
  machine.timeZone = TimeZoneName();
  machine.isElevated = IsElevated();
  return machine;
}
