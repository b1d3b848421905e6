#include "common/Windows.h"

#include <algorithm>

#include "Host.h"
#include "Scenarios.h"
#include "advice/Explanation.h"
#include "advice/PermitFindings.h"
#include "advice/Words.h"
#include "support/Stopwatch.h"

namespace {

constexpr int kTurns = 3;

template <class Work>
void ReportFastest(const std::string& name, Work work) {
  double best = 1e9;
  for (int turn = 0; turn < kTurns; ++turn)
    best = std::min(best, SecondsOf(work));
  Report(name, best);
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
  ReportFastest(number + " check", [&] { Require(!FindingsOf(PermitDocument(path)).empty(), "nothing was found"); });
}

}  // namespace

void MeasureAdvice(const Arguments& arguments) {
  for (const std::string& entries : arguments)
    MeasureAdviceOn(std::stoi(entries));
}
