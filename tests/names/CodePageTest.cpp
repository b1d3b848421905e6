// Characters outside the code page, and a code page in which the second byte of a character may look like a separator.

#include <gtest/gtest.h>
#include <shlwapi.h>

#include "names/NamesFixture.h"
#include "support/ImportPatch.h"

namespace {

TEST_F(NamesTest, CharactersOutsideTheCodePageGoNowhereElse) {
  // U+30BD becomes a question mark, which begins a query; the last two look like a slash and a backslash in full width.
  const NameRow rows[] = {
      {"InTheName", "{server}/a\xe3\x82\xbd.txt", "<Path>{folder}</Path>", "", {"{folder}\\a"}},
      {"FirstInTheName", "{server}/\xe3\x82\xbd.txt", "<Path>{folder}</Path>", "0x80070005 Creating '{folder}' failed.", {}},
      {"InTheFolder",
       "{server}/a.txt",
       "<Path>{folder}\\\xe3\x82\xbd</Path>",
       "0x8007007b Failed to create path '{folder}\\?'.",
       {}},
      {"WideSlash", "{server}/x\xef\xbc\x8f..\xef\xbc\x8fy.txt", "<Path>{folder}</Path>", "", {"{folder}\\y.txt"}},
      {"WideBackslash", "{server}/x\xef\xbc\xbc..\xef\xbc\xbcy.txt", "<Path>{folder}</Path>", "", {"{folder}\\y.txt"}}};
  for (const NameRow& row : rows) {
    SCOPED_TRACE(row.name);
    ExpectOutcome(row);
  }
}

constexpr UINT kShiftJis = 932;

std::wstring WidePath(const char* path) {
  wchar_t wide[4 * MAX_PATH] = L"";
  MultiByteToWideChar(kShiftJis, 0, path, -1, wide, 4 * MAX_PATH);
  return wide;
}

// The system's code page is that of the whole machine: while this lives it is another one for the module's calls.
class DoubleByteCodePage {
 public:
  explicit DoubleByteCodePage(HMODULE patchedModule) : module(patchedModule) {}

 private:
  HMODULE module;
  ImportedFunction<struct LeadByte, decltype(&::IsDBCSLeadByte)> leadByte{
      "IsDBCSLeadByte", [](auto, BYTE byte) { return IsDBCSLeadByteEx(kShiftJis, byte); }, module};
  ImportedFunction<struct ToNarrow, decltype(&::WideCharToMultiByte)> toNarrow{
      "WideCharToMultiByte", [](auto original, UINT, auto... rest) { return original(kShiftJis, rest...); }, module};
  ImportedFunction<struct ToWide, decltype(&::MultiByteToWideChar)> toWide{
      "MultiByteToWideChar", [](auto original, UINT, auto... rest) { return original(kShiftJis, rest...); }, module};
  ImportedFunction<struct Create, decltype(&::CreateFileA)> create{
      "CreateFileA", [](auto, const char* path, auto... rest) { return CreateFileW(WidePath(path).c_str(), rest...); },
      module};
  ImportedFunction<struct Attributes, decltype(&::GetFileAttributesA)> attributes{
      "GetFileAttributesA", [](auto, const char* path) { return GetFileAttributesW(WidePath(path).c_str()); }, module};
  ImportedFunction<struct MakeFolder, decltype(&::CreateDirectoryA)> makeFolder{
      "CreateDirectoryA",
      [](auto, const char* path, auto security) { return CreateDirectoryW(WidePath(path).c_str(), security); }, module};
  ImportedFunction<struct FullPath, decltype(&::GetFullPathNameA)> fullPath{
      "GetFullPathNameA",
      [](auto, const char* path, DWORD size, char* buffer, char**) {
    wchar_t wide[4 * MAX_PATH] = L"";
    GetFullPathNameW(WidePath(path).c_str(), 4 * MAX_PATH, wide, nullptr);
    return static_cast<DWORD>(
        WideCharToMultiByte(kShiftJis, 0, wide, -1, buffer, static_cast<int>(size), nullptr, nullptr) - 1);
      },
      module};
  ImportedFunction<struct Remove, decltype(&::DeleteFileA)> remove{
      "DeleteFileA", [](auto, const char* path) { return DeleteFileW(WidePath(path).c_str()); }, module};
  ImportedFunction<struct Move, decltype(&::MoveFileA)> move{
      "MoveFileA",
      [](auto, const char* from, const char* to) { return MoveFileW(WidePath(from).c_str(), WidePath(to).c_str()); },
      module};
  ImportedFunction<struct RemoveBackslash, decltype(&::PathRemoveBackslashA)> removeBackslash{
      "PathRemoveBackslashA",
      [](auto, char* path) {
    std::wstring wide = WidePath(path);
    PathRemoveBackslashW(wide.data());
    WideCharToMultiByte(kShiftJis, 0, wide.c_str(), -1, path, lstrlenA(path) + 1, nullptr, nullptr);
    return path;
      },
      module};
};

// U+30BD is 83 5C, whose second byte is that of a backslash; U+30BF is 83 5E, U+8868 is 95 5C.
struct DoubleByteRow {
  const char* name;
  const char* source;
  const char* folder;
  Lines came;
};

class DoubleByteNamesTest : public NamesTest, public testing::WithParamInterface<DoubleByteRow> {};

TEST_P(DoubleByteNamesTest, AreNotTakenApartAtASecondByte) {
  const DoubleByteRow& row = GetParam();
  CreateDirectoryW((WidePath(documents.c_str()) + L"\\\x30BD").c_str(), nullptr);
  for (const wchar_t* file : {L"\\\x30BD.txt", L"\\a\x30BD", L"\\\x8868\x30BD.txt", L"\\\x30BD\\b.txt"})
    CopyFileW(WidePath((documents + "\\a.txt").c_str()).c_str(), (WidePath(documents.c_str()) + file).c_str(), FALSE);
  Changes();
  {
    const DoubleByteCodePage codePage(module.Handle());
    EXPECT_HRESULT(S_OK, RunCommand(row.source, std::string("<Path>") + row.folder + "</Path>"));
  }
  EXPECT_EQ(row.came, Changes());
  EXPECT_EQ("documents\\a.txt", ReadWholeFile(WideOf(Filled(row.came.back()))));
  ExpectLogInOrder();
}

INSTANTIATE_TEST_SUITE_P(
    Names, DoubleByteNamesTest,
    testing::Values(
        DoubleByteRow{"Name", "{documents}\\\xe3\x82\xbd.txt", "{folder}", {"{folder}\\\xe3\x82\xbd.txt"}},
        DoubleByteRow{"LastCharacter", "{documents}\\a\xe3\x82\xbd", "{folder}", {"{folder}\\a\xe3\x82\xbd"}},
        DoubleByteRow{"TwoCharacters",
                      "{documents}\\\xe8\xa1\xa8\xe3\x82\xbd.txt",
                      "{folder}",
                      {"{folder}\\\xe8\xa1\xa8\xe3\x82\xbd.txt"}},
        DoubleByteRow{"FolderOfTheSource", "{documents}\\\xe3\x82\xbd\\b.txt", "{folder}", {"{folder}\\b.txt"}},
        DoubleByteRow{"BeforeASlash", "{documents}\\\xe3\x82\xbd/b.txt", "{folder}", {"{folder}\\b.txt"}},
        DoubleByteRow{"Folder",
                      "{documents}\\a.txt",
                      "{folder}\\\xe3\x82\xbd\\x",
                      {"{folder}\\\xe3\x82\xbd", "{folder}\\\xe3\x82\xbd\\x", "{folder}\\\xe3\x82\xbd\\x\\a.txt"}},
        DoubleByteRow{"LastFolder",
                      "{documents}\\a.txt",
                      "{folder}\\x\xe3\x82\xbd",
                      {"{folder}\\x\xe3\x82\xbd", "{folder}\\x\xe3\x82\xbd\\a.txt"}}),
    [](const auto& row) { return row.param.name; });

}  // namespace
