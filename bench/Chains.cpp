#include "common/Windows.h"

#include <memory>

#include "Scenarios.h"
#include "common/ListItem.h"
#include "support/Stopwatch.h"
#include "transfer/SourceURL.h"

namespace {

std::unique_ptr<CListItem> MakeChain(int count) {
  CListBuilder chain;
  for (int i = 0; i < count; ++i)
    chain.Append(std::make_unique<CSourceURL>(L"https://apps.example.com/tools/", SourceRole::PermittedEntry, nullptr));
  return chain.Take();
}

}  // namespace

void MeasureChains(const Arguments& arguments) {
  MakeChain(1000);
  for (const std::string& count : arguments) {
    std::unique_ptr<CListItem> chain = MakeChain(std::stoi(count));
    Report(count, SecondsOf([&] { chain.reset(); }));
  }
}
