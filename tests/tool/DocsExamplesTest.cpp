// The examples of docs/tool.md: its files are made as they are shown, and its commands print what is shown.

#include <sstream>

#include "advice/Words.h"
#include "support/Pages.h"
#include "support/RegistryAside.h"
#include "tool/ToolFixture.h"

namespace {

constexpr char kFolder[] = "C:\\Example";

class DocsExamplesTest : public testing::Test {
 protected:
  DocsExamplesTest() {
    // An earlier run that was killed may have left it.
    EXPECT_TRUE(CreateDirectoryA(kFolder, nullptr) || GetLastError() == ERROR_ALREADY_EXISTS);
    for (const char* const file : {"norvik.exe", "norvik.dll"})
      CopyBuilt(file, kFolder);
    const std::vector<std::string> files = Blocks(page, "xml");
    const std::vector<std::string> names = {"permit.xml", "mended.xml", "manifest.xml"};
    EXPECT_EQ(names.size(), files.size());
    for (std::size_t i = 0; i < files.size(); ++i)
      WriteWholeFile(File(names[i]), files[i]);
  }
  ~DocsExamplesTest() override {
    for (const char* const name : {"norvik.exe", "norvik.dll", "permit.xml", "mended.xml", "manifest.xml"})
      DeleteFileA(File(name).c_str());
    RemoveTree(File("kit"));
    RemoveDirectoryA(kFolder);
  }

  static std::string File(const std::string& name) { return std::string(kFolder) + "\\" + name; }

  const LinkEntriesAside aside = {};
  const std::string page = ReadPage("docs/tool.md");
};

TEST_F(DocsExamplesTest, PrintWhatIsShown) {
  const std::vector<std::string> examples = Blocks(page, "console");
  EXPECT_EQ(6u, examples.size());
  for (const std::string& example : examples) {
    const std::size_t end = example.find('\n');
    std::istringstream words(example.substr(0, end));
    std::vector<std::wstring> arguments;
    for (std::string word; words >> word;)
      arguments.push_back(WideFromUtf8(word));
    ASSERT_LE(3u, arguments.size()) << example;
    EXPECT_EQ(L">", arguments[0]);
    EXPECT_EQ(L"norvik", arguments[1]);
    arguments.erase(arguments.begin(), arguments.begin() + 2);
    const ProgramResult result = RunProgram(File("norvik.exe"), arguments, kFolder);
    EXPECT_EQ(example.substr(end + 1), result.output + result.errors) << example.substr(0, end);
  }
}

}  // namespace
