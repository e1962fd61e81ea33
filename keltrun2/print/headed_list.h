// The printed result list with heads: a list to hang up.
#pragma once

#include "keltrun2/analysis/results_holder.h"
#include "keltrun2/model/event_data.h"
#include "keltrun2/print/print_book.h"
#include "keltrun2/print/result_list.h"

namespace keltrun {

/// Lays out the list on the book, below what is already on the current page, or on a new page where
/// that keeps it together. Each page begins with the event and the page number, each part of the
/// list with the class, the course and the titles of the columns. Without runners the book is not
/// changed.
void PrintHeadedList(const clsResultsHolder& results, const clsEventData& event, clsPrintBook& book,
                     const ResultListOptions& options);

}  // namespace keltrun
