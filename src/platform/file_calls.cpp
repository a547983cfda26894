#include "platform/file_calls.h"

#include <utility>

namespace conferix {

void ThrowLastError() {
    throw std::system_error(LastError());
}

TDescriptor::TDescriptor(int descriptor) : descriptor_(descriptor) {
    if (descriptor_ < 0) {
        ThrowLastError();
    }
}

int TDescriptor::Give() {
    return std::exchange(descriptor_, -1);
}

void TDescriptor::WriteAll(std::string_view bytes) const {
    while (!bytes.empty()) {
        bytes.remove_prefix(Write(bytes));
    }
}

} // namespace conferix
