// A host in thirty lines: loads an event, whichever program wrote it, analyzes its first class and
// prints the ranking.
//
//     host event.lxm
#include <cstdio>
#include <memory>

#include "keltrun2/keltrun2.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: %s EVENT\n", argv[0]);
    return 2;
  }
  const auto root = std::make_shared<keltrun::clsKeltrun2>();
  root->FileControl()->SetForeignFormats(true);
  if (!root->FileControl()->LoadLapFile(argv[1])) {
    std::fprintf(stderr, "%s\n", root->ErrorComment().c_str());
    return 1;
  }
  const auto analyzer = root->NewAnalyzer();
  analyzer->AddClass(1);
  analyzer->Execute();
  std::printf("%s: %s\n", root->EventData()->ToString().c_str(), analyzer->DataSetName().c_str());
  for (std::int32_t i = 1; i <= analyzer->Count(); ++i) {
    const auto runner = analyzer->Item(i);
    std::printf("%3s  %8s  lost %6s  cruise %5s%%  %s\n", runner->Rank().c_str(),
                runner->Result().c_str(),
                runner->MissTimeTotal()->ToString("hh:nn:ss", true).c_str(),
                runner->CruiseSpeed()->ToString("#0.0").c_str(), runner->RunnerName().c_str());
  }
  return 0;
}
