#pragma once

#include "listing/listing.h"
#include "model/mensagem_tiss.h"

namespace conferix {

/// Lists the guides of a lot into `listing`.
void ListLot(const IMensagemTiss& message, TListingKind kind, TListingOrder order, TFileListing& listing);

} // namespace conferix
