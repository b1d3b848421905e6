// Names that systems take for devices, in every folder and with any extension. Which ones these are differs between systems
// and versions; what is asked here is the system that the tests run on.

#include <gtest/gtest.h>

#include "names/NamesFixture.h"

namespace {

bool IsDevicePath(const std::string& path) {
  char full[MAX_PATH] = "";
  GetFullPathNameA(path.c_str(), MAX_PATH, full, nullptr);
  return std::string(full).rfind("\\\\.\\", 0) == 0;
}

// Which code a device gives is the system's to say.
const std::size_t kCodeLength = std::string("ERROR 0x80070000").size();

class DeviceNamesTest : public NamesTest, public testing::WithParamInterface<const char*> {};

// A device would take the bytes and keep none: a success would be a lie.
TEST_P(DeviceNamesTest, AreWrittenAsFilesOrRefused) {
  const std::string name = GetParam();
  const HRESULT hr = RunCommand("{server}/" + name, "<Path>{folder}</Path>");
  if (IsDevicePath(folder + "\\" + name)) {
    EXPECT_HRESULT(S_FALSE, hr);
    EXPECT_EQ(Lines{}, Changes());
    const Lines told = Told();
    ASSERT_EQ(3u, told.size());
    EXPECT_EQ(" Creating '{folder}\\" + name + "' failed.", told[0].substr(kCodeLength));
  } else {
    EXPECT_HRESULT(S_OK, hr);
    EXPECT_EQ(Lines{"{folder}\\" + name}, Changes());
    EXPECT_EQ(kServed, ReadWholeFile(folder + "\\" + name));
  }
  ExpectLogInOrder();
}

// A console or a port may have the reader wait for ever.
TEST_P(DeviceNamesTest, AreNoSources) {
  const std::string path = documents + "\\" + GetParam();
  EXPECT_HRESULT(S_FALSE, RunCommand(path, "<Path>{folder}</Path>"));
  EXPECT_EQ(Lines{}, Changes());
  const Lines told = Told();
  ASSERT_EQ(4u, told.size());
  EXPECT_EQ(std::string(" Opening '{documents}\\") + GetParam() + "' failed.", told[1].substr(kCodeLength));
  ExpectLogInOrder();
}

// No port that a machine is likely to have: it would be opened.
INSTANTIATE_TEST_SUITE_P(Names, DeviceNamesTest,
                         testing::Values("NUL", "nul.txt", "nul .txt", "CON", "CON.txt", "CONIN$", "CONOUT$", "PRN.txt",
                                         "aux", "COM9", "COM9.txt", "LPT9.txt"));

TEST_F(NamesTest, TheNullDeviceIsADeviceHere) {
  EXPECT_TRUE(IsDevicePath(folder + "\\nul.txt")) << "nothing shows here that a device is refused";
}

}  // namespace
