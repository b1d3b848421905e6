#include "open/FailureWindow.h"

#include <commctrl.h>
#include <shellapi.h>

#include "advice/Words.h"

namespace {

constexpr int kShowLog = 100;

std::wstring Paragraphs(const FailureReport& report) {
  std::string text;
  for (const std::string& detail : report.details)
    text += (text.empty() ? "" : "\n\n") + detail;
  return WideFromUtf8(text);
}

// The system's own dialog: screen readers read it, and it is as sharp as the screen.
int Ask(const std::wstring& headline, const std::wstring& content, bool hasLog) {
  const TASKDIALOG_BUTTON showLog = {kShowLog, L"Show log"};
  TASKDIALOGCONFIG dialog = {};
  dialog.cbSize = sizeof(dialog);
  dialog.dwFlags = TDF_ALLOW_DIALOG_CANCELLATION | TDF_SIZE_TO_CONTENT;
  dialog.dwCommonButtons = TDCBF_CLOSE_BUTTON;
  dialog.pszWindowTitle = L"Norvik";
  dialog.pszMainIcon = TD_WARNING_ICON;
  dialog.pszMainInstruction = headline.c_str();
  dialog.pszContent = content.c_str();
  dialog.cButtons = hasLog ? 1 : 0;
  dialog.pButtons = &showLog;
  dialog.nDefaultButton = IDCLOSE;
  int pressed = 0;
  return SUCCEEDED(TaskDialogIndirect(&dialog, &pressed, nullptr, nullptr)) ? pressed : IDCLOSE;
}

}  // namespace

void ShowFailure(const FailureReport& report, const std::string& log) {
  if (Ask(WideFromUtf8(report.headline), Paragraphs(report), !log.empty()) == kShowLog)
    ShellExecuteW(nullptr, L"open", WideFromUtf8(log).c_str(), nullptr, nullptr, SW_SHOWNORMAL);
}
