#include "platform/platform.h"
#include "support/test_files.h"

namespace conferix {

void SetVariable(const std::string& name, const std::optional<std::string>& value) {
    // An empty value removes the variable.
    EXPECT_EQ(_wputenv_s(PathFromText(name).c_str(), PathFromText(value.value_or("")).c_str()), 0);
}

} // namespace conferix
