// The registered control in a script host of the system, which knows nothing but its name.

#include <gtest/gtest.h>

#include <algorithm>

#include "common/Handles.h"
#include "host/ControlFixture.h"
#include "host/RegistryKeys.h"

namespace {

// An open file that programs started from here may write.
FileHandle CreateInheritableFile(const std::string& path) {
  SECURITY_ATTRIBUTES inherited = {sizeof(inherited), nullptr, TRUE};
  return FileHandle(CreateFileA(path.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, &inherited, CREATE_ALWAYS,
                                FILE_ATTRIBUTE_NORMAL, nullptr));
}

class ScriptHostTest : public ControlTest {
 protected:
  ScriptHostTest() {
    control.Reset();
    EXPECT_HRESULT(S_OK, module.RegisterServer());
  }

  // Runs a JScript text; what it writes, line by line. Its argument is the manifest's URL.
  Lines Run(const std::string& script, const std::string& manifest) {
    const std::string path = scripts.File("page.js");
    WriteWholeFile(
        path,
        "function show(value) { WScript.Echo(String(value)); }\r\n"
        "function attempt(call) {\r\n"
        "  try { call(); show('done'); }\r\n"
        "  catch (error) { show('failed ' + (error.number >>> 0).toString(16)); }\r\n"
        "}\r\n"
        "var manifest = WScript.Arguments(0);\r\n"
        "var control = new ActiveXObject('Norvik.AXNorvik');\r\n" +
            script);
    Start("cscript.exe //nologo \"" + path + "\" " + manifest);
    return LinesOf(ReadWholeFile(OutputPath()));
  }

 private:
  std::string OutputPath() const { return scripts.File("output.txt"); }

  void Start(std::string commandLine) {
    const FileHandle output = CreateInheritableFile(OutputPath());
    STARTUPINFOA start = {};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = start.hStdError = output.Get();
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &process))
        << GetLastError();
    const DWORD oneMinute = 60000;
    if (WaitForSingleObject(process.hProcess, oneMinute) != WAIT_OBJECT_0)
      TerminateProcess(process.hProcess, WAIT_TIMEOUT);
    DWORD code = STILL_ACTIVE;
    GetExitCodeProcess(process.hProcess, &code);
    EXPECT_EQ(0u, code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
  }

  static Lines LinesOf(const std::string& text) {
    Lines lines;
    for (std::size_t start = 0; start < text.size();) {
      const std::size_t end = std::min(text.find('\n', start), text.size());
      lines.push_back(text.substr(start, end - start));
      if (!lines.back().empty() && lines.back().back() == '\r')
        lines.back().pop_back();
      start = end + 1;
    }
    return lines;
  }

  TemporaryFolder scripts;
  ModuleEntriesAside aside;
};

TEST_F(ScriptHostTest, AScriptCarriesOutAManifest) {
  const std::string manifest = Narrow(Serve(Copy("a.txt") + Copy("b.txt")));
  EXPECT_EQ(Lines{"done"}, Run("attempt(function () { control.Execute(manifest); });\r\n", manifest));
  EXPECT_EQ("a.txt b.txt", NamesIn(destination.Path()));
  EXPECT_EQ("a.txt", ReadWholeFile(destination.File("a.txt")));
  EXPECT_EQ("b.txt", ReadWholeFile(destination.File("b.txt")));
  EXPECT_EQ((Lines{"GET /control-run.xml", "GET /a.txt", "GET /b.txt"}), server.Asked());
  EXPECT_EQ(Lines{}, Messages(kRunLog));
}

TEST_F(ScriptHostTest, AFailedCommandIsInTheLogOnly) {
  const std::string manifest = Narrow(Serve(CopyRefused() + Copy("b.txt")));
  EXPECT_EQ(Lines{"done"}, Run("attempt(function () { control.Execute(manifest); });\r\n", manifest));
  EXPECT_EQ("b.txt", NamesIn(destination.Path()));
  EXPECT_EQ("ERROR At least one command failed during the 'Execute' or 'ExecuteNavigate' method.", LastMessage(kRunLog));
}

TEST_F(ScriptHostTest, AScriptCatchesTheCodeOfAFailure) {
  EXPECT_EQ((Lines{"failed 80070005", "failed 80070057", "done"}),
            Run("attempt(function () { control.Execute('http://127.0.0.1/control-run.xml'); });\r\n"
                "attempt(function () { control.Execute(''); });\r\n"
                "attempt(function () { control.Execute(manifest); });\r\n",
                Narrow(Serve(Copy("a.txt")))));
  EXPECT_EQ("a.txt", NamesIn(destination.Path()));
}

TEST_F(ScriptHostTest, AScriptReadsAndSetsTheProperties) {
  EXPECT_EQ(
      (Lines{"string:", "string:any text", "boolean", "false", "true", "false"}),
      Run("show(typeof control.ManifestURL + ':' + control.ManifestURL);\r\n"
          "control.ManifestURL = 'any text';\r\n"
          "show(typeof control.ManifestURL + ':' + control.ManifestURL);\r\n"
          "show(typeof control.LogDebug);\r\n"
          "control.LogDebug = false;\r\n"
          "show(control.LogDebug);\r\n"
          "control.SetEnableLogDebug(true);\r\n"
          "show(control.LogDebug);\r\n"
          "control.SetEnableLogDebug(0);\r\n"
          "show(control.LogDebug);\r\n",
          Narrow(Serve(""))));
  EXPECT_EQ(Lines{}, server.Asked());
}

TEST_F(ScriptHostTest, AMemberThatIsNotThereIsAnErrorOfTheScript) {
  EXPECT_EQ((Lines{"undefined", "failed 800a01b6"}),
            Run("show(typeof control.Run);\r\nattempt(function () { control.Run(manifest); });\r\n", Narrow(Serve(""))));
}

}  // namespace
