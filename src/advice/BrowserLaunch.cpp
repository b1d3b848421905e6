#include "advice/BrowserLaunch.h"

#include <shlwapi.h>

#include "advice/ModuleFile.h"
#include "advice/RegistryValue.h"
#include "advice/Words.h"
#include "common/ModulePath.h"

namespace {

constexpr char kCheckName[] = "browser-launch";
constexpr int kBits = static_cast<int>(sizeof(void*)) * 8;  // both widths see the same keys
constexpr wchar_t kSchemeKey[] = L"Software\\Classes\\norvik";
constexpr wchar_t kCommandKey[] = L"Software\\Classes\\norvik\\shell\\open\\command";
constexpr wchar_t kChoiceKey[] = L"Software\\Microsoft\\Windows\\Shell\\Associations\\UrlAssociations\\norvik\\UserChoice";

std::wstring CommandFor(const std::wstring& program) {
  return L"\"" + program + L"\" \"%1\"";
}

// A registered command begins with its program, in quotes when there are blanks in its name.
std::wstring ProgramIn(const std::wstring& command) {
  const bool isQuoted = !command.empty() && command.front() == L'"';
  return isQuoted ? command.substr(1, command.find(L'"', 1) - 1) : command.substr(0, command.find(L' '));
}

// The system asks the user's choice first, then the user's own classes.
std::wstring UsersChoice() {
  const std::wstring choice = ReadText(OpenKey(HKEY_CURRENT_USER, kChoiceKey, kBits), L"ProgId");
  return choice.empty() ? ReadText(OpenKey(HKEY_CURRENT_USER, kCommandKey, kBits), nullptr) : choice;
}

LONG CreateKey(const wchar_t* name, RegistryKey& key) {
  HKEY created = nullptr;
  const LONG error =
      RegCreateKeyExW(HKEY_LOCAL_MACHINE, name, 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_WRITE, nullptr, &created, nullptr);
  key = RegistryKey(created);
  return error;
}

LONG WriteText(const RegistryKey& key, const wchar_t* valueName, const std::wstring& text) {
  return RegSetValueExW(key.Get(), valueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                        static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t)));
}

std::string Quoted(const std::wstring& text) {
  return "'" + Utf8(text) + "'";
}

}  // namespace

BrowserLaunch ReadBrowserLaunch() {
  BrowserLaunch launch;
  launch.command = ReadText(OpenKey(HKEY_LOCAL_MACHINE, kCommandKey, kBits), nullptr);
  launch.isOn = !launch.command.empty();
  launch.program = ProgramIn(launch.command);
  launch.usersChoice = UsersChoice();
  return launch;
}

// Nothing is written before both keys are open for it, and the command, from which alone a program is started, comes last.
LONG SwitchBrowserLaunchOn(const std::wstring& program) {
  const bool wasThere = static_cast<bool>(OpenKey(HKEY_LOCAL_MACHINE, kSchemeKey, kBits));
  RegistryKey scheme;
  RegistryKey command;
  LONG error = CreateKey(kSchemeKey, scheme);
  if (error == ERROR_SUCCESS)
    error = CreateKey(kCommandKey, command);
  if (error == ERROR_SUCCESS)
    error = WriteText(scheme, nullptr, L"URL:Norvik");
  if (error == ERROR_SUCCESS)
    error = WriteText(scheme, L"URL Protocol", L"");
  if (error == ERROR_SUCCESS)
    error = WriteText(command, nullptr, CommandFor(program));
  if (error != ERROR_SUCCESS && !wasThere)
    SHDeleteKeyW(HKEY_LOCAL_MACHINE, kSchemeKey);
  return error;
}

LONG SwitchBrowserLaunchOff() {
  const LONG error = static_cast<LONG>(SHDeleteKeyW(HKEY_LOCAL_MACHINE, kSchemeKey));
  return error == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : error;
}

std::wstring LinkProgramPath() {
  return WideFromAnsi(GetModuleFolder()) + L"\\norvikopen.exe";
}

DoctorCheck CheckBrowserLaunch(const BrowserLaunch& launch, const std::wstring& expectedProgram) {
  if (!launch.usersChoice.empty()) {
    return {kCheckName, DoctorStatus::Warning,
            "This user has chosen " + Quoted(launch.usersChoice) +
                " for links that begin with 'norvik:', whatever is set for the machine."};
  }
  if (!launch.isOn) {
    return {kCheckName, DoctorStatus::Ok,
            "Links in browsers start no manifests. 'norvik browser on' would switch that on for all users."};
  }
  if (GetFileAttributesW(launch.program.c_str()) == INVALID_FILE_ATTRIBUTES) {
    return {kCheckName, DoctorStatus::Warning,
            "Links in browsers are to start " + Quoted(launch.program) +
                ", which is not there. Run 'norvik browser on' or 'norvik browser off' as an administrator."};
  }
  if (!IsSameFile(launch.program, expectedProgram)) {
    return {kCheckName, DoctorStatus::Warning,
            "Links in browsers start " + Quoted(launch.program) + ", which is not the program beside this one."};
  }
  return {kCheckName, DoctorStatus::Ok, "Links in browsers start manifests, with " + Quoted(launch.program) + "."};
}
