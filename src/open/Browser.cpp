#include "open/Browser.h"

#include "common/Windows.h"

#include <shellapi.h>
#include <shlwapi.h>

namespace {

std::wstring BrowserPath() {
  wchar_t path[MAX_PATH] = L"";
  DWORD length = MAX_PATH;
  const HRESULT hr = AssocQueryStringW(ASSOCF_NONE, ASSOCSTR_EXECUTABLE, L"http", L"open", path, &length);
  return hr == S_OK ? path : L"";
}

bool Start(const wchar_t* file, const wchar_t* parameters) {
  SHELLEXECUTEINFOW start = {};
  start.cbSize = sizeof(start);
  start.fMask = SEE_MASK_FLAG_NO_UI | SEE_MASK_NOASYNC;
  start.lpFile = file;
  start.lpParameters = parameters;
  start.nShow = SW_SHOWNORMAL;
  return ShellExecuteExW(&start) != FALSE;
}

}  // namespace

// The file's name is one that the system allows, and has no quotes.
bool OpenInBrowser(const std::wstring& url) {
  const std::wstring browser = BrowserPath();
  return !browser.empty() && Start(browser.c_str(), (L"\"" + url + L"\"").c_str());
}
