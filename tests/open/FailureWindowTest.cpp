#include "open/FailureWindow.h"

#include <commctrl.h>
#include <gtest/gtest.h>
#include <shellapi.h>

#include "support/ImportPatch.h"

namespace {

const FailureReport kReport = {"It was refused.", {"To be carried out: a", "Nobody permits \xC3\xA4."}};

// A dialog in which a button is pressed, what it shows, and the file that is opened behind it.
class FailureWindowTest : public testing::Test {
 protected:
  void Show(const std::string& log) {
    PATCH_IMPORT(dialogs, TaskDialogIndirect, [this](auto, const TASKDIALOGCONFIG* dialog, int* button, auto...) -> HRESULT {
      ++shown;
      title = dialog->pszWindowTitle;
      headline = dialog->pszMainInstruction;
      content = dialog->pszContent;
      canBeEscaped = (dialog->dwFlags & TDF_ALLOW_DIALOG_CANCELLATION) != 0;
      commonButtons = dialog->dwCommonButtons;
      buttons.clear();
      for (UINT i = 0; i < dialog->cButtons; ++i)
        buttons.emplace_back(dialog->pButtons[i].pszButtonText);
      if (SUCCEEDED(result))
        *button = isLogPressed ? dialog->pButtons[0].nButtonID : IDCLOSE;
      return result;
    });
    PATCH_IMPORT(
        files, ShellExecuteW,
        [this](auto, HWND, const wchar_t* verb, const wchar_t* file, const wchar_t* arguments, auto...) -> HINSTANCE {
          EXPECT_EQ(nullptr, arguments);
          opened += std::wstring(verb) + L" " + file;
          return nullptr;
        });
    ShowFailure(kReport, log);
  }

  HRESULT result = S_OK;
  bool isLogPressed = false;

  int shown = 0;
  std::wstring title;
  std::wstring headline;
  std::wstring content;
  bool canBeEscaped = false;
  TASKDIALOG_COMMON_BUTTON_FLAGS commonButtons = 0;
  std::vector<std::wstring> buttons;
  std::wstring opened;
};

TEST_F(FailureWindowTest, ShowsTheReportUntilItIsClosed) {
  Show("");
  EXPECT_EQ(1, shown);
  EXPECT_EQ(L"Norvik", title);
  EXPECT_EQ(L"It was refused.", headline);
  EXPECT_EQ(L"To be carried out: a\n\nNobody permits \xE4.", content);
  EXPECT_TRUE(canBeEscaped);
  EXPECT_EQ(TDCBF_CLOSE_BUTTON, commonButtons);
  EXPECT_EQ(std::vector<std::wstring>(), buttons);
  EXPECT_EQ(L"", opened);
}

TEST_F(FailureWindowTest, OpensTheLogWhenItsButtonIsPressed) {
  Show("C:\\x\\\xC3\xA4.log");
  EXPECT_EQ(std::vector<std::wstring>{L"Show log"}, buttons);
  EXPECT_EQ(L"", opened);
  isLogPressed = true;
  Show("C:\\x\\\xC3\xA4.log");
  EXPECT_EQ(L"open C:\\x\\\xE4.log", opened);
}

TEST_F(FailureWindowTest, WithoutAWindowNothingIsOpened) {
  result = E_FAIL;
  Show("C:\\x\\a.log");
  EXPECT_EQ(1, shown);
  EXPECT_EQ(L"", opened);
}

}  // namespace
