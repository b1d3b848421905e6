#include "open/RunningManifest.h"

#include "advice/Digest.h"
#include "advice/Words.h"
#include "log/LogFile.h"
#include "log/LogFileSink.h"

namespace {

constexpr SourceFile kSourceFile = {"RunningManifest"};

// URLs are longer than names may be, and have characters that names do not. Empty when the system has no hash for it.
std::wstring NameOf(const std::wstring& url) {
  const std::string hash = SHA256(Utf8(url));
  return hash.empty() ? std::wstring() : L"Local\\Norvik." + WideFromUtf8(hash);
}

}  // namespace

RunningManifest::RunningManifest(const std::wstring& url) {
  const std::wstring name = NameOf(url);
  if (name.empty())
    return;
  mutex = KernelHandle(CreateMutexW(nullptr, FALSE, name.c_str()));
  isTheOnlyOne = GetLastError() != ERROR_ALREADY_EXISTS;
}

void LogSecondStart(const std::wstring& url) {
  GetLogFile().Continue(url.c_str());
  LogInfo(HERE, "'%s' is running already, and was not started again.", WithoutCredentials(Utf8(url)).c_str());
}
