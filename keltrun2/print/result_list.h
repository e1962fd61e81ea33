// The printed result list.
#pragma once

#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/print/print_book.h"

namespace keltrun {

struct ResultListOptions {
  float LineInterval = 1.5f;  // height of a line, below 1 taken as 1
  bool PrintNewPage = false;  // end the page behind the list
  bool PrintID = false;
  bool PrintAge = false;
};

/// Lays the list out on the book, below what the current page already holds. Without runners the
/// book stays as it is.
void PrintResultList(const clsResultsHolder& results, clsPrintBook& book,
                     const ResultListOptions& options);

}  // namespace keltrun
