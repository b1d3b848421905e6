#include "advice/AccessList.h"

#include <aclapi.h>
#include <sddl.h>
#include <shlwapi.h>

#include <algorithm>
#include <cwchar>
#include <iterator>
#include <map>
#include <vector>

#include "advice/Document.h"
#include "advice/Words.h"
#include "common/Handles.h"

namespace {

constexpr wchar_t kEveryone[] = L"S-1-1-0";
constexpr wchar_t kAdministrators[] = L"S-1-5-32-544";

// Creator and owner stand for accounts that are looked at themselves.
constexpr const wchar_t* kTrusted[] = {
    L"S-1-5-18",      // the system
    kAdministrators,  // the group
    L"S-1-3-0",       // whoever makes something here; to do so takes another right
    L"S-1-3-4",       // the owner
    L"S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464",  // what installs Windows
};

// The accounts and groups of a machine or domain that are administrators: the account itself, those of the domain, of the
// schema and of the forest.
constexpr const wchar_t* kTrustedNumbers[] = {L"-500", L"-512", L"-518", L"-519"};

constexpr DWORD kWritingRights = FILE_WRITE_DATA | FILE_APPEND_DATA | FILE_DELETE_CHILD | WRITE_DAC | WRITE_OWNER;
constexpr DWORD kGenericWritingRights = GENERIC_WRITE | GENERIC_ALL;

// What the functions for accounts and access lists hand out.
struct LocalMemoryTraits {
  using Handle = void*;
  static Handle Invalid() { return nullptr; }
  static bool Close(Handle memory) { return LocalFree(memory) == nullptr; }
};
using LocalMemory = UniqueHandle<LocalMemoryTraits>;

std::wstring TextOf(PSID account) {
  wchar_t* text = nullptr;
  if (!account || !ConvertSidToStringSidW(account, &text))
    return {};
  const LocalMemory owned(text);
  return text;
}

bool EndsWith(const std::wstring& text, const wchar_t* end) {
  const std::size_t length = std::wcslen(end);
  return text.size() >= length && text.compare(text.size() - length, length, end) == 0;
}

std::vector<BYTE> TokenInformation(TOKEN_INFORMATION_CLASS wanted) {
  HANDLE opened = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &opened))
    return {};
  const FileHandle token(opened);
  DWORD size = 0;
  GetTokenInformation(token.Get(), wanted, nullptr, 0, &size);
  std::vector<BYTE> information(size);
  if (!GetTokenInformation(token.Get(), wanted, information.data(), size, &size))
    return {};
  return information;
}

// Also an administrator who works without those rights at the moment.
bool IsCallerAdministrator() {
  const std::vector<BYTE> information = TokenInformation(TokenGroups);
  if (information.empty())
    return false;
  const auto* const groups = reinterpret_cast<const TOKEN_GROUPS*>(information.data());
  for (DWORD i = 0; i < groups->GroupCount; ++i) {
    if (TextOf(groups->Groups[i].Sid) == kAdministrators)
      return true;
  }
  return false;
}

// Empty when the caller is no administrator.
std::wstring AdministratingCaller() {
  const std::vector<BYTE> information = TokenInformation(TokenUser);
  if (information.empty() || !IsCallerAdministrator())
    return {};
  return TextOf(reinterpret_cast<const TOKEN_USER*>(information.data())->User.Sid);
}

bool IsTrusted(const std::wstring& account) {
  for (const wchar_t* const trusted : kTrusted) {
    if (account == trusted)
      return true;
  }
  if (account == AdministratingCaller())
    return true;
  if (account.rfind(L"S-1-5-21-", 0) != 0)
    return false;
  return std::any_of(std::begin(kTrustedNumbers), std::end(kTrustedNumbers),
                     [&account](const wchar_t* number) { return EndsWith(account, number); });
}

DWORD WritingRightsOf(DWORD mask) {
  return (mask & kGenericWritingRights) != 0 ? kWritingRights : mask & kWritingRights;
}

// Goes through an access list from its first entry on, as the system does.
class Reading {
 public:
  // Whether this entry lets its account write.
  bool Take(ACE_HEADER& header) {
    if (header.AceFlags & INHERIT_ONLY_ACE)
      return false;
    // The two kinds are alike; other kinds need what a file does not have.
    auto& entry = reinterpret_cast<ACCESS_ALLOWED_ACE&>(header);
    if (header.AceType != ACCESS_ALLOWED_ACE_TYPE && header.AceType != ACCESS_DENIED_ACE_TYPE)
      return false;
    account = TextOf(&entry.SidStart);
    const DWORD rights = WritingRightsOf(entry.Mask);
    if (header.AceType == ACCESS_DENIED_ACE_TYPE) {
      denied[account] |= rights;
      return false;
    }
    return !IsTrusted(account) && (rights & ~denied[account] & ~denied[kEveryone]) != 0;
  }

  const std::wstring& Account() const { return account; }

 private:
  std::map<std::wstring, DWORD> denied;
  std::wstring account;
};

std::wstring NearestThere(std::wstring path) {
  while (GetFileAttributesW(path.c_str()) == INVALID_FILE_ATTRIBUTES) {
    const std::size_t separator = path.find_last_of(L"\\/", path.size() - (path.empty() ? 0 : 2));
    if (path.size() <= 3 || separator == std::wstring::npos)
      return {};
    path.resize(separator < 3 ? separator + 1 : separator);  // a drive's root keeps its separator
  }
  return path;
}

bool IsOnThisMachine(const std::wstring& path) {
  if (path.size() < 2 || path[1] != L':')
    return false;
  return GetDriveTypeW((path.substr(0, 2) + L"\\").c_str()) != DRIVE_REMOTE;
}

std::string NameOfAccount(const std::wstring& account) {
  PSID identifier = nullptr;
  if (!ConvertStringSidToSidW(account.c_str(), &identifier))
    return Utf8(account);
  const LocalMemory owned(identifier);
  wchar_t name[256] = L"";
  wchar_t domain[256] = L"";
  DWORD nameLength = static_cast<DWORD>(std::size(name));
  DWORD domainLength = static_cast<DWORD>(std::size(domain));
  SID_NAME_USE use = SidTypeUnknown;
  const BOOL isKnown = LookupAccountSidW(nullptr, identifier, name, &nameLength, domain, &domainLength, &use);
  if (!isKnown || !*name)
    return Utf8(account);
  return Utf8(*domain ? std::wstring(domain) + L"\\" + name : std::wstring(name));
}

}  // namespace

std::wstring WriterByAccessList(ACL* accessList, PSID owner) {
  std::wstring ownerText = TextOf(owner);
  if (!ownerText.empty() && !IsTrusted(ownerText))
    return ownerText;
  if (!accessList)
    return kEveryone;
  Reading reading;
  for (DWORD i = 0; i < accessList->AceCount; ++i) {
    void* entry = nullptr;
    if (GetAce(accessList, i, &entry) && reading.Take(*static_cast<ACE_HEADER*>(entry)))
      return reading.Account();
  }
  return {};
}

std::string WriterOfPath(const std::wstring& path) {
  if (!IsOnThisMachine(path))
    return {};
  const bool isDrive = path.size() == 2;
  const std::wstring nearest = NearestThere(FullPath(isDrive ? path + L"\\" : path));
  if (nearest.empty())
    return {};
  PSID owner = nullptr;
  ACL* accessList = nullptr;
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  if (GetNamedSecurityInfoW(nearest.c_str(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, &owner,
                            nullptr, &accessList, nullptr, &descriptor) != ERROR_SUCCESS)
    return {};
  const LocalMemory owned(descriptor);
  const std::wstring account = WriterByAccessList(accessList, owner);
  return account.empty() ? std::string() : NameOfAccount(account);
}
