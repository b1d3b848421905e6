// `Copy` commands whose destination is a store that the system keeps itself: the Internet cache and the cookie store.

#include "common/Windows.h"

#include <gtest/gtest.h>
#include <shlobj.h>
#include <wininet.h>

#include <cstring>
#include <set>

#include "engine/CopyCommand.h"
#include "engine/EngineFixture.h"
#include "support/AllocationFailure.h"
#include "support/FirstLines.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"

namespace {

using Texts = std::vector<std::string>;

class CopyCommandCacheTest : public testing::Test {
 protected:
  CopyCommandCacheTest() : source(fixture.WriteSource("a.txt", "new")) { Read("<InternetCache/>"); }
  ~CopyCommandCacheTest() override { DeleteUrlCacheEntryA(source.c_str()); }

  void Read(const std::string& destination) {
    command = std::make_unique<CCopyCommand>(ParseElement(CopyElement(source, destination)).Get(), nullptr);
  }
  HRESULT Run() { return command->Execute(0, fixture.permissions.get(), nullptr); }
  std::string WrittenFile() const { return TextOf(command->GetFolder()) + "\\" + TextOf(command->GetFileName()); }

  const CopyFixture fixture;
  const std::string source;
  std::unique_ptr<CCopyCommand> command;
};

TEST_F(CopyCommandCacheTest, TheFileIsAnEntryOfTheCache) {
  const LogCapture log(false);
  EXPECT_HRESULT(S_OK, Run());
  EXPECT_EQ("", log.Text());
  EXPECT_EQ(WrittenFile(), CachedFile(source));
  EXPECT_EQ("new", ReadWholeFile(WrittenFile()));
  EXPECT_EQ("file://" + source, TextOf(command->GetSourceText()));
}

TEST_F(CopyCommandCacheTest, AnEntryOfTheRunBeforeIsReplacedWhateverThePolicy) {
  Read("<InternetCache/><IfFileExists><Cancel/></IfFileExists>");
  EXPECT_HRESULT(S_OK, Run());
  WriteWholeFile(source, "newer");
  EXPECT_HRESULT(S_OK, Run());
  EXPECT_EQ("newer", ReadWholeFile(CachedFile(source)));
  EXPECT_EQ(WrittenFile(), CachedFile(source));
}

TEST_F(CopyCommandCacheTest, TheCacheIsNotAskedForExistingFiles) {
  PATCH_IMPORT(files, GetFileAttributesA, [](auto original, LPCSTR path) {
    ADD_FAILURE() << "asks for " << path;
    return original(path);
  });
  EXPECT_HRESULT(S_OK, Run());
}

TEST_F(CopyCommandCacheTest, AnEntryThatCannotBeMadeIsAFailure) {
  const LogCapture log;
  PATCH_IMPORT(entries, CreateUrlCacheEntryA, FailWith(FALSE, ERROR_DISK_FULL));
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070070), Run());
  EXPECT_EQ("ERROR 0x80070070 'Copy' command failed.", log.Messages().back());
  EXPECT_EQ(nullptr, command->GetFolder());
}

TEST_F(CopyCommandCacheTest, AnEntryThatCannotBeCommittedIsTraced) {
  const LogCapture log;
  PATCH_IMPORT(entries, CommitUrlCacheEntryA, FailWith(FALSE, ERROR_DISK_FULL));
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070070), Run());
  EXPECT_EQ("ERROR 0x80070070 Unable to commit cache entry.\r\n\tURL: '" + source + "'\r\n\tPath: '" + WrittenFile() + "'",
            log.Messages().back());
  ASSERT_FALSE(log.Entries().empty());
  EXPECT_EQ("", log.Entries().back().message);
  EXPECT_EQ("CopyCommand", log.Entries().back().file);
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070070), log.Entries().back().code);
  EXPECT_FALSE(FileExistsAt(WrittenFile())) << "nobody would ever remove it";
}

TEST_F(CopyCommandCacheTest, TheFileThatTheCacheMadeForAMissingSourceIsRemoved) {
  ASSERT_TRUE(DeleteFileA(source.c_str()));
  std::string made;
  PATCH_IMPORT(entries, CreateUrlCacheEntryA,
               [&](auto original, const char* url, DWORD size, const char* extension, char* path, DWORD reserved) {
    const BOOL isMade = original(url, size, extension, path, reserved);
    made = path;
    WriteWholeFile(made, "");  // not every system makes the file together with its name
    return isMade;
  });
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), Run());
  ASSERT_NE("", made);
  EXPECT_FALSE(FileExistsAt(made));
}

TEST_F(CopyCommandCacheTest, AMissingSourceIsNotCommitted) {
  ASSERT_TRUE(DeleteFileA(source.c_str()));
  PATCH_IMPORT(entries, CommitUrlCacheEntryA, [](auto, auto...) -> BOOL {
    ADD_FAILURE() << "was committed";
    return FALSE;
  });
  EXPECT_HRESULT(static_cast<HRESULT>(0x80070002), Run());
  EXPECT_EQ("", CachedFile(source));
}

TEST_F(CopyCommandCacheTest, ACacheThatIsNotPermittedGetsNothing) {
  PermitFile permit;
  permit.URL(fixture.source.Path() + "\\").Extension("txt").Folder("Path", "C:\\elsewhere");
  const auto permissions = permit.Read();
  PATCH_IMPORT(entries, CreateUrlCacheEntryA, [](auto, auto...) -> BOOL {
    ADD_FAILURE() << "an entry was made";
    return FALSE;
  });
  EXPECT_HRESULT(E_ACCESSDENIED, command->Execute(0, permissions.get(), nullptr));
}

// Keeps the path of the file that the Internet cache made last.
class MadeCacheFile {
 public:
  // A plain buffer: nothing else may be allocated while memory runs out.
  char path[MAX_PATH] = "";

 private:
  ImportedFunction<struct CreateUrlCacheEntryAImport, decltype(&::CreateUrlCacheEntryA)> entries{
      "CreateUrlCacheEntryA", [this](auto original, LPCSTR url, DWORD size, LPCSTR extension, LPSTR file, DWORD reserved) {
        const BOOL isMade = original(url, size, extension, file, reserved);
        lstrcpynA(path, file, MAX_PATH);
        return isMade;
      }};
};

TEST_F(CopyCommandCacheTest, ANameOfTheCacheThatCannotBeKeptIsAFailure) {
  const LogCapture log(false);
  const MadeCacheFile made;
  HRESULT hr = E_UNEXPECTED;
  int refusals = 0;
  {
    // The only text that is as long as the path is its copy.
    PATCH_IMPORT(heap, HeapAlloc, [&](auto original, HANDLE from, DWORD flags, SIZE_T size) -> void* {
      if (refusals > 0 || made.path[0] == '\0' || size != std::strlen(made.path) + 1)
        return original(from, flags, size);
      ++refusals;
      return nullptr;
    });
    hr = Run();
  }
  EXPECT_EQ(1, refusals);
  EXPECT_HRESULT(E_INVALIDARG, hr);
  EXPECT_EQ("ERROR 0x80070057 'Copy' command failed.", log.Messages().back());
  EXPECT_EQ("(null)", TextOf(command->GetFolder()));
  EXPECT_FALSE(FileExistsAt(made.path));
  EXPECT_EQ("", CachedFile(source));
}

TEST_F(CopyCommandCacheTest, EveryAllocationThatFailsIsAFailureOrAnEntryOfTheCache) {
  const LogCapture log(false);
  const MadeCacheFile made;
  HRESULT hr = E_UNEXPECTED;
  std::set<HRESULT> results;
  const auto prepare = [&] {
    DeleteUrlCacheEntryA(source.c_str());
    Read("<InternetCache/>");
  };
  const int failures = ForEachFailedAllocation(
      prepare, [&] { hr = Run(); },
      [&] {
    results.insert(hr);
    EXPECT_EQ(hr == S_OK ? made.path : "", CachedFile(source));
    EXPECT_EQ(hr == S_OK, FileExistsAt(made.path));
    if (hr == S_OK) {
      EXPECT_EQ("new", ReadWholeFile(made.path));
    }
      });
  EXPECT_LT(3, failures);
  // Without the cache's name there is no destination, without the names of what was written there is nothing to tell.
  EXPECT_EQ((std::set<HRESULT>{S_OK, E_OUTOFMEMORY, E_INVALIDARG}), results);
  EXPECT_HRESULT(S_OK, hr);
}

// What InternetSetCookieA was told.
struct SetCookie {
  std::string url;
  bool hasName = false;
  std::string data;
};

class CopyCommandCookieTest : public testing::Test {
 protected:
  CopyCommandCookieTest() : source(fixture.WriteSource("cookie.txt", "a=b")) {
    const CDestinationFolder cookies(FolderKind::Cookie, nullptr);
    permit.URL(fixture.source.Path() + "\\").Extension("txt").Folder("Path", cookies.GetPath());
    permissions = permit.Read();
  }

  void Read(const std::string& cookie) {
    command = std::make_unique<CCopyCommand>(ParseElement(CopyElement(source, cookie)).Get(), nullptr);
  }

  HRESULT Run() {
    PATCH_IMPORT(cookies, InternetSetCookieA, [this](auto, LPCSTR url, LPCSTR name, LPCSTR data) {
      calls.push_back({url, name != nullptr, data});
      return TRUE;
    });
    return command->Execute(0, permissions.get(), nullptr);
  }

  const CopyFixture fixture;
  const std::string source;
  PermitFile permit;
  std::unique_ptr<CPermissions> permissions;
  std::unique_ptr<CCopyCommand> command;
  std::vector<SetCookie> calls;
};

TEST_F(CopyCommandCookieTest, TheBytesAreTheCookiesData) {
  Read("<Cookie/>");
  const LogCapture log(false);
  EXPECT_HRESULT(S_OK, Run());
  ASSERT_EQ(1u, calls.size());
  EXPECT_EQ("file://" + source, calls[0].url);
  EXPECT_FALSE(calls[0].hasName);
  EXPECT_EQ("a=b", calls[0].data);
  EXPECT_EQ("", log.Text());
}

TEST_F(CopyCommandCookieTest, TheCookieExpiresWhenItsTimeSaysSo) {
  Read("<Cookie><ExpireTime>2030-01-05T00:00:00Z</ExpireTime></Cookie>");
  EXPECT_HRESULT(S_OK, Run());
  ASSERT_EQ(1u, calls.size());
  EXPECT_EQ("a=b; expires = Sat, 05-Jan-2030 00:00:00 GMT", calls[0].data);
}

TEST_F(CopyCommandCookieTest, NoFileIsRecorded) {
  Read("<Cookie/>");
  ASSERT_HRESULT(S_OK, Run());
  EXPECT_EQ("file://" + source, TextOf(command->GetSourceText()));
  EXPECT_EQ("(null)", TextOf(command->GetFileName()));
  EXPECT_EQ("(null)", TextOf(command->GetFolder()));
}

// The name whose extension is checked went with the first run.
TEST_F(CopyCommandCookieTest, ASecondRunHasNoFileName) {
  Read("<Cookie/>");
  ASSERT_HRESULT(S_OK, Run());
  const LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, Run());
  EXPECT_EQ(Texts{"ERROR 0x8000ffff 'Copy' command missing destination file."}, log.Messages());
  EXPECT_EQ(1u, calls.size());
}

TEST_F(CopyCommandCookieTest, NeitherAFolderNorAnExistingFileIsLookedFor) {
  Read("<Cookie/>");
  PATCH_IMPORT(files, GetFileAttributesA, [](auto original, LPCSTR path) {
    ADD_FAILURE() << "asks for " << path;
    return original(path);
  });
  PATCH_IMPORT(folders, CreateDirectoryA, [](auto, LPCSTR path, auto) -> BOOL {
    ADD_FAILURE() << "makes " << path;
    return FALSE;
  });
  EXPECT_HRESULT(S_OK, Run());
}

TEST_F(CopyCommandCookieTest, ItsExtensionIsCheckedAsAWhole) {
  Read("<Cookie><Extension>b.txt</Extension></Cookie>");
  const LogCapture log(false);
  EXPECT_HRESULT(E_ACCESSDENIED, Run());
  EXPECT_EQ("ERROR 0x80070005 Extension 'b.txt' is not permitted.", FirstLines(log.Messages()).at(0));
  EXPECT_TRUE(calls.empty());
}

TEST_F(CopyCommandCookieTest, AStoreThatIsNotPermittedGetsNothing) {
  Read("<Cookie/>");
  EXPECT_HRESULT(E_ACCESSDENIED, command->Execute(0, fixture.permissions.get(), nullptr));
  EXPECT_TRUE(calls.empty());
}

TEST_F(CopyCommandCookieTest, ACookieThatCannotBeSetIsAFailure) {
  Read("<Cookie/>");
  const LogCapture log(false);
  PATCH_IMPORT(cookies, InternetSetCookieA, FailWith(FALSE, ERROR_INTERNET_INVALID_URL));
  EXPECT_HRESULT(static_cast<HRESULT>(0x80072EE5), command->Execute(0, permissions.get(), nullptr));
  EXPECT_EQ((Texts{"ERROR 0x80072ee5 Writing 'file://" + source + "' failed.", "ERROR 0x80072ee5 'Copy' command failed."}),
            log.Messages());
}

}  // namespace
