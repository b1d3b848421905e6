#include "common/Windows.h"

#include "Scenarios.h"
#include "common/Handles.h"
#include "support/Files.h"
#include "transfer/Transfer.h"

namespace {

constexpr DWORD kChunkBytes = 4096;

void CopyBare(const std::string& source, const std::string& destination) {
  const FileHandle from(
      CreateFileA(source.c_str(), GENERIC_READ, 0, nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  const FileHandle to(
      CreateFileA(destination.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  Require(from && to, "CreateFile failed");
  char chunk[kChunkBytes];
  for (;;) {
    DWORD count = 0, written = 0;
    Require(ReadFile(from.Get(), chunk, kChunkBytes, &count, nullptr), "ReadFile failed");
    if (count == 0)
      return;
    Require(WriteFile(to.Get(), chunk, count, &written, nullptr) && written == count, "WriteFile failed");
  }
}

void CopyByModule(const std::string& source, const std::string& destination) {
  const HRESULT hr = FetchURL(source.c_str(), destination.c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, nullptr);
  Require(hr == S_OK, "FetchURL failed");
}

void CopyBySystem(const std::string& source, const std::string& destination) {
  Require(CopyFileA(source.c_str(), destination.c_str(), FALSE), "CopyFile failed");
}

std::vector<Contestant> Contestants(const std::string& source, const std::string& destination) {
  const auto finish = [=] {
    Require(AttributesOf(destination) != INVALID_FILE_ATTRIBUTES && DeleteFileA(destination.c_str()), "no copy was made");
  };
  return {
      {"module", [=] { CopyByModule(source, destination); }, finish},
      {"bare", [=] { CopyBare(source, destination); }, finish},
      {"CopyFile", [=] { CopyBySystem(source, destination); }, finish},
  };
}

}  // namespace

void MeasureLocalCopies(const Arguments& arguments) {
  const TemporaryFolder folder;
  const std::string source = folder.File("source.bin");
  WriteWholeFile(source, std::string(std::stoull(arguments[1]), 'x'));
  const std::vector<Contestant> contestants = Contestants(source, folder.File("copy.bin"));
  WarmUp(contestants);
  const int turns = std::stoi(arguments[2]);
  for (int turn = 0; turn < turns; ++turn)
    MeasureInTurn(contestants, std::stoi(arguments[0]) + turn);
}
