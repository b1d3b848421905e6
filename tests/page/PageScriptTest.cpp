// share/page/norvik.js in the script host of Windows: the cases of every page, and the registered control.

#include <gtest/gtest.h>

#include <sstream>

#include "host/ControlFixture.h"
#include "host/RegistryKeys.h"
#include "support/Pages.h"
#include "support/Program.h"

namespace {

class PageScriptTest : public ControlTest {
 protected:
  PageScriptTest() { control.Reset(); }

  // What a script says that can load the page's script.
  Lines Run(const std::string& script, const std::string& argument = "") const {
    const std::string path = scripts.File("page.js");
    WriteWholeFile(path, "function load(window, navigator, ActiveXObject) {" + ReadPage("share/page/norvik.js") +
                             "\nreturn Norvik;}\nfunction say(line) { WScript.Echo(line); }\n" + script);
    const ProgramResult result =
        RunProgram("C:\\windows\\system32\\cscript.exe", {L"//nologo", Wide(path), Wide(argument)}, scripts.Path());
    EXPECT_EQ(0u, result.code) << result.errors;
    Lines lines;
    std::istringstream stream(result.output);
    for (std::string line; std::getline(stream, line);)
      lines.push_back(line.substr(0, line.find('\r')));
    return lines;
  }

  Lines Start(const std::string& manifest) const {
    return Run(
        "load({ location: {} }, { userAgent: '' }, ActiveXObject).start(WScript.Arguments(0), {\n"
        "  done: function () { say('done'); },\n"
        "  failed: function (code) { say('failed ' + code); },\n"
        "  handed: function () { say('handed'); },\n"
        "  unavailable: function (reason) { say('unavailable ' + reason); }\n"
        "});\n",
        manifest);
  }

  const TemporaryFolder scripts;
  const ModuleEntriesAside aside;
};

TEST_F(PageScriptTest, EveryCaseHoldsInTheScriptHost) {
  const Lines lines = Run(ReadPage("tests/page/cases.js"));
  EXPECT_LE(15u, lines.size());
  for (const std::string& line : lines)
    EXPECT_EQ(0u, line.find("passed ")) << line;
}

TEST_F(PageScriptTest, TheControlCarriesOutAManifest) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(Lines{"done"}, Start(Narrow(Serve(Copy("a.txt")))));
  EXPECT_EQ("a.txt", ReadWholeFile(destination.File("a.txt")));
}

TEST_F(PageScriptTest, TheControlTellsTheCodeOfAFailure) {
  EXPECT_HRESULT(S_OK, module.RegisterServer());
  EXPECT_EQ(Lines{"failed 0x80070005"}, Start("http://127.0.0.1/not-permitted.xml"));
  EXPECT_EQ(Lines{"failed 0x80070057"}, Start(""));
}

TEST_F(PageScriptTest, WithoutARegistrationThereIsNoControl) {
  EXPECT_EQ(Lines{"unavailable system"}, Start(Narrow(Serve(Copy("a.txt")))));
  EXPECT_EQ("", NamesIn(destination.Path()));
  EXPECT_EQ(Lines{}, server.Asked());
}

}  // namespace
