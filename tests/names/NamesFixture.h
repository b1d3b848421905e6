#pragma once

#include <map>
#include <string>

#include "host/ControlFixture.h"

// What becomes of one command. Texts are shown with {folder} for the permitted folder, {documents} for the one with
// permitted sources, {temp}, {personal} and {cache} for the folders of these kinds, and {server} for the server's URL
// without its last slash.
struct NameRow {
  const char* name;
  std::string source;
  std::string folder = "<Path>{folder}</Path>";
  std::string failure = "";  // the code and first line of the message about the failure; empty when the file is written
  Lines came = {};           // all that is new in the surroundings
};

void PrintTo(const NameRow& row, std::ostream* stream);

// A control that may take files with the extension txt from a web server and a folder, and put them into one folder, into
// Temp\permitted and into Personal\permitted. Whatever else a run leaves behind is seen: the whole temporary folder, in
// which the module, the sources, the destination and the current folder lie side by side, the personal folder, the folder of
// the logs and the root of the drive are compared before and after.
class NamesTest : public ControlTest {
 protected:
  NamesTest();
  ~NamesTest() override;
  void TearDown() override;

  HRESULT RunCommand(const std::string& source, const std::string& folder, const std::string& fileName = "permitted.txt");

  // The row's command comes out as the row says, without and with debug logging, and the log of both is in order. A file
  // that is written, the last of what comes, holds what the server sent.
  void ExpectOutcome(const NameRow& row);

  // The first lines of the run's messages, and what they are after a command that failed so; an empty text is no failure.
  Lines Told() const;
  Lines Told(const std::string& failure) const;

  // What came, went or changed in the surroundings since the test began or since it was last asked.
  Lines Changes();

  // There is a log, every line of it that begins with a level is an entry, and none of these was written by a manifest or a
  // URL. Without debug logging there is none of a run without a failure.
  static void ExpectLogInOrder(const std::string& log = kRunLog);
  static void ExpectNoLog();

  std::string Filled(std::string text) const;
  std::string Shown(std::string text) const;

  // The folders of these kinds, without a separator at the end.
  static std::string Personal();
  static std::string Temporary();

  // Removes what a run may have brought.
  void Clear();

  const TemporaryFolder area;
  const std::string folder;
  const std::string documents;

 private:
  using Listing = std::map<std::string, std::string>;
  static void List(const std::wstring& folder, bool isDeep, Listing& listing);
  static Listing ListSurroundings();

  std::string currentBefore;
  Listing atStart;
  Listing before;
};

// What the server sends for every path without an answer of its own.
constexpr char kServed[] = "not found";

constexpr char kCommandFailed[] = "ERROR At least one command failed during the 'Execute' or 'ExecuteNavigate' method.";

// What would be an entry of its own if it stood at the beginning of a line.
extern const char kForgedEntry[];

// Text in UTF-8, as the manifests have it, and what the system makes of it.
std::wstring WideOf(const std::string& text);
std::string Narrow(const std::wstring& text);
