#include "open/ProgressWindow.h"

#include <shlobj.h>
#include <wrl/client.h>

#include "advice/Words.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr DWORD kPatienceMilliseconds = 1000;
constexpr DWORD kStepMilliseconds = 200;
constexpr DWORD kNoCancelButton = 0x40;  // PROGDLG_NOCANCEL: a run ends by itself, and is not left in the middle
constexpr wchar_t kTitle[] = L"Norvik";

std::wstring Grouped(std::uint64_t number) {
  std::wstring digits = std::to_wstring(number);
  for (int place = static_cast<int>(digits.size()) - 3; place > 0; place -= 3)
    digits.insert(static_cast<std::size_t>(place), 1, L',');
  return digits;
}

class Window {
 public:
  Window() {
    if (FAILED(CoCreateInstance(CLSID_ProgressDialog, nullptr, CLSCTX_INPROC_SERVER, IID_IProgressDialog,
                                reinterpret_cast<void**>(dialog.GetAddressOf()))))
      return;
    dialog->SetTitle(kTitle);
    if (FAILED(dialog->StartProgressDialog(nullptr, nullptr, PROGDLG_MARQUEEPROGRESS | kNoCancelButton, nullptr)))
      dialog.Reset();
  }
  ~Window() {
    if (dialog)
      dialog->StopProgressDialog();
  }
  Window(const Window&) = delete;
  Window& operator=(const Window&) = delete;

  void Show(const Progress::State& state) const {
    if (!dialog)
      return;
    if (state.number == 0) {
      SetLine(1, L"Fetching the list of files");
      return;
    }
    SetLine(1, L"Step " + std::to_wstring(state.number) + L": " + WideFromUtf8(state.file));
    SetLine(2, Grouped(state.bytes) + L" bytes");
  }

 private:
  void SetLine(DWORD number, const std::wstring& text) const { dialog->SetLine(number, text.c_str(), TRUE, nullptr); }

  ComPtr<IProgressDialog> dialog;
};

// Lets what windows need happen, until the time is over or the thread has ended; true when it has.
bool WaitAWhile(HANDLE thread, DWORD milliseconds) {
  const ULONGLONG end = GetTickCount64() + milliseconds;
  for (;;) {
    const ULONGLONG now = GetTickCount64();
    const DWORD left = now < end ? static_cast<DWORD>(end - now) : 0;
    const DWORD reason = MsgWaitForMultipleObjects(1, &thread, FALSE, left, QS_ALLINPUT);
    if (reason != WAIT_OBJECT_0 + 1)
      return reason != WAIT_TIMEOUT;
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
      TranslateMessage(&message);
      DispatchMessageW(&message);
    }
  }
}

}  // namespace

Progress::State Progress::Now() const {
  const std::lock_guard<std::mutex> lock(mutex);
  return state;
}

void Progress::Take(const CommandOutcome& command) {
  const std::string& name = command.destination ? *command.destination : command.source;
  const std::lock_guard<std::mutex> lock(mutex);
  state.number = command.number;
  state.file = name.substr(name.find_last_of("\\/") + 1);
  state.bytes = command.bytes;
}

void WaitWithProgress(HANDLE thread, const Progress& progress) {
  if (WaitAWhile(thread, kPatienceMilliseconds))
    return;
  const Window window;
  do {
    window.Show(progress.Now());
  } while (!WaitAWhile(thread, kStepMilliseconds));
}
