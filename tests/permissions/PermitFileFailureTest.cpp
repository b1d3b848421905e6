#include <gtest/gtest.h>

#include <cwchar>
#include <set>

#include "common/Handles.h"
#include "common/ModulePath.h"
#include "permissions/DestinationDocument.h"
#include "permissions/PermitFileReading.h"
#include "support/AllocationFailure.h"
#include "support/Replaced.h"

namespace {

using Codes = std::vector<HRESULT>;

constexpr HRESULT kFileNotFound = static_cast<HRESULT>(0x80070002);
constexpr HRESULT kPathNotFound = static_cast<HRESULT>(0x80070003);
constexpr HRESULT kSharingViolation = static_cast<HRESULT>(0x80070020);
constexpr HRESULT kDiskFull = static_cast<HRESULT>(0x80070070);
constexpr HRESULT kBadSectors = static_cast<HRESULT>(0x80070017);

class PermitFileFailureTest : public PermitFileReading {
 protected:
  PermitFileFailureTest() { permit.Write(std::string(kDeclaration) + kDocumentType + kBody); }

  // The file of each trace without a message, in order.
  static Lines TracedFiles(const LogCapture& log) {
    Lines files;
    for (const LogEntry& entry : log.Entries()) {
      if (entry.message.empty())
        files.push_back(entry.file);
    }
    return files;
  }
};

TEST_F(PermitFileFailureTest, AMissingFileIsNotCopied) {
  DeleteFileA(permit.Path().c_str());
  LogCapture log(true);
  EXPECT_HRESULT(kFileNotFound, ReadAgain());
  EXPECT_EQ((Lines{"INFO Permit File: " + permit.Path(), "ERROR 0x80070002 Opening '" + permit.Path() + "' failed.",
                   NotCopied("0x80070002"), NotRead("0x80070002")}),
            log.Messages());
  EXPECT_EQ("Permissions", log.Entries().back().file);
  ExpectNoCopy();
  ExpectNoPermissions();
}

TEST_F(PermitFileFailureTest, TheFileLiesInTheFolderOfTheModule) {
  const std::string before = GetModulePath();
  SetModulePath("C:\\Prog\\Mod\\norvik.dll");
  LogCapture log(true);
  const HRESULT hr = ReadAgain();
  SetModulePath(before.c_str());
  EXPECT_HRESULT(kPathNotFound, hr);
  EXPECT_EQ(
      (Lines{"INFO Permit File: C:\\Prog\\Mod\\permit.xml", "ERROR 0x80070003 Opening 'C:\\Prog\\Mod\\permit.xml' failed.",
             "ERROR 0x80070003 Failed to copy 'C:\\Prog\\Mod\\permit.xml' to '" + copy + "'.", NotRead("0x80070003")}),
      log.Messages());
}

TEST_F(PermitFileFailureTest, AFileInUseIsNotCopied) {
  const FileHandle inUse(
      CreateFileA(permit.Path().c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  ASSERT_TRUE(static_cast<bool>(inUse));
  LogCapture log(false);
  EXPECT_HRESULT(kSharingViolation, ReadAgain());
  EXPECT_EQ(
      (Lines{"ERROR 0x80070020 Opening '" + permit.Path() + "' failed.", NotCopied("0x80070020"), NotRead("0x80070020")}),
      log.Messages());
  ExpectNoCopy();
  ExpectNoPermissions();
}

TEST_F(PermitFileFailureTest, AFileThatCannotBeReadIsNotCopied) {
  LogCapture log(false);
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(badSectors, ReadFile, FailWith(FALSE, ERROR_CRC));
    hr = ReadAgain();
  }
  EXPECT_HRESULT(kBadSectors, hr);
  EXPECT_EQ((Lines{"ERROR 0x80070017 Reading failed.", "ERROR 0x80070017 Reading failed.", NotCopied("0x80070017"),
                   NotRead("0x80070017")}),
            log.Messages());
  ExpectNoCopy();
  ExpectNoPermissions();
}

TEST_F(PermitFileFailureTest, ANameThatCannotBeConvertedEndsTheReading) {
  LogCapture log(true);
  alignas(CPermissions) unsigned char memory[sizeof(CPermissions)];
  CPermissions* read = nullptr;
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailCall(2, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    read = new (memory) CPermissions(0, L"permit.xml", &hr);
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Lines{"ERROR 0x8007000e permit.xml"}, log.Messages());
  EXPECT_EQ(Codes{S_OK}, log.ErrorTraces());
  EXPECT_EQ(Lines{"Permissions"}, TracedFiles(log));
  read->~CPermissions();
}

TEST_F(PermitFileFailureTest, TheCopyIsAnOrdinaryFile) {
  DWORD attributes = 0;
  PATCH_IMPORT(create, CreateFileA,
               [&](auto original, const char* name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                   DWORD disposition, DWORD flags, HANDLE pattern) {
    if (name == copy)
      attributes = flags;
    return original(name, access, share, security, disposition, flags, pattern);
  });
  EXPECT_HRESULT(S_OK, ReadAgain());
  EXPECT_EQ(DWORD{FILE_ATTRIBUTE_NORMAL}, attributes);
}

TEST_F(PermitFileFailureTest, WithoutAParserThereIsNoDocument) {
  LogCapture log(true);
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(noParser, CoCreateInstance, [](auto, REFCLSID, IUnknown*, DWORD, REFIID, void** object) -> HRESULT {
      *object = nullptr;
      return REGDB_E_CLASSNOTREG;
    });
    hr = ReadAgain();
  }
  EXPECT_HRESULT(REGDB_E_CLASSNOTREG, hr);
  EXPECT_EQ((Lines{"INFO Permit File: " + permit.Path(), "ERROR 0x80040154 Loading the Microsoft XML Parser Library failed.",
                   "ERROR 0x80040154 Failed to create 'XMLDocument' instance."}),
            log.Messages());
  EXPECT_EQ("", copy);
  ExpectNoPermissions();
}

TEST_F(PermitFileFailureTest, WithoutACacheFolderThereIsNoCopy) {
  LogCapture log(true);
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(noFolder, SHGetFolderPathA, [](auto, HWND, int, HANDLE, DWORD, char*) { return E_ABORT; });
    hr = ReadAgain();
  }
  EXPECT_HRESULT(E_ABORT, hr);
  EXPECT_EQ((Lines{"INFO Permit File: " + permit.Path(), NotRead("0x80004004")}), log.Messages());
  EXPECT_EQ(Codes{E_ABORT}, log.ErrorTraces());
  EXPECT_EQ(Lines{"Permissions"}, TracedFiles(log));
  EXPECT_EQ("", copy);
  ExpectNoPermissions();
}

TEST_F(PermitFileFailureTest, TheCacheIsAskedForAFileOfTheSameKind) {
  HRESULT hr = E_UNEXPECTED;
  PATCH_IMPORT(create, CreateUrlCacheEntryA,
               [&](auto original, const char* url, DWORD bytes, const char* extension, char* file, DWORD reserved) {
    EXPECT_EQ(permit.Path(), url);
    EXPECT_EQ(0u, bytes);
    EXPECT_STREQ("xml", extension);
    return original(url, bytes, extension, file, reserved);
  });
  const CPermissions read(0, L"permit.xml", &hr);
  EXPECT_HRESULT(S_OK, hr);
}

TEST_F(PermitFileFailureTest, ACacheThatRefusesAFileIsTraced) {
  LogCapture log(true);
  HRESULT hr = S_OK;
  PATCH_IMPORT(create, CreateUrlCacheEntryA, FailWith(FALSE, ERROR_DISK_FULL));
  permissions = std::make_unique<CPermissions>(0, L"permit.xml", &hr);
  EXPECT_HRESULT(kDiskFull, hr);
  EXPECT_EQ((Lines{"INFO Permit File: " + permit.Path(), NotRead("0x80070070")}), log.Messages());
  EXPECT_EQ((Codes{kDiskFull, kDiskFull}), log.ErrorTraces());
  EXPECT_EQ((Lines{"DestinationFolder", "Permissions"}), TracedFiles(log));
  ExpectNoPermissions();
}

TEST_F(PermitFileFailureTest, ACacheThatRefusesTheEntryIsReported) {
  LogCapture log(true);
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(commit, CommitUrlCacheEntryA, FailWith(FALSE, ERROR_DISK_FULL));
    hr = ReadAgain();
  }
  EXPECT_HRESULT(kDiskFull, hr);
  EXPECT_EQ(
      (Lines{"INFO Permit File: " + permit.Path(),
             "ERROR 0x80070070 Unable to commit cache entry.\r\n\tURL: '" + permit.Path() + "'\r\n\tPath: '" + copy + "'",
             NotRead("0x80070070")}),
      log.Messages());
  EXPECT_EQ((Codes{kDiskFull, kDiskFull}), log.ErrorTraces());
  EXPECT_EQ((Lines{"DestinationFolder", "Permissions"}), TracedFiles(log));
  ExpectNoCopy();
  ExpectNoPermissions();
}

// The copy is gone before the parser sees it.
TEST_F(PermitFileFailureTest, ACopyThatCannotBeLoadedIsReported) {
  LogCapture log(false);
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(
        commit, CommitUrlCacheEntryA, [](auto, const char*, const char* file, auto...) { return DeleteFileA(file); });
    hr = ReadAgain();
  }
  EXPECT_HRESULT(E_FAIL, hr);
  const Lines messages = log.Messages();
  ASSERT_LE(2u, messages.size());
  EXPECT_EQ((Lines{NotLoaded("0x80004005"), NotRead("0x80004005")}), Lines(messages.end() - 2, messages.end()));
  ExpectNoPermissions();
}

// The string for an element's name cannot be made, the time that is counted from 1: `Destination` is asked for twice, first
// when the document is checked and then when its entries are read.
auto FailName(const wchar_t* name, int time) {
  return [=, seen = 0](auto original, const wchar_t* text) mutable -> BSTR {
    return std::wcscmp(text, name) == 0 && ++seen == time ? nullptr : original(text);
  };
}

TEST_F(PermitFileFailureTest, ASourceThatCannotBeReadLeavesNoPermissions) {
  LogCapture log(false);
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(noMemory, SysAllocString, FailName(L"Source", 1));
    hr = ReadAgain();
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ((Lines{"ERROR 0x8007000e An error occured while parsing source permissions.", NotParsed("0x8007000e"),
                   NotRead("0x8007000e")}),
            log.Messages());
  ExpectNoPermissions();
}

TEST_F(PermitFileFailureTest, ADestinationThatCannotBeReadLeavesTheSource) {
  LogCapture log(true);
  HRESULT hr = S_OK;
  {
    PATCH_IMPORT(noMemory, SysAllocString, FailName(L"Destination", 2));
    hr = ReadAgain();
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  const Lines messages = log.Messages();
  ASSERT_LE(3u, messages.size());
  EXPECT_EQ((Lines{"ERROR 0x80070057 Missing List.", NotParsed("0x8007000e"), NotRead("0x8007000e")}),
            Lines(messages.end() - 3, messages.end()));
  EXPECT_TRUE(IsHostPermitted());
  const CDestinationFolder folder(FolderKind::Temp, nullptr);
  LogCapture question(false);
  EXPECT_HRESULT(E_UNEXPECTED, permissions->IsDestinationPermitted(&folder));
  EXPECT_EQ(Lines{"ERROR 0x8000ffff Missing destination permissions."}, question.Messages());
}

// What each allocation of the reading leaves in the log when it is refused, and what may be asked afterwards.
class RefusedAllocations {
 public:
  explicit RefusedAllocations(const std::string& permitPath) : path(permitPath) {
    PATCH_IMPORT(create, CreateUrlCacheEntryA,
                 [this](auto original, auto url, auto bytes, auto extension, char* file, auto zero) {
      const BOOL isCreated = original(url, bytes, extension, file, zero);
      lstrcpynA(copy, file, MAX_PATH);
      return isCreated;
    });
    count = ForEachFailedAllocation([this] { Run(); }, [this] { Check(); });
    Forget();
  }

  // The messages of the runs, joined; a run that succeeded is an empty text, or one that tells what was left out.
  std::set<std::string> reports;
  int count = 0;

 private:
  void Run() {
    Forget();
    copy[0] = '\0';
    permissions = new (memory) CPermissions(0, L"permit.xml", &hr);
  }

  void Check() {
    std::string report;
    for (const std::string& message : log->Messages())
      report += (copy[0] ? Replaced(message, copy, "<copy>") : message) + "\n";  // its name differs from run to run
    reports.insert(report);
    if (hr != S_OK) {
      const auto entries = log->Entries();
      ASSERT_FALSE(entries.empty());
      EXPECT_HRESULT(entries.back().code, hr) << report;
    }
    ExpectRefused(permissions->IsManifestURLPermitted(L"http://elsewhere/setup.xml"));
    ExpectRefused(permissions->IsExtensionPermitted("dll"));
    ExpectRefused(permissions->IsDestinationPermitted(&elsewhere));
    EXPECT_EQ(FileExistsAt(copy), copy[0] && CachedFile(path) == copy) << "a copy that the cache does not know: " << report;
    log.reset();
    log = std::make_unique<LogCapture>(false);
  }

  // By what was read, or because nothing was.
  static void ExpectRefused(HRESULT answer) { EXPECT_TRUE(answer == E_ACCESSDENIED || answer == E_UNEXPECTED) << answer; }

  void Forget() {
    if (permissions)
      permissions->~CPermissions();
    permissions = nullptr;
  }

  alignas(CPermissions) unsigned char memory[sizeof(CPermissions)];
  const std::string path;
  CPermissions* permissions = nullptr;
  HRESULT hr = S_OK;
  char copy[MAX_PATH] = "";
  const CDestinationFolder elsewhere{"D:\\Elsewhere", nullptr};
  std::unique_ptr<LogCapture> log = std::make_unique<LogCapture>(false);
};

TEST_F(PermitFileFailureTest, WhateverAllocationIsRefusedNothingMoreIsPermitted) {
  const RefusedAllocations refused(permit.Path());
  const std::string notRead = "ERROR 0x8007000e Failed to read permissions.\n";
  const std::string notParsed = "ERROR 0x8007000e Failed to parse XML document '<copy>'.\n" + notRead;
  const std::set<std::string> expected = {
      "",
      "ERROR 0x8007000e Failed to create a 'SourceURL' class instance from 'permit.xml'.\n",
      "ERROR 0x8007000e permit.xml\n",
      "ERROR 0x8007000e Failed to correct 'permit.xml'.\n",
      "ERROR 0x8007000e Failed to create 'DestinationFolder' class instance.\n" + notRead,
      "ERROR 0x8007000e Out of memory when allocating '" + SpecialFolderPath(CSIDL_INTERNET_CACHE) + "'.\n" + notRead,
      "ERROR 0x80070057 Failed to copy '" + permit.Path() + "' to '(null)'.\nERROR 0x80070057 Failed to read permissions.\n",
      "ERROR 0x8007000e Copy buffer creation failed.\nERROR 0x8007000e Failed to copy '" + permit.Path() +
          "' to '<copy>'.\n" + notRead,
      "ERROR 0x8007000e Failed to create a 'SourcePermission' class instance.\n" + notParsed,
      "ERROR 0x8007000e Failed to create a 'DestinationPermission' class instance.\n" + notParsed,
      "ERROR 0x8007000e http://host/apps/\n",
      "ERROR 0x8007000e Failed to correct 'http://host/apps/'.\n",
      "ERROR 0x8007000e Out of memory when allocating '" + TemporaryPath() + "'.\n",
  };
  EXPECT_EQ(expected, refused.reports);
  EXPECT_LT(expected.size(), static_cast<std::size_t>(refused.count));
}

// The reading as one step of the whole; explicit instantiation may name what is private.
using ReadingStep = HRESULT (CPermissions::*)(const CSourceURL*, IXMLDOMDocument2*);
ReadingStep ReadPermitFile();

template <ReadingStep Step>
struct Reach {
  friend ReadingStep ReadPermitFile() { return Step; }
};
template struct Reach<&CPermissions::ReadPermitFile>;

TEST(PermitFileStepTest, ReadingNeedsAURLAndADocument) {
  CPermissions permissions(0, nullptr, nullptr);
  const CSourceURL url(L"C:\\Apps\\permit.xml", SourceRole::Command, nullptr);
  LogCapture log(false);
  EXPECT_HRESULT(E_UNEXPECTED, (permissions.*ReadPermitFile())(nullptr, NewXmlDocument().Get()));
  EXPECT_HRESULT(E_UNEXPECTED, (permissions.*ReadPermitFile())(&url, nullptr));
  EXPECT_HRESULT(E_UNEXPECTED, (permissions.*ReadPermitFile())(nullptr, nullptr));
  EXPECT_EQ(
      (Lines{"ERROR 0x8000ffff Missing permissions source URL.", "ERROR 0x8000ffff Missing 'XMLDocument' class instance.",
             "ERROR 0x8000ffff Missing permissions source URL."}),
      log.Messages());
}

}  // namespace
