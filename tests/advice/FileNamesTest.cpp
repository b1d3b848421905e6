#include "advice/FileNames.h"

#include <gtest/gtest.h>

#include "advice/Words.h"

namespace {

TEST(FileNamesTest, ADevicesNameIsOneWithEveryExtension) {
  for (const wchar_t* const name : {L"nul", L"NUL", L"Con.txt", L"aux.tar.gz", L"COM1", L"lpt9.x", L"com\u00B9", L"prn .txt",
                                    L"CONIN$", L"conout$", L"nul:x"})
    EXPECT_TRUE(IsDeviceName(name)) << Utf8(name);
  for (const wchar_t* const name :
       {L"", L".", L".nul", L"null", L"nul_", L"COM", L"COM0", L"COM10", L"lpt", L"a.nul", L"icon"})
    EXPECT_FALSE(IsDeviceName(name)) << Utf8(name);
}

TEST(FileNamesTest, ANameMayEndInADotOrABlank) {
  for (const wchar_t* const name : {L"a.", L"a.exe.", L"a ", L"a. ", L"..."})
    EXPECT_TRUE(EndsInDot(name)) << Utf8(name);
  for (const wchar_t* const name : {L"", L".", L"..", L"a", L".a", L"a.b", L" a"})
    EXPECT_FALSE(EndsInDot(name)) << Utf8(name);
}

}  // namespace
