#include "engine/Manifest.h"

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shlobj.h>
#include <wininet.h>

#include <cwchar>
#include <optional>
#include <set>

#include "engine/EngineFixture.h"
#include "engine/HeapFailure.h"
#include "engine/OpenCommand.h"
#include "support/AllocationFailure.h"
#include "support/FirstLines.h"
#include "support/HResult.h"
#include "support/HeapBalance.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "transfer/DocumentType.h"

namespace {

using Texts = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

static_assert(sizeof(COpenCommand) == sizeof(CCopyCommand), "commands are told apart by the number of their allocation");

constexpr HRESULT kFileNotFound = static_cast<HRESULT>(0x80070002);
constexpr HRESULT kDiskFull = static_cast<HRESULT>(0x80070070);

struct MadeManifest {
  explicit MadeManifest(const wchar_t* url) : manifest(0, url, &result) {}
  explicit MadeManifest(const std::string& url) : MadeManifest(Wide(url).c_str()) {}

  HRESULT result = S_OK;
  CManifest manifest;
};

TEST(ManifestConstructionTest, NeedsAURL) {
  for (const wchar_t* url : {static_cast<const wchar_t*>(nullptr), L""}) {
    const LogCapture log;
    const MadeManifest made(url);
    EXPECT_HRESULT(E_INVALIDARG, made.result);
    EXPECT_EQ(Texts{"ERROR 0x80070057 Missing manifest URL parameter."}, log.Messages());
    EXPECT_EQ("Manifest", log.Entries().at(0).file);
  }
}

TEST(ManifestConstructionTest, ThePlaceForTheResultMayBeMissing) {
  const LogCapture log;
  const CManifest good(0, L"C:\\a.xml", nullptr);
  EXPECT_EQ("", log.Text());
  const CManifest bad(0, nullptr, nullptr);
  EXPECT_EQ(1u, log.Messages().size());
}

TEST(ManifestConstructionTest, AURLIsNeitherCheckedNorFetched) {
  const LogCapture log;
  const MadeManifest made(L"http://nowhere.invalid/%s%n.xml");
  EXPECT_HRESULT(S_OK, made.result);
  EXPECT_EQ("", log.Text());
  EXPECT_FALSE(made.manifest.CommandIterator().HasMore());
}

TEST(ManifestConstructionTest, ASourceURLThatCannotBeAllocatedIsReported) {
  const LogCapture log(false);
  HRESULT hr = S_OK;
  HeapFailure failure = HeapFailure::OfSize(sizeof(CSourceURL));
  failure.Run([&] { const CManifest manifest(0, L"C:\\a.xml", &hr); });
  EXPECT_EQ(1, failure.Failures());
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Texts{"ERROR 0x8007000e Failed to create 'SourceURL' class instance."}, log.Messages());
}

TEST(ManifestConstructionTest, ASourceURLThatCannotBeMadeIsReported) {
  const LogCapture log(false);
  HRESULT hr = S_OK;
  HRESULT readResult = S_OK;
  HeapFailure failure = HeapFailure::OfSize(sizeof("C:\\a.xml"));
  failure.Run([&] {
    CManifest manifest(0, L"C:\\a.xml", &hr);
    readResult = manifest.Read(nullptr);
  });
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_HRESULT(E_UNEXPECTED, readResult);
  EXPECT_EQ((Texts{"ERROR 0x8007000e C:\\a.xml", "ERROR 0x8007000e Failed to create 'SourceURL' class instance.",
                   "ERROR 0x8000ffff Missing manifest source URL."}),
            log.Messages());
}

TEST(ManifestConstructionTest, AParserThatCannotBeHadIsReported) {
  const LogCapture log;
  std::unique_ptr<MadeManifest> made;
  {
    PATCH_IMPORT(parser, CoCreateInstance, [](auto, auto...) { return REGDB_E_CLASSNOTREG; });
    made = std::make_unique<MadeManifest>(L"C:\\a.xml");
  }
  EXPECT_HRESULT(REGDB_E_CLASSNOTREG, made->result);
  EXPECT_HRESULT(E_UNEXPECTED, made->manifest.Read(nullptr));
  EXPECT_EQ((Texts{"ERROR 0x80040154 Loading the Microsoft XML Parser Library failed.",
                   "ERROR 0x80040154 Failed to create 'XMLDocument' class instance.",
                   "ERROR 0x8000ffff Missing 'XMLDocument' class instance."}),
            log.Messages());
}

TEST(ManifestConstructionTest, AManifestWithoutAURLCannotBeRead) {
  MadeManifest made(L"");
  const LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, made.manifest.Read(nullptr));
  EXPECT_EQ(Texts{"ERROR 0x8000ffff Missing manifest source URL."}, log.Messages());
}

// A manifest file in the permitted source folder.
class ManifestTest : public testing::Test {
 protected:
  ManifestTest() : path(fixture.Source("m.xml")) {}
  ~ManifestTest() override { DeleteUrlCacheEntryA(path.c_str()); }

  void Write(const std::string& commands) { WriteWholeFile(path, ManifestText(commands)); }

  HRESULT Read() { return Read(fixture.permissions.get()); }

  HRESULT Read(const CPermissions* permissions) {
    made = std::make_unique<MadeManifest>(path);
    EXPECT_HRESULT(S_OK, made->result);
    return made->manifest.Read(permissions);
  }

  Texts Dump() const { return DumpChain(made->manifest.CommandIterator().Next()); }

  const CopyFixture fixture;
  const std::string path;
  const std::string copy = CopyElement("C:\\a.txt", "<Temp/>");
  const std::string open = OpenElement("", "C:\\a.txt", "<Temp/>");
  std::unique_ptr<MadeManifest> made;
};

TEST_F(ManifestTest, ItsChainHasEveryCopyInOrderAndThenTheOpen) {
  Write(CopyElement("C:\\1.txt", "<Temp/>") + CopyElement("C:\\2.txt", "<Temp/>") +
        OpenElement("browser=\"TRUE\"", "C:\\3.txt", "<Temp/>"));
  ASSERT_HRESULT(S_OK, Read());
  EXPECT_EQ((Texts{"CopyCommand", "CopyCommand", "OpenCommand"}), Dump());
  CListIterator commands = made->manifest.CommandIterator();
  EXPECT_STREQ("1.txt", static_cast<CCopyCommand*>(commands.Next())->GetFileName());
  EXPECT_STREQ("2.txt", static_cast<CCopyCommand*>(commands.Next())->GetFileName());
  const auto* const last = static_cast<COpenCommand*>(commands.Next());
  EXPECT_STREQ("3.txt", last->GetFileName());
  EXPECT_TRUE(last->IsForBrowser());
  EXPECT_FALSE(commands.HasMore());
}

TEST_F(ManifestTest, IsReadWithoutAMessage) {
  Write(CopyElement("http://server/d/a.txt", "<Temp/>") + OpenElement("", "http://server/d/a.txt", "<Temp/>"));
  const LogCapture log(false);
  EXPECT_HRESULT(S_OK, Read());
  EXPECT_EQ("", log.Text());
}

TEST_F(ManifestTest, AnOpenAloneIsTheWholeChain) {
  Write(open);
  ASSERT_HRESULT(S_OK, Read());
  EXPECT_EQ(Texts{"OpenCommand"}, Dump());
}

TEST_F(ManifestTest, TheBrowserAttributeHasItsDefault) {
  Write(open);
  ASSERT_HRESULT(S_OK, Read());
  EXPECT_FALSE(static_cast<COpenCommand*>(made->manifest.CommandIterator().Next())->IsForBrowser());
}

TEST_F(ManifestTest, ARootAloneIsAnEmptyChain) {
  Write("");
  const LogCapture log(false);
  EXPECT_HRESULT(S_OK, Read());
  EXPECT_FALSE(made->manifest.CommandIterator().HasMore());
  EXPECT_EQ("", log.Text());
}

TEST_F(ManifestTest, AFileURLIsReadLikeItsPath) {
  Write(copy);
  MadeManifest byURL("file://" + path);
  EXPECT_HRESULT(S_OK, byURL.manifest.Read(fixture.permissions.get()));
  EXPECT_TRUE(byURL.manifest.CommandIterator().HasMore());
}

TEST_F(ManifestTest, ReadingTwiceTakesWhatIsThereThen) {
  Write(copy + copy);
  ASSERT_HRESULT(S_OK, Read());
  Write(copy + open);
  EXPECT_HRESULT(S_OK, made->manifest.Read(fixture.permissions.get()));
  EXPECT_EQ((Texts{"CopyCommand", "OpenCommand"}), Dump());
}

TEST_F(ManifestTest, TheCachedCopyHasTheModulesDocumentType) {
  Write("");
  ASSERT_HRESULT(S_OK, Read());
  EXPECT_EQ(std::string("<?xml version=\"1.0\"?>") + kManifestDTD + "\r\n<VantorManifest version=\"1.0\"></VantorManifest>",
            ReadWholeFile(CachedFile(path)));
  EXPECT_FALSE(AttributesOf(CachedFile(path)) & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
}

TEST_F(ManifestTest, NeedsPermissions) {
  Write(copy);
  const LogCapture log;
  EXPECT_HRESULT(E_INVALIDARG, Read(nullptr));
  EXPECT_EQ(Texts{"ERROR 0x80070057 Missing permissions parameter."}, log.Messages());
}

TEST_F(ManifestTest, ARefusedURLIsAWarningAndIsNotFetched) {
  const TemporaryFolder elsewhere;
  MadeManifest refused(elsewhere.File("m.xml"));
  PATCH_IMPORT(entries, CreateUrlCacheEntryA, [](auto, auto...) -> BOOL {
    ADD_FAILURE() << "an entry was made";
    return FALSE;
  });
  const LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, refused.manifest.Read(fixture.permissions.get()));
  EXPECT_EQ((Texts{"ERROR 0x80070005 URL '" + elsewhere.File("m.xml") + "' is not permitted.",
                   "WARNING 0x80070005 Manifest 'file://" + elsewhere.File("m.xml") + "' is not permitted."}),
            FirstLines(log.Messages()));
}

TEST_F(ManifestTest, PermissionsThatCannotAnswerAreTracedOnly) {
  HRESULT hr = S_OK;
  const CPermissions none(0, L"", &hr);
  ASSERT_HRESULT(E_INVALIDARG, hr);
  Write(copy);
  const LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, Read(&none));
  EXPECT_EQ(Texts{"ERROR 0x8000ffff Missing source permissions."}, log.Messages());
  EXPECT_EQ(Codes{E_UNEXPECTED}, log.ErrorTraces());
}

TEST_F(ManifestTest, AFolderThatCannotBeAllocatedIsReported) {
  Write(copy);
  MadeManifest reading(path);
  const LogCapture log(false);
  HRESULT hr = S_OK;
  HeapFailure failure = HeapFailure::OfSize(sizeof(CDestinationFolder));
  failure.Run([&] { hr = reading.manifest.Read(fixture.permissions.get()); });
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Texts{"ERROR 0x8007000e Failed to create 'DestinationFolder' class instance."}, log.Messages());
}

TEST_F(ManifestTest, AFolderThatCannotBeResolvedIsTraced) {
  Write(copy);
  const LogCapture log;
  {
    PATCH_IMPORT(folders, SHGetFolderPathA, [](auto, auto...) { return E_FAIL; });
    EXPECT_HRESULT(E_FAIL, Read());
  }
  EXPECT_EQ(Codes{E_FAIL}, log.ErrorTraces());
  EXPECT_TRUE(log.Messages().empty());
}

TEST_F(ManifestTest, ACacheEntryThatCannotBeMadeIsTraced) {
  Write(copy);
  const LogCapture log;
  PATCH_IMPORT(entries, CreateUrlCacheEntryA, FailWith(FALSE, ERROR_DISK_FULL));
  EXPECT_HRESULT(kDiskFull, Read());
  EXPECT_EQ((Codes{kDiskFull, kDiskFull}), log.ErrorTraces());
  EXPECT_TRUE(log.Messages().empty());
}

// The path of the cache's file, as the call that made it was answered. The file is there from then on: not every system
// makes it together with its name.
class CacheFileWatch {
 public:
  std::string path;

 private:
  ImportedFunction<struct CreateUrlCacheEntryAImport, decltype(&::CreateUrlCacheEntryA)> entries{
      "CreateUrlCacheEntryA", [this](auto original, LPCSTR url, DWORD size, LPCSTR extension, LPSTR file, DWORD reserved) {
        const BOOL isMade = original(url, size, extension, file, reserved);
        path = file;
        WriteWholeFile(path, "");
        return isMade;
      }};
};

// One that were read-only could not be replaced by the next run's.
TEST_F(ManifestTest, TheCachedCopyIsAnOrdinaryFile) {
  Write("");
  const CacheFileWatch cache;
  DWORD attributes = 0;
  PATCH_IMPORT(files, CreateFileA,
               [&](auto original, LPCSTR name, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security, DWORD disposition,
                   DWORD flags, HANDLE model) {
    if (name == cache.path && access == GENERIC_WRITE)
      attributes = flags;
    return original(name, access, share, security, disposition, flags, model);
  });
  EXPECT_HRESULT(S_OK, Read());
  EXPECT_EQ(DWORD{FILE_ATTRIBUTE_NORMAL}, attributes);
}

TEST_F(ManifestTest, AMissingFileIsReportedWithBothNames) {
  const LogCapture log(false);
  const CacheFileWatch cache;
  EXPECT_HRESULT(kFileNotFound, Read());
  EXPECT_EQ((Texts{"ERROR 0x80070002 Opening '" + path + "' failed.",
                   "ERROR 0x80070002 Failed to copy 'file://" + path + "' to '" + cache.path + "'."}),
            log.Messages());
  EXPECT_EQ("", CachedFile(path));
  EXPECT_FALSE(FileExistsAt(cache.path)) << "nobody would ever remove it";
}

TEST_F(ManifestTest, ACacheEntryThatCannotBeCommittedIsTraced) {
  Write(copy);
  const LogCapture log;
  const CacheFileWatch cache;
  PATCH_IMPORT(entries, CommitUrlCacheEntryA, FailWith(FALSE, ERROR_DISK_FULL));
  EXPECT_HRESULT(kDiskFull, Read());
  EXPECT_EQ(Texts{"ERROR 0x80070070 Unable to commit cache entry.\r\n\tURL: '" + path + "'\r\n\tPath: '" + cache.path + "'"},
            log.Messages());
  EXPECT_EQ((Codes{kDiskFull, kDiskFull}), log.ErrorTraces());
  EXPECT_FALSE(FileExistsAt(cache.path)) << "nobody would ever remove it";
}

TEST_F(ManifestTest, AnOpenThatCannotBeAllocatedFailsTheParsingAndKeepsTheCopies) {
  Write(copy + open);
  MadeManifest reading(path);
  const LogCapture log(false);
  const CacheFileWatch cache;
  HRESULT hr = S_OK;
  HeapFailure failure = HeapFailure::OneOfSize(sizeof(COpenCommand), 2);
  failure.Run([&] { hr = reading.manifest.Read(fixture.permissions.get()); });
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  const Texts messages = log.Messages();
  ASSERT_LE(2u, messages.size());
  EXPECT_EQ("ERROR 0x8007000e Failed to create open command.", messages[messages.size() - 2]);
  EXPECT_EQ("ERROR 0x8007000e Failed to parse XML document '" + cache.path + "'.", messages.back());
  CListIterator commands = reading.manifest.CommandIterator();
  EXPECT_TRUE(commands.Next());
  EXPECT_FALSE(commands.HasMore());
}

TEST_F(ManifestTest, AnOpenThatCannotBeReadIsNotPartOfTheChain) {
  Write(copy + open);
  MadeManifest reading(path);
  const LogCapture log(false);
  const CacheFileWatch cache;
  PATCH_IMPORT(strings, SysAllocString, [](auto original, const OLECHAR* text) {
    return text && std::wcscmp(text, L"browser") == 0 ? nullptr : original(text);
  });
  EXPECT_HRESULT(E_OUTOFMEMORY, reading.manifest.Read(fixture.permissions.get()));
  EXPECT_EQ("ERROR 0x8007000e Failed to parse XML document '" + cache.path + "'.", log.Messages().back());
  EXPECT_EQ(Texts{"CopyCommand"}, DumpChain(reading.manifest.CommandIterator().Next()));
}

TEST_F(ManifestTest, ACopyThatCannotBeAllocatedShortensTheChain) {
  Write(copy + copy + copy + open);
  MadeManifest reading(path);
  HRESULT hr = E_UNEXPECTED;
  HeapFailure failure = HeapFailure::OneOfSize(sizeof(CCopyCommand), 2);
  failure.Run([&] { hr = reading.manifest.Read(fixture.permissions.get()); });
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ((Texts{"CopyCommand", "OpenCommand"}), DumpChain(reading.manifest.CommandIterator().Next()));
}

TEST_F(ManifestTest, EveryAllocationThatFailsIsAFailureOrAChain) {
  const std::string web = CopyElement("http://server/d/a.txt", "<InternetCache/>");
  Write(web + OpenElement("", "http://server/d/a.txt", "<InternetCache/>"));
  const std::wstring url = Wide(path);
  std::optional<LogCapture> log;
  std::optional<CManifest> manifest;
  HRESULT hr = E_UNEXPECTED;
  const auto prepare = [&] { log.emplace(); };
  const auto read = [&] {
    manifest.emplace(0, url.c_str(), &hr);
    if (SUCCEEDED(hr))
      hr = manifest->Read(fixture.permissions.get());
  };
  std::set<HRESULT> results;
  std::set<Texts> chains;
  const int failures = ForEachFailedAllocation(prepare, read, [&] {
    results.insert(hr);
    const std::vector<LogEntry> entries = log->Entries();
    log.reset();
    if (FAILED(hr)) {
      EXPECT_HRESULT(hr, entries.empty() ? S_OK : entries.back().code) << "the log does not tell";
    } else {
      chains.insert(DumpChain(manifest->CommandIterator().Next()));
    }
  });
  EXPECT_LT(10, failures);
  // A URL without its folder is refused, a cache file without its name is a missing argument.
  EXPECT_EQ((std::set<HRESULT>{S_OK, E_OUTOFMEMORY, E_POINTER, E_ACCESSDENIED, E_INVALIDARG}), results);
  // What is lost of a `Copy` element shortens the chain, or is no part of what the chain needs.
  EXPECT_EQ((std::set<Texts>{{"OpenCommand"}, {"CopyCommand", "OpenCommand"}}), chains);
  log.reset();
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ((Texts{"CopyCommand", "OpenCommand"}), DumpChain(manifest->CommandIterator().Next()));
}

TEST_F(ManifestTest, GivesBackWhatItAllocates) {
  Write(copy + open);
  const std::wstring url = Wide(path);
  const HeapBalance heap;
  {
    CManifest manifest(0, url.c_str(), nullptr);
    EXPECT_HRESULT(S_OK, manifest.Read(fixture.permissions.get()));
    EXPECT_LT(10, heap.Outstanding());
  }
  EXPECT_EQ(0, heap.Outstanding());
}

}  // namespace
