#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FileFault.h"
#include "common/Handles.h"
#include "support/Files.h"
#include "support/HResult.h"
#include "support/Holdings.h"
#include "support/ImportPatch.h"
#include "support/LogCapture.h"
#include "transfer/DocumentType.h"
#include "transfer/Transfer.h"

namespace {

using Texts = std::vector<std::string>;
using Codes = std::vector<HRESULT>;

class CopyLocalFileTest : public testing::Test {
 protected:
  CopyLocalFileTest() : source(folder.File("source.bin")), destination(folder.File("copy.bin")) {}

  HRESULT Copy(DWORD attributes = FILE_ATTRIBUTE_NORMAL, const FILETIME* time = nullptr, DWORD flags = 0) {
    return CopyLocalFile(source.c_str(), destination.c_str(), attributes, time, flags);
  }

  std::string Line(const char* code, const std::string& message, const std::string& name) const {
    return std::string("ERROR ") + code + " " + message + " '" + name + "' failed.";
  }

  // No copy is left, and the source is not in use any more.
  void ExpectNothingLeft() const {
    EXPECT_EQ("source.bin", NamesIn(folder.Path()));
    EXPECT_TRUE(
        FileHandle(CreateFileA(source.c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr)));
  }

  TemporaryFolder folder;
  std::string source;
  std::string destination;
  LogCapture log;
};

class CopySizeTest : public CopyLocalFileTest, public testing::WithParamInterface<std::size_t> {};

TEST_P(CopySizeTest, IsCopiedByteForByte) {
  const std::string content = PatternOf(GetParam());
  WriteWholeFile(source, content);
  EXPECT_HRESULT(S_OK, Copy());
  EXPECT_TRUE(content == ReadWholeFile(destination));
  EXPECT_TRUE(content == ReadWholeFile(source));
  EXPECT_EQ("", log.Text());
}

INSTANTIATE_TEST_SUITE_P(, CopySizeTest, testing::Values(0, 1, 4095, 4096, 4097, 8192, 100000),
                         testing::PrintToStringParamName());

TEST_F(CopyLocalFileTest, BothFilesAreClosedAfterwards) {
  WriteWholeFile(source, "x");
  EXPECT_HRESULT(S_OK, Copy());
  EXPECT_TRUE(DeleteFileA(source.c_str()));
  EXPECT_TRUE(DeleteFileA(destination.c_str()));
}

TEST_F(CopyLocalFileTest, NoCopyCostsAHandle) {
  WriteWholeFile(source, "x");
  const std::string missing = folder.File("missing");
  const auto copyAndFail = [&] {
    EXPECT_HRESULT(S_OK, Copy());
    EXPECT_HRESULT(E_FAIL, Copy(FILE_ATTRIBUTE_NORMAL, nullptr, kTransferXMLDocument));
    EXPECT_HRESULT(
        HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), CopyLocalFile(missing.c_str(), destination.c_str(), 0, nullptr, 0));
    EXPECT_HRESULT(E_ACCESSDENIED, CopyLocalFile(source.c_str(), folder.Path().c_str(), 0, nullptr, 0));
  };
  copyAndFail();  // the first use may leave something that every other one shares
  const auto before = LowestFreeHandle();
  {
    const FileHandle open(CreateFileA(source.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    ASSERT_TRUE(static_cast<bool>(open));
    ASSERT_LT(before, LowestFreeHandle()) << "a handle that is open does not count";
  }
  for (int i = 0; i < 20; ++i)
    copyAndFail();
  EXPECT_EQ(before, LowestFreeHandle());
}

TEST_F(CopyLocalFileTest, TheFilesAreOpenedAsTheyHaveToBe) {
  WriteWholeFile(source, "x");
  int calls = 0;
  PATCH_IMPORT(record, CreateFileA,
               [&](auto original, const char* name, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                   DWORD disposition, DWORD attributes, HANDLE model) {
    const bool isSource = name == source;
    calls += isSource || name == destination;
    EXPECT_EQ(isSource ? DWORD{GENERIC_READ} : DWORD{GENERIC_WRITE}, access);
    EXPECT_EQ(0u, sharing);
    EXPECT_EQ(nullptr, security);
    EXPECT_EQ(isSource ? DWORD{OPEN_EXISTING} : DWORD{CREATE_ALWAYS}, disposition);
    EXPECT_EQ(isSource ? DWORD{FILE_ATTRIBUTE_NORMAL} : DWORD{FILE_ATTRIBUTE_HIDDEN}, attributes);
    EXPECT_EQ(nullptr, model);
    return original(name, access, sharing, security, disposition, attributes, model);
  });
  EXPECT_HRESULT(S_OK, Copy(FILE_ATTRIBUTE_HIDDEN));
  EXPECT_EQ(2, calls);
}

TEST_F(CopyLocalFileTest, AReadTakes4096Bytes) {
  WriteWholeFile(source, PatternOf(5000));
  int reads = 0;
  {
    PATCH_IMPORT(record, ReadFile, [&](auto original, HANDLE file, void* buffer, DWORD size, auto... arguments) {
      ++reads;
      EXPECT_EQ(4096u, size);
      return original(file, buffer, size, arguments...);
    });
    EXPECT_HRESULT(S_OK, Copy());
  }
  EXPECT_EQ(3, reads);
}

// For a user who is not root, Wine keeps only one of the two on a file: what the system is asked for is what counts.
TEST_F(CopyLocalFileTest, TheCopyHasTheAttributes) {
  WriteWholeFile(source, "x");
  const DWORD attributes = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN;
  DWORD created = 0;
  {
    PATCH_IMPORT(record, CreateFileA,
                 [&](auto original, const char* path, DWORD access, DWORD sharing, LPSECURITY_ATTRIBUTES security,
                     DWORD disposition, DWORD asked, HANDLE pattern) {
      if (path == destination)
        created = asked;
      return original(path, access, sharing, security, disposition, asked, pattern);
    });
    EXPECT_HRESULT(S_OK, Copy(attributes));
  }
  EXPECT_EQ(attributes, created);
  EXPECT_EQ(DWORD{FILE_ATTRIBUTE_READONLY}, AttributesOf(destination) & FILE_ATTRIBUTE_READONLY);
  EXPECT_EQ("x", ReadWholeFile(destination));
}

TEST_F(CopyLocalFileTest, TheCopyHasTheTimeThreeTimes) {
  WriteWholeFile(source, "x");
  int calls = 0;
  {
    PATCH_IMPORT(
        record, SetFileTime,
        [&](auto original, HANDLE file, const FILETIME* created, const FILETIME* accessed, const FILETIME* written) {
      ++calls;
      for (const FILETIME* time : {created, accessed, written})
        EXPECT_EQ(0, CompareFileTime(&kAnyTime, time));
      return original(file, created, accessed, written);
        });
    EXPECT_HRESULT(S_OK, Copy(FILE_ATTRIBUTE_NORMAL, &kAnyTime));
  }
  EXPECT_EQ(1, calls);
  const FILETIME written = GetFileWriteTimeOf(destination);
  EXPECT_EQ(0, CompareFileTime(&kAnyTime, &written));
}

TEST_F(CopyLocalFileTest, WithoutATimeNoneIsSet) {
  WriteWholeFile(source, "x");
  FileFault count(destination, FileFault::Kind::SetTime, 0, 0);
  EXPECT_HRESULT(S_OK, Copy());
  EXPECT_EQ(0, count.Calls());
}

TEST_F(CopyLocalFileTest, ALongerFileIsReplacedWhole) {
  WriteWholeFile(source, "short");
  WriteWholeFile(destination, PatternOf(10000));
  EXPECT_HRESULT(S_OK, Copy());
  EXPECT_EQ("short", ReadWholeFile(destination));
  EXPECT_HRESULT(S_OK, Copy());
  EXPECT_EQ("short", ReadWholeFile(destination));
}

TEST_F(CopyLocalFileTest, AMissingNameIsAnInvalidArgument) {
  const char* const rows[][2] = {{nullptr, "x"}, {"", "x"}, {"x", nullptr}, {"x", ""}, {nullptr, nullptr}};
  for (const auto& row : rows) {
    LogCapture own;
    EXPECT_HRESULT(E_INVALIDARG, CopyLocalFile(row[0], row[1], 0, nullptr, 0));
    EXPECT_HRESULT(E_INVALIDARG, FetchURL(row[0], row[1], 0, nullptr, 0, "gone"));
    EXPECT_EQ(Texts{}, own.Messages());
    EXPECT_EQ((Codes{E_INVALIDARG, E_INVALIDARG}), own.ErrorTraces());
    EXPECT_EQ("FileUtilities", own.Entries().at(0).file);
  }
}

TEST_F(CopyLocalFileTest, AMissingSourceLeavesTheDestinationAlone) {
  WriteWholeFile(destination, "old");
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), Copy());
  EXPECT_EQ(Texts{Line("0x80070002", "Opening", source)}, log.Messages());
  EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
  EXPECT_EQ("old", ReadWholeFile(destination));
}

TEST_F(CopyLocalFileTest, ASourceInUseIsNotOpened) {
  WriteWholeFile(source, "x");
  const FileHandle user(CreateFileA(source.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), Copy());
  EXPECT_EQ(Texts{Line("0x80070020", "Opening", source)}, log.Messages());
  EXPECT_EQ("source.bin", NamesIn(folder.Path()));
}

TEST_F(CopyLocalFileTest, AFolderIsNoSource) {
  EXPECT_HRESULT(E_ACCESSDENIED, CopyLocalFile(folder.Path().c_str(), destination.c_str(), 0, nullptr, 0));
  EXPECT_EQ("", NamesIn(folder.Path()));
}

TEST_F(CopyLocalFileTest, ASourceIsTakenAsItIsGiven) {
  WriteWholeFile(source, "x");
  const std::string url = "file://" + source;
  const HRESULT notFound = HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND);
  EXPECT_HRESULT(notFound, FetchURL(url.c_str(), destination.c_str(), 0, nullptr, 0, nullptr));
  EXPECT_HRESULT(notFound, FetchURL("ftp://h/a%s.txt", destination.c_str(), 0, nullptr, 0, nullptr));
  EXPECT_EQ((Texts{Line("0x80070003", "Opening", url), Line("0x80070003", "Opening", "ftp://h/a%s.txt")}), log.Messages());
  ExpectNothingLeft();
}

TEST_F(CopyLocalFileTest, ADestinationThatCannotBeCreatedIsReported) {
  WriteWholeFile(source, "x");
  destination = folder.File("missing\\copy%s.bin");
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), Copy());
  EXPECT_EQ(Texts{Line("0x80070003", "Creating", destination)}, log.Messages());
  ExpectNothingLeft();
}

TEST_F(CopyLocalFileTest, ADestinationInUseIsNeitherReplacedNorDeleted) {
  WriteWholeFile(source, "new");
  WriteWholeFile(destination, "old");
  {
    const FileHandle user(CreateFileA(
        destination.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING, 0, nullptr));
    EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), Copy());
  }
  EXPECT_EQ(Texts{Line("0x80070020", "Creating", destination)}, log.Messages());
  EXPECT_EQ("old", ReadWholeFile(destination));
}

TEST_F(CopyLocalFileTest, AFileIsNotCopiedOntoItself) {
  WriteWholeFile(source, "precious");
  destination = source;
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), Copy());
  EXPECT_EQ(Texts{Line("0x80070020", "Creating", source)}, log.Messages());
  EXPECT_EQ("precious", ReadWholeFile(source));
}

TEST_F(CopyLocalFileTest, AnOverlongNameIsRefused) {
  WriteWholeFile(source, "x");
  destination = folder.File(std::string(5000, 'n'));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_FILENAME_EXCED_RANGE), Copy());
  EXPECT_EQ(Texts{Line("0x800700ce", "Creating", destination).substr(0, 17 + 1023)}, log.Messages());
  ExpectNothingLeft();
}

struct FaultRow {
  const char* name;
  bool isSource;
  FileFault::Kind kind;
  int call;
  DWORD error;
  const char* code;
  const char* message;
};

class CopyFaultTest : public CopyLocalFileTest, public testing::WithParamInterface<FaultRow> {
 protected:
  void ExpectFailure(DWORD attributes) {
    const FaultRow& row = GetParam();
    WriteWholeFile(source, PatternOf(10000));
    HRESULT hr;
    {
      FileFault fault(row.isSource ? source : destination, row.kind, row.call, row.error);
      hr = Copy(attributes, &kAnyTime);
      EXPECT_EQ(row.call, fault.Calls());
    }
    EXPECT_HRESULT(static_cast<HRESULT>(std::stoul(row.code, nullptr, 16)), hr);
    EXPECT_EQ(Texts{Line(row.code, row.message, row.isSource ? source : destination)}, log.Messages());
    EXPECT_EQ("FileUtilities", log.Entries().at(0).file);
    ExpectNothingLeft();
  }
};

TEST_P(CopyFaultTest, LeavesNothingBehind) {
  ExpectFailure(FILE_ATTRIBUTE_NORMAL);
}

TEST_P(CopyFaultTest, LeavesNoReadOnlyFileBehind) {
  ExpectFailure(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN);
}

INSTANTIATE_TEST_SUITE_P(
    , CopyFaultTest,
    testing::Values(
        FaultRow{"FirstRead", true, FileFault::Kind::Read, 1, ERROR_CRC, "0x80070017", "Reading"},
        FaultRow{"SecondRead", true, FileFault::Kind::Read, 2, ERROR_NETNAME_DELETED, "0x80070040", "Reading"},
        FaultRow{"LastRead", true, FileFault::Kind::Read, 4, ERROR_CRC, "0x80070017", "Reading"},
        FaultRow{"ReadWithALargeError", true, FileFault::Kind::Read, 1, 0x12345, "0x80072345", "Reading"},
        FaultRow{"ReadWithAResultCodeAsError", true, FileFault::Kind::Read, 1, 0x80030005, "0x80030005", "Reading"},
        FaultRow{"ReadWithoutAnError", true, FileFault::Kind::Read, 1, 0, "0x80004005", "Reading"},
        FaultRow{"FirstWrite", false, FileFault::Kind::Write, 1, ERROR_DISK_FULL, "0x80070070", "Writing"},
        FaultRow{"SecondWrite", false, FileFault::Kind::Write, 2, ERROR_DISK_FULL, "0x80070070", "Writing"},
        FaultRow{"LastWrite", false, FileFault::Kind::Write, 3, ERROR_DISK_FULL, "0x80070070", "Writing"},
        FaultRow{"FirstShortWrite", false, FileFault::Kind::ShortWrite, 1, 0, "0x8007001d", "Writing"},
        FaultRow{"LastShortWrite", false, FileFault::Kind::ShortWrite, 3, 0, "0x8007001d", "Writing"},
        FaultRow{"SetTime", false, FileFault::Kind::SetTime, 1, ERROR_ACCESS_DENIED, "0x80070005", "Writing"},
        FaultRow{"Close", false, FileFault::Kind::Close, 1, ERROR_DISK_FULL, "0x80070070", "Writing"}),
    [](const testing::TestParamInfo<FaultRow>& row) { return std::string(row.param.name); });

TEST_F(CopyLocalFileTest, WithoutMemoryForTheBufferNothingIsLeft) {
  WriteWholeFile(source, "x");
  HRESULT hr;
  {
    PATCH_IMPORT(noMemory, HeapAlloc, FailWith(static_cast<void*>(nullptr), ERROR_NOT_ENOUGH_MEMORY));
    hr = CopyLocalFile(source.c_str(), destination.c_str(), FILE_ATTRIBUTE_READONLY, nullptr, 0);
  }
  EXPECT_HRESULT(E_OUTOFMEMORY, hr);
  EXPECT_EQ(Texts{"ERROR 0x8007000e Copy buffer creation failed."}, log.Messages());
  ExpectNothingLeft();
}

// A file that the system deletes at once keeps its attributes until then; one that resists is made an ordinary one.
TEST_F(CopyLocalFileTest, OnlyAFileThatResistsLosesItsAttributesBeforeItIsDeleted) {
  WriteWholeFile(source, "x");
  for (const bool resists : {false, true}) {
    std::vector<std::string> calls;
    {
      FileFault fault(source, FileFault::Kind::Read, 1, ERROR_CRC);
      PATCH_IMPORT(deletes, DeleteFileA, [&](auto original, const char* name) {
        calls.push_back(std::string("delete ") + name);
        return resists && calls.size() == 1 ? FALSE : original(name);
      });
      PATCH_IMPORT(changes, SetFileAttributesA, [&](auto original, const char* name, DWORD attributes) {
        calls.push_back(std::to_string(attributes) + " " + name);
        return original(name, attributes);
      });
      EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_CRC), Copy());
    }
    const Texts ordinary = {"delete " + destination};
    const Texts resisting = {"delete " + destination, "128 " + destination, "delete " + destination};
    EXPECT_EQ(resists ? resisting : ordinary, calls);
    ExpectNothingLeft();
  }
}

TEST_F(CopyLocalFileTest, AFileThatCannotBeDeletedKeepsTheReasonOfTheFailure) {
  WriteWholeFile(source, PatternOf(10000));
  FileFault fault(source, FileFault::Kind::Read, 2, ERROR_CRC);
  PATCH_IMPORT(noDelete, DeleteFileA, FailWith(FALSE, ERROR_ACCESS_DENIED));
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_CRC), Copy());
  EXPECT_EQ(Texts{Line("0x80070017", "Reading", source)}, log.Messages());
}

TEST_F(CopyLocalFileTest, AnXMLDocumentIsPreparedOnTheWay) {
  const std::string content = "<V>" + PatternOf(10000) + "</V>";
  WriteWholeFile(source, "<?xml version=\"1.0\"?>\n<!DOCTYPE V SYSTEM \"http://h/x.dtd\">" + content);
  EXPECT_HRESULT(S_OK, Copy(FILE_ATTRIBUTE_NORMAL, &kAnyTime, kTransferXMLDocument | kTransferManifest));
  EXPECT_TRUE("<?xml version=\"1.0\"?>" + ReadWholeFile(ProjectFile("tests/transfer/data/manifest.dtd.txt")) + content ==
              ReadWholeFile(destination));
  EXPECT_HRESULT(S_OK, Copy(FILE_ATTRIBUTE_NORMAL, &kAnyTime, kTransferXMLDocument | kTransferPermitFile));
  EXPECT_TRUE("<?xml version=\"1.0\"?>" + ReadWholeFile(ProjectFile("tests/transfer/data/permit.dtd.txt")) + content ==
              ReadWholeFile(destination));
  const FILETIME written = GetFileWriteTimeOf(destination);
  EXPECT_EQ(0, CompareFileTime(&kAnyTime, &written));
  EXPECT_EQ("", log.Text());
}

TEST_F(CopyLocalFileTest, TheDocumentBitsAloneChangeNothing) {
  WriteWholeFile(source, "<?xml?><!DOCTYPE V><V/>");
  EXPECT_HRESULT(S_OK, Copy(FILE_ATTRIBUTE_NORMAL, nullptr, kTransferManifest | kTransferPermitFile | kTransferSystemLine));
  EXPECT_EQ("<?xml?><!DOCTYPE V><V/>", ReadWholeFile(destination));
}

TEST_F(CopyLocalFileTest, ARefusedDocumentLeavesNothingBehind) {
  WriteWholeFile(source, "<?xml?><VantorManifest/>");
  EXPECT_HRESULT(E_FAIL, Copy(FILE_ATTRIBUTE_READONLY, nullptr, kTransferXMLDocument | kTransferManifest));
  EXPECT_EQ(Texts{"ERROR 0x80004005 Invalid XML document ('<VantorManifest/>')."}, log.Messages());
  EXPECT_EQ(Codes{S_OK}, log.ErrorTraces());
  ExpectNothingLeft();
}

TEST_F(CopyLocalFileTest, AnOverlongHeadLeavesNothingBehind) {
  WriteWholeFile(source, "<?xml " + std::string(5000, 'x') + ">");
  EXPECT_HRESULT(E_FAIL, Copy(FILE_ATTRIBUTE_NORMAL, nullptr, kTransferXMLDocument | kTransferManifest));
  EXPECT_EQ((Codes{E_FAIL, S_OK}), log.ErrorTraces());
  ExpectNothingLeft();
}

TEST_F(CopyLocalFileTest, ALocalFileIsNeverSearchedForTheNotFoundText) {
  WriteWholeFile(source, "<?xml gone?><!DOCTYPE gone><gone/>");
  EXPECT_HRESULT(S_OK, FetchURL(source.c_str(), destination.c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, "gone"));
  EXPECT_EQ(ReadWholeFile(source), ReadWholeFile(destination));
  EXPECT_HRESULT(
      S_OK, FetchURL(source.c_str(), destination.c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, kTransferXMLDocument, "gone"));
  EXPECT_EQ("<?xml gone?><gone/>", ReadWholeFile(destination));
  EXPECT_EQ("", log.Text());
}

auto OnlyOfFiles() {
  return [](auto original, HANDLE file) {
    EXPECT_NE(INVALID_HANDLE_VALUE, file) << "there is no file to ask about";
    return original(file);
  };
}

TEST_F(CopyLocalFileTest, AFileThatCannotBeOpenedIsNoDevice) {
  PATCH_IMPORT(files, GetFileType, OnlyOfFiles());
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), Copy());
  WriteWholeFile(source, "x");
  destination = folder.File("missing\\copy.bin");
  EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND), Copy());
}

// Whether a name is a device's is the system's to say: here it says so of call number `call`.
auto DeviceAtCall(int call) {
  return [call, count = 0](auto original, HANDLE file) mutable {
    return ++count == call ? DWORD{FILE_TYPE_CHAR} : original(file);
  };
}

TEST_F(CopyLocalFileTest, ADeviceIsNoSource) {
  WriteWholeFile(source, "x");
  {
    PATCH_IMPORT(device, GetFileType, DeviceAtCall(1));
    EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INVALID_NAME), Copy());
  }
  EXPECT_EQ(Texts{Line("0x8007007b", "Opening", source)}, log.Messages());
  ExpectNothingLeft();
}

TEST_F(CopyLocalFileTest, ADeviceIsNoDestination) {
  WriteWholeFile(source, "x");
  {
    PATCH_IMPORT(device, GetFileType, DeviceAtCall(2));
    EXPECT_HRESULT(HRESULT_FROM_WIN32(ERROR_INVALID_NAME), Copy());
  }
  EXPECT_EQ(Texts{Line("0x8007007b", "Creating", destination)}, log.Messages());
  EXPECT_TRUE(FileHandle(CreateFileA(destination.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr)));
}

}  // namespace
