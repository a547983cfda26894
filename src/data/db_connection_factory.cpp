#include "data/db_connection_factory.h"

#include <utility>

namespace conferix {

TDBConnectionFactory::TDBConnectionFactory(TSource source) : source_(std::move(source)) {}

std::shared_ptr<ITussConnection> TDBConnectionFactory::CreateConnection() const {
    return source_();
}

} // namespace conferix
