// Hands connections to those who validate.
#pragma once

#include "data/tuss_connection.h"

#include <functional>
#include <memory>

namespace conferix {

/// Holds a source of terminology connections.
class TDBConnectionFactory {
  public:
    using TSource = std::function<std::shared_ptr<ITussConnection>()>;

    explicit TDBConnectionFactory(TSource source);

    /// A connection from the source; raises what the source raises (ETerminologyNotOpened).
    std::shared_ptr<ITussConnection> CreateConnection() const;

  private:
    TSource source_;
};

} // namespace conferix
