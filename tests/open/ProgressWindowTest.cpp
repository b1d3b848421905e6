#include "open/ProgressWindow.h"

#include <gtest/gtest.h>
#include <shlobj.h>

#include <functional>
#include <thread>

#include "support/ImportPatch.h"
#include "support/Stopwatch.h"

namespace {

// The system's progress dialog, of which only what the program calls does something.
class FakeDialog final : public IProgressDialog {
 public:
  HRESULT WINAPI QueryInterface(REFIID, void** object) override {
    *object = nullptr;
    return E_NOINTERFACE;
  }
  ULONG WINAPI AddRef() override { return ++references; }
  ULONG WINAPI Release() override { return --references; }
  HRESULT WINAPI StartProgressDialog(HWND, IUnknown*, DWORD wantedFlags, const void*) noexcept override {
    flags = wantedFlags;
    return startResult;
  }
  HRESULT WINAPI StopProgressDialog() noexcept override {
    ++stops;
    return S_OK;
  }
  HRESULT WINAPI SetTitle(const wchar_t* text) noexcept override {
    title = text;
    return S_OK;
  }
  HRESULT WINAPI SetLine(DWORD number, const wchar_t* text, BOOL, const void*) noexcept override {
    lines.push_back(std::to_wstring(number) + L": " + text);
    if (onLine)
      onLine();
    return S_OK;
  }
  HRESULT WINAPI SetAnimation(HINSTANCE, UINT) noexcept override { return E_NOTIMPL; }
  BOOL WINAPI HasUserCancelled() noexcept override { return FALSE; }
  HRESULT WINAPI SetProgress(DWORD, DWORD) noexcept override { return E_NOTIMPL; }
  HRESULT WINAPI SetProgress64(ULONGLONG, ULONGLONG) noexcept override { return E_NOTIMPL; }
  HRESULT WINAPI SetCancelMsg(const wchar_t*, const void*) noexcept override { return E_NOTIMPL; }
  HRESULT WINAPI Timer(DWORD, const void*) noexcept override { return E_NOTIMPL; }

  HRESULT startResult = S_OK;
  std::function<void()> onLine;

  ULONG references = 0;
  DWORD flags = 0;
  int stops = 0;
  std::wstring title;
  std::vector<std::wstring> lines;
};

// What stands for the thread that is waited for ends when a test says so.
class ProgressWindowTest : public testing::Test {
 protected:
  ~ProgressWindowTest() override { CloseHandle(thread); }

  void Wait() {
    PATCH_IMPORT(objects, CoCreateInstance, [this](auto, auto, auto, auto, auto, void** object) -> HRESULT {
      ++made;
      if (SUCCEEDED(createResult)) {
        dialog.AddRef();
        *object = static_cast<IProgressDialog*>(&dialog);
      }
      return createResult;
    });
    WaitWithProgress(thread, progress);
    EXPECT_EQ(0u, dialog.references);
  }

  void EndThread() { SetEvent(thread); }
  std::thread EndThreadLater(DWORD milliseconds) {
    return std::thread([this, milliseconds] {
      Sleep(milliseconds);
      EndThread();
    });
  }

  const HANDLE thread = CreateEventW(nullptr, TRUE, FALSE, nullptr);
  HRESULT createResult = S_OK;
  FakeDialog dialog;
  Progress progress;
  int made = 0;
};

TEST_F(ProgressWindowTest, AShortRunShowsNothing) {
  EndThread();
  Wait();
  EXPECT_EQ(0, made);
}

TEST_F(ProgressWindowTest, ALongOneShowsWhatItIsAt) {
  CommandOutcome command;
  command.number = 2;
  command.destination = "C:\\x\\a.txt";
  command.source = "https://host/b.txt";
  command.bytes = 1234567;
  dialog.onLine = [&] {
    if (dialog.lines.size() == 1)
      progress.CommandBegins(command);
    if (dialog.lines.size() == 3) {
      command.destination.reset();
      command.bytes = 999;
      progress.BytesArrived(command);
    }
    if (dialog.lines.size() == 5)
      EndThread();
  };
  EXPECT_LE(1.0, SecondsOf([this] { Wait(); })) << "it did not wait before it showed anything";
  EXPECT_EQ(L"Norvik", dialog.title);
  EXPECT_EQ(DWORD{PROGDLG_MARQUEEPROGRESS} | 0x40, dialog.flags) << "0x40: without a button that cancels";
  EXPECT_EQ((std::vector<std::wstring>{L"1: Fetching the list of files", L"1: Step 2: a.txt", L"2: 1,234,567 bytes",
                                       L"1: Step 2: b.txt", L"2: 999 bytes"}),
            dialog.lines);
  EXPECT_EQ(1, dialog.stops);
}

// Windows, the dialog's among them, are dead without it.
TEST_F(ProgressWindowTest, MessagesAreServedMeanwhile) {
  std::vector<std::string> served;
  PATCH_IMPORT(translations, TranslateMessage, [&served](auto, const MSG* message) -> BOOL {
    served.push_back("translated " + std::to_string(message->message - WM_APP));
    return FALSE;
  });
  PATCH_IMPORT(dispatches, DispatchMessageW, [this, &served](auto, const MSG* message) -> LRESULT {
    served.push_back("dispatched " + std::to_string(message->message - WM_APP));
    if (message->message == WM_APP + 1)
      EndThread();
    return 0;
  });
  PostThreadMessageW(GetCurrentThreadId(), WM_APP, 0, 0);
  PostThreadMessageW(GetCurrentThreadId(), WM_APP + 1, 0, 0);
  Wait();
  EXPECT_EQ((std::vector<std::string>{"translated 0", "dispatched 0", "translated 1", "dispatched 1"}), served);
}

TEST_F(ProgressWindowTest, WithoutAWindowItIsWaitedForAllTheSame) {
  createResult = E_FAIL;
  std::thread later = EndThreadLater(1300);
  Wait();
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, 0));
  later.join();
  EXPECT_EQ(1, made);

  ResetEvent(thread);
  createResult = S_OK;
  dialog.startResult = E_FAIL;
  later = EndThreadLater(1300);
  Wait();
  EXPECT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread, 0));
  later.join();
  EXPECT_EQ(std::vector<std::wstring>(), dialog.lines);
  EXPECT_EQ(0, dialog.stops);
}

}  // namespace
