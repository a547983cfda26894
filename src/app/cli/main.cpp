#include "app/cli/cli.h"
#include "platform/platform.h"

#include <iostream>

int main(int argc, char** argv) {
    std::ios::sync_with_stdio(false);
    conferix::RemoveTemporaryFilesAtSignals();
    return conferix::RunCli(
        {argv + (argc > 0 ? 1 : 0), argv + argc},
        {std::cin, std::cout, std::cerr, conferix::IsTerminal(stdout), conferix::IsTerminal(stderr)});
}
