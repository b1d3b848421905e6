#include "common/Windows.h"

#include <algorithm>

#include "Host.h"
#include "Scenarios.h"
#include "advice/Explanation.h"
#include "advice/PermitFindings.h"
#include "advice/Words.h"
#include "support/Files.h"
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

void MeasureAdviceOn(int entries) {
  Host host;
  AddEntries(host.Permit(), entries);
  host.Permit().Write();
  host.Control()->SetEnableLogDebug(VARIANT_FALSE);
  const std::wstring path = WideFromAnsi(host.Permit().Path().c_str());
  const std::string number = std::to_string(entries);
  ReportFastest(number + " control", [&] { Require(host.MakeControl() != nullptr, "no control was made"); });
  ReportFastest(number + " explain", [&] {
    const PermitDocument permit(path);
    const Answer answer = Explain(permit, {QuestionKind::Source, L"https://apps.example.com/other/a.txt", FolderKind::Path});
    Require(answer.nearest.has_value(), "no entry is nearest");
  });
  const std::string text = WriteTextOf(host.Folder(), ReadWholeFile(host.Permit().Path()).size());
  ReportFastest(number + " reading", [&] { LoadWithParser(text); });
  ReportFastest(number + " check", [&] { Require(!FindingsOf(PermitDocument(path)).empty(), "nothing was found"); });
}

}  // namespace

void MeasureAdvice(const Arguments& arguments) {
  for (const std::string& entries : arguments)
    MeasureAdviceOn(std::stoi(entries));
}
