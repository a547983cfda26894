// Where GoogleTest's own main() would write line ends of Windows, which the discovery of tests does not know.
#include "platform/program.h"

#include <gmock/gmock.h>

int main(int argc, char** argv) {
    conferix::PrepareStandardStreams();
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
