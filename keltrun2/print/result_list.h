// The printed result list.
#pragma once

#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/print/print_book.h"

namespace keltrun {

struct ResultListOptions {
  float LineInterval = 1.5f;  // height of a line; values below 1 mean 1
  bool PrintNewPage = false;  // end the page after the list
  bool PrintID = false;
  bool PrintAge = false;
};

/// Lays out the list on the book, below what is already on the current page. Without runners the
/// book is not changed.
void PrintResultList(const clsResultsHolder& results, clsPrintBook& book,
                     const ResultListOptions& options);

}  // namespace keltrun
