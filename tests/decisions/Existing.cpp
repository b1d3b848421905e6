#include "decisions/Existing.h"

#include <gtest/gtest.h>

#include "support/Files.h"

namespace {

void MakeFoldersOf(const std::string& path, std::size_t from) {
  for (std::size_t end = path.find('\\', from); end != std::string::npos; end = path.find('\\', end + 1))
    CreateDirectoryA(path.substr(0, end).c_str(), nullptr);
}

std::string PolicyElement(const FileQuestion& question) {
  if (question.policy == "none")
    return {};
  return "<IfFileExists><" + question.policy + (question.force ? " force=\"true\"" : "") + "/></IfFileExists>";
}

}  // namespace

ExistingFileOnDisk::ExistingFileOnDisk(const FileQuestion& fileQuestion, const std::string& base, std::size_t folderNumber)
    : question(fileQuestion), number(folderNumber) {
  const std::string folder = base + "\\" + std::to_string(number);
  EXPECT_EQ(std::string::npos, folder.find('.')) << "a dot in the folder's path would count";
  places.Set("folder", folder);
  path = places.Fill(question.file);
  MakeFoldersOf(path, base.size() + 1);
  for (const std::string& pattern : question.taken) {
    for (const std::string& name : places.FillAll(pattern)) {
      if (name.back() == '\\')
        CreateDirectoryA(name.c_str(), nullptr);
      else
        WriteWholeFile(name, kTakenContent);
    }
  }
  if (question.IsFolder()) {
    CreateDirectoryA(path.c_str(), nullptr);
    return;
  }
  WriteWholeFile(path, kOldContent);
  SetFileWriteTime(path, TimeOf(question.fileTime));
  SetFileAttributesA(path.c_str(), question.Attributes());
}

std::string ExistingFileOnDisk::Folder() const {
  return path.substr(0, path.rfind('\\'));
}

std::string ExistingFileOnDisk::Name() const {
  return path.substr(path.rfind('\\') + 1);
}

std::string ExistingFileOnDisk::MovedTo() const {
  return question.movedTo ? places.Fill(*question.movedTo) : std::string();
}

std::string ExistingFileOnDisk::LocalSource(const std::string& localFolder) const {
  const std::string folder = localFolder + "\\" + std::to_string(number);
  CreateDirectoryA(folder.c_str(), nullptr);
  const std::string source = folder + "\\" + Name();
  WriteWholeFile(source, kNewContent);
  SetFileWriteTime(source, TimeOf(*question.sourceTime));
  return source;
}

std::string ExistingFileOnDisk::Command(const std::string& webFolder, const std::string& localFolder) const {
  const std::string source = question.sourceTime ? LocalSource(localFolder) : webFolder + Name();
  const std::string time =
      question.commandTime ? "<Attributes><FileTime>" + *question.commandTime + "</FileTime></Attributes>" : "";
  return "<Copy><Source>" + source + "</Source><Destination><FileName>permitted.txt</FileName><Path>" + Folder() +
         "</Path>" + time + PolicyElement(question) + "</Destination></Copy>\r\n";
}

void ExistingFileOnDisk::ExpectUntouched() const {
  constexpr DWORD kSeen = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_DIRECTORY;
  EXPECT_EQ(question.Attributes() & kSeen, AttributesOf(path) & kSeen);
  if (question.IsFolder())
    return;
  EXPECT_EQ(kOldContent, ReadWholeFile(path));
  const FILETIME expected = TimeOf(question.fileTime);
  const FILETIME found = GetFileWriteTimeOf(path);
  EXPECT_EQ(0, CompareFileTime(&expected, &found));
}

void ExistingFileOnDisk::ExpectWritten() const {
  EXPECT_EQ(kNewContent, ReadWholeFile(path));
  EXPECT_FALSE(AttributesOf(path) & (FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN));
}

void ExistingFileOnDisk::ExpectMoved() const {
  ExpectWritten();
  EXPECT_EQ(kOldContent, ReadWholeFile(MovedTo()));
}

void ExistingFileOnDisk::ExpectOutcome() const {
  const bool isDone = SUCCEEDED(question.run);
  if (isDone && question.action == "replace")
    ExpectWritten();
  else if (isDone && question.action == "move-aside")
    ExpectMoved();
  else if (question.action != "move-aside")
    ExpectUntouched();
}
