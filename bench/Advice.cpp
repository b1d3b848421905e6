#include "common/Windows.h"

#include <algorithm>

#include "Host.h"
#include "Scenarios.h"
#include "advice/Explanation.h"
#include "advice/PermitFindings.h"
#include "advice/Words.h"
#include "support/Files.h"
#include "support/Program.h"
#include "support/Stopwatch.h"
#include "xml/XMLUtilities.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr int kTurns = 3;

template <class Work>
void ReportFastest(const std::string& name, Work work) {
  double best = 1e9;
  for (int turn = 0; turn < kTurns; ++turn)
    best = std::min(best, SecondsOf(work));
  Report(name, best);
}

// A document of so many bytes, nearly all of them in one text.
std::string WriteTextOf(const TemporaryFolder& folder, std::size_t bytes) {
  const std::string path = folder.File("text.xml");
  WriteWholeFile(path, "<text>" + std::string(bytes, 'x') + "</text>");
  return path;
}

void LoadWithParser(const std::string& path) {
  ComPtr<IXMLDOMDocument2> document;
  Require(CreateXMLDocument(&document) == S_OK && LoadXMLDocument(path.c_str(), document.Get(), TRUE) == S_OK,
          "the parser did not load " + path);
}

constexpr wchar_t kRefused[] = L"https://apps.example.com/other/a.txt";

void ExplainAsLibrary(const std::wstring& permitFile) {
  const PermitDocument permit(permitFile);
  const Answer answer = Explain(permit, {QuestionKind::Source, kRefused, FolderKind::Path});
  Require(answer.nearest.has_value(), "no entry is nearest");
}

// From the start of its process to the end of it.
void ExplainAsProgram(const Host& host, const std::wstring& permitFile) {
  const ProgramResult result = RunProgram(
      host.Folder().File("norvik.exe"), {L"explain", L"--permit", permitFile, L"--source", kRefused}, host.Folder().Path());
  Require(result.code == 1 && result.output.find("line ") != std::string::npos, "norvik.exe did not explain the refusal");
}

void MeasureAdviceOn(int entries) {
  Host host;
  AddEntries(host.Permit(), entries);
  host.Permit().Write();
  host.Control()->SetEnableLogDebug(VARIANT_FALSE);
  const std::wstring path = WideFromAnsi(host.Permit().Path().c_str());
  const std::string number = std::to_string(entries);
  ReportFastest(number + " control", [&] { Require(host.MakeControl() != nullptr, "no control was made"); });
  ReportFastest(number + " explain", [&] { ExplainAsLibrary(path); });
  CopyBuilt("norvik.exe", host.Folder().Path());
  ReportFastest(number + " program", [&] { ExplainAsProgram(host, path); });
  const std::string text = WriteTextOf(host.Folder(), ReadWholeFile(host.Permit().Path()).size());
  ReportFastest(number + " reading", [&] { LoadWithParser(text); });
  ReportFastest(number + " check", [&] { Require(!FindingsOf(PermitDocument(path)).empty(), "nothing was found"); });
}

}  // namespace

void MeasureAdvice(const Arguments& arguments) {
  for (const std::string& entries : arguments)
    MeasureAdviceOn(std::stoi(entries));
}
