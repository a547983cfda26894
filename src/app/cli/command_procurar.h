// How terms are listed.
#pragma once

#include "data/tuss_search.h"
#include "report/message_json.h"

#include <iosfwd>
#include <vector>

namespace conferix {

TJson TermsJson(const std::vector<TFoundTerm>& terms);
/// A line a term: table, code, validity, what it stands for.
void WriteTerms(std::ostream& out, const std::vector<TFoundTerm>& terms);

} // namespace conferix
