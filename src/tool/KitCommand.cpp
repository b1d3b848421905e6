#include "common/Windows.h"

#include <shlobj.h>

#include <algorithm>

#include "advice/BrowserKit.h"
#include "advice/BrowserOrigin.h"
#include "advice/Document.h"
#include "advice/ExitCode.h"
#include "advice/Words.h"
#include "common/Handles.h"
#include "tool/Commands.h"
#include "tool/Console.h"
#include "tool/Json.h"
#include "tool/Report.h"

namespace {

std::string Quoted(const std::wstring& path) {
  return "'" + Utf8(path) + "'";
}

std::string ErrorText(DWORD error) {
  return CodeAndText(HRESULT_FROM_WIN32(error));
}

bool IsThere(const std::wstring& path) {
  return GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

void JudgeOrigins(const std::vector<std::string>& origins) {
  for (const std::string& origin : origins) {
    const std::string why = WhyNoOrigin(origin);
    if (!why.empty())
      throw UsageText{why + "\n", true};
  }
}

void MakeFolder(const std::wstring& folder) {
  const DWORD error = static_cast<DWORD>(SHCreateDirectoryExW(nullptr, folder.c_str(), nullptr));
  const DWORD attributes = GetFileAttributesW(folder.c_str());
  if (attributes == INVALID_FILE_ATTRIBUTES)
    throw Unanswered("The folder " + Quoted(folder) + " cannot be made: " + ErrorText(error));
  if ((attributes & FILE_ATTRIBUTE_DIRECTORY) == 0)
    throw Unanswered(Quoted(folder) + " is a file and no folder.");
}

// Half a file is no file.
void WriteBytes(const std::wstring& path, const std::string& bytes) {
  FileHandle file(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  const bool isOpen = static_cast<bool>(file);
  DWORD written = 0;
  if (isOpen && WriteFile(file.Get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) && file.Close())
    return;
  const DWORD error = GetLastError();
  file.Close();
  if (isOpen)
    DeleteFileW(path.c_str());
  throw Unanswered(Quoted(path) + " cannot be written: " + ErrorText(error));
}

}  // namespace

int BrowserKitCommand(const Arguments& arguments) {
  JudgeOrigins(arguments.origins);
  const std::vector<KitFile> files = BrowserKit(arguments.origins);
  const std::wstring folder = FullPath(arguments.out);
  const auto pathOf = [&](const KitFile& file) { return folder + L"\\" + WideFromUtf8(file.name); };
  const auto old = std::find_if(files.begin(), files.end(), [&](const KitFile& file) { return IsThere(pathOf(file)); });
  if (old != files.end() && !arguments.isReplacing) {
    PrintError("norvik: " + Quoted(pathOf(*old)) + " is there already. Nothing was written; --replace would replace it.\n");
    return kNo;
  }
  MakeFolder(folder);
  for (const KitFile& file : files)
    WriteBytes(pathOf(file), file.bytes);
  if (arguments.isJson)
    PrintJson(ToJson(folder, files));
  else
    Print(ReportOf(folder, files));
  return kYes;
}
