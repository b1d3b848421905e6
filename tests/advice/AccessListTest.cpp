#include "advice/AccessList.h"

#include <aclapi.h>
#include <gtest/gtest.h>
#include <sddl.h>

#include "advice/Words.h"
#include "support/Files.h"
#include "support/ImportPatch.h"

namespace {

// A security descriptor from its text form.
class Descriptor {
 public:
  explicit Descriptor(const std::string& text) {
    EXPECT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(text.c_str(), SDDL_REVISION_1, &descriptor, nullptr))
        << text;
    BOOL isGiven = FALSE;
    GetSecurityDescriptorOwner(descriptor, &owner, &isGiven);
    GetSecurityDescriptorDacl(descriptor, &isGiven, &accessList, &isGiven);
  }
  ~Descriptor() { LocalFree(descriptor); }
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;

  ACL* AccessList() const { return accessList; }
  PSID Owner() const { return owner; }

 private:
  PSECURITY_DESCRIPTOR descriptor = nullptr;
  PSID owner = nullptr;
  ACL* accessList = nullptr;
};

struct AccessCase {
  const char* name;
  const char* descriptor;
  const char* writer;
};

class AccessListTest : public testing::TestWithParam<AccessCase> {};

TEST_P(AccessListTest, NamesTheFirstWriter) {
  const Descriptor descriptor(GetParam().descriptor);
  EXPECT_EQ(GetParam().writer, Utf8(WriterByAccessList(descriptor.AccessList(), descriptor.Owner())));
}

INSTANTIATE_TEST_SUITE_P(
    Lists, AccessListTest,
    testing::Values(
        AccessCase{"Nobody", "O:BAD:", ""},
        AccessCase{"AdministratorsAndTheSystem", "O:BAD:(A;;FA;;;BA)(A;;FA;;;SY)(A;;0x1200a9;;;BU)", ""},
        AccessCase{
            "WhatInstallsWindows", "O:BAD:(A;;FA;;;S-1-5-80-956008885-3418522649-1831038044-1853292631-2271478464)", ""},
        AccessCase{"AnotherService", "O:BAD:(A;;FA;;;S-1-5-80-1)", "S-1-5-80-1"},
        AccessCase{"TheAdministratorsOfADomain", "O:BAD:(A;;FA;;;S-1-5-21-1-2-3-512)(A;;FA;;;S-1-5-21-1-2-3-500)", ""},
        AccessCase{"TheUsersOfADomain", "O:BAD:(A;;FA;;;S-1-5-21-1-2-3-513)", "S-1-5-21-1-2-3-513"},
        AccessCase{"SomebodysOwnNumber", "O:BAD:(A;;FA;;;S-1-5-21-1-2-3-1512)", "S-1-5-21-1-2-3-1512"},
        AccessCase{"EveryoneReads", "O:BAD:(A;;FR;;;WD)", ""}, AccessCase{"EveryoneWrites", "O:BAD:(A;;FW;;;WD)", "S-1-1-0"},
        AccessCase{"EveryoneDoesAll", "O:BAD:(A;;GA;;;WD)", "S-1-1-0"},
        AccessCase{"UsersModify", "O:BAD:(A;;0x1301bf;;;BU)", "S-1-5-32-545"},
        AccessCase{"UsersMakeFolders", "O:BAD:(A;;LC;;;BU)", "S-1-5-32-545"},
        AccessCase{"UsersMayDeleteThisAlone", "O:BAD:(A;;SD;;;BU)", ""},
        AccessCase{"UsersChangeTheList", "O:BAD:(A;;WD;;;BU)", "S-1-5-32-545"},
        AccessCase{"WhoIsLoggedOn", "O:BAD:(A;;GW;;;IU)", "S-1-5-4"},
        AccessCase{"WhoIsKnown", "O:BAD:(A;;GW;;;AU)", "S-1-5-11"},
        AccessCase{"OnlyHandedOn", "O:BAD:(A;OICIIO;GA;;;BU)(A;OICIIO;GA;;;CO)", ""},
        AccessCase{"OnlyHandedOnBehindAnother", "O:BAD:(A;;FA;;;BA)(A;OICIIO;GA;;;BU)", ""},
        AccessCase{"HandedOnToo", "O:BAD:(A;OICI;GA;;;BU)", "S-1-5-32-545"},
        AccessCase{"DeniedBefore", "O:BAD:(D;;GA;;;BU)(A;;GA;;;BU)", ""},
        AccessCase{"DeniedInPart", "O:BAD:(D;;LC;;;BU)(A;;GA;;;BU)", "S-1-5-32-545"},
        AccessCase{"DeniedToEveryone", "O:BAD:(D;;GA;;;WD)(A;;GA;;;BU)", ""},
        AccessCase{"DeniedBehind", "O:BAD:(A;;GA;;;BU)(D;;GA;;;BU)", "S-1-5-32-545"},
        AccessCase{"DeniedToOthers", "O:BAD:(D;;GA;;;BG)(A;;GA;;;BU)", "S-1-5-32-545"},
        AccessCase{"OwnedBySomebody", "O:S-1-5-21-1-2-3-1001D:(A;;FA;;;BA)", "S-1-5-21-1-2-3-1001"},
        AccessCase{"OwnedByTheSystem", "O:SYD:(A;;FA;;;BA)", ""}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(AccessListTest, EntriesThatNeitherAllowNorDenyGiveNoRights) {
  const Descriptor descriptor("O:BAD:(A;;FA;;;BA)(A;;GA;;;WD)");
  void* entry = nullptr;
  ASSERT_TRUE(GetAce(descriptor.AccessList(), 1, &entry));
  static_cast<ACE_HEADER*>(entry)->AceType = SYSTEM_AUDIT_ACE_TYPE;
  EXPECT_EQ(L"", WriterByAccessList(descriptor.AccessList(), descriptor.Owner()));
}

TEST(AccessListTest, WithoutAListEveryoneWrites) {
  const Descriptor descriptor("O:BAD:");
  EXPECT_EQ(L"S-1-1-0", WriterByAccessList(nullptr, descriptor.Owner()));
  EXPECT_EQ(L"S-1-1-0", WriterByAccessList(nullptr, nullptr));
}

// The number of the account that runs this program.
std::string TextOfCaller() {
  HANDLE token = nullptr;
  EXPECT_TRUE(OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY, &token));
  alignas(TOKEN_USER) BYTE user[sizeof(TOKEN_USER) + SECURITY_MAX_SID_SIZE];
  DWORD size = 0;
  EXPECT_TRUE(GetTokenInformation(token, TokenUser, user, sizeof(user), &size));
  CloseHandle(token);
  char* text = nullptr;
  EXPECT_TRUE(ConvertSidToStringSidA(reinterpret_cast<const TOKEN_USER*>(user)->User.Sid, &text));
  const std::string number = text;
  LocalFree(text);
  return number;
}

void LetEveryoneWrite(const std::string& path) {
  Descriptor descriptor("O:BAD:(A;;FA;;;WD)");
  std::string name = path;
  ASSERT_EQ(0u, SetNamedSecurityInfoA(name.data(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr,
                                      descriptor.AccessList(), nullptr));
}

std::string WriterAt(const std::string& path) {
  return WriterOfPath(WideFromAnsi(path.c_str()));
}

// The name of the group in the system's language.
std::string Everyone() {
  BYTE account[SECURITY_MAX_SID_SIZE];
  DWORD size = sizeof(account);
  EXPECT_TRUE(CreateWellKnownSid(WinWorldSid, nullptr, account, &size));
  wchar_t name[256] = L"";
  wchar_t domain[256] = L"";
  DWORD nameLength = 256;
  DWORD domainLength = 256;
  SID_NAME_USE use;
  EXPECT_TRUE(LookupAccountSidW(nullptr, account, name, &nameLength, domain, &domainLength, &use));
  return Utf8(*domain ? std::wstring(domain) + L"\\" + name : std::wstring(name));
}

// The caller of a test is an administrator, unless the system does not say so.
TEST(AccessListTest, TheCallerIsTrustedAsAnAdministratorOnly) {
  const std::string caller = TextOfCaller();
  const Descriptor others("O:BAD:(A;;FA;;;" + caller + ")");
  const auto writer = [&others] { return Utf8(WriterByAccessList(others.AccessList(), others.Owner())); };
  EXPECT_EQ("", writer());
  for (const TOKEN_INFORMATION_CLASS hidden : {TokenGroups, TokenUser}) {
    PATCH_IMPORT(information, GetTokenInformation, [hidden](auto original, HANDLE token, auto wanted, auto... rest) -> BOOL {
      return wanted != hidden && original(token, wanted, rest...);
    });
    EXPECT_EQ(caller, writer()) << hidden;
  }
}

// What a caller makes belongs to the caller, who has to be an administrator here: an ordinary user writes everything that
// these tests make.
class WriterOfPathTest : public testing::Test {
 protected:
  void SetUp() override {
    WriteWholeFile(folder.File("a"), "");
    ASSERT_EQ("", WriterAt(folder.File("a"))) << "the caller is no administrator";
  }

  const TemporaryFolder folder;
};

TEST_F(WriterOfPathTest, ReadsTheFilesList) {
  LetEveryoneWrite(folder.File("a"));
  EXPECT_EQ(Everyone(), WriterAt(folder.File("a")));
  EXPECT_EQ("", WriterAt(folder.Path()));
}

TEST_F(WriterOfPathTest, WhatIsMissingIsMadeByWhoMayWriteAbove) {
  EXPECT_EQ("", WriterAt(folder.File("missing\\sub\\a")));
  LetEveryoneWrite(folder.Path());
  EXPECT_EQ(Everyone(), WriterAt(folder.File("missing\\sub\\a")));
  EXPECT_EQ(Everyone(), WriterAt(folder.File("missing\\sub\\")));
  EXPECT_EQ("", WriterAt(folder.File("a\\below")));
}

TEST_F(WriterOfPathTest, WhatIsMissingOnADriveIsMadeByWhoMayWriteToItsRoot) {
  static std::wstring asked;
  PATCH_IMPORT(information, GetNamedSecurityInfoW, [](auto, auto path, auto...) -> DWORD {
    asked = path;
    return ERROR_ACCESS_DENIED;
  });
  WriterAt("C:\\no-such-folder\\a");
  EXPECT_EQ(L"C:\\", asked);
}

TEST_F(WriterOfPathTest, WhatCannotBeReadHasNoWriter) {
  LetEveryoneWrite(folder.File("a"));
  PATCH_IMPORT(information, GetNamedSecurityInfoW, [](auto, auto...) -> DWORD { return ERROR_ACCESS_DENIED; });
  EXPECT_EQ("", WriterAt(folder.File("a")));
}

TEST_F(WriterOfPathTest, AnAccountWithoutANameIsShownByItsNumber) {
  LetEveryoneWrite(folder.File("a"));
  PATCH_IMPORT(lookup, LookupAccountSidW, FailWith(FALSE, ERROR_NONE_MAPPED));
  EXPECT_EQ("S-1-1-0", WriterAt(folder.File("a")));
}

TEST_F(WriterOfPathTest, NothingIsAskedOfServersAndOfWhatIsNoPath) {
  for (const char* const path :
       {"", "\\\\", "\\\\server.invalid\\share", "\\\\?\\C:\\", "Q:\\nowhere", "Q:", "C", ":", "nul"})
    EXPECT_EQ("", WriterAt(path)) << path;
}

}  // namespace
