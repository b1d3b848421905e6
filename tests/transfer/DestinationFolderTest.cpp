#include "transfer/DestinationFolder.h"

#include <gtest/gtest.h>
#include <shlobj.h>
#include <wininet.h>

#include <memory>
#include <string>
#include <vector>

#include "common/ModulePath.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/ImportPatch.h"
#include "support/InternetCache.h"
#include "support/LogCapture.h"
#include "support/Sign.h"

namespace {

using Texts = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

std::string Special(int folderId) {
  char path[MAX_PATH] = "";
  SHGetFolderPathA(nullptr, folderId, nullptr, SHGFP_TYPE_CURRENT, path);
  return path;
}

CSourceURL Source(const wchar_t* url) {
  return CSourceURL(url, SourceRole::Command, nullptr);
}

TEST(DestinationFolderTest, AKindAndATextAreResolved) {
  HRESULT hr = E_FAIL;
  const CDestinationFolder folder(FolderKind::Personal, L"Sub\\Dir", &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(FolderKind::Personal, folder.GetKind());
  EXPECT_EQ(Special(CSIDL_PERSONAL) + "\\Sub\\Dir", folder.GetPath());
}

TEST(DestinationFolderTest, AMissingTextIsAnEmptyOne) {
  HRESULT hr = E_FAIL;
  const CDestinationFolder folder(FolderKind::VantorData, nullptr, &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(Special(CSIDL_APPDATA) + "\\Vantor", folder.GetPath());
}

TEST(DestinationFolderTest, AKindAloneIsResolved) {
  HRESULT hr = E_FAIL;
  const CDestinationFolder cookie(FolderKind::Cookie, &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(FolderKind::Cookie, cookie.GetKind());
  EXPECT_EQ(Special(CSIDL_COOKIES), cookie.GetPath());
  const CDestinationFolder cache(FolderKind::InternetCache, nullptr);
  EXPECT_EQ(Special(CSIDL_INTERNET_CACHE), cache.GetPath());
}

TEST(DestinationFolderTest, ANarrowOrWidePathIsAFolderOfKindPath) {
  HRESULT hr = E_FAIL;
  const CDestinationFolder narrow("C:\\Data\\", &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(FolderKind::Path, narrow.GetKind());
  EXPECT_STREQ("C:\\Data", narrow.GetPath());
  hr = E_FAIL;
  const CDestinationFolder wide(L"C:\\Data\\", &hr);
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(FolderKind::Path, wide.GetKind());
  EXPECT_STREQ("C:\\Data", wide.GetPath());
}

TEST(DestinationFolderTest, AnEmptyPathIsTheModulesFolder) {
  const std::string before = GetModulePath();
  SetModulePath("C:\\Apps\\norvik.dll");
  EXPECT_STREQ("C:\\Apps", CDestinationFolder("", nullptr).GetPath());
  EXPECT_STREQ("C:\\Apps", CDestinationFolder(L"", nullptr).GetPath());
  EXPECT_STREQ("C:\\Apps", CDestinationFolder(static_cast<const char*>(nullptr), nullptr).GetPath());
  EXPECT_STREQ("C:\\Apps", CDestinationFolder(static_cast<const wchar_t*>(nullptr), nullptr).GetPath());
  SetModulePath(before.c_str());
}

TEST(DestinationFolderTest, AnUnknownKindIsReportedAndLeavesNoPath) {
  for (const int kind : {0, 14}) {
    LogCapture log;
    HRESULT hr = S_OK;
    const CDestinationFolder folder(static_cast<FolderKind>(kind), L"x", &hr);
    EXPECT_HRESULT(E_INVALIDARG, hr);
    EXPECT_EQ(nullptr, folder.GetPath());
    EXPECT_EQ(Texts{"ERROR 0x80070057 Invalid Type '" + std::to_string(kind) + "'."}, log.Messages());
  }
}

TEST(DestinationFolderTest, AStandInFolderIsASuccessOfItsOwn) {
  PATCH_IMPORT(noFolder, SHGetFolderPathA, [](auto, HWND, int, HANDLE, DWORD, char*) { return E_FAIL; });
  PATCH_IMPORT(noTemp, GetTempPathA, FailWith(DWORD{0}, ERROR_PATH_NOT_FOUND));
  HRESULT hr = E_FAIL;
  const CDestinationFolder folder(FolderKind::Personal, L"a", &hr);
  EXPECT_HRESULT(S_FALSE, hr);
  EXPECT_STREQ("C:\\a", folder.GetPath());
}

TEST(DestinationFolderTest, WithoutMemoryForTheTextThereIsATraceAndNoPath) {
  LogCapture log;
  HRESULT hr = S_OK;
  PATCH_IMPORT(noMemory, HeapAlloc, FailCall(1, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  const CDestinationFolder folder(L"C:\\a", &hr);
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(nullptr, folder.GetPath());
  EXPECT_EQ(Texts{}, log.Messages());
  EXPECT_EQ(Codes{E_OUTOFMEMORY}, log.ErrorTraces());
  EXPECT_EQ("DestinationFolder", log.Entries().at(0).file);
}

TEST(DestinationFolderTest, ATextThatCannotBeConvertedIsNoMemory) {
  LogCapture log;
  HRESULT hr = S_OK;
  PATCH_IMPORT(noConversion, WideCharToMultiByte, FailWith(0, ERROR_NO_UNICODE_TRANSLATION));
  const CDestinationFolder folder(FolderKind::Temp, L"a", &hr);
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(nullptr, folder.GetPath());
  EXPECT_EQ(Codes{E_OUTOFMEMORY}, log.ErrorTraces());
}

TEST(DestinationFolderTest, WithoutMemoryForThePathTheFolderIsNamed) {
  LogCapture log;
  HRESULT hr = S_OK;
  PATCH_IMPORT(noMemory, HeapAlloc, FailCall(2, static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
  const CDestinationFolder folder(L"C:\\a", &hr);
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(nullptr, folder.GetPath());
  EXPECT_EQ(Texts{"ERROR 0x8007000e Out of memory when allocating 'C:\\a'."}, log.Messages());
}

TEST(DestinationFolderTest, TheClassKnowsItsName) {
  const CDestinationFolder folder("C:\\a", nullptr);
  EXPECT_TRUE(folder.IsKindOf("CDestinationFolder"));
  EXPECT_FALSE(folder.IsKindOf("cdestinationfolder"));
  EXPECT_FALSE(folder.IsKindOf("CSourceURL"));
  EXPECT_FALSE(folder.IsKindOf(""));
  EXPECT_FALSE(folder.IsKindOf(nullptr));
}

TEST(DestinationFolderTest, ADumpIsThePathAlone) {
  LogCapture log;
  CDestinationFolder("C:\\%s", nullptr).Dump();
  EXPECT_EQ("C:\\%s", log.Text());
}

int Compare(const char* path, const char* other) {
  const CDestinationFolder first(path, nullptr);
  const CDestinationFolder second(other, nullptr);
  return SignOf(first.Compare(&second));
}

TEST(DestinationFolderTest, AFolderMatchesWhatBeginsWithItInAnyCase) {
  EXPECT_EQ(0, Compare("c:\\data", "C:\\DATA\\x"));
  EXPECT_EQ(0, Compare("C:\\Data", "C:\\Data"));
  EXPECT_EQ(0, Compare("C:\\Data", "C:\\Database"));
  EXPECT_EQ(0, Compare("C:\\", "C:\\x"));
  EXPECT_EQ(-1, Compare("C:\\Data\\x", "C:\\Data"));
  EXPECT_EQ(-1, Compare("C:\\a", "C:\\bb"));
  EXPECT_EQ(1, Compare("C:\\b", "C:\\aa"));
  EXPECT_EQ(-1, Compare("C:\\", "C:"));
  EXPECT_NE(0, Compare("C:\\Data", "C:/Data"));
}

TEST(DestinationFolderTest, KindsAreNotCompared) {
  const CDestinationFolder data(FolderKind::ApplicationData, L"", nullptr);
  const CDestinationFolder sub(Wide(Special(CSIDL_APPDATA) + "\\x").c_str(), nullptr);
  EXPECT_EQ(0, data.Compare(&sub));
}

TEST(DestinationFolderTest, WithoutAPathOnEitherSideThePathDecides) {
  const CDestinationFolder folder("C:\\a", nullptr);
  LogCapture log;
  const CDestinationFolder failed(static_cast<FolderKind>(0), L"", nullptr);
  const CSourceURL other = Source(L"C:\\a\\b");
  EXPECT_EQ(1, SignOf(folder.Compare(nullptr)));
  EXPECT_EQ(1, SignOf(folder.Compare(&other)));
  EXPECT_EQ(1, SignOf(folder.Compare(&failed)));
  EXPECT_EQ(-1, SignOf(failed.Compare(&folder)));
  EXPECT_EQ(0, failed.Compare(nullptr));
  EXPECT_EQ(0, failed.Compare(&other));
  EXPECT_EQ(0, failed.Compare(&failed));
}

TEST(DestinationFolderTest, TheSecondBytesOfCharactersAreComparedAsTheyAre) {
  PATCH_IMPORT(japanese, IsDBCSLeadByte, [](auto, BYTE byte) -> BOOL { return byte == 0x83; });
  EXPECT_EQ(0, Compare("C:\\\x83\x41", "c:\\\x83\x41\\x"));
  EXPECT_NE(0, Compare("C:\\\x83\x41", "C:\\\x83\x61"));
}

TEST(DestinationFolderTest, AFileOrFolderOfANameExists) {
  TemporaryFolder temporary;
  WriteWholeFile(temporary.File("a.txt"), "x");
  const CDestinationFolder folder(temporary.Path().c_str(), nullptr);
  EXPECT_TRUE(folder.FileExists(temporary.File("a.txt").c_str()));
  EXPECT_TRUE(folder.FileExists(temporary.Path().c_str()));
  EXPECT_FALSE(folder.FileExists(temporary.File("b.txt").c_str()));
  EXPECT_FALSE(folder.FileExists(""));
  for (const FolderKind store : {FolderKind::Cookie, FolderKind::InternetCache})
    EXPECT_FALSE(CDestinationFolder(store, nullptr).FileExists(temporary.File("a.txt").c_str()));
}

TEST(DestinationFolderTest, TheFolderAndAllAboveItAreCreated) {
  TemporaryFolder temporary;
  const CDestinationFolder folder(temporary.File("a\\b\\c").c_str(), nullptr);
  EXPECT_HRESULT(S_OK, folder.CreateFolder());
  EXPECT_EQ("c", NamesIn(temporary.File("a\\b")));
  EXPECT_HRESULT(S_OK, folder.CreateFolder());
}

TEST(DestinationFolderTest, NothingIsCreatedForTheStores) {
  PATCH_IMPORT(noFolder, CreateDirectoryA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  PATCH_IMPORT(nothingThere, GetFileAttributesA, FailWith(INVALID_FILE_ATTRIBUTES, ERROR_FILE_NOT_FOUND));
  for (const FolderKind store : {FolderKind::Cookie, FolderKind::InternetCache})
    EXPECT_HRESULT(S_OK, CDestinationFolder(store, nullptr).CreateFolder());
}

TEST(DestinationFolderTest, AFolderThatCannotBeCreatedIsReported) {
  TemporaryFolder temporary;
  const CDestinationFolder folder(temporary.File("%s").c_str(), nullptr);
  LogCapture log;
  PATCH_IMPORT(noFolder, CreateDirectoryA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  EXPECT_HRESULT(E_ACCESSDENIED, folder.CreateFolder());
  EXPECT_EQ(Texts{"ERROR 0x80070005 Failed to create path '" + temporary.File("%s") + "'."}, log.Messages());
  EXPECT_EQ("DestinationFolder", log.Entries().at(0).file);
}

TEST(DestinationFolderTest, AFolderWithAnOverlongFullPathIsReported) {
  LogCapture log;
  const std::string path = std::string(250, 'a') + "\\b";
  const CDestinationFolder folder(path.c_str(), nullptr);
  EXPECT_HRESULT(E_OUTOFMEMORY, folder.CreateFolder());
  EXPECT_EQ(Texts{"ERROR 0x8007000e Failed to create path '" + path + "'."}, log.Messages());
}

TEST(DestinationFolderTest, AFailedObjectCreatesNothing) {
  LogCapture log;
  const CDestinationFolder failed(static_cast<FolderKind>(0), L"", nullptr);
  EXPECT_HRESULT(E_UNEXPECTED, failed.CreateFolder());
  EXPECT_EQ(Codes{E_UNEXPECTED}, log.ErrorTraces());
}

std::string FileFor(const CDestinationFolder& folder, const wchar_t* url) {
  const CSourceURL source = Source(url);
  OwnedText fileName = CopyText("old");
  EXPECT_HRESULT(S_OK, folder.GetDestinationFile(&source, &fileName));
  return fileName ? fileName.get() : "(null)";
}

TEST(GetDestinationFileTest, TheSourcesNameIsTakenInAFolder) {
  const CDestinationFolder folder("C:\\Data", nullptr);
  EXPECT_EQ("C:\\Data\\a.exe", FileFor(folder, L"http://h/d/a.exe?x=1"));
  EXPECT_EQ("C:\\Data\\x.txt", FileFor(folder, L"D:\\y\\x.txt"));
  EXPECT_EQ("C:\\\\x.txt", FileFor(CDestinationFolder("C:\\", nullptr), L"D:\\y\\x.txt"));
}

TEST(GetDestinationFileTest, ASourceWithoutANameGivesTheFolder) {
  const CDestinationFolder folder("C:\\Data", nullptr);
  EXPECT_EQ("C:\\Data", FileFor(folder, L"http://h/d/"));
  EXPECT_EQ("C:\\Data", FileFor(folder, L"http://h/d/?a.exe"));
}

TEST(GetDestinationFileTest, ACookieIsNamedByItsURL) {
  const CDestinationFolder cookie(FolderKind::Cookie, nullptr);
  EXPECT_EQ("http://h/d/a.txt?x", FileFor(cookie, L"HTTP://h/d/a.txt?x"));
  EXPECT_EQ("file://C:\\a.txt", FileFor(cookie, L"C:\\a.txt"));
}

TEST(GetDestinationFileTest, WithoutPathSourceOrPlaceThereIsATrace) {
  LogCapture log;
  const CSourceURL source = Source(L"http://h/a.exe");
  OwnedText fileName = CopyText("old");
  EXPECT_HRESULT(E_INVALIDARG, CDestinationFolder("C:\\Data", nullptr).GetDestinationFile(nullptr, &fileName));
  EXPECT_EQ(nullptr, fileName);
  EXPECT_HRESULT(E_INVALIDARG, CDestinationFolder("C:\\Data", nullptr).GetDestinationFile(&source, nullptr));
  EXPECT_EQ((Codes{E_INVALIDARG, E_INVALIDARG}), log.ErrorTraces());
  EXPECT_EQ(Texts{}, log.Messages());
  EXPECT_EQ("DestinationFolder", log.Entries().at(0).file);

  LogCapture second;
  fileName = CopyText("old");
  const CDestinationFolder failed(FolderKind::Temp, Wide(std::string(300, 'a')).c_str(), nullptr);
  EXPECT_HRESULT(E_UNEXPECTED, failed.GetDestinationFile(&source, &fileName));
  EXPECT_EQ(nullptr, fileName);
  EXPECT_EQ(Codes{E_UNEXPECTED}, second.ErrorTraces());
}

TEST(GetDestinationFileTest, WithoutMemoryThereIsATraceAndNoName) {
  const CSourceURL named = Source(L"http://h/a.exe");
  const CSourceURL unnamed = Source(L"http://h/");
  const CDestinationFolder folder("C:\\Data", nullptr);
  const CDestinationFolder cookie(FolderKind::Cookie, nullptr);
  const std::pair<const CDestinationFolder*, const CSourceURL*> rows[] = {
      {&folder, &named}, {&folder, &unnamed}, {&cookie, &named}};
  for (const auto& [destination, source] : rows) {
    LogCapture log;
    OwnedText fileName = CopyText("old");
    HRESULT hr;
    {
      PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
      hr = destination->GetDestinationFile(source, &fileName);
    }
    EXPECT_HRESULT(E_OUTOFMEMORY, hr);
    EXPECT_EQ(nullptr, fileName);
    EXPECT_EQ(Codes{E_OUTOFMEMORY}, log.ErrorTraces());
  }
}

TEST(GetDestinationFileTest, TheCacheChoosesItsOwnName) {
  const CDestinationFolder cache(FolderKind::InternetCache, nullptr);
  PATCH_IMPORT(create, CreateUrlCacheEntryA,
               [](auto, const char* url, DWORD size, const char* extension, char* fileName, DWORD reserved) {
    EXPECT_STREQ("C:\\apps\\permit.xml?a.b", url);
    EXPECT_EQ(0u, size);
    EXPECT_STREQ("xml", extension);
    EXPECT_EQ(0u, reserved);
    lstrcpyA(fileName, "X:\\cache\\permit[1].xml");
    return TRUE;
  });
  EXPECT_EQ("X:\\cache\\permit[1].xml", FileFor(cache, L"C:\\apps\\permit.xml?a.b"));
}

TEST(GetDestinationFileTest, ACacheThatRefusesIsTraced) {
  LogCapture log;
  const CSourceURL source = Source(L"http://h/a.exe");
  OwnedText fileName = CopyText("old");
  PATCH_IMPORT(refuse, CreateUrlCacheEntryA, FailWith(FALSE, ERROR_DISK_FULL));
  const CDestinationFolder cache(FolderKind::InternetCache, nullptr);
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_DISK_FULL), cache.GetDestinationFile(&source, &fileName));
  EXPECT_EQ(nullptr, fileName);
  EXPECT_EQ(Texts{}, log.Messages());
  EXPECT_EQ(Codes{HRESULT_FROM_WIN32(ERROR_DISK_FULL)}, log.ErrorTraces());
}

TEST(GetDestinationFileTest, ACacheNameThatCannotBeCopiedIsMissing) {
  LogCapture log;
  const CSourceURL source = Source(L"http://h/a.exe");
  const CDestinationFolder cache(FolderKind::InternetCache, nullptr);
  OwnedText fileName = CopyText("old");
  char made[MAX_PATH] = "";
  DWORD madeAttributes = INVALID_FILE_ATTRIBUTES;
  HRESULT hr;
  {
    PATCH_IMPORT(create, CreateUrlCacheEntryA,
                 [&](auto original, auto url, auto size, auto extension, char* name, auto zero) {
      const BOOL isCreated = original(url, size, extension, name, zero);
      lstrcpyA(made, name);
      madeAttributes = GetFileAttributesA(name);
      return isCreated;
    });
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    hr = cache.GetDestinationFile(&source, &fileName);
  }
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ(nullptr, fileName);
  EXPECT_EQ("", log.Text());
  ASSERT_NE(INVALID_FILE_ATTRIBUTES, madeAttributes) << "the cache made no file";
  EXPECT_FALSE(FileExistsAt(made)) << "nobody knows the name of the file any more";
}

TEST(DiscardCacheFileTest, OnlyAFileOfTheCacheIsDeleted) {
  const TemporaryFolder temporary;
  const std::string file = temporary.File("a.exe");
  WriteWholeFile(file, "x");
  CDestinationFolder(temporary.Path().c_str(), nullptr).DiscardCacheFile(file.c_str());
  CDestinationFolder(FolderKind::Cookie, nullptr).DiscardCacheFile(file.c_str());
  CDestinationFolder(FolderKind::Temp, nullptr).DiscardCacheFile(file.c_str());
  EXPECT_TRUE(FileExistsAt(file));
  CDestinationFolder(FolderKind::InternetCache, nullptr).DiscardCacheFile(file.c_str());
  EXPECT_FALSE(FileExistsAt(file));
}

TEST(DiscardCacheFileTest, WithoutANameNothingIsDeleted) {
  PATCH_IMPORT(noDelete, DeleteFileA, [](auto, const char*) {
    ADD_FAILURE() << "nothing is to be deleted";
    return FALSE;
  });
  CDestinationFolder(FolderKind::InternetCache, nullptr).DiscardCacheFile(nullptr);
}

constexpr char kFile[] = "X:\\cache\\a[1].exe";

TEST(CommitToCacheTest, OnlyTheCacheIsCommittedTo) {
  PATCH_IMPORT(noCommit, CommitUrlCacheEntryA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  const CSourceURL source = Source(L"http://h/a.exe");
  EXPECT_HRESULT(S_OK, CDestinationFolder("C:\\Data", nullptr).CommitToCache(&source, kFile));
  EXPECT_HRESULT(S_OK, CDestinationFolder(FolderKind::Cookie, nullptr).CommitToCache(&source, kFile));
  EXPECT_HRESULT(S_OK, CDestinationFolder("C:\\Data", nullptr).CommitToCache(nullptr, nullptr));
}

TEST(CommitToCacheTest, AMissingArgumentIsTraced) {
  LogCapture log;
  const CSourceURL source = Source(L"http://h/a.exe");
  const CDestinationFolder cache(FolderKind::InternetCache, nullptr);
  EXPECT_HRESULT(E_INVALIDARG, cache.CommitToCache(nullptr, kFile));
  EXPECT_HRESULT(E_INVALIDARG, cache.CommitToCache(&source, nullptr));
  EXPECT_EQ((Codes{E_INVALIDARG, E_INVALIDARG}), log.ErrorTraces());
  EXPECT_EQ(Texts{}, log.Messages());
}

TEST(CommitToCacheTest, WithoutAPathThereIsATrace) {
  const CSourceURL source = Source(L"http://h/a.exe");
  HRESULT hr = S_OK;
  std::unique_ptr<CDestinationFolder> cache;
  {
    PATCH_IMPORT(noFolder, SHGetFolderPathA, [](auto, HWND, int, HANDLE, DWORD, char*) { return E_FAIL; });
    cache = std::make_unique<CDestinationFolder>(FolderKind::InternetCache, &hr);
  }
  EXPECT_HRESULT(E_FAIL, hr);
  LogCapture log;
  EXPECT_HRESULT(E_UNEXPECTED, cache->CommitToCache(&source, kFile));
  EXPECT_EQ(Codes{E_UNEXPECTED}, log.ErrorTraces());
}

TEST(CommitToCacheTest, TheEntryExpiresAnHourFromNow) {
  const CSourceURL source = Source(L"file://C:\\d\\a.exe?b.c");
  const SYSTEMTIME now = {2026, 11, 6, 14, 23, 5, 7, 123};
  PATCH_IMPORT(clock, GetLocalTime, [&](auto, SYSTEMTIME* time) { *time = now; });
  int calls = 0;
  PATCH_IMPORT(commit, CommitUrlCacheEntryA,
               [&](auto, const char* url, const char* fileName, FILETIME expiry, FILETIME modified, DWORD type, BYTE* header,
                   DWORD headerSize, const char* extension, const char* originalURL) {
    ++calls;
    EXPECT_STREQ("C:\\d\\a.exe?b.c", url);
    EXPECT_STREQ(kFile, fileName);
    FILETIME local, universal;
    SystemTimeToFileTime(&now, &local);
    LocalFileTimeToFileTime(&local, &universal);
    EXPECT_EQ(0, CompareFileTime(&universal, &modified));
    ULARGE_INTEGER later = {{universal.dwLowDateTime, universal.dwHighDateTime}};
    later.QuadPart += 36000000000ull;
    const FILETIME expected = {later.LowPart, later.HighPart};
    EXPECT_EQ(0, CompareFileTime(&expected, &expiry));
    EXPECT_EQ(DWORD{NORMAL_CACHE_ENTRY}, type);
    EXPECT_EQ(nullptr, header);
    EXPECT_EQ(0u, headerSize);
    EXPECT_STREQ("exe", extension);
    EXPECT_EQ(nullptr, originalURL);
    return TRUE;
  });
  EXPECT_HRESULT(S_OK, CDestinationFolder(FolderKind::InternetCache, nullptr).CommitToCache(&source, kFile));
  EXPECT_EQ(1, calls);
}

TEST(CommitToCacheTest, ARefusalNamesURLAndPath) {
  LogCapture log;
  const CSourceURL source = Source(L"http://h/%s.exe");
  PATCH_IMPORT(refuse, CommitUrlCacheEntryA, FailWith(FALSE, ERROR_SHARING_VIOLATION));
  const CDestinationFolder cache(FolderKind::InternetCache, nullptr);
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), cache.CommitToCache(&source, kFile));
  EXPECT_EQ(Texts{std::string("ERROR 0x80070020 Unable to commit cache entry.\r\n\tURL: 'http://h/%s.exe'\r\n\tPath: '") +
                  kFile + "'"},
            log.Messages());
  EXPECT_EQ(Codes{HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION)}, log.ErrorTraces());
  EXPECT_EQ("DestinationFolder", log.Entries().at(0).file);
}

TEST(CommitToCacheTest, TheCacheFindsWhatWasCommitted) {
  const CDestinationFolder cache(FolderKind::InternetCache, nullptr);
  for (const wchar_t* const url :
       {L"http://cache.test/d/a.exe", L"C:\\apps\\permit.xml", L"http://cache.test/noextension"}) {
    const CSourceURL source = Source(url);
    OwnedText fileName;
    ASSERT_HRESULT(S_OK, cache.GetDestinationFile(&source, &fileName));
    WriteWholeFile(fileName.get(), "content");
    EXPECT_HRESULT(S_OK, cache.CommitToCache(&source, fileName.get()));
    EXPECT_STREQ(fileName.get(), CachedFile(source.GetLocation()).c_str());
    EXPECT_EQ("content", ReadWholeFile(fileName.get()));
    EXPECT_TRUE(DeleteUrlCacheEntryA(source.GetLocation()));
  }
}

TEST(CommitToCacheTest, AFileThatIsNotThereIsRefused) {
  LogCapture log;
  const CSourceURL source = Source(L"http://cache.test/missing.exe");
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND),
                 CDestinationFolder(FolderKind::InternetCache, nullptr).CommitToCache(&source, kFile));
  EXPECT_EQ(1u, log.Messages().size());
  EXPECT_EQ("", CachedFile(source.GetLocation()));
}

}  // namespace
