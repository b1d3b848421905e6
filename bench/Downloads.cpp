#include "common/Windows.h"

#include <urlmon.h>
#include <wininet.h>

#include "Host.h"
#include "Scenarios.h"
#include "common/Handles.h"
#include "transfer/Transfer.h"
#include "transfer/WebSource.h"

namespace {

constexpr DWORD kChunkBytes = 4096;

// The files on the server.
struct Files {
  std::string source;  // what stands before the number of each file
  int count;
  ULONGLONG bytes;  // of each

  std::string Source(int index) const { return source + std::to_string(index) + ".bin"; }
};

// What any transfer in chunks of that size has to do, and nothing else.
void FetchBare(const std::string& source, const std::string& destination) {
  const InternetHandle session(InternetOpenA("Norvik", INTERNET_OPEN_TYPE_PRECONFIG, nullptr, nullptr, 0));
  Require(static_cast<bool>(session), "InternetOpen failed");
  const InternetHandle connection(
      InternetOpenUrlA(session.Get(), source.c_str(), nullptr, 0, INTERNET_FLAG_RELOAD | INTERNET_FLAG_NO_CACHE_WRITE, 0));
  Require(static_cast<bool>(connection), "InternetOpenUrl failed");
  const FileHandle file(
      CreateFileA(destination.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
  Require(static_cast<bool>(file), "CreateFile failed");
  char chunk[kChunkBytes];
  for (;;) {
    DWORD count = 0, written = 0;
    Require(InternetReadFile(connection.Get(), chunk, kChunkBytes, &count), "InternetReadFile failed");
    if (count == 0)
      return;
    Require(WriteFile(file.Get(), chunk, count, &written, nullptr) && written == count, "WriteFile failed");
  }
}

void FetchByModule(const std::string& source, const std::string& destination) {
  const HRESULT hr = FetchURL(source.c_str(), destination.c_str(), FILE_ATTRIBUTE_NORMAL, nullptr, 0, nullptr);
  Require(hr == S_OK, "FetchURL failed");
}

void FetchBySystem(const std::string& source, const std::string& destination) {
  Require(URLDownloadToFileA(nullptr, source.c_str(), destination.c_str(), 0, nullptr) == S_OK, "URLDownloadToFile failed");
}

void RequireSize(const std::string& path, ULONGLONG bytes) {
  WIN32_FILE_ATTRIBUTE_DATA data = {};
  Require(GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data), path + " is missing");
  const ULONGLONG size = (ULONGLONG{data.nFileSizeHigh} << 32) | data.nFileSizeLow;
  Require(size == bytes, path + " has " + std::to_string(size) + " bytes");
}

// Every file has to have arrived whole. URLDownloadToFile leaves a copy in the cache, which is nobody's profit next time.
std::function<void()> Finish(const Host& host, const Files& files) {
  return [&host, files] {
    for (int i = 0; i < files.count; ++i) {
      RequireSize(host.Destination(i), files.bytes);
      Require(DeleteFileA(host.Destination(i).c_str()), "a fetched file cannot be deleted");
      DeleteUrlCacheEntryA(files.Source(i).c_str());
    }
  };
}

std::function<void()> ForEach(const Host& host, const Files& files, void (*fetch)(const std::string&, const std::string&)) {
  return [&host, files, fetch] {
    for (int i = 0; i < files.count; ++i)
      fetch(files.Source(i), host.Destination(i));
  };
}

std::vector<Contestant> Contestants(Host& host, const Files& files) {
  const std::function<void()> finish = Finish(host, files);
  const std::string manifest = host.WriteManifest(files.count, files.source);
  return {
      {"module", ForEach(host, files, FetchByModule), finish},
      {"run", [&host, manifest] { host.Run(manifest); }, finish},
      {"bare", ForEach(host, files, FetchBare), finish},
      {"URLDownloadToFile", ForEach(host, files, FetchBySystem), finish},
  };
}

}  // namespace

void MeasureDownloads(const Arguments& arguments) {
  const Files files = {arguments[1], std::stoi(arguments[2]), std::stoull(arguments[3])};
  Host host;
  host.Permit().URL(files.source);
  host.Control()->SetEnableLogDebug(VARIANT_FALSE);
  WarmUp(Contestants(host, {files.source, 1, files.bytes}));
  MeasureInTurn(Contestants(host, files), std::stoi(arguments[0]));
}
