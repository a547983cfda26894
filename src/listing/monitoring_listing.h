#pragma once

#include "listing/listing.h"
#include "model/monitoramento.h"

namespace conferix {

/// Lists the guides of a monitoring file into `listing`. Raises ENotListed for a listing that such a file
/// does not have, and for an order that its guides cannot be put into.
void ListMonitoring(const IMonitoramento& file, TListingKind kind, TListingOrder order,
                    TFileListing& listing);

} // namespace conferix
