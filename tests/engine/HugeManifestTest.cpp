// Manifests of any number of commands cost what their commands cost, and no stack.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "common/Handles.h"
#include "engine/EngineFixture.h"
#include "engine/Execute.h"
#include "engine/Manifest.h"
#include "support/HResult.h"
#include "support/LogCapture.h"
#include "support/Stopwatch.h"
#include "support/Turns.h"

namespace {

// As small as a host may make the stack of a thread of its own.
constexpr SIZE_T kStackBytes = 128 * 1024;
constexpr DWORD kPatienceMilliseconds = 120000;

DWORD WINAPI CallFunction(void* function) {
  const HRESULT initialized = CoInitialize(nullptr);
  (*static_cast<std::function<void()>*>(function))();
  if (SUCCEEDED(initialized))
    CoUninitialize();
  return 0;
}

void RunInSmallThread(std::function<void()> function) {
  const FileHandle thread(
      CreateThread(nullptr, kStackBytes, CallFunction, &function, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
  ASSERT_EQ(WAIT_OBJECT_0, WaitForSingleObject(thread.Get(), kPatienceMilliseconds));
}

class HugeManifestTest : public testing::Test {
 protected:
  // A manifest with `count` commands that find their file in place.
  std::wstring Write(int count) const {
    fixture.WriteSource("a.txt", "new");
    fixture.WriteDestination("a.txt", "old");
    const std::string command =
        CopyElement("http://server/d/a.txt", fixture.PathElement() + "<IfFileExists><Skip/></IfFileExists>");
    std::string commands;
    for (int i = 0; i < count; ++i)
      commands += command;
    return Wide(fixture.WriteSource("huge" + std::to_string(count) + ".xml", ManifestText(commands)));
  }

  // Reads the manifest and gives the number of its commands.
  int Count(const std::wstring& url) const {
    CManifest manifest(0, url.c_str(), nullptr);
    EXPECT_HRESULT(S_OK, manifest.Read(fixture.permissions.get()));
    int count = 0;
    for (CListIterator commands = manifest.CommandIterator(); commands.Next();)
      ++count;
    return count;
  }

  // The cost of one command of a manifest of `count` commands: the best of `times` readings and deletions.
  double CostPerCommand(int count, int times) const {
    const std::wstring url = Write(count);
    double best = 1e9;
    for (int i = 0; i < times; ++i)
      best = std::min(best, SecondsOf([&] { EXPECT_EQ(count, Count(url)); }));
    return best / count;
  }

  const LogCapture log{false};
  const CopyFixture fixture;
};

// The least that a call takes of a stack, for each command, is more than this one has.
TEST_F(HugeManifestTest, IsReadAndDeletedWithASmallStack) {
  constexpr int kCommands = kStackBytes / (2 * sizeof(void*)) + 1;
  const std::wstring url = Write(kCommands);
  int count = 0;
  RunInSmallThread([&] { count = Count(url); });
  EXPECT_EQ(kCommands, count);
}

TEST_F(HugeManifestTest, IsRunWithASmallStack) {
  const std::wstring url = Write(5000);
  HRESULT hr = E_UNEXPECTED;
  RunInSmallThread([&] {
    CExecuter executer(0, nullptr);
    hr = executer.Run(url.c_str(), nullptr);
  });
  EXPECT_HRESULT(S_OK, hr);
  EXPECT_EQ("old", ReadWholeFile(fixture.Destination("a.txt")));
}

TEST_F(HugeManifestTest, CostsAsMuchForEachCommandAsASmallOne) {
  const int few = WholeInOneWidth(2000, 500);
  const double small = CostPerCommand(few, 5);
  const double large = CostPerCommand(10 * few, 2);
  EXPECT_GT(3.0, large / small) << "a command costs " << small * 1e6 << " and " << large * 1e6 << " microseconds";
}

}  // namespace
