#pragma once

namespace conferix {

/// Digest of the sources that compile schemas; the build writes it. Compiled tables of other code are not
/// used.
extern const char* const kSchemaCode;

} // namespace conferix
